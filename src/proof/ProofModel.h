// What a proof knows of a design and its region beforehand: for every pair of dies, and for every
// die and the ground, the least that the nets between them can cost.
// Filled once; any thread may read.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "base/Tolerances.h"
#include "nets/DieLimits.h"
#include "nets/NetModel.h"

namespace korvel {

class ProofModel {
public:
    // The nets are those of the design and must outlive the model; the design need not.
    ProofModel(const Design& design, const NetModel& nets, Region region);

    unsigned dieNum() const { return model.dieNum(); }
    // The body after the dies: it lies at the origin and bears all terminals.
    unsigned ground() const { return model.ground(); }
    const NetModel& nets() const { return model; }
    const PiecewiseLinear& cost(std::size_t bundle, Axis axis, unsigned turnA,
                                unsigned turnB) const {
        return model.cost(bundle, axis, orientOf(turnA), orientOf(turnB));
    }
    // The number of the bundle between two bodies; nothing if there is none.
    std::optional<std::size_t> bundleOf(unsigned a, unsigned b) const;

    // Generous: a placement that the exact coordinates accept must not be ruled out here.
    const DieLimits& limits() const { return dieLimits; }
    DieLimits::Range cornerRange(unsigned die, Axis axis, unsigned turn) const {
        return dieLimits.cornerRange(die, axis, orientOf(turn));
    }
    double leastDistance(unsigned first, unsigned second, Axis axis, unsigned turnOfFirst) const {
        return dieLimits.leastDistance(first, second, axis, orientOf(turnOfFirst));
    }
    // Positions that differ by no more count as the same.
    double nearness() const { return kNearPosition * dieLimits.longerSide(); }
    bool hasTerminalNets() const { return terminalNets; }

    // The least that all nets can cost, each bundle as if there were no others.
    double leastLength() const;

    // The least that the bundle between dies a < b can cost, by their turns and where a lies
    // relative to b, both inside the region; infinity if they do not fit like this.
    double pairLeast(unsigned a, unsigned b, unsigned turnA, unsigned turnB, unsigned where) const {
        return relatedLeasts[a * dieNum() + b][turnA][turnB][where];
    }
    // The least of the bundle between two dies in any relation, by the turn of the first; the
    // second one's is given, or may be any if it is kUnmirroredOrients.
    const std::array<double, kUnmirroredOrients>& pairLeasts(unsigned die, unsigned other,
                                                             unsigned turnOther) const {
        return anyRelationLeasts[die * dieNum() + other][turnOther];
    }
    // The least that a die's nets to the ground can cost, by its turn, inside the region.
    double groundLeast(unsigned die, unsigned turn) const { return groundLeasts[die][turn]; }

private:
    using ByTurn = std::array<double, kUnmirroredOrients>;
    using ByTurnsAndWhere =
        std::array<std::array<std::array<double, kTopologyNum>, kUnmirroredOrients>,
                   kUnmirroredOrients>;

    void settlePairs();
    void settleAnyRelation(unsigned a, unsigned b);
    void settleGround();
    double leastAt(unsigned a, unsigned b, unsigned turnA, unsigned turnB, Topology where) const;

    const NetModel& model;
    DieLimits dieLimits;
    std::vector<int> bundleIndex;  // by two bodies; -1: none
    std::vector<ByTurnsAndWhere> relatedLeasts;
    std::vector<std::array<ByTurn, kUnmirroredOrients + 1>> anyRelationLeasts;
    std::vector<ByTurn> groundLeasts;
    bool terminalNets;
};

}  // namespace korvel
