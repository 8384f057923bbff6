// The order of dies along one axis that a set of relations asks for, as a graph without the
// relations that others imply. A value; any thread may read.
#pragma once

#include <optional>
#include <vector>

#include "design/Placement.h"
#include "nets/DieLimits.h"

namespace korvel {

class AxisOrder {
public:
    // Along X a die precedes those that it is left of, along Y those that it is below.
    // Nothing if the relations contradict one another.
    static std::optional<AxisOrder> of(const Relations& relations, Axis axis);

    // Every die after all that precede it.
    const std::vector<unsigned>& dies() const { return sorted; }
    // Those that a die precedes with no other die in between.
    const std::vector<unsigned>& after(unsigned die) const { return next[die]; }

    // The lowest position of each die that the limits allow, whether or not the order fits.
    std::vector<double> lowest(const AxisLimits& limits) const;
    // The highest position of each that is not above its end, by die.
    std::vector<double> highest(const AxisLimits& limits, std::vector<double> ends) const;

private:
    std::vector<unsigned> sorted;
    std::vector<std::vector<unsigned>> next;
};

}  // namespace korvel
