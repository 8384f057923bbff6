// The sequence pair (H. Murata, K. Fujiyoshi, S. Nakatake, Y. Kajitani, "VLSI module placement
// based on rectangle-packing by the sequence-pair", IEEE TCAD 15(12), 1996): two orders of all
// dies, which together say how each pair of dies lies. A die that comes first in both is left of
// the other, one that comes first in the upper order only is above it. Every legal placement has
// such a pair of orders, and the relations of every pair of orders fit together. A value.
#pragma once

#include <array>
#include <vector>

#include "anneal/RandomStream.h"
#include "design/Placement.h"

namespace korvel {

class SequencePair {
public:
    enum Which : unsigned { Upper, Lower };
    static constexpr std::array kBoth{Upper, Lower};
    // By order, whether a die comes before another one.
    using Sides = std::array<bool, 2>;

    explicit SequencePair(unsigned dieNum);

    void shuffle(RandomStream& random);
    // Exchanges two dies in one order.
    void swap(Which which, unsigned a, unsigned b);
    // Takes a die out of one order and puts it at `rank`.
    void moveTo(Which which, unsigned die, unsigned rank);
    // The same, to just before another die or just after it; in one order or both.
    void moveBeside(Which which, unsigned die, unsigned other, bool isBefore);
    void moveBeside(unsigned die, unsigned other, Sides isBefore) {
        moveBeside(Upper, die, other, isBefore[Upper]);
        moveBeside(Lower, die, other, isBefore[Lower]);
    }
    // Writes a die to a rank. Whoever does so puts the dies that this displaces elsewhere.
    void put(Which which, unsigned die, unsigned rank) {
        orders[which][rank] = die;
        ranks[which][die] = rank;
    }

    const std::vector<unsigned>& order(Which which) const { return orders[which]; }
    unsigned rank(Which which, unsigned die) const { return ranks[which][die]; }
    const std::vector<unsigned>& rankOfDies(Which which) const { return ranks[which]; }
    Sides sidesOf(unsigned die, unsigned other) const {
        return {ranks[Upper][die] < ranks[Upper][other], ranks[Lower][die] < ranks[Lower][other]};
    }

    Relations relations() const;

private:
    std::array<std::vector<unsigned>, 2> orders;  // dies
    std::array<std::vector<unsigned>, 2> ranks;   // by die
};

}  // namespace korvel
