#include "exact/AxisOrder.h"

#include <algorithm>

namespace korvel {

namespace {

// Kahn's algorithm on the relation matrix; shorter than all dies if there is a cycle.
std::vector<unsigned> sortedBy(const Relations& relations, Topology precedes) {
    const auto dieNum = static_cast<unsigned>(relations.getDieNum());
    std::vector<unsigned> waitsFor(dieNum, 0);
    for (unsigned a = 0; a < dieNum; ++a) {
        for (unsigned b = 0; b < dieNum; ++b) {
            waitsFor[b] += a != b && relations.get(a, b) == precedes ? 1 : 0;
        }
    }
    std::vector<unsigned> sorted;
    for (unsigned die = 0; die < dieNum; ++die) {
        if (waitsFor[die] == 0) {
            sorted.push_back(die);
        }
    }
    for (std::size_t at = 0; at < sorted.size(); ++at) {
        for (unsigned b = 0; b < dieNum; ++b) {
            if (b != sorted[at] && relations.get(sorted[at], b) == precedes && --waitsFor[b] == 0) {
                sorted.push_back(b);
            }
        }
    }
    return sorted;
}

}  // namespace

std::optional<AxisOrder> AxisOrder::of(const Relations& relations, Axis axis) {
    const Topology precedes = firstAlong(axis);
    const std::size_t dieNum = relations.getDieNum();
    AxisOrder order;
    order.sorted = sortedBy(relations, precedes);
    if (order.sorted.size() < dieNum) {
        return std::nullopt;
    }
    // From the last die back: a successor that a nearer one reaches is implied.
    order.next.resize(dieNum);
    std::vector<std::vector<bool>> reaches(dieNum, std::vector<bool>(dieNum, false));
    for (std::size_t at = dieNum; at-- > 0;) {
        const unsigned die = order.sorted[at];
        for (std::size_t later = at + 1; later < dieNum; ++later) {
            const unsigned other = order.sorted[later];
            if (relations.get(die, other) != precedes || reaches[die][other]) {
                continue;
            }
            order.next[die].push_back(other);
            reaches[die][other] = true;
            std::transform(reaches[die].begin(), reaches[die].end(), reaches[other].begin(),
                           reaches[die].begin(), std::logical_or<>());
        }
    }
    return order;
}

std::vector<double> AxisOrder::lowest(const AxisLimits& limits) const {
    std::vector<double> low(sorted.size());
    for (unsigned die = 0; die < low.size(); ++die) {
        low[die] = limits.cornerRange(die).low;
    }
    for (const unsigned die : sorted) {
        for (const unsigned later : next[die]) {
            low[later] = std::max(low[later], low[die] + limits.leastDistance(die, later));
        }
    }
    return low;
}

std::vector<double> AxisOrder::highest(const AxisLimits& limits, std::vector<double> ends) const {
    for (std::size_t at = sorted.size(); at-- > 0;) {
        const unsigned die = sorted[at];
        for (const unsigned later : next[die]) {
            ends[die] = std::min(ends[die], ends[later] - limits.leastDistance(die, later));
        }
    }
    return ends;
}

}  // namespace korvel
