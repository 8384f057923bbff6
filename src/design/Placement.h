// A placement of all dies of a design, and its wirelength.
#pragma once

#include <vector>

#include "base/Infinity.h"
#include "design/Design.h"

namespace korvel {

struct PlacedDie {
    Spot at;  // lower-left corner
    Orient orient = Orient::N;
};

// By die, in the design's order.
using Placement = std::vector<PlacedDie>;

// Where a pin lies.
Spot placeOf(const Design& design, const Placement& placement, const Design::Pin& pin);

// Grows around what it is given.
struct Box {
    Spot low{kInfiniteLength, kInfiniteLength};
    Spot high{-kInfiniteLength, -kInfiniteLength};

    void add(Spot spot);
    bool isEmpty() const { return high.x < low.x; }
    Extent size() const { return isEmpty() ? Extent{} : Extent{high.x - low.x, high.y - low.y}; }
};

// Half the perimeter of the box around a net's pins.
double netLength(const Design& design, const Placement& placement, const Design::Net& net);

// Half-perimeter wirelength over all nets.
double wirelength(const Design& design, const Placement& placement);

// How one die lies to another: entirely left of it, right of it, above it, below it.
// A relation per pair of dies, which is what orientations need to become coordinates.
class Relations {
public:
    explicit Relations(std::size_t dieNum = 0) : dieNum(dieNum), where(dieNum * dieNum) {}

    std::size_t getDieNum() const { return dieNum; }

    // Where die a lies relative to die b; a != b. Says the converse about b as well.
    void set(unsigned a, unsigned b, Topology topology);
    Topology get(unsigned a, unsigned b) const { return where[a * dieNum + b]; }

    // Those that a placement has, each pair by the axis along which it is clearest apart.
    static Relations of(const Design& design, const Placement& placement);

private:
    std::size_t dieNum;
    std::vector<Topology> where;
};

}  // namespace korvel
