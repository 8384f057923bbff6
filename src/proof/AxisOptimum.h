// The shortest that nets can become along one axis while bodies keep certain distances: the exact
// optimum of a convex, piecewise linear function of a few positions, and the positions for it.
//
// How: bodies are pushed in groups. At any positions there is, for every set of bodies, an integer
// that says how the length changes when exactly this set moves up together; all sets are looked at,
// the steepest descent is followed to the breakpoint where it ends, and so on until no set gains.
// For functions of this kind (sums of functions of differences, and of the highest and the lowest
// of several positions) that is a certificate: every movement is a nested sum of such pushes, and
// the function's derivative is the sum of theirs. So no other positions are better.
//
// Owns its working memory, to be reused by one thread.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "nets/NetModel.h"

namespace korvel {

// Designs of more dies than this are not proved: the sets of their bodies are too many.
inline constexpr unsigned kMaxProofDies = 12;

class AxisOptimum {
public:
    // Begins a new problem. Bodies are numbered from 0; the last one is the ground, which stays at
    // 0. Positions within `nearness` of a breakpoint count as at it.
    void begin(unsigned bodyNum, double nearness);

    // A cost of how far body `to` is above body `from`. It has to outlive the problem, and its
    // slopes are whole numbers that grow from minus to plus the weight of the nets.
    void addBundle(unsigned from, unsigned to, const PiecewiseLinear& cost);
    // Body `to` stays at least `least` above body `from`.
    void addGap(unsigned from, unsigned to, double least);
    // A net over several bodies, of a whole weight: begin it, then add its pins on each.
    void beginWideNet(double netWeight);
    void addPins(unsigned body, const PinRange& range);

    // Improves positions (by body, the ground left out) to the best ones and returns a length that
    // no positions can go below. Gaps that cannot be kept all at once cost more than they could
    // ever save; then the result says nothing, so see to it that they can.
    double minimise(double* positions);

private:
    using Set = std::uint32_t;
    struct Bundle {
        unsigned from, to;
        const PiecewiseLinear* cost;
        // How many breakpoints are below the distance that it has now, and how many up to it, those
        // nearby being at it.
        std::size_t below, upTo;
    };
    struct Gap {
        unsigned from, to;
        double least;
    };
    struct Pins {
        unsigned body;
        PinRange range;
    };
    struct WideNet {
        std::size_t begin, end;  // of pins
        int weight;
    };
    // Where the slope of a push grows because of a gap or a wide net.
    struct Jump {
        double distance;
        int by;  // the slope at this one and at all before it
    };
    // Breakpoints that a push of some bodies meets, numbered by distance: those of a bundle, or the
    // jumps. The end of the push is still looked for between two of them.
    struct Sweep {
        const Bundle* bundle;
        const Jump* jumps;
        double here;
        bool grows;
        std::size_t from, to;
        std::size_t passed = 0;

        double distance(std::size_t index) const;
        int rise(std::size_t passedNow) const;
        std::size_t passedAt(double distanceNow) const;
    };

    double distance(unsigned from, unsigned to) const { return at[to] - at[from]; }
    PinRange reachOf(const WideNet& net) const;
    void descend();
    void locate();
    void locateWideNets();
    void addPair(unsigned from, unsigned to, int slopeLeft, int slopeRight);
    void addHighest(Set bodies, int netWeight);
    void addLowest(Set bodies, int netWeight);
    void sumOverSets();
    Set steepest() const;
    void push(Set up, int slope);
    void gather(Set up);
    void gatherGaps(Set up);
    void gatherWideNets(Set up);
    void settleJumps();
    double distanceToMinimum(int slope);
    int slopeAfter(int slope, double distanceNow);
    double length() const;

    unsigned bodyNum = 0;
    double nearness = 0.0;
    double blur = 0.0;  // what counts as near at present
    int weight = 0;     // of all nets
    int heavy = 0;      // a slope that outweighs all nets
    std::vector<Bundle> bundles;
    std::vector<Gap> gaps;
    std::vector<Pins> pins;
    std::vector<WideNet> wideNets;
    std::array<double, kMaxProofDies + 1> at{};  // by body

    // How the length changes when a set moves up: the sum of `single` over its bodies and of
    // `joint` over its pairs, plus the weight of each of `touched` that it has a body of, less the
    // weight of each of `held` that it has all bodies of.
    std::array<int, kMaxProofDies + 1> single{};
    std::array<std::array<int, kMaxProofDies + 1>, kMaxProofDies + 1> joint{};
    struct Weighted {
        Set bodies;
        int weight;
    };
    std::vector<Weighted> touched;
    std::vector<Weighted> held;
    std::vector<int> bySet;
    std::vector<int> ofNewest;

    std::vector<Sweep> sweeps;
    std::vector<Jump> jumps;
};

}  // namespace korvel
