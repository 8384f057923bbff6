// The rules of a package, merged and resolved against one design: what a legal placement has to
// keep besides not overlapping and staying in the area. Plain values, filled once by the reader and
// never changed; any thread may read. Without any rule, which is the default, every table is empty
// and each look-up gives what holds without rules.
#pragma once

#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "base/Axis.h"
#include "design/Design.h"
#include "rules/OrientSet.h"

namespace korvel {

// By how much a length may miss a rule when the rules themselves are compared, as a part of the
// area's larger side: sums and differences of decimal fractions are off by a little.
inline constexpr double kRuleSlack = 1e-9;

struct Rectangle {
    Spot low;
    Spot high;

    double from(Axis axis) const { return axis == kX ? low.x : low.y; }
    double to(Axis axis) const { return axis == kX ? high.x : high.y; }
    Extent size() const { return {high.x - low.x, high.y - low.y}; }
};

// What two rectangles share; a side is negative by as much as they are apart along it.
Extent shared(const Rectangle& a, const Rectangle& b);

// Where a die's lower-left corner may lie along an axis.
struct CornerRange {
    double low;
    double high;

    bool isEmpty() const { return high < low; }
};

// Lengths are in the design's unit. Dies and nets are named by their place in the design.
struct Rules {
    // The reach of a net that may be of any length.
    static constexpr double kAnyReach = std::numeric_limits<double>::infinity();

    // Least gaps between a die that is not fixed and the sides of the area.
    struct Edge {
        double left = 0.0;
        double bottom = 0.0;
        double right = 0.0;
        double top = 0.0;
    };
    struct Die {
        std::optional<Spot> at;  // of a fixed die: its lower-left corner, as it lies
        OrientSet orients = OrientSet::all();
        std::optional<Rectangle> within;
        std::optional<double> spacing;  // its own
        unsigned group = 0;             // of dies that the same entries of pairs match
    };
    // What is said of two dies as a pair.
    struct Pair {
        std::optional<double> spacing;
        std::optional<double> weight;
        std::optional<double> reach;
    };
    struct Net {
        double weight = 1.0;
        double reach = kAnyReach;
    };

    double spacing = 0.0;
    Edge edge;
    std::vector<Rectangle> keepouts;
    std::vector<Die> dies;  // by die; empty: none has rules
    // By the groups of two dies, the smaller one first; two dies can be of the same group. Only
    // what is said is there.
    std::map<std::pair<unsigned, unsigned>, Pair> pairs;
    std::vector<Net> nets;  // by net; empty: all have weight 1 and any length

    bool isEmpty() const;

    // The rules of one die; those of no rule if there are none.
    const Die& die(unsigned index) const { return dies.empty() ? kFreeDie : dies[index]; }
    // Null if nothing is said of these two. a != b.
    const Pair* pair(unsigned a, unsigned b) const;
    const Net& net(unsigned index) const { return nets.empty() ? kPlainNet : nets[index]; }
    bool hasWeights() const;

    // The gap that two dies have to keep: the pair's own, else the larger of those that the two
    // have of their own, else the global one. They keep it if they are so far apart along x or
    // along y. Symmetrical; a != b.
    double leastGap(unsigned a, unsigned b) const;
    // No gap has to be larger.
    double largestGap() const;
    // Whether all gaps are the global one.
    bool hasOneGap() const;

    // Where the die's lower-left corner may lie along that axis if the die lies in that
    // orientation: in the area, away from its edge, in its rectangle, where it is fixed. For a
    // fixed die the range is one value, or empty if in that orientation the die would leave the
    // area or its rectangle; the edge does not count for it. A rectangle of just the die's size,
    // or one too small by rounding, leaves one value. Keep-outs and other dies are not regarded,
    // nor whether the orientation is allowed. Orientation: N, E, S or W.
    CornerRange cornerRange(const Design& design, Region region, unsigned index, Axis axis,
                            Orient orient) const;
    // The same along both axes: whether there is a place at all.
    bool hasPlace(const Design& design, Region region, unsigned index, Orient orient) const;
    // Where a die may lie: what its rectangle shares with the area inside the edge, or, if the die
    // is fixed, with the whole area. Where it is fixed is not regarded. A side may be negative.
    Rectangle room(Region region, unsigned index) const;

private:
    static const Die kFreeDie;
    static const Net kPlainNet;
};

}  // namespace korvel
