#include "anneal/Layout.h"

#include <algorithm>

#include "base/Tolerances.h"

namespace korvel {

namespace {

// Of the pushed dies, so many slide after a change; with more of them, fewer moves a second cost
// more than the shorter layouts gain.
constexpr unsigned kMostSlid = 12;

// Dies are pushed from either end of an axis, by lot: one end alone would drag the layout there.
Packing::Sweep anySweep(RandomStream& random) {
    return random.coin() ? Packing::Sweep::FromHigh : Packing::Sweep::FromLow;
}

}  // namespace

Layout::Layout(const NetModel& nets, DieLimits dieLimits)
    : limits(std::move(dieLimits)),
      netsOfDies(findNetsOfDies(nets)),
      orders(nets.dieNum()),
      keptOrders(orders),
      orients(nets.dieNum() + 1, Orient::N),
      keptOrients(orients),
      packings{Packing(limits, kX), Packing(limits, kY)},
      costs{NetCosts(nets, netsOfDies, kX, orients, packings[kX].cornersOfBodies()),
            NetCosts(nets, netsOfDies, kY, orients, packings[kY].cornersOfBodies())},
      ignoresNobody(nets.dieNum(), 0),
      isReleased(nets.dieNum(), 0) {}

// --- A change --------------------------------------------------------------------------------

void Layout::setOrientation(unsigned die, Orient orient) {
    orients[die] = orient;
    for (const Axis axis : {kX, kY}) {
        packings[axis].setOrientation(die, orient);
        costs[axis].turned(die);
    }
}

void Layout::turn(unsigned die, Orient orient) {
    turned.push_back(die);
    setOrientation(die, orient);
}

void Layout::turnClockwise(unsigned die, unsigned quarters) {
    turn(die, orientOf((orientIndex(orients[die]) + quarters) % kUnmirroredOrients));
}

void Layout::release(unsigned die) {
    released.push_back(die);
    isReleased[die] = 1;
}

void Layout::shift(unsigned die, Spot step) {
    for (const Axis axis : {kX, kY}) {
        Packing& packing = packings[axis];
        const auto [low, high] = packing.cornerRange(die);
        const double wanted = packing.corner(die) + (axis == kX ? step.x : step.y);
        packing.setCorner(die, std::max(low, std::min(wanted, high)));
    }
}

void Layout::shiftCentreTo(unsigned die, Spot centre) {
    const Spot now = this->centre(die);
    shift(die, {centre.x - now.x, centre.y - now.y});
}

bool Layout::arrange(RandomStream& random, Limits limits) {
    const std::array sweeps{anySweep(random), anySweep(random)};
    // 1. Most changes end here in a full region, before anything is placed or measured.
    for (const Axis axis : {kX, kY}) {
        packings[axis].findLimits(orders, sweeps[axis]);
    }
    if (overflow() > limits.overflow) {
        return false;
    }
    // 2. Place what was released, and make room for it.
    for (const Axis axis : {kX, kY}) {
        placeReleased(axis);
        packings[axis].pushApart(orders, sweeps[axis]);
        measureMoved(axis);
    }
    const double pushed = length();
    // 3. Slide, unless that is sure to be in vain. A layout that is longer than the region has no
    // room to.
    if (overflow() <= 0.0) {
        if (pushed > limits.pushedLength) {
            return false;
        }
        slideMoved(kX);
        slideMoved(kY);
    }
    saved = pushed - length();
    return true;
}

// Where there is less room than the die needs, it goes between its neighbours, which are pushed
// apart afterwards.
void Layout::placeReleased(Axis axis) {
    for (const unsigned die : released) {
        const double preferred = preferredCorner(die, axis);
        const auto [low, high] = packings[axis].slack(orders, die, isReleased);
        packings[axis].setCorner(die,
                                 std::clamp(preferred, std::min(low, high), std::max(low, high)));
    }
}

// Nets of dies that are not where they were kept, and of turned ones.
void Layout::measureMoved(Axis axis) {
    costs[axis].beginMeasuring();
    for (unsigned die = 0; die < dieNum(); ++die) {
        if (packings[axis].hasMoved(die)) {
            costs[axis].measureNetsOf(die);
        }
    }
    for (const unsigned die : turned) {
        costs[axis].measureNetsOf(die);
    }
}

void Layout::keep() {
    for (const Axis axis : {kX, kY}) {
        packings[axis].keep();
        costs[axis].keep();
    }
    keptOrders = orders;
    for (const unsigned die : turned) {
        keptOrients[die] = orients[die];
    }
    endChange();
}

void Layout::undo() {
    for (const unsigned die : turned) {
        setOrientation(die, keptOrients[die]);
    }
    for (const Axis axis : {kX, kY}) {
        packings[axis].undo();
        costs[axis].undo();
    }
    orders = keptOrders;
    endChange();
}

void Layout::endChange() {
    for (const unsigned die : released) {
        isReleased[die] = 0;
    }
    released.clear();
    turned.clear();
}

// --- Sliding ---------------------------------------------------------------------------------

double Layout::preferredCorner(unsigned die, Axis axis) const {
    if (!hasNets(die)) {
        return packings[axis].corner(die);
    }
    const auto [low, high] = packings[axis].cornerRange(die);
    return bestBetween(die, axis, low, high);
}

double Layout::bestBetween(unsigned die, Axis axis, double low, double high) const {
    return costs[axis].bestBetween(die, low, high, kSlidingEnough * limits.side(axis));
}

// The released dies, and the first of the pushed ones.
void Layout::slideMoved(Axis axis) {
    slid.clear();
    for (const unsigned die : released) {
        slide(die, axis);
    }
    unsigned moved = 0;
    for (unsigned die = 0; die < dieNum() && moved < kMostSlid; ++die) {
        if (packings[axis].hasMoved(die)) {
            slide(die, axis);
            ++moved;
        }
    }
    costs[axis].beginMeasuring();
    for (const unsigned die : slid) {
        costs[axis].measureNetsOf(die);
    }
}

// To the best place between its neighbours.
void Layout::slide(unsigned die, Axis axis) {
    Packing& packing = packings[axis];
    const double from = packing.corner(die);
    const NetCosts::Local here = costs[axis].costAt(die, from);
    if (here.left <= 0.0 && here.right >= 0.0) {
        return;
    }
    const auto [low, high] = packing.slack(orders, die, ignoresNobody);
    if (here.right < 0.0 && high > from) {
        packing.setCorner(die, bestBetween(die, axis, from, high));
    } else if (here.left > 0.0 && low < from) {
        packing.setCorner(die, bestBetween(die, axis, low, from));
    }
    if (packing.corner(die) != from) {
        slid.push_back(die);
    }
}

// --- As a whole ------------------------------------------------------------------------------

void Layout::place(const Snapshot& snapshot) {
    orders = keptOrders = snapshot.orders;
    std::array<std::vector<double>, kAxes> corners;
    for (unsigned die = 0; die < dieNum(); ++die) {
        const PlacedDie& placed = snapshot.placement[die];
        setOrientation(die, keptOrients[die] = placed.orient);
        corners[kX].push_back(placed.at.x);
        corners[kY].push_back(placed.at.y);
    }
    for (const Axis axis : {kX, kY}) {
        packings[axis].place(corners[axis]);
        costs[axis].measureAll();
    }
    endChange();
}

Placement Layout::placement() const {
    Placement result(dieNum());
    for (unsigned die = 0; die < dieNum(); ++die) {
        result[die] = {{packings[kX].corner(die), packings[kY].corner(die)}, orients[die]};
    }
    return result;
}

}  // namespace korvel
