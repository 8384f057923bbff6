#include "anneal/Moves.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

// Shares of the moves; what is left exchanges two dies.
constexpr double kTurns = 0.2;
constexpr double kOneOrder = 0.1;
constexpr double kBeside = 0.4;
constexpr double kGroups = 0.15;
constexpr double kGuided = 0.5;
// Of the changes of groups.
constexpr double kGroupsAlike = 0.4;
constexpr double kGroupsTurn = 0.2;
// Of the dies that are put beside another one.
constexpr double kTogether = 0.3;
constexpr unsigned kLongestChain = 4;
// Of the exchanges of two dies.
constexpr double kMatching = 0.3;

// How far from its wish a guided die goes at most, in parts of the region's sides.
constexpr double kBlur = 0.15;

template <typename T>
const T& oneOf(const std::vector<T>& all, RandomStream& random) {
    return all[random.below(static_cast<unsigned>(all.size()))];
}

}  // namespace

Moves::Moves(SlidLayout& layout, const NetModel& nets, Region region)
    : layout(layout), region(region), groups(nets), partners(layout.dieNum()) {
    for (const auto& [a, b] : nets.pairs()) {
        if (b != nets.ground()) {
            partners[a].push_back(b);
            partners[b].push_back(a);
        }
    }
}

void Moves::change(RandomStream& random) {
    if (random.fraction() < kGroups && !groups.groups().empty()) {
        changeGroup(random);
        return;
    }
    const unsigned die = random.below(layout.dieNum());
    const double kind = random.fraction();
    if (kind < kTurns || layout.dieNum() == 1) {
        turnSomehow(die, random);
        layout.release(die);
        return;
    }
    unsigned other = random.below(layout.dieNum() - 1);
    other += other >= die ? 1 : 0;
    if (kind < kTurns + kOneOrder) {
        exchangeInOneOrder(die, other, random);
        return;
    }
    if (random.fraction() < kGuided) {
        other = nearWish(die, random);
    }
    if (kind < kTurns + kOneOrder + kBeside) {
        if (random.fraction() < kTogether && !partners[die].empty()) {
            putGroupBeside(die, other, random);
        } else {
            putBeside(die, other, random);
        }
    } else {
        exchangeAndTurn(die, other, random);
    }
}

void Moves::turnSomehow(unsigned die, RandomStream& random) {
    const unsigned now = orientIndex(layout.orientation(die));
    layout.turn(die, static_cast<Orient>((now + 1 + random.below(3)) % kUnmirroredOrients));
}

void Moves::turnByAQuarter(unsigned die, RandomStream& random) {
    const unsigned turns = random.below(2) == 0 ? 1 : 3;
    layout.turn(die, static_cast<Orient>((orientIndex(layout.orientation(die)) + turns) %
                                         kUnmirroredOrients));
}

void Moves::exchange(unsigned a, unsigned b) {
    layout.editOrders().swap(SequencePair::Upper, a, b);
    layout.editOrders().swap(SequencePair::Lower, a, b);
    layout.release(a);
    layout.release(b);
}

// Either long sides follow those of the other's place, where the die is most likely to fit, or the
// dies turn by chance.
void Moves::exchangeAndTurn(unsigned a, unsigned b, RandomStream& random) {
    const bool matches = random.fraction() < kMatching;
    const bool differ = layout.isUpright(a) != layout.isUpright(b);
    for (const unsigned die : {a, b}) {
        if (matches && differ) {
            turnByAQuarter(die, random);
        } else if (!matches && random.below(4) == 0) {
            turnSomehow(die, random);
        }
    }
    exchange(a, b);
}

// Half of the time with the next one in that order, which changes one relation only.
void Moves::exchangeInOneOrder(unsigned die, unsigned other, RandomStream& random) {
    const auto which = static_cast<SequencePair::Which>(random.below(2));
    SequencePair& orders = layout.editOrders();
    if (random.below(2) == 0) {
        const unsigned rank = orders.rank(which, die);
        other = orders.order(which)[rank + 1 < layout.dieNum() ? rank + 1 : rank - 1];
    }
    orders.swap(which, die, other);
    layout.release(die);
    layout.release(other);
}

