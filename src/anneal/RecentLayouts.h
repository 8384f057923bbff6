// The layouts seen lately, by hash: annealing comes back to the same ones again and again. A layout
// that shares its slot or, most unlikely, its hash with another one is taken for new or for known
// wrongly, which costs or saves an exact program, no more.
// Owned and used by one thread.
#pragma once

#include <array>
#include <cstdint>
#include <utility>

#include "anneal/Layout.h"

namespace korvel {

class RecentLayouts {
public:
    // Whether its orders and orientations were not noted lately; they are now.
    bool note(const Layout& layout) {
        const std::uint64_t hash = hashOf(layout);
        return std::exchange(slots[hash % slots.size()], hash) != hash;
    }

private:
    static std::uint64_t hashOf(const Layout& layout) {
        std::uint64_t hash = 0;
        for (unsigned rank = 0; rank < layout.dieNum(); ++rank) {
            const unsigned die = layout.sequences().order(SequencePair::Upper)[rank];
            for (const unsigned word : {die, layout.sequences().rank(SequencePair::Lower, die),
                                        orientIndex(layout.orientation(die))}) {
                // 2^64 by the golden ratio, as in Fibonacci hashing; the shift brings high bits
                // down.
                hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
                hash ^= hash >> 29;
            }
        }
        return hash;
    }

    std::array<std::uint64_t, 4096> slots{};
};

}  // namespace korvel
