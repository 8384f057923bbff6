// Bounding box of pins. Coordinates are assumed not to be negative: the upper ends start at the
// smallest positive normal number, yes, on purpose.
#pragma once

#include <algorithm>
#include <limits>

#include "base/BasicStructs.h"

namespace korvel {

class BoundingBox {
public:
    void add(Point p) {
        minX = std::min(minX, p.x);
        maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y);
        maxY = std::max(maxY, p.y);
    }

    float halfPerimeter() const { return (maxX - minX) + maxY - minY; }
    // Differs from the above in rounding only.
    float widthPlusHeight() const { return (maxX - minX) + (maxY - minY); }

private:
    float minX = std::numeric_limits<float>::max();
    float minY = std::numeric_limits<float>::max();
    float maxX = std::numeric_limits<float>::min();
    float maxY = std::numeric_limits<float>::min();
};

}  // namespace korvel
