#include "design/Diagnostics.h"

#include <ostream>

#include "base/Utf8.h"
#include "design/Numeral.h"

namespace korvel {

namespace {

constexpr std::size_t kLongestPiece = 40;

// The length of the character that the text begins with, if it is one that can be printed; else 0.
std::size_t printableLength(std::string_view text) {
    const auto [code, length] = firstCharacter(text);
    const bool isControl = code < 0x20 || (code >= 0x7F && code <= 0x9F);
    const bool isMark = code == 0xFEFF || (code & 0xFFFEU) == 0xFFFE;
    return isControl || isMark ? 0 : length;
}

std::string escaped(char character) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const unsigned byte = static_cast<unsigned char>(character);
    return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xFU]};
}

// By severity.
constexpr std::array<const char*, 2> kWords{"error", "warning"};

}  // namespace

void Diagnostics::report(Severity severity, const std::string& file, unsigned line,
                         const std::string& text) {
    if (++numbers[severity] <= kMaxKept) {
        findings.push_back({severity, file, line, text});
    }
}

void Diagnostics::print(std::ostream& out) const {
    for (const Finding& finding : findings) {
        out << finding.file;
        if (finding.line > 0) {
            out << ":" << finding.line;
        }
        out << (finding.file.empty() ? "" : ": ") << kWords[finding.severity] << ": "
            << finding.text << "\n";
    }
    for (const Severity severity : {kError, kWarning}) {
        if (numbers[severity] > kMaxKept) {
            out << "... and "
                << counted(numbers[severity] - kMaxKept, std::string("more ") + kWords[severity])
                << "\n";
        }
    }
}

std::string shown(std::string_view piece) {
    std::string text = "'";
    for (std::string_view rest = piece; !rest.empty();) {
        if (text.size() > kLongestPiece) {
            text += "...";
            break;
        }
        const std::size_t length = printableLength(rest);
        text += length > 0 ? std::string(rest.substr(0, length)) : escaped(rest[0]);
        rest.remove_prefix(length > 0 ? length : 1);
    }
    return text + "'";
}

bool isPrintable(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = printableLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace korvel
