// Names in boxes: how large they can be written, and whether upright.
#pragma once

#include <optional>
#include <string_view>

#include "design/Design.h"

namespace korvel {

// Of text in a sans-serif font, in font sizes: rather too wide than too narrow, since nobody knows
// which font a viewer will take.
double textWidth(std::string_view text);

struct Label {
    double fontSize;  // in pixels
    bool isVertical;  // from bottom to top
};

// The largest label of a readable size that stays inside a box of so many pixels. None if there is
// none, or nothing to write.
std::optional<Label> fitLabel(std::string_view text, Extent box);

}  // namespace korvel
