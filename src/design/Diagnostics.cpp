#include "design/Diagnostics.h"

#include <array>
#include <ostream>

namespace korvel {

namespace {

constexpr std::size_t kLongestPiece = 40;

unsigned byteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

// The length of the UTF-8 sequence that the text begins with, if it is one and no control
// character; else 0.
std::size_t printableLength(std::string_view text) {
    const unsigned lead = byteAt(text, 0);
    if (lead < 0x80) {
        return lead >= 0x20 && lead != 0x7F ? 1 : 0;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0U) != 0x80) {
            return 0;
        }
        code = code << 6 | (byteAt(text, i) & 0x3FU);
    }
    // By length: what a shorter sequence could say is none. 0x80 to 0x9F are control characters.
    constexpr std::array<unsigned, 5> kFirst{0, 0, 0xA0, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool mark = code == 0xFEFF || (code & 0xFFFEU) == 0xFFFE;
    const bool sound = lead >= 0xC2 && lead <= 0xF4 && code >= kFirst[length] && code <= 0x10FFFF;
    return sound && !surrogate && !mark ? length : 0;
}

std::string escaped(unsigned byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xFU]};
}

const char* wordFor(Diagnostics::Severity severity) {
    return severity == Diagnostics::Severity::kError ? "error" : "warning";
}

void printRest(std::ostream& out, std::size_t num, const char* word) {
    if (num > Diagnostics::kMaxKept) {
        const std::size_t rest = num - Diagnostics::kMaxKept;
        out << "... and " << rest << " more " << word << (rest > 1 ? "s" : "") << "\n";
    }
}

}  // namespace

void Diagnostics::error(const std::string& file, unsigned line, const std::string& text) {
    add(Severity::kError, errorNum, file, line, text);
}

void Diagnostics::warning(const std::string& file, unsigned line, const std::string& text) {
    add(Severity::kWarning, warningNum, file, line, text);
}

void Diagnostics::add(Severity severity, std::size_t& num, const std::string& file, unsigned line,
                      const std::string& text) {
    ++num;
    if (num <= kMaxKept) {
        findings.push_back({severity, file, line, text});
    }
}

void Diagnostics::print(std::ostream& out) const {
    for (const Finding& finding : findings) {
        out << finding.file;
        if (finding.line > 0) {
            out << ":" << finding.line;
        }
        out << (finding.file.empty() ? "" : ": ") << wordFor(finding.severity) << ": "
            << finding.text << "\n";
    }
    printRest(out, errorNum, wordFor(Severity::kError));
    printRest(out, warningNum, wordFor(Severity::kWarning));
}

std::string shown(std::string_view piece) {
    std::string text = "'";
    for (std::string_view rest = piece; !rest.empty();) {
        if (text.size() > kLongestPiece) {
            text += "...";
            break;
        }
        const std::size_t length = printableLength(rest);
        text += length > 0 ? std::string(rest.substr(0, length)) : escaped(byteAt(rest, 0));
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
