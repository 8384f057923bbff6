// What a placement is worth and whether it is legal, whoever made it. It knows the model of a
// design and nothing of any search; tests judge with it as well.
#pragma once

#include <cstddef>
#include <vector>

#include "base/Tolerances.h"
#include "design/Placement.h"

namespace korvel {

// In the unit of the region.
double touchingLength(Region region, double part = kTouching);

// Lengths and areas are in the design's unit; dies are named by their place in the design.
struct Judgement {
    struct Overlap {
        unsigned first;
        unsigned second;  // comes later in the design
        Extent size;      // of what they share

        double area() const { return size.width * size.height; }
    };
    // How far a die reaches beyond each side of the region; 0 where it does not.
    struct Outside {
        unsigned die;
        double left;
        double right;
        double below;
        double above;
    };

    double wirelength = 0.0;  // HPWL over all nets
    // The same without the nets whose pins are all on one die, which no placement changes.
    double wirelengthBetweenDies = 0.0;
    Spot low;                  // of the box around all dies
    Extent extent;             // of that box
    double utilization = 0.0;  // area of the dies over that of the region
    double tolerance = 0.0;    // that was granted

    // The first kMostOverlaps found, the largest first; the count and the area are of all.
    std::vector<Overlap> overlaps;
    std::size_t overlapNum = 0;
    double overlapArea = 0.0;
    std::vector<Outside> outside;
    std::vector<unsigned> mirrored;  // or without an orientation: dies can only be turned

    bool isLegal() const { return overlapNum == 0 && outside.empty() && mirrored.empty(); }
};

// With thousands of dies on one spot there are millions of pairs, and none is news.
inline constexpr std::size_t kMostOverlaps = 100'000;

// `placement` has a place for each die of the design. Dies that overlap or are outside by at most
// `tolerance` do not count. A die whose coordinates are not finite is outside. Any thread.
Judgement judge(const Design& design, Region region, const Placement& placement, double tolerance);

// By the standard of what the program reports.
Judgement judge(const Design& design, Region region, const Placement& placement);

}  // namespace korvel
