// A design and its region, prepared for bounding: nets gathered by the bodies that they join, their
// costs as tables per axis and orientation, and the least that every pair of dies can cost.
// Filled once; any thread may read. Refers to nothing of the design that it was made from.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "design/Design.h"
#include "proof/BundleCost.h"

namespace korvel {

inline constexpr unsigned kAxisNum = 2;  // x, y
inline constexpr unsigned kTurns = kUnmirroredOrients;
inline constexpr unsigned kRelations = static_cast<unsigned>(Topology::LAST);

// Dies that stick out of the region by up to this part of its side still count as inside: sums of
// decimal sizes are not exact. As generous as the exact coordinates are, or a placement that they
// accept might be ruled out here.
inline constexpr double kFit = 1e-9;

// What counts as the same position, in parts of the region: far more than rounding errors, far less
// than what matters to a length.
inline constexpr double kNearness = 1e-11;

// Along y a die looks as it does along x after one more quarter turn clockwise. So all tables are
// made for x only and looked up with the turn that an axis sees. (The ground, which bears the
// terminals and never turns, has its x in turn 0 and its y in turn 1 to fit in.)
constexpr unsigned turnAlong(unsigned axis, unsigned turn) {
    return (turn + axis) % kTurns;
}

class ProofModel {
public:
    // All nets between the same two bodies. Body b may be the ground, body a may not.
    struct Bundle {
        unsigned a, b;
        std::array<std::array<BundleCost, kTurns>, kTurns> costs;  // by the turn that x sees
        int netNum;

        const BundleCost& along(unsigned axis, unsigned turnA, unsigned turnB) const {
            return costs[turnAlong(axis, turnA)][turnAlong(axis, turnB)];
        }
    };
    // A net that joins three bodies or more.
    struct WideNet {
        struct Part {
            unsigned body;
            std::array<PinRange, kTurns> ranges;  // by the turn that x sees
        };
        std::vector<Part> parts;
    };

    ProofModel(const Design& design, Region region);

    unsigned getDieNum() const { return dieNum; }
    // The body after the dies: it lies at the origin and bears all terminals.
    unsigned ground() const { return dieNum; }
    // The region's side, with the allowance for rounded sizes.
    double side(unsigned axis) const {
        return (axis == 0 ? region.width : region.height) * (1.0 + kFit);
    }
    double extent(unsigned die, unsigned axis, unsigned turn) const {
        return extents[die][turnAlong(axis, turn) % 2];
    }
    bool isSquare(unsigned die) const { return extents[die][0] == extents[die][1]; }
    // How far a die's lower end can lie from 0; negative if the die does not fit.
    double room(unsigned die, unsigned axis, unsigned turn) const {
        return side(axis) - extent(die, axis, turn);
    }

    const std::vector<Bundle>& getBundles() const { return bundles; }
    const std::vector<WideNet>& getWideNets() const { return wideNets; }
    const Bundle* bundleOf(unsigned a, unsigned b) const;
    // Of nets on one body, which no placement changes.
    double getFixedLength() const { return fixedLength; }
    int getNetNum() const { return netNum; }
    bool hasTerminalNets() const { return terminalNets; }

    // The least that all nets can cost, each bundle as if there were no others.
    double leastLength() const;

    // The least that the bundle between dies a < b can cost, by their turns and where a lies
    // relative to b, both inside the region; infinity if they do not fit like this.
    double pairLeast(unsigned a, unsigned b, unsigned turnA, unsigned turnB, unsigned where) const {
        return relatedLeasts[a * dieNum + b][turnA][turnB][where];
    }
    // The least of the bundle between two dies in any relation, by the turn of the first; the
    // second one's is given, or may be any if it is kTurns.
    const std::array<double, kTurns>& pairLeasts(unsigned die, unsigned other,
                                                 unsigned turnOther) const {
        return anyRelationLeasts[die * dieNum + other][turnOther];
    }
    // The least that a die's nets to the ground can cost, by its turn, inside the region.
    double groundLeast(unsigned die, unsigned turn) const { return groundLeasts[die][turn]; }

private:
    using ByTurnsAndWhere = std::array<std::array<std::array<double, kRelations>, kTurns>, kTurns>;

    void addNet(const Design& design, const Design::Net& net);
    void addToBundle(const WideNet& net);
    Bundle& bundleFor(unsigned a, unsigned b);
    void settlePairs();
    void settleAnyRelation(unsigned a, unsigned b);
    void settleGround();
    double leastAt(unsigned a, unsigned b, unsigned turnA, unsigned turnB, unsigned where) const;

    unsigned dieNum;
    Region region;
    std::vector<std::array<double, 2>> extents;
    std::vector<Bundle> bundles;
    std::vector<int> bundleIndex;  // by two bodies; -1: none
    std::vector<WideNet> wideNets;
    std::vector<ByTurnsAndWhere> relatedLeasts;
    std::vector<std::array<std::array<double, kTurns>, kTurns + 1>> anyRelationLeasts;
    std::vector<std::array<double, kTurns>> groundLeasts;
    double fixedLength = 0.0;
    int netNum = 0;
    bool terminalNets = false;
};

}  // namespace korvel
