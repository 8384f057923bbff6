// SVG as text: elements with their attributes, escaped.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace korvel {

// The next character of UTF-8 text, taken off its front; empty for a byte that begins none.
std::string_view takeCharacter(std::string_view& text);

// Text as XML can hold it: markup escaped, and what no XML may contain replaced by U+FFFD.
std::string xmlText(std::string_view text);

// With two decimals at most, which is finer than a screen shows.
std::string svgNumber(double number);

struct SvgAttribute {
    SvgAttribute(std::string_view name, std::string_view text) : name(name), value(xmlText(text)) {}
    SvgAttribute(std::string_view name, const char* text)
        : SvgAttribute(name, std::string_view(text)) {}
    SvgAttribute(std::string_view name, double number) : name(name), value(svgNumber(number)) {}

    std::string_view name;
    std::string value;
};

// `content` is markup already.
std::string svgElement(std::string_view name, std::initializer_list<SvgAttribute> attributes,
                       std::string_view content = {});

// What a browser shows of an element when the mouse rests on it.
std::string svgTitle(std::string_view text);

}  // namespace korvel
