// The shortest that nets can become along one axis while bodies keep certain distances: the exact
// optimum of a convex, piecewise linear function of a few positions, and the positions for it.
//
// How: bodies are pushed in groups. At any positions there is, for every set of bodies, an integer
// that says how the length changes when exactly this set moves up together; all sets are looked at,
// the steepest descent is followed to the kink where it ends, and so on until no set gains. For
// functions of this kind (sums of functions of differences, and of the highest and the lowest of
// several positions) that is a certificate: every movement is a nested sum of such pushes, and the
// function's derivative is the sum of theirs. So no other positions are better.
//
// Owns its working memory, to be reused by one thread.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "proof/BundleCost.h"
#include "proof/ProofModel.h"

namespace korvel {

// More bodies than this are not proved: their sets are too many.
inline constexpr unsigned kMaxProofDies = 12;

class AxisOptimum {
public:
    // Begins a new problem. Bodies are numbered from 0; the last one is the ground, which stays at
    // 0. Positions within `nearness` of a kink count as at it.
    void begin(unsigned bodyNum, double nearness);

    // The cost has to outlive the problem.
    void addBundle(unsigned a, unsigned b, const BundleCost& cost);
    // Body b stays at least `gap` above body a.
    void addGap(unsigned a, unsigned b, double gap);
    // A net over several bodies: begin it, then its parts.
    void beginWideNet();
    void addPart(unsigned body, const PinRange& range);

    // Improves positions (by body, the ground left out) to the best ones and returns a length that
    // no positions can go below. Gaps that cannot be kept all at once cost more than they could
    // ever save; then the result says nothing, so see to it that they can.
    double minimise(double* positions);

private:
    using Set = std::uint32_t;
    struct Link {
        unsigned a, b;
        const BundleCost* cost;
        // Kinks before and up to the displacement that it has now, those nearby being at it.
        std::size_t below, upTo;
    };
    struct Gap {
        unsigned a, b;
        double least;
    };
    struct Part {
        unsigned body;
        PinRange range;
    };
    // A kink that is not a link's: of a gap or of a wide net.
    struct Stop {
        double distance;
        int jumps;  // of it and of all stops before it
    };
    // Kinks that a push of some bodies meets, numbered by distance: those of a link, or the stops.
    // The end of the push is still looked for between two of them.
    struct Sweep {
        const Link* link;
        const Stop* stops;
        double here;
        bool grows;
        std::size_t from, to;
        std::size_t passed = 0;

        double distance(std::size_t index) const;
        int gain(std::size_t passedNow) const;
        std::size_t passedAt(double distanceNow) const;
    };

    double displacement(unsigned a, unsigned b) const { return at[b] - at[a]; }
    void descend();
    void locate();
    void locateWideNets();
    void addPair(unsigned a, unsigned b, int slopeLeft, int slopeRight);
    void addHighest(Set bodies);
    void addLowest(Set bodies);
    void sumOverSets();
    Set steepest() const;
    void push(Set up, int slope);
    void gather(Set up);
    void gatherGaps(Set up);
    void gatherWideNets(Set up);
    void settleStops();
    double distanceToMinimum(int slope);
    int slopeAfter(int slope, double distance);
    double length() const;

    unsigned bodyNum = 0;
    double nearness = 0.0;
    double blur = 0.0;  // what counts as near at present
    int netNum = 0;
    int heavy = 0;  // a slope that outweighs all nets
    std::vector<Link> links;
    std::vector<Gap> gaps;
    std::vector<Part> parts;
    std::vector<std::size_t> netBegins;
    std::array<double, kMaxProofDies + 1> at{};  // by body

    // How the length changes when a set moves up: the sum of `single` over its bodies and of
    // `joint` over its pairs, plus 1 for each of `touched` that it touches, less 1 for each of
    // `held` that it holds entirely.
    std::array<int, kMaxProofDies + 1> single{};
    std::array<std::array<int, kMaxProofDies + 1>, kMaxProofDies + 1> joint{};
    std::vector<Set> touched;
    std::vector<Set> held;
    std::vector<int> bySet;
    std::vector<int> ofNewest;

    std::vector<Sweep> sweeps;
    std::vector<Stop> stops;
};

}  // namespace korvel
