// A convex piecewise linear function of the distance between two bodies: what nets between them
// cost along one axis. Thousands of nets add up to one such function.
// Filled once and never changed; any thread may read.
#pragma once

#include <cstddef>
#include <vector>

namespace korvel {

class PiecewiseLinear {
public:
    struct Breakpoint {
        double at;     // distance
        double value;  // of the function there
        double slope;  // from there to the next breakpoint
    };
    // The slope grows by so much at a distance; more than 0.
    struct Jump {
        double at;
        double by;
    };
    // The function close to a distance: its value, and its slopes to both sides.
    struct Local {
        double value;
        double left, right;
    };

    // The zero function. It has no breakpoints, and all that need one may not be asked of it.
    PiecewiseLinear() = default;
    // Below all jumps the function is `offset + leftSlope * distance`. One jump at least, in any
    // order.
    PiecewiseLinear(double offset, double leftSlope, std::vector<Jump> jumps);

    // Ascending, no two at the same distance.
    const std::vector<Breakpoint>& breakpoints() const { return points; }
    // Of the piece that ends at that breakpoint; behind the last one, of the piece after it.
    double slopeBefore(std::size_t breakpoint) const {
        return breakpoint == 0 ? leftSlope : points[breakpoint - 1].slope;
    }
    double jumpAt(std::size_t breakpoint) const {
        return points[breakpoint].slope - slopeBefore(breakpoint);
    }
    // How many breakpoints are below a distance.
    std::size_t numBelow(double distance) const;

    double value(double distance) const;
    // The same with the slopes. Made for millions of calls.
    Local around(double distance) const;
    // The least value in a range of distances; infinity if that is empty. The function must fall
    // at first and rise in the end.
    double leastWithin(double from, double to) const;

    // Whether two functions are the same but for rounding: their breakpoints by up to `nearness`.
    // Mirrored: whether this one is at each distance what the other one is at the opposite.
    bool isLike(const PiecewiseLinear& other, bool mirrored, double nearness) const;

private:
    double leftSlope = 0.0;
    std::vector<Breakpoint> points;
};

// Pins are mostly in rows of equal steps, so the breakpoint before a distance is near where it
// would be if breakpoints were in equal steps as well.
inline PiecewiseLinear::Local PiecewiseLinear::around(double distance) const {
    const Breakpoint* const lowest = points.data();
    if (distance < lowest->at) {
        return {lowest->value + leftSlope * (distance - lowest->at), leftSlope, leftSlope};
    }
    const Breakpoint* last = lowest + (points.size() - 1);
    if (distance < last->at) {
        const double part = (distance - lowest->at) / (last->at - lowest->at);
        last = lowest + static_cast<std::size_t>(part * static_cast<double>(last - lowest));
        while (last->at > distance) {
            --last;
        }
        while ((last + 1)->at <= distance) {
            ++last;
        }
    }
    const double left = last->at < distance ? last->slope
                        : last == lowest    ? leftSlope
                                            : (last - 1)->slope;
    return {last->value + last->slope * (distance - last->at), left, last->slope};
}

}  // namespace korvel
