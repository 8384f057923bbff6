// Which rules of a package a placement breaks, and by how much. It says nothing of overlaps and of
// dies outside the area, which Judge finds without any rules; each fault is found by one of the
// two.
#pragma once

#include <cstddef>
#include <vector>

#include "judge/Judge.h"
#include "rules/Rules.h"

namespace korvel {

// Lengths are in the design's unit; dies, nets and keep-outs are named by their place in the design
// and the rules. Lists begin with what is broken by the most.
struct RuleJudgement {
    enum class Side { kLeft, kBottom, kRight, kTop };

    // Two dies that do not overlap, but are too near each other.
    struct Gap {
        unsigned first;
        unsigned second;  // comes later in the design
        double found;     // along the axis along which they are farther apart; 0 if they touch
        double needed;
    };
    // A die in the area, but too near one of its sides.
    struct Edge {
        unsigned die;
        Side side;
        double found;
        double needed;
    };
    struct Keepout {
        unsigned die;
        unsigned keepout;
        Extent size;  // of what they share

        double area() const { return size.width * size.height; }
    };
    // A fixed die elsewhere.
    struct Moved {
        unsigned die;
        Spot by;  // from where it is fixed to where it lies
    };
    // How far a die reaches beyond a side of its rectangle.
    struct Within {
        unsigned die;
        Side side;
        double beyond;
    };
    struct Reach {
        unsigned net;
        double length;
        double allowed;
    };

    double weightedWirelength = 0.0;  // each net's HPWL times its weight

    // The first kMostOverlaps found; the count is of all.
    std::vector<Gap> gaps;
    std::size_t gapNum = 0;
    std::vector<Edge> edges;
    std::vector<Keepout> keepouts;
    std::vector<Moved> moved;
    std::vector<unsigned> turned;  // dies in an orientation that is not allowed
    std::vector<Within> within;
    std::vector<Reach> reaches;

    bool areRulesKept() const {
        return gapNum == 0 && edges.empty() && keepouts.empty() && moved.empty() &&
               turned.empty() && within.empty() && reaches.empty();
    }
};

// `placement` has a place for each die of the design. What misses a rule by at most `tolerance`
// keeps it. Dies whose coordinates are not finite are passed over, and so are orientations that are
// mirrored, as Judge finds both. Any thread.
RuleJudgement judgeRules(const Design& design, Region region, const Rules& rules,
                         const Placement& placement, double tolerance);

}  // namespace korvel
