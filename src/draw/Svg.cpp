#include "draw/Svg.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/Utf8.h"

namespace korvel {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

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
    const std::size_t length = firstCharacter(text).length;
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
