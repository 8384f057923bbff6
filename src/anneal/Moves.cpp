#include "anneal/Moves.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

enum Kind : unsigned {
    kTurn,
    kInOneOrder,
    kBesideAny,
    kBesideWish,
    kChainBesideAny,
    kChainBesideWish,
    kExchangeAny,
    kExchangeAtWish,
    kTurnGroup,
    kGroupBeside,
    kExchangeGroup,
    kTakeOverGroup,
    kKindNum
};

constexpr unsigned kLongestChain = 4;
// Of the exchanges of two dies.
constexpr double kMatching = 0.3;
// Of the groups that are exchanged, those for another group instead of a die.
constexpr double kGroupForGroup = 0.3;

// How far from its wish a guided die goes at most, in parts of the region's sides.
constexpr double kBlur = 0.15;

template <typename T>
const T& oneOf(const std::vector<T>& all, RandomStream& random) {
    return all[random.below(static_cast<unsigned>(all.size()))];
}

std::array<bool, 2> anySide(RandomStream& random) {
    const bool isBeforeInUpper = random.below(2) == 0;
    return {isBeforeInUpper, random.below(2) == 0};
}

bool contains(std::span<const unsigned> dies, unsigned die) {
    return std::find(dies.begin(), dies.end(), die) != dies.end();
}

}  // namespace

Moves::Moves(SlidLayout& layout, const NetModel& nets, const DieGroups& groups, Region region)
    : layout(layout),
      region(region),
      partners(layout.dieNum()),
      groups(groups),
      groupMoves(layout),
      shares(usualShares()) {
    for (const auto& [a, b] : nets.pairs()) {
        if (b != nets.ground()) {
            partners[a].push_back(b);
            partners[b].push_back(a);
        }
    }
}

std::vector<double> Moves::usualShares() const {
    std::vector<double> usual(kKindNum, 0.0);
    usual[kTurn] = 0.17;
    if (layout.dieNum() > 1) {
        usual[kInOneOrder] = 0.09;
        usual[kBesideAny] = usual[kBesideWish] = 0.12;
        usual[kChainBesideAny] = usual[kChainBesideWish] = 0.05;
        usual[kExchangeAny] = usual[kExchangeAtWish] = 0.13;
    }
    if (!groups.groups().empty()) {
        usual[kTurnGroup] = usual[kGroupBeside] = usual[kExchangeGroup] = 0.03;
    }
    if (!groups.alike().empty()) {
        usual[kTakeOverGroup] = 0.05;
    }
    return usual;
}

void Moves::change(RandomStream& random) {
    const unsigned die = random.below(layout.dieNum());
    switch (shares.draw(random)) {
        case kTurn:
            turnSomehow(die, random);
            return layout.release(die);
        case kInOneOrder:
            return exchangeInOneOrder(die, random);
        case kBesideAny:
            return putBeside(die, anyOther(die, random), random);
        case kBesideWish:
            return putBeside(die, nearWish(die, random), random);
        case kChainBesideAny:
            return putChainBeside(die, anyOther(die, random), random);
        case kChainBesideWish:
            return putChainBeside(die, nearWish(die, random), random);
        case kExchangeAny:
            return exchangeAndTurn(die, anyOther(die, random), random);
        case kExchangeAtWish:
            return exchangeAndTurn(die, nearWish(die, random), random);
        case kTurnGroup:
            return turnGroup(random);
        case kGroupBeside:
            return putGroupBeside(random);
        case kExchangeGroup:
            return exchangeGroup(random);
        default:
            return takeOverGroup(random);
    }
}

// --- Single dies -----------------------------------------------------------------------------

void Moves::turnSomehow(unsigned die, RandomStream& random) {
    const unsigned now = orientIndex(layout.orientation(die));
    layout.turn(die, static_cast<Orient>((now + 1 + random.below(3)) % kUnmirroredOrients));
}

void Moves::turnByAQuarter(unsigned die, RandomStream& random) {
    const unsigned turns = random.below(2) == 0 ? 1 : 3;
    layout.turn(die, static_cast<Orient>((orientIndex(layout.orientation(die)) + turns) %
                                         kUnmirroredOrients));
}

