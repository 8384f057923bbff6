#include "anneal/MoveGenerator.h"

#include <algorithm>
#include <cmath>

#include "base/Infinity.h"

namespace korvel {

namespace {

enum MoveKind : unsigned {
    kTurn,
    kInOneOrder,
    kBesideAny,
    kBesidePreferred,
    kChainBesideAny,
    kChainBesidePreferred,
    kExchangeAny,
    kExchangeAtPreferred,
    kTurnGroup,
    kGroupBeside,
    kExchangeGroup,
    kExchangeAlikeGroups,
    kKindNum
};

constexpr unsigned kLongestChain = 4;
// One in so many dies that go elsewhere turns on the way.
constexpr unsigned kTurnsOnTheWay = 4;
// Of the exchanges of two dies, those where each is turned to lie as the other one did.
constexpr double kMatching = 0.3;
// Of the groups that are exchanged, those for another group instead of a die.
constexpr double kGroupForGroup = 0.3;

// How far from its preferred corner a die looks for a neighbour at most, in parts of the region's
// sides. Always the nearest one would be the same one again and again.
constexpr double kBlur = 0.15;

template <typename T>
const T& oneOf(const std::vector<T>& all, RandomStream& random) {
    return all[random.below(static_cast<unsigned>(all.size()))];
}

SequencePair::Sides anySide(RandomStream& random) {
    const bool isBeforeInUpper = random.coin();
    return {isBeforeInUpper, random.coin()};
}

bool contains(std::span<const unsigned> dies, unsigned die) {
    return std::find(dies.begin(), dies.end(), die) != dies.end();
}

}  // namespace

MoveGenerator::MoveGenerator(Layout& layout, const PreparedDesign& prepared)
    : layout(layout),
      region(prepared.region),
      groups(prepared.groups),
      partners(layout.dieNum()),
      groupMoves(layout),
      probabilities(firstProbabilities()) {
    for (const auto& [a, b, weight] : prepared.nets().bundles()) {
        if (b != prepared.nets().ground()) {
            partners[a].push_back(b);
            partners[b].push_back(a);
        }
    }
}

std::vector<double> MoveGenerator::firstProbabilities() const {
    std::vector<double> first(kKindNum, 0.0);
    first[kTurn] = 0.17;
    if (layout.dieNum() > 1) {
        first[kInOneOrder] = 0.09;
        first[kBesideAny] = first[kBesidePreferred] = 0.12;
        first[kChainBesideAny] = first[kChainBesidePreferred] = 0.05;
        first[kExchangeAny] = first[kExchangeAtPreferred] = 0.13;
    }
    if (!groups.groups().empty()) {
        first[kTurnGroup] = first[kGroupBeside] = first[kExchangeGroup] = 0.03;
    }
    if (!groups.alike().empty()) {
        first[kExchangeAlikeGroups] = 0.05;
    }
    return first;
}

void MoveGenerator::change(RandomStream& random) {
    const unsigned die = random.below(layout.dieNum());
    switch (probabilities.draw(random)) {
        case kTurn:
            turnSomehow(die, random);
            return layout.release(die);
        case kInOneOrder:
            return exchangeInOneOrder(die, random);
        case kBesideAny:
            return putBeside(die, anyOther(die, random), random);
        case kBesidePreferred:
            return putBeside(die, nearPreferred(die, random), random);
        case kChainBesideAny:
            return putChainBeside(die, anyOther(die, random), random);
        case kChainBesidePreferred:
            return putChainBeside(die, nearPreferred(die, random), random);
        case kExchangeAny:
            return exchangeAndTurn(die, anyOther(die, random), random);
        case kExchangeAtPreferred:
            return exchangeAndTurn(die, nearPreferred(die, random), random);
        case kTurnGroup: {
            const unsigned quarters = 1 + random.below(3);
            return groupMoves.turn(oneOf(groups.groups(), random), quarters);
        }
        case kGroupBeside:
            return putGroupBeside(random);
        case kExchangeGroup:
            return exchangeGroup(random);
        default:
            return exchangeAlikeGroups(random);
    }
}

// --- Single dies -----------------------------------------------------------------------------

void MoveGenerator::turnSomehow(unsigned die, RandomStream& random) {
    layout.turnClockwise(die, 1 + random.below(3));
}

// Half of the time with its neighbour in that order, which changes one relation only.
void MoveGenerator::exchangeInOneOrder(unsigned die, RandomStream& random) {
    const auto which = static_cast<SequencePair::Which>(random.below(2));
    SequencePair& orders = layout.editOrders();
    unsigned other = anyOther(die, random);
    if (random.coin()) {
        const unsigned rank = orders.rank(which, die);
        other = orders.order(which)[rank + 1 < layout.dieNum() ? rank + 1 : rank - 1];
    }
    orders.swap(which, die, other);
    layout.release(die);
    layout.release(other);
}

void MoveGenerator::putBeside(unsigned die, unsigned other, RandomStream& random) {
    if (random.below(kTurnsOnTheWay) == 0) {
        turnSomehow(die, random);
    }
    layout.editOrders().moveBeside(die, other, anySide(random));
    // A die without nets stays there; any other one is placed anew.
    layout.shiftCentreTo(die, layout.centre(other));
    layout.release(die);
}

// Dies that many nets join hold one another back: none can leave alone. So a chain of them goes
// together, each to the side of the one before it that it was on, at the same distance.
void MoveGenerator::putChainBeside(unsigned die, unsigned other, RandomStream& random) {
    if (partners[die].empty()) {
        return putBeside(die, other, random);
    }
    const Spot from = layout.centre(die);
    const Spot to = layout.centre(other);
    const Spot step{to.x - from.x, to.y - from.y};
    layout.editOrders().moveBeside(die, other, anySide(random));
    layout.shift(die, step);
    std::array<unsigned, kLongestChain> chain{die};
    unsigned length = 1;
    do {
        const unsigned last = chain[length - 1];
        const unsigned partner = oneOf(partners[last], random);
        if (partner == other || contains(std::span(chain).first(length), partner)) {
            return;
        }
        layout.editOrders().moveBeside(partner, last,
                                       layout.keptSequences().sidesOf(partner, last));
        layout.shift(partner, step);
        chain[length++] = partner;
    } while (length < kLongestChain && random.coin());
}

// Either each die comes to lie as the other one did, where it is most likely to fit then, or the
// dies turn by chance.
void MoveGenerator::exchangeAndTurn(unsigned a, unsigned b, RandomStream& random) {
    const bool matches = random.uniform() < kMatching;
    const bool differ = layout.isUpright(a) != layout.isUpright(b);
    for (const unsigned die : {a, b}) {
        if (matches && differ) {
            layout.turnClockwise(die, random.coin() ? 1 : 3);
        } else if (!matches && random.below(kTurnsOnTheWay) == 0) {
            turnSomehow(die, random);
        }
    }
    // Now, so that each finds the other there when it is placed, and one without nets stays there.
    const Spot centreOfA = layout.centre(a);
    layout.shiftCentreTo(a, layout.centre(b));
    layout.shiftCentreTo(b, centreOfA);
    for (const auto which : SequencePair::kBoth) {
        layout.editOrders().swap(which, a, b);
    }
    layout.release(a);
    layout.release(b);
}

// --- Groups ----------------------------------------------------------------------------------

// Half of the time beside a die near where one of its own dies would like to be, else beside any.
// That die may be one of the group, if the group lies where it wants to be: nothing is changed
// then.
void MoveGenerator::putGroupBeside(RandomStream& random) {
    const DieGroups::Group& group = oneOf(groups.groups(), random);
    const unsigned die = oneOf(group, random);
    const unsigned other = random.coin() ? nearPreferred(die, random) : anyOther(die, random);
    if (!contains(group, other)) {
        groupMoves.putBeside(group, other, anySide(random));
    }
}

// For another group, or for a die where one of its own would like to be.
void MoveGenerator::exchangeGroup(RandomStream& random) {
    const DieGroups::Group& group = oneOf(groups.groups(), random);
    const std::array single{nearPreferred(oneOf(group, random), random)};
    const GroupMoves::Dies others = random.uniform() < kGroupForGroup
                                        ? GroupMoves::Dies(oneOf(groups.groups(), random))
                                        : GroupMoves::Dies(single);
    if (std::none_of(others.begin(), others.end(),
                     [&group](unsigned other) { return contains(group, other); })) {
        groupMoves.exchange(group, others);
    }
}

void MoveGenerator::exchangeAlikeGroups(RandomStream& random) {
    const auto& alike = oneOf(groups.alike(), random);
    const DieGroups::Group& group = oneOf(alike, random);
    const DieGroups::Group& other = oneOf(alike, random);
    if (&group != &other) {
        groupMoves.exchangeDieByDie(group, other);
    }
}

// --- Where to --------------------------------------------------------------------------------

unsigned MoveGenerator::anyOther(unsigned die, RandomStream& random) const {
    const unsigned other = random.below(layout.dieNum() - 1);
    return other < die ? other : other + 1;
}

// The die whose centre is nearest to where the nets want the die's corner, give or take; any for
// one without nets.
unsigned MoveGenerator::nearPreferred(unsigned die, RandomStream& random) const {
    if (!layout.hasNets(die)) {
        return anyOther(die, random);
    }
    const Spot preferred = layout.preferredCorner(die);
    const double x = preferred.x + (2.0 * random.uniform() - 1.0) * kBlur * region.width;
    const double y = preferred.y + (2.0 * random.uniform() - 1.0) * kBlur * region.height;
    unsigned nearest = die == 0 ? 1 : 0;
    double shortest = kInfiniteLength;
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
