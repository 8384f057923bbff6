#include "anneal/Moves.h"

#include <cmath>
#include <limits>

namespace korvel {

namespace {

// Shares of the moves; what is left exchanges two dies.
constexpr double kTurns = 0.2;
constexpr double kOneOrder = 0.1;
constexpr double kBeside = 0.4;
constexpr double kGuided = 0.5;
// Of the exchanges of two dies.
constexpr double kMatching = 0.3;

// How far from its wish a guided die goes at most, in parts of the region's sides.
constexpr double kBlur = 0.15;

}  // namespace

void Moves::change(RandomStream& random) {
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
        putBeside(die, other, random);
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
    SequencePair& orders = layout.editOrders();
    for (const auto which : {SequencePair::Upper, SequencePair::Lower}) {
        const bool isBefore = random.below(2) == 0;
        const unsigned gap = orders.rank(which, die) < orders.rank(which, other) ? 1 : 0;
        orders.moveTo(which, die, orders.rank(which, other) - gap + (isBefore ? 0 : 1));
    }
    layout.release(die);
}

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