void Moves::putBeside(unsigned die, unsigned other, RandomStream& random) {
    if (random.below(4) == 0) {
        turnSomehow(die, random);
    }
    insertBeside(die, other, {random.below(2) == 0, random.below(2) == 0});
    layout.release(die);
}

void Moves::insertBeside(unsigned die, unsigned other, std::array<bool, 2> isBefore) {
    SequencePair& orders = layout.editOrders();
    for (const auto which : {SequencePair::Upper, SequencePair::Lower}) {
        const unsigned gap = orders.rank(which, die) < orders.rank(which, other) ? 1 : 0;
        orders.moveTo(which, die, orders.rank(which, other) - gap + (isBefore[which] ? 0 : 1));
    }
}

// Dies that many nets join hold one another back: none can leave alone. So a chain of them goes
// together, each to the side of the one before that it was on, at the same distance.
void Moves::putGroupBeside(unsigned die, unsigned other, RandomStream& random) {
    const Spot from = layout.centre(die);
    const Spot to = layout.centre(other);
    const Spot step{to.x - from.x, to.y - from.y};
    insertBeside(die, other, {random.below(2) == 0, random.below(2) == 0});
    layout.carry(die, step);
    std::array<unsigned, kLongestChain> chain{die};
    for (unsigned last = 0; last + 1 < kLongestChain && (last == 0 || random.below(2) == 0);
         ++last) {
        const auto& next = partners[chain[last]];
        if (next.empty()) {
            return;
        }
        const unsigned partner = next[random.below(static_cast<unsigned>(next.size()))];
        if (partner == other || std::find(chain.begin(), chain.begin() + last + 1, partner) !=
                                    chain.begin() + last + 1) {
            return;
        }
        const SequencePair& before = layout.keptSequences();
        std::array<bool, 2> isBefore{};
        for (const auto which : {SequencePair::Upper, SequencePair::Lower}) {
            isBefore[which] = before.rank(which, partner) < before.rank(which, chain[last]);
        }
        insertBeside(partner, chain[last], isBefore);
        layout.carry(partner, step);
        chain[last + 1] = partner;
    }
}

// --- Groups ----------------------------------------------------------------------------------

void Moves::changeGroup(RandomStream& random) {
    const double kind = random.fraction();
    if (kind < kGroupsAlike && !groups.alike().empty()) {
        const auto& alike = oneOf(groups.alike(), random);
        const DieGroups::Group& a = oneOf(alike, random);
        const DieGroups::Group& b = oneOf(alike, random);
        if (&a != &b) exchangePlaces(a, b); else turn(a, 2);
        return;
    }
    const auto& group = oneOf(groups.groups(), random);
    if (kind < kGroupsAlike + kGroupsTurn) {
        turn(group, 1 + random.below(3));
        return;
    }
    unsigned other = random.fraction() < kGuided
                         ? nearWish(oneOf(group, random), random)
                         : random.below(layout.dieNum());
    if (std::find(group.begin(), group.end(), other) == group.end()) {
        putBeside(group, other, random);
    } else {
        turn(group, 1 + random.below(3));
    }
}

