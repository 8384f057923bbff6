// How a picture is laid out: where the design's plane lies in it, and its measures and colours.
#pragma once

#include <algorithm>

#include "design/Design.h"

namespace korvel {

// Blue and orange stay apart for every kind of colour blindness; green and red are darker than both
// and only drawn where the shape tells as well.
namespace colour {
inline constexpr const char* kDie = "#d3e6f5";
inline constexpr const char* kDieEdge = "#00507f";
inline constexpr const char* kRegion = "#f7f6f2";
inline constexpr const char* kRegionEdge = "#8a8f94";
inline constexpr const char* kBundle = "#e08a00";
inline constexpr const char* kTerminal = "#00785a";
inline constexpr const char* kFault = "#b3261e";
inline constexpr const char* kText = "#1c2733";
inline constexpr const char* kQuietText = "#5a6470";
}  // namespace colour

// From the design's plane, where y grows upward, to pixels. The larger side has always
// the same length in pixels.
class View {
public:
    // Of a box with an area.
    View(Spot low, Spot high, unsigned legendLineNum)
        : low(low), high(high), legendLineNum(legendLineNum) {
        scale = kLargerSide / std::max(high.x - low.x, high.y - low.y);
        indent = std::max(0.0, (kLeastWidth - lengthOf(high.x - low.x)) / 2.0);
    }

    double lengthOf(double length) const { return length * scale; }
    Extent sizeOf(Extent size) const { return {lengthOf(size.width), lengthOf(size.height)}; }
    Spot spotOf(Spot spot) const {
        return {kMargin + indent + lengthOf(spot.x - low.x), kMargin + lengthOf(high.y - spot.y)};
    }

    double width() const { return 2.0 * (kMargin + indent) + lengthOf(high.x - low.x); }
    double height() const { return captionTop() + kCaptionHeight + legendLineNum * kLegendLine; }
    double captionTop() const { return 2.0 * kMargin + lengthOf(high.y - low.y); }
    double captionWidth() const { return width() - 2.0 * kMargin; }

    static constexpr double kMargin = 30.0;
    static constexpr double kLegendLine = 24.0;

private:
    static constexpr double kLargerSide = 900.0;
    static constexpr double kLeastWidth = 640.0;    // or the caption has no room
    static constexpr double kCaptionHeight = 60.0;  // without its legend

    Spot low;
    Spot high;
    unsigned legendLineNum;
    double scale = 1.0;
    double indent = 0.0;
};

}  // namespace korvel
