// A part of all placements: some dies have their turn, and of some pairs it is known, at least
// partly, how they lie to each other. A plain value, handed from thread to thread.
#pragma once

#include <array>
#include <cstdint>

#include "base/Axis.h"
#include "proof/AxisOptimum.h"

namespace korvel {

// Where a die may lie relative to another: a bit per Topology.
using Whereabouts = std::uint8_t;
inline constexpr Whereabouts kAnywhere = 0b1111;

constexpr Whereabouts bitOf(Topology where) {
    return static_cast<Whereabouts>(1U << static_cast<unsigned>(where));
}

constexpr bool isDecided(Whereabouts where) {
    return where != 0 && (where & (where - 1)) == 0;
}

// Of dies low < high.
constexpr unsigned pairIndex(unsigned low, unsigned high) {
    return high * (high - 1) / 2 + low;
}

struct ProofNode {
    static constexpr std::uint8_t kOpen = kUnmirroredOrients;  // a turn still to be chosen

    // No placement of this part is shorter.
    double bound = 0.0;
    // Which part of the whole tree this is, as far as the number of branches says.
    double share = 1.0;
    // Per axis: the length of the nets that have been worked out, and the positions of the turned
    // dies for which it is reached.
    std::array<double, kAxes> length{};
    std::array<std::array<double, kMaxProofDies>, kAxes> at{};
    std::array<std::uint8_t, kMaxProofDies> turn{};
    // By pairIndex: where the lower die may lie to the higher one. What has one bit left is kept
    // to.
    std::array<Whereabouts, kMaxProofDies*(kMaxProofDies - 1) / 2> where{};
    // By pairIndex: whether the pair's nets are part of `length`.
    std::array<bool, kMaxProofDies*(kMaxProofDies - 1) / 2> counted{};

    bool isTurned(unsigned die) const { return turn[die] != kOpen; }
};

}  // namespace korvel
