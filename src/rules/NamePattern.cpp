#include "rules/NamePattern.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>

namespace korvel {

namespace {

constexpr std::size_t kComparedLength = 64;

// The length of the UTF-8 character at `at`, or 1 for a byte that begins none.
std::size_t characterLength(std::string_view text, std::size_t at) {
    std::size_t end = at + 1;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        ++end;
    }
    return end - at;
}

// Levenshtein distance, row by row.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

bool isPattern(std::string_view name) {
    return name.find_first_of("*?") != std::string_view::npos;
}

// Each * takes as little as it can; on a mismatch the last one takes a byte more. An earlier one
// never has to, as whatever it gives up the last one can take.
bool matches(std::string_view pattern, std::string_view name) {
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t lastStar = kNone;
    std::size_t starEnd = 0;  // of what the last star takes
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            lastStar = p++;
            starEnd = n;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            n += characterLength(name, n);
        } else if (p < pattern.size() && pattern[p] == name[n]) {
            ++p;
            ++n;
        } else if (lastStar != kNone) {
            p = lastStar + 1;
            n = ++starEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == kNone;
}

std::string_view nearestTo(std::string_view word, const std::vector<std::string_view>& candidates) {
    std::string_view nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string_view candidate : candidates) {
        const std::size_t distance =
            editDistance(word.substr(0, kComparedLength), candidate.substr(0, kComparedLength));
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace korvel
