#include "design/Placement.h"

#include <algorithm>
#include <array>

#include "base/Infinity.h"

namespace korvel {

Spot placeOf(const Design& design, const Placement& placement, const Design::Pin& pin) {
    if (!design.isDie(pin.body)) {
        return design.terminalOf(pin.body).at;
    }
    const PlacedDie& placed = placement[pin.body];
    const Spot offset = turned(pin.offset, design.dies[pin.body].size, placed.orient);
    return {placed.at.x + offset.x, placed.at.y + offset.y};
}

double wirelength(const Design& design, const Placement& placement) {
    double sum = 0.0;
    for (const Design::Net& net : design.nets) {
        Spot low{kInfiniteLength, kInfiniteLength};
        Spot high{-low.x, -low.y};
        for (const Design::Pin& pin : net.pins) {
            const Spot at = placeOf(design, placement, pin);
            low = {std::min(low.x, at.x), std::min(low.y, at.y)};
            high = {std::max(high.x, at.x), std::max(high.y, at.y)};
        }
        if (!net.pins.empty()) {
            sum += (high.x - low.x) + (high.y - low.y);
        }
    }
    return sum;
}

void Relations::set(unsigned a, unsigned b, Topology topology) {
    where[a * dieNum + b] = topology;
    where[b * dieNum + a] = converse(topology);
}

Relations Relations::of(const Design& design, const Placement& placement) {
    Relations relations(placement.size());
    for (unsigned a = 0; a < placement.size(); ++a) {
        const Spot lowA = placement[a].at;
        const Extent sizeA = turned(design.dies[a].size, placement[a].orient);
        for (unsigned b = a + 1; b < placement.size(); ++b) {
            const Spot lowB = placement[b].at;
            const Extent sizeB = turned(design.dies[b].size, placement[b].orient);
            // By Topology: how far apart they are if a lies there.
            const std::array<double, 4> gaps{
                lowB.x - (lowA.x + sizeA.width), lowA.x - (lowB.x + sizeB.width),
                lowA.y - (lowB.y + sizeB.height), lowB.y - (lowA.y + sizeA.height)};
            const auto widest = std::max_element(gaps.begin(), gaps.end());
            relations.set(a, b, static_cast<Topology>(widest - gaps.begin()));
        }
    }
    return relations;
}

}  // namespace korvel
