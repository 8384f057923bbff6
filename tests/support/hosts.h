// Systems of hosts with memories of their own, and a check of layouts of any design.
#pragma once

#include <algorithm>
#include <limits>
#include <string>

#include "anneal/Layout.h"
#include "support/random_designs.h"

namespace korvel::test {

// Systems of hosts in a ring, each with memories of its own.
inline Design hostsWithMemories(unsigned hosts, unsigned memories) {
    Design design;
    const auto join = [&design](unsigned a, unsigned b, int times) {
        for (int time = 0; time < times; ++time) {
            design.nets.push_back({{{a, {time * 0.1, 1.0}}, {b, {0.0, time * 0.2}}}});
        }
    };
    for (unsigned host = 0; host < hosts; ++host) {
        const auto first = static_cast<unsigned>(design.dies.size());
        design.dies.push_back({"host" + std::to_string(host), {6.0, 5.0}});
        for (unsigned memory = 1; memory <= memories; ++memory) {
            design.dies.push_back({"memory" + std::to_string(first + memory), {2.0, 3.0}});
            join(first, first + memory, 4);
        }
    }
    for (unsigned host = 0; host < hosts; ++host) {
        join(host * (memories + 1), (host + 1) % hosts * (memories + 1), 6);
    }
    return design;
}

// The least room between two dies by their relation; negative if one is not kept. The region does
// not count.
inline double leastGap(const Design& design, const Relations& relations,
                       const Placement& placement) {
    double least = std::numeric_limits<double>::infinity();
    for (unsigned a = 0; a < design.dies.size(); ++a) {
        for (unsigned b = a + 1; b < design.dies.size(); ++b) {
            const Extent ofA = turned(design.dies[a].size, placement[a].orient);
            const Extent ofB = turned(design.dies[b].size, placement[b].orient);
            const Spot atA = placement[a].at;
            const Spot atB = placement[b].at;
            const Topology relation = relations.get(a, b);
            const double gap = relation == Topology::L   ? atB.x - atA.x - ofA.width
                               : relation == Topology::R ? atA.x - atB.x - ofB.width
                               : relation == Topology::B ? atB.y - atA.y - ofA.height
                                                         : atA.y - atB.y - ofB.height;
            least = std::min(least, gap);
        }
    }
    return least;
}

inline void ordersHold(const Layout& layout, const Design& design) {
    EXPECT_GE(leastGap(design, layout.sequences().relations(), layout.placement()), -1e-9);
}

}  // namespace korvel::test
