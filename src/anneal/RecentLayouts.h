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
        const SequencePair& orders = layout.sequences();
        std::uint64_t hash = 0;
        for (const unsigned die : orders.order(SequencePair::Upper)) {
            for (const unsigned word : {die, orders.rank(SequencePair::Lower, die),
                                        orientIndex(layout.orientation(die))}) {
                // 2^64 by the golden ratio, as in Fibonacci hashing.
                hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
                hash ^= hash >> 29;
            }
        }
        return std::exchange(slots[hash % slots.size()], hash) != hash;
    }

private:
    std::array<std::uint64_t, 4096> slots{};
};

}  // namespace korvel
