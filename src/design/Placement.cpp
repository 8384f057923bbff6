#include "design/Placement.h"

#include <algorithm>
#include <array>

namespace korvel {

Spot placeOf(const Design& design, const Placement& placement, const Design::Pin& pin) {
    if (!design.isDie(pin.body)) {
        return design.terminalOf(pin.body).at;
    }
    const PlacedDie& placed = placement[pin.body];
    const Spot offset = turned(pin.offset, design.dies[pin.body].size, placed.orient);
    return {placed.at.x + offset.x, placed.at.y + offset.y};
}

void Box::add(Spot spot) {
    low = {std::min(low.x, spot.x), std::min(low.y, spot.y)};
    high = {std::max(high.x, spot.x), std::max(high.y, spot.y)};
}

double netLength(const Design& design, const Placement& placement, const Design::Net& net) {
    Box box;
    for (const Design::Pin& pin : net.pins) {
        box.add(placeOf(design, placement, pin));
    }
    return box.size().width + box.size().height;
}

double wirelength(const Design& design, const Placement& placement) {
    double sum = 0.0;
    for (const Design::Net& net : design.nets) {
        sum += netLength(design, placement, net);
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
