#include "draw/Label.h"

#include <algorithm>

#include "draw/Svg.h"

namespace korvel {

namespace {

constexpr double kLargestFont = 26.0;
constexpr double kSmallestFont = 5.0;
// Of a box; the rest is its margin, and where the mark of the orientation is.
constexpr double kUsableAlong = 0.88;
constexpr double kUsableAcross = 0.55;
// A vertical name is harder to read: it has to be so much larger.
constexpr double kWorthTurning = 1.3;

double characterWidth(std::string_view character) {
    constexpr std::string_view kNarrow = " .,:;!|'`ijlIft()[]{}/\\\"-";
    constexpr std::string_view kWide = "mwMW@%&";
    if (character.size() > 1) {
        return 1.0;
    }
    if (kNarrow.find(character) != std::string_view::npos) {
        return 0.41;
    }
    const bool isCapital = character >= "A" && character <= "Z";
    return kWide.find(character) != std::string_view::npos ? 1.0 : isCapital ? 0.77 : 0.64;
}

double fontSizeIn(double width, Extent box) {
    return std::min({kUsableAlong * box.width / width, kUsableAcross * box.height, kLargestFont});
}

}  // namespace

double textWidth(std::string_view text) {
    double width = 0.0;
    while (!text.empty()) {
        width += characterWidth(takeCharacter(text));
    }
    return width;
}

std::optional<Label> fitLabel(std::string_view text, Extent box) {
    if (text.empty()) {
        return {};
    }
    const double width = textWidth(text);
    const double upright = fontSizeIn(width, box);
    const double turned = fontSizeIn(width, {box.height, box.width});
    const bool isVertical = turned > kWorthTurning * upright;
    const double fontSize = isVertical ? turned : upright;
    if (fontSize < kSmallestFont) {
        return {};
    }
    return Label{fontSize, isVertical};
}

}  // namespace korvel
