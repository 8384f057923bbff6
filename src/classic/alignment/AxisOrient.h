// How a body lies along one axis of the area: which of its own two axes lies there, and whether
// that is reversed. It is what an orientation means to a single axis: a body in orientation N has
// its u axis (its width) along x, one in E has it along y, reversed.
#pragma once

#include "base/Axis.h"
#include "base/BasicStructs.h"

namespace korvel {

// u runs along the body's width, v along its height, both in orientation N.
enum BodyAxis : unsigned { kU, kV, kBodyAxes };

class AxisOrient {
public:
    static constexpr unsigned kNumber = 2 * kBodyAxes;

    constexpr AxisOrient(BodyAxis bodyAxis, bool isReversed)
        : value(2 * bodyAxis + (isReversed ? 1 : 0)) {}
    // Of a body in that orientation, which is unmirrored.
    static constexpr AxisOrient along(Axis axis, Orient orient) {
        constexpr unsigned kValues[kAxes][kUnmirroredOrients] = {{0, 2, 1, 3}, {2, 1, 3, 0}};
        return AxisOrient(kValues[axis][orientIndex(orient)]);
    }

    // From 0 up to kNumber.
    constexpr unsigned index() const { return value; }
    constexpr BodyAxis bodyAxis() const { return static_cast<BodyAxis>(value / 2); }
    constexpr bool isReversed() const { return value % 2 != 0; }
    // When the body is turned by half.
    constexpr AxisOrient opposite() const { return AxisOrient(value ^ 1U); }

private:
    constexpr explicit AxisOrient(unsigned value) : value(value) {}

    unsigned value;
};

}  // namespace korvel