// Half of the time with the next one in that order, which changes one relation only.
void Moves::exchangeInOneOrder(unsigned die, RandomStream& random) {
    const auto which = static_cast<SequencePair::Which>(random.below(2));
    SequencePair& orders = layout.editOrders();
    unsigned other = anyOther(die, random);
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
    insertBeside(die, other, anySide(random));
    // For one without nets, which stays there.
    layout.carryTo(die, layout.centre(other));
    layout.release(die);
}

void Moves::insertBeside(unsigned die, unsigned other, std::array<bool, 2> isBefore) {
    for (const auto which : SequencePair::kBoth) {
        layout.editOrders().moveBeside(which, die, other, isBefore[which]);
    }
}

// Dies that many nets join hold one another back: none can leave alone. So a chain of them goes
// together, each to the side of the one before that it was on, at the same distance.
void Moves::putChainBeside(unsigned die, unsigned other, RandomStream& random) {
    if (partners[die].empty()) {
        return putBeside(die, other, random);
    }
    const Spot from = layout.centre(die);
    const Spot to = layout.centre(other);
    const Spot step{to.x - from.x, to.y - from.y};
    insertBeside(die, other, anySide(random));
    layout.carry(die, step);
    std::array<unsigned, kLongestChain> chain{die};
    for (unsigned last = 0; last + 1 < kLongestChain && (last == 0 || random.below(2) == 0);
         ++last) {
        const unsigned partner = oneOf(partners[chain[last]], random);
        if (partner == other || std::find(chain.begin(), chain.begin() + last + 1, partner) !=
                                    chain.begin() + last + 1) {
            return;
        }
        const SequencePair& before = layout.keptSequences();
        std::array<bool, 2> isBefore{};
        for (const auto which : SequencePair::kBoth) {
            isBefore[which] = before.rank(which, partner) < before.rank(which, chain[last]);
        }
        insertBeside(partner, chain[last], isBefore);
        layout.carry(partner, step);
        chain[last + 1] = partner;
    }
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

void Moves::exchange(unsigned a, unsigned b) {
    layout.editOrders().swap(SequencePair::Upper, a, b);
    layout.editOrders().swap(SequencePair::Lower, a, b);
    // So that the wish of each one finds the other there, and one without nets stays there.
    const Spot centreOfA = layout.centre(a);
    layout.carryTo(a, layout.centre(b));
    layout.carryTo(b, centreOfA);
    layout.release(a);
    layout.release(b);
}

// --- Groups ----------------------------------------------------------------------------------

void Moves::turnGroup(RandomStream& random) {
    const unsigned turns = 1 + random.below(3);
    groupMoves.turn(oneOf(groups.groups(), random), turns);
}

// Near where one of its dies would like to be, so in a group that is torn apart it may be in place
// already; half of the time anywhere.
void Moves::putGroupBeside(RandomStream& random) {
    const DieGroups::Group& group = oneOf(groups.groups(), random);
    const unsigned die = oneOf(group, random);
    const unsigned other = random.below(2) == 0 ? nearWish(die, random) : anyOther(die, random);
    if (!contains(group, other)) {
        groupMoves.putBeside(group, other, anySide(random));
    }
}

// For a die that is in the way, or another group.
void Moves::exchangeGroup(RandomStream& random) {
    const DieGroups::Group& group = oneOf(groups.groups(), random);
    const std::array single{nearWish(oneOf(group, random), random)};
    const GroupMoves::Dies others = random.fraction() < kGroupForGroup
                                        ? GroupMoves::Dies(oneOf(groups.groups(), random))
                                        : GroupMoves::Dies(single);
    if (std::none_of(others.begin(), others.end(),
                     [&group](unsigned other) { return contains(group, other); })) {
        groupMoves.exchange(group, others);
    }
}

void Moves::takeOverGroup(RandomStream& random) {
    const auto& alike = oneOf(groups.alike(), random);
    const DieGroups::Group& group = oneOf(alike, random);
    const DieGroups::Group& other = oneOf(alike, random);
    if (&group != &other) {
        groupMoves.takeOver(group, other);
    }
}

// --- Where to --------------------------------------------------------------------------------

unsigned Moves::anyOther(unsigned die, RandomStream& random) const {
    const unsigned other = random.below(layout.dieNum() - 1);
    return other < die ? other : other + 1;
}

// The die whose centre is next to where the nets want the die, give or take; any for one without
// nets.
unsigned Moves::nearWish(unsigned die, RandomStream& random) const {
    if (!layout.hasNets(die)) {
        return anyOther(die, random);
    }
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
