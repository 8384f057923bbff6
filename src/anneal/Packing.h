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
#include "nets/DieLimits.h"

namespace korvel {

class Packing {
public:
    // Where a sweep over the dies begins; the dies are pushed away from there.
    enum class Sweep : bool { FromHigh, FromLow };
    using DieFlags = std::vector<char>;

    // The limits must outlive the packing. All dies at 0, in orientation N.
    Packing(const DieLimits& limits, Axis axis);

    void setOrientation(unsigned die, Orient orient);
    double corner(unsigned die) const { return corners[die]; }
    void setCorner(unsigned die, double corner) { corners[die] = corner; }
    double size(unsigned die) const { return sizes[die]; }
    double centre(unsigned die) const { return corners[die] + sizes[die] / 2; }
    bool hasMoved(unsigned die) const { return corners[die] != keptCorners[die]; }
    // By body: the dies, and the terminals as one more body at 0.
    const std::vector<double>& cornersOfBodies() const { return corners; }

    // Where the region lets the die's corner be.
    DieLimits::Range cornerRange(unsigned die) const { return ranges[die]; }
    // The same between its neighbours as they lie, without the ignored ones; empty if there is too
    // little room for the die.
    DieLimits::Range slack(const SequencePair& orders, unsigned die, const DieFlags& ignored) const;

    // Two steps of packing; positions may be changed in between. The first finds the longest chain
    // and how far every die can give way to the sweep; the second pushes the dies apart.
    void findLimits(const SequencePair& orders, Sweep sweep);
    void pushApart(const SequencePair& orders, Sweep sweep);
    // By how much the longest chain is longer than the region's side, in parts of that side.
    double overflow() const;

    // All dies at these corners, which are taken for legal; kept.
    void place(const std::vector<double>& cornersOfDies);
    void keep();
    void undo();

private:
    template <typename Put>
    void sweepFromLow(const SequencePair& orders, const Put& put);
    template <typename Put>
    void sweepFromHigh(const SequencePair& orders, const Put& put);

    const DieLimits& limits;
    const Axis axis;
    const unsigned dieNum;
    const double side;
    std::vector<double> corners, keptCorners;  // by body
    std::vector<double> sizes;                 // by die
    std::vector<double> distances;             // by die, least ones to the corners of dies after it
    std::vector<DieLimits::Range> ranges;      // by die, of its corner
    std::vector<double> furthest;              // by die, how far it can give way
    double longestChain = 0.0;                 // the side at least; 0 after place()
    double keptChain = 0.0;
    std::vector<double> chain;  // by rank in the lower order
};

}  // namespace korvel
