// The low corners of all dies along one axis, kept apart as a sequence pair asks. Dies are not
// packed into a corner of the region: each stays where it is unless a die before it, or the
// region's end, pushes it.
//
// All dies before a die are those that come first in both orders (along x) or first in the lower
// order and last in the upper one (along y). So a chain of dies, each before the next, is a common
// subsequence of the two orders, one of them reversed for y, and the longest chain says how much
// room the dies need (X. Tang, R. Tian, D. F. Wong, "Fast evaluation of sequence pair in block
// placement by longest common subsequence computation", DATE 2000; the simple form there, quadratic
// at worst).
// Owned and used by one thread; allocates nothing after construction.
#pragma once

#include <vector>

#include "anneal/SequencePair.h"
#include "base/Axis.h"

namespace korvel {

class Packing {
public:
    // Of a die's low corner.
    struct Range {
        double low;
        double high;
    };
    // Where a sweep over the dies begins; the dies are pushed away from there.
    enum class Sweep : bool { FromHigh, FromLow };
    using DieFlags = std::vector<char>;

    // All dies at 0 and without a size.
    Packing(Axis axis, unsigned dieNum, double side);

    double side() const { return regionSide; }
    double size(unsigned die) const { return sizes[die]; }
    void setSize(unsigned die, double size) { sizes[die] = size; }
    double corner(unsigned die) const { return corners[die]; }
    void setCorner(unsigned die, double corner) { corners[die] = corner; }
    double centre(unsigned die) const { return corners[die] + sizes[die] / 2; }
    bool hasMoved(unsigned die) const { return corners[die] != keptCorners[die]; }
    // By body: the dies, and the terminals as one more body at 0.
    const std::vector<double>& cornersOfBodies() const { return corners; }

    // Where the region lets the die be.
    Range cornerRange(unsigned die) const { return {0.0, regionSide - sizes[die]}; }
    // The same between its neighbours as they lie, without the ignored ones. With too little room
    // for the die, high is below low.
    Range slack(const SequencePair& orders, unsigned die, const DieFlags& ignored) const;

    // Two steps of packing; positions may be changed in between. The first finds the longest chain
    // and how far every die can give way to the sweep; the second pushes the dies apart.
    void findLimits(const SequencePair& orders, Sweep sweep);
    void pushApart(const SequencePair& orders, Sweep sweep);
    // By how much the longest chain is longer than the region's side, in parts of that side.
    double overflow() const;

    // The corners are taken for a legal layout, and kept.
    void keepLegal();
    void keep();
    void undo();

private:
    // From a die's corner to the corners of all dies after it.
    double leastDistance(unsigned before) const { return sizes[before]; }
    unsigned dieNum() const { return static_cast<unsigned>(limits.size()); }

    template <typename Put>
    void sweepFromLow(const SequencePair& orders, const Put& put);
    template <typename Put>
    void sweepFromHigh(const SequencePair& orders, const Put& put);

    const Axis axis;
    const double regionSide;
    std::vector<double> corners, keptCorners;  // by body
    std::vector<double> sizes;                 // by die
    std::vector<double> limits;                // by die, how far it can give way
    double longestChain = 0.0;                 // the side at least, once found
    double keptChain = 0.0;
    std::vector<double> chain;  // by rank in the lower order
};

}  // namespace korvel
