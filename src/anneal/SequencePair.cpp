#include "anneal/SequencePair.h"

#include <numeric>
#include <utility>

namespace korvel {

SequencePair::SequencePair(unsigned dieNum) {
    for (const Which which : kBoth) {
        orders[which].resize(dieNum);
        std::iota(orders[which].begin(), orders[which].end(), 0U);
        ranks[which] = orders[which];
    }
}

void SequencePair::shuffle(RandomStream& random) {
    for (const Which which : kBoth) {
        for (auto left = static_cast<unsigned>(orders[which].size()); left > 1; --left) {
            swap(which, orders[which][left - 1], orders[which][random.below(left)]);
        }
    }
}

void SequencePair::swap(Which which, unsigned a, unsigned b) {
    std::swap(ranks[which][a], ranks[which][b]);
    orders[which][ranks[which][a]] = a;
    orders[which][ranks[which][b]] = b;
}

void SequencePair::moveTo(Which which, unsigned die, unsigned rank) {
    auto& order = orders[which];
    auto& rankOf = ranks[which];
    unsigned at = rankOf[die];
    for (; at < rank; ++at) {
        order[at] = order[at + 1];
        rankOf[order[at]] = at;
    }
    for (; at > rank; --at) {
        order[at] = order[at - 1];
        rankOf[order[at]] = at;
    }
    order[at] = die;
    rankOf[die] = at;
}

void SequencePair::moveBeside(Which which, unsigned die, unsigned other, bool isBefore) {
    const unsigned gap = ranks[which][die] < ranks[which][other] ? 1 : 0;
    moveTo(which, die, ranks[which][other] - gap + (isBefore ? 0 : 1));
}

Relations SequencePair::relations() const {
    const auto dieNum = static_cast<unsigned>(orders[Upper].size());
    Relations relations(dieNum);
    for (unsigned a = 0; a < dieNum; ++a) {
        for (unsigned b = a + 1; b < dieNum; ++b) {
            const auto [firstAbove, firstBelow] = sidesOf(a, b);
            relations.set(a, b,
                          firstAbove ? (firstBelow ? Topology::L : Topology::A)
                                     : (firstBelow ? Topology::B : Topology::R));
        }
    }
    return relations;
}

}  // namespace korvel
