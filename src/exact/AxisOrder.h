// The order of dies along one axis that a set of relations asks for, as a graph without the
// relations that others imply. A value; any thread may read.
#pragma once

#include <optional>
#include <vector>

#include "design/Placement.h"
#include "exact/NetModel.h"

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

    // The lowest position of each die of those sizes, from 0 on.
    std::vector<double> lowest(const std::vector<double>& sizes) const;
    // The highest position of each, ends not beyond `side`.
    std::vector<double> highest(const std::vector<double>& sizes, double side) const;

private:
    std::vector<unsigned> sorted;
    std::vector<std::vector<unsigned>> next;
};

}  // namespace korvel
