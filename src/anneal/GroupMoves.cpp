#include "anneal/GroupMoves.h"

#include <algorithm>
#include <utility>

namespace korvel {

void GroupMoves::putBeside(Dies group, unsigned other, SequencePair::Sides isBefore) {
    for (const auto which : SequencePair::kBoth) {
        std::vector<unsigned>& sorted = inOrder[which];
        sortInto(sorted, group, which);
        if (!isBefore[which]) {
            std::reverse(sorted.begin(), sorted.end());
        }
        for (const unsigned die : sorted) {
            layout.editOrders().moveBeside(which, die, other, isBefore[which]);
        }
    }
    shift(group, centre(group), layout.centre(other));
}

void GroupMoves::turn(Dies group, unsigned quarters) {
    for (unsigned quarter = 0; quarter < quarters; ++quarter) {
        turnByAQuarter(group);
    }
}

// What was left of a die is below it then, and what was below is right of it. So the upper order
// becomes the lower one, and the lower one, reversed, the upper one, at the ranks that the group
// has.
void GroupMoves::turnByAQuarter(Dies group) {
    SequencePair& orders = layout.editOrders();
    for (const auto which : SequencePair::kBoth) {
        sortInto(inOrder[which], group, which);
        ranks[which].clear();
        for (const unsigned die : inOrder[which]) {
            ranks[which].push_back(orders.rank(which, die));
        }
    }
    const auto& [upper, lower] = inOrder;
    for (std::size_t place = 0; place < group.size(); ++place) {
        orders.put(SequencePair::Upper, lower[group.size() - 1 - place],
                   ranks[SequencePair::Upper][place]);
        orders.put(SequencePair::Lower, upper[place], ranks[SequencePair::Lower][place]);
    }
    const Spot middle = centre(group);
    for (const unsigned die : group) {
        const Spot from = layout.centre(die);
        layout.turnClockwise(die, 3);
        layout.shiftCentreTo(die, {middle.x - (from.y - middle.y), middle.y + (from.x - middle.x)});
    }
}

void GroupMoves::exchange(Dies a, Dies b) {
    const Spot centreOfA = centre(a);
    const Spot centreOfB = centre(b);
    for (const auto which : SequencePair::kBoth) {
        exchangeInOrder(which, a, b);
    }
    shift(a, centreOfA, centreOfB);
    shift(b, centreOfB, centreOfA);
}

// At the place of the first die of a group stand all dies of the other one, in their own order.
void GroupMoves::exchangeInOrder(SequencePair::Which which, Dies a, Dies b) {
    SequencePair& orders = layout.editOrders();
    before = orders.order(which);
    std::fill(roles.begin(), roles.end(), Role::Bystander);
    for (const unsigned die : a) {
        roles[die] = Role::OfA;
    }
    for (const unsigned die : b) {
        roles[die] = Role::OfB;
    }
    std::array<bool, 3> isPlaced{};
    unsigned rank = 0;
    for (const unsigned die : before) {
        if (roles[die] == Role::Bystander) {
            orders.put(which, die, rank++);
        } else if (!std::exchange(isPlaced[static_cast<unsigned>(roles[die])], true)) {
            std::vector<unsigned>& others = inOrder[which];
            sortInto(others, roles[die] == Role::OfA ? b : a, which);
            for (const unsigned other : others) {
                orders.put(which, other, rank++);
            }
        }
    }
}

void GroupMoves::exchangeDieByDie(Dies a, Dies b) {
    for (std::size_t place = 0; place < a.size(); ++place) {
        const std::array dies{a[place], b[place]};
        const std::array centres{layout.centre(dies[0]), layout.centre(dies[1])};
        const std::array orients{layout.orientation(dies[0]), layout.orientation(dies[1])};
        for (const auto which : SequencePair::kBoth) {
            layout.editOrders().swap(which, dies[0], dies[1]);
        }
        for (const unsigned one : {0U, 1U}) {
            layout.turn(dies[one], orients[1 - one]);
            layout.shiftCentreTo(dies[one], centres[1 - one]);
        }
    }
}

void GroupMoves::sortInto(std::vector<unsigned>& sorted, Dies group,
                          SequencePair::Which which) const {
    const std::vector<unsigned>& rankOf = layout.sequences().rankOfDies(which);
    sorted.assign(group.begin(), group.end());
    std::sort(sorted.begin(), sorted.end(),
              [&rankOf](unsigned a, unsigned b) { return rankOf[a] < rankOf[b]; });
}

void GroupMoves::shift(Dies group, Spot from, Spot to) {
    for (const unsigned die : group) {
        layout.shift(die, {to.x - from.x, to.y - from.y});
    }
}

// Of the box around the centres of its dies.
Spot GroupMoves::centre(Dies group) const {
    Spot low = layout.centre(group.front());
    Spot high = low;
    for (const unsigned die : group) {
        const Spot at = layout.centre(die);
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    return {(low.x + high.x) / 2, (low.y + high.y) / 2};
}

}  // namespace korvel