Spot Moves::centre(const DieGroups::Group& group) const {
    Spot low{region.width, region.height};
    Spot high{0.0, 0.0};
    for (const unsigned die : group) {
        const Spot at = layout.centre(die);
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    return {(low.x + high.x) / 2, (low.y + high.y) / 2};
}

void Moves::moveCentre(unsigned die, Spot from, Spot to) {
    layout.carry(die, {to.x - from.x, to.y - from.y});
}

void Moves::putBeside(const DieGroups::Group& group, unsigned other, RandomStream& random) {
    const Spot from = centre(group);
    const Spot to = layout.centre(other);
    for (const auto which : {SequencePair::Upper, SequencePair::Lower}) {
        SequencePair& orders = layout.editOrders();
        std::vector<unsigned>& inOrder = members[which];
        inOrder.assign(group.begin(), group.end());
        const bool isBefore = random.below(2) == 0;
        std::sort(inOrder.begin(), inOrder.end(), [&](unsigned a, unsigned b) {
            return (orders.rank(which, a) < orders.rank(which, b)) == isBefore;
        });
        for (const unsigned die : inOrder) {
            const unsigned gap = orders.rank(which, die) < orders.rank(which, other) ? 1 : 0;
            orders.moveTo(which, die, orders.rank(which, other) - gap + (isBefore ? 0 : 1));
        }
    }
    for (const unsigned die : group) {
        moveCentre(die, from, to);
    }
}

void Moves::turn(const DieGroups::Group& group, unsigned quarters) {
    for (unsigned quarter = 0; quarter < quarters; ++quarter) {
        turnByAQuarter(group);
    }
}

// To the left: what was left is below, what was below is right.
void Moves::turnByAQuarter(const DieGroups::Group& group) {
    SequencePair& orders = layout.editOrders();
    for (const auto which : {SequencePair::Upper, SequencePair::Lower}) {
        slots[which].clear();
        for (const unsigned die : group) {
            slots[which].push_back(orders.rank(which, die));
        }
        std::sort(slots[which].begin(), slots[which].end());
        members[which].clear();
        for (const unsigned slot : slots[which]) {
            members[which].push_back(orders.order(which)[slot]);
        }
    }
    for (std::size_t place = 0; place < group.size(); ++place) {
        orders.put(SequencePair::Upper, members[SequencePair::Lower][group.size() - 1 - place],
                   slots[SequencePair::Upper][place]);
        orders.put(SequencePair::Lower, members[SequencePair::Upper][place],
                   slots[SequencePair::Lower][place]);
    }
    const Spot middle = centre(group);
    for (const unsigned die : group) {
        const Spot from = layout.centre(die);
        layout.turn(die, static_cast<Orient>((orientIndex(layout.orientation(die)) + 3) %
                                             kUnmirroredOrients));
        moveCentre(die, layout.centre(die),
                   {middle.x - (from.y - middle.y), middle.y + (from.x - middle.x)});
    }
}

void Moves::exchangePlaces(const DieGroups::Group& a, const DieGroups::Group& b) {
    for (std::size_t place = 0; place < a.size(); ++place) {
        const std::array dies{a[place], b[place]};
        const std::array centres{layout.centre(dies[0]), layout.centre(dies[1])};
        const std::array orients{layout.orientation(dies[0]), layout.orientation(dies[1])};
        layout.editOrders().swap(SequencePair::Upper, dies[0], dies[1]);
        layout.editOrders().swap(SequencePair::Lower, dies[0], dies[1]);
        for (const unsigned one : {0U, 1U}) {
            layout.turn(dies[one], orients[1 - one]);
            moveCentre(dies[one], layout.centre(dies[one]), centres[1 - one]);
        }
    }
}

// --- Wishes ----------------------------------------------------------------------------------

// The die whose centre is next to where the nets want the die, give or take.
unsigned Moves::nearWish(unsigned die, RandomStream& random) const {
    const Spot wish = layout.wish(die);
    const double x = wish.x + (2.0 * random.fraction() - 1.0) * kBlur * region.width;
    const double y = wish.y + (2.0 * random.fraction() - 1.0) * kBlur * region.height;
    unsigned nearest = die == 0 ? 1 : 0;
    double shortest = std::numeric_limits<double>::infinity();
    for (unsigned other = 0; other < layout.dieNum(); ++other) {
        const Spot centre = layout.centre(other);
        const double distance = std::abs(centre.x - x) + std::abs(centre.y - y);
        if (other != die && distance < shortest) {
            shortest = distance;
            nearest = other;
        }
    }
    return nearest;
}

}  // namespace korvel
