#include "draw/Svg.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace korvel {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

// By the first byte: how long the character is, and which second bytes can follow; the shortest
// forms only, no surrogates, nothing beyond the last code point.
struct Lead {
    unsigned char first;
    unsigned char last;
    std::size_t length;
    unsigned char lowSecond;
    unsigned char highSecond;
};
constexpr std::array<Lead, 9> kLeads{{
    {0x00, 0x7F, 1, 0x00, 0x00},
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
}};

bool begins(std::string_view text, const Lead& lead) {
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if (byte(0) < lead.first || byte(0) > lead.last || text.size() < lead.length) {
        return false;
    }
    for (std::size_t at = 1; at < lead.length; ++at) {
        const bool isSecond = at == 1;
        if (byte(at) < (isSecond ? lead.lowSecond : 0x80) ||
            byte(at) > (isSecond ? lead.highSecond : 0xBF)) {
            return false;
        }
    }
    return true;
}

bool isAllowedInXml(std::string_view character) {
    const bool isControl = character.size() == 1 && static_cast<unsigned char>(character[0]) < ' ';
    return !character.empty() && (!isControl || character == "\n" || character == "\t") &&
           character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

std::string_view escaped(std::string_view character) {
    if (!isAllowedInXml(character)) {
        return kReplacement;
    }
    switch (character[0]) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            return character;
    }
}

}  // namespace

std::string_view takeCharacter(std::string_view& text) {
    const auto* const lead = std::find_if(kLeads.begin(), kLeads.end(),
                                          [text](const Lead& one) { return begins(text, one); });
    const std::size_t length = lead == kLeads.end() ? 0 : lead->length;
    const std::string_view character = text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return character;
}

std::string xmlText(std::string_view text) {
    std::string xml;
    while (!text.empty()) {
        xml += escaped(takeCharacter(text));
    }
    return xml;
}

std::string svgNumber(double number) {
    const double rounded = std::round(number * 100.0) / 100.0;
    std::array<char, 400> text{};
    // Adding zero makes a negative zero a plain one.
    const auto end = std::to_chars(text.data(), text.data() + text.size(), rounded + 0.0,
                                   std::chars_format::fixed)
                         .ptr;
    return {text.data(), end};
}

std::string svgElement(std::string_view name, std::initializer_list<SvgAttribute> attributes,
                       std::string_view content) {
    std::string element = "<" + std::string(name);
    for (const SvgAttribute& attribute : attributes) {
        element += " " + std::string(attribute.name) + "=\"" + attribute.value + "\"";
    }
    if (content.empty()) {
        return element + "/>\n";
    }
    return element + ">" + std::string(content) + "</" + std::string(name) + ">\n";
}

std::string svgTitle(std::string_view text) {
    return "<title>" + xmlText(text) + "</title>";
}

}  // namespace korvel
