// The limits that dies keep to along each axis: how far one lies from another that comes first, and
// from where to where its lower-left corner may lie. Annealing, proof and exact coordinates all ask
// here, so the limits are said once. They know nothing of the rules of a package yet.
// Filled once and never changed; any thread may read.
#pragma once

#include <vector>

#include "base/Axis.h"
#include "design/Design.h"

namespace korvel {

// Lengths are in the design's unit, orientations N, E, S or W.
class DieLimits {
public:
    // Of positions along an axis.
    struct Range {
        double low;
        double high;

        bool isEmpty() const { return low > high; }
        double middle() const { return (low + high) / 2.0; }
    };

    DieLimits(const Design& design, Region region);
    // The same with a region that is larger by what counts as rounding (see kFitting): what does
    // not fit there does not fit at all.
    static DieLimits generous(const Design& design, Region region);

    unsigned dieNum() const { return static_cast<unsigned>(sizes.size()); }
    // Of the region; no two corners are farther apart.
    double side(Axis axis) const { return axis == kX ? region.width : region.height; }
    double longerSide() const {
        return region.width > region.height ? region.width : region.height;
    }
    double size(unsigned die, Axis axis, Orient orient) const {
        return lengthAlong(axis, sizes[die], orient);
    }

    // From the corner of a die to the corner of another one that it comes first of along the axis.
    // Dies may touch, so it is the size of the first one, whatever the second one is.
    double leastDistance(unsigned first, unsigned /*second*/, Axis axis, Orient ofFirst) const {
        return size(first, axis, ofFirst);
    }
    // Where the corner may lie; empty if the die does not fit.
    Range cornerRange(unsigned die, Axis axis, Orient orient) const {
        return {0.0, side(axis) - size(die, axis, orient)};
    }

private:
    std::vector<Extent> sizes;  // in orientation N
    Region region;
};

// The limits along one axis for dies that have their orientations. Refers to what it is made of.
struct AxisLimits {
    const DieLimits& limits;
    Axis axis;
    const std::vector<Orient>& orients;  // by die

    unsigned dieNum() const { return limits.dieNum(); }
    double side() const { return limits.side(axis); }
    double leastDistance(unsigned first, unsigned second) const {
        return limits.leastDistance(first, second, axis, orients[first]);
    }
    DieLimits::Range cornerRange(unsigned die) const {
        return limits.cornerRange(die, axis, orients[die]);
    }
};

}  // namespace korvel
