#include "anneal/Layout.h"

namespace korvel {

namespace {

// Dies are pushed from either end of an axis, by lot: one end alone would drag the layout there.
Packing::Sweep anySweep(RandomStream& random) {
    return random.coin() ? Packing::Sweep::FromHigh : Packing::Sweep::FromLow;
}

}  // namespace

Layout::Layout(const NetModel& nets, Region region)
    : netsOfDies(nets),
      orders(nets.dieNum()),
      keptOrders(orders),
      orients(nets.dieNum() + 1, Orient::N),
      axes{AxisLayout(nets, netsOfDies, kX, region.width),
           AxisLayout(nets, netsOfDies, kY, region.height)},
      isReleased(nets.dieNum(), 0) {}

void Layout::setOrientation(unsigned die, Orient orient) {
    orients[die] = orient;
    for (AxisLayout& axis : axes) {
        axis.setOrientation(die, orients);
    }
}

void Layout::turn(unsigned die, Orient orient) {
    turned.push_back(die);
    orientsBefore.push_back(orients[die]);
    setOrientation(die, orient);
}

void Layout::release(unsigned die) {
    released.push_back(die);
    isReleased[die] = 1;
}

void Layout::shift(unsigned die, Spot step) {
    axes[kX].shift(die, step.x);
    axes[kY].shift(die, step.y);
}

void Layout::shiftCentreTo(unsigned die, Spot centre) {
    const Spot now = this->centre(die);
    shift(die, {centre.x - now.x, centre.y - now.y});
}

bool Layout::arrange(RandomStream& random, Limits limits) {
    const std::array sweeps{anySweep(random), anySweep(random)};
    // 1. Most changes end here in a full region, before anything is placed or measured.
    for (const Axis axis : {kX, kY}) {
        axes[axis].findLimits(orders, sweeps[axis]);
    }
    if (overflow() > limits.overflow) {
        return false;
    }
    // 2. Place what was released, and make room for it.
    for (const Axis axis : {kX, kY}) {
        axes[axis].placeReleased(orders, released, isReleased);
        axes[axis].pushApart(orders, sweeps[axis]);
        axes[axis].measureMoved(turned);
    }
    const double pushed = length();
    // 3. Slide, unless that is sure to be in vain; while dies overlap the end, there is no room to.
    if (overflow() <= 0.0) {
        if (pushed > limits.pushedLength) {
            return false;
        }
        for (AxisLayout& axis : axes) {
            axis.slideMoved(orders, released);
        }
    }
    saved = pushed - length();
    return true;
}

void Layout::keep() {
    for (AxisLayout& axis : axes) {
        axis.keep();
    }
    keptOrders = orders;
    endChange();
}

// Backwards: a die may have been turned twice.
void Layout::undo() {
    for (std::size_t turn = turned.size(); turn-- > 0;) {
        setOrientation(turned[turn], orientsBefore[turn]);
    }
    for (AxisLayout& axis : axes) {
        axis.undo();
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
    orientsBefore.clear();
}

void Layout::place(const SequencePair& sequences, const Placement& placement) {
    orders = keptOrders = sequences;
    std::array<std::vector<double>, kAxes> corners;
    for (unsigned die = 0; die < dieNum(); ++die) {
        setOrientation(die, placement[die].orient);
        corners[kX].push_back(placement[die].at.x);
        corners[kY].push_back(placement[die].at.y);
    }
    for (const Axis axis : {kX, kY}) {
        axes[axis].place(corners[axis]);
    }
    endChange();
}

Placement Layout::placement() const {
    Placement result(dieNum());
    for (unsigned die = 0; die < dieNum(); ++die) {
        result[die] = {{axes[kX].corner(die), axes[kY].corner(die)}, orients[die]};
    }
    return result;
}

}  // namespace korvel
