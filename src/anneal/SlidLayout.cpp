#include "anneal/SlidLayout.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Infinity.h"
#include "base/Tolerances.h"

namespace korvel {

SlidLayout::SlidLayout(const NetModel& nets, Region region)
    : nets(nets),
      orders(nets.dieNum()),
      keptOrders(nets.dieNum()),
      orients(nets.dieNum(), Orient::N),
      bundlesOf(nets.dieNum()),
      wideOf(nets.dieNum()),
      isReleased(nets.dieNum(), 0),
      nobody(nets.dieNum(), 0),
      bundleSeen(nets.bundles().size(), 0),
      wideSeen(nets.wideNets().size(), 0),
      chain(nets.dieNum() + 1) {
    for (unsigned bundle = 0; bundle < nets.bundles().size(); ++bundle) {
        for (const unsigned body : {nets.bundles()[bundle].a, nets.bundles()[bundle].b}) {
            if (body != nets.ground()) {
                bundlesOf[body].push_back(bundle);
            }
        }
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        firstMembers.push_back(static_cast<unsigned>(memberBodies.size()));
        for (const BodyPins& member : net.members) {
            if (member.body != nets.ground()) {
                wideOf[member.body].push_back({static_cast<unsigned>(wideCounts.size()),
                                               static_cast<unsigned>(memberBodies.size())});
            }
            memberBodies.push_back(member.body);
        }
        wideCounts.push_back(net.weight);
    }
    firstMembers.push_back(static_cast<unsigned>(memberBodies.size()));
    for (const Axis which : {kX, kY}) {
        Along& axis = along(which);
        axis.side = which == kX ? region.width : region.height;
        axis.need = 0.0;
        // The ground is a body at 0.
        axis.at.assign(nets.dieNum() + 1, 0.0);
        axis.kept = axis.at;
        axis.size.assign(nets.dieNum() + 1, 0.0);
        axis.limit.assign(nets.dieNum(), 0.0);
        axis.costs.resize(nets.bundles().size());
        for (const NetModel::WideNet& net : nets.wideNets()) {
            for (const BodyPins& member : net.members) {
                axis.reaches.push_back(member.range(which, Orient::N));
            }
        }
        axis.bundleCost.assign(nets.bundles().size(), 0.0);
        axis.wideCost.assign(nets.wideNets().size(), 0.0);
    }
    orients.push_back(Orient::N);
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        setOrientation(die, Orient::N);
    }
    measureAll();
}

// --- Changing --------------------------------------------------------------------------------

void SlidLayout::setOrientation(unsigned die, Orient orient) {
    orients[die] = orient;
    for (const Axis which : {kX, kY}) {
        along(which).size[die] = nets.size(die, which, orient);
        for (const unsigned bundle : bundlesOf[die]) {
            const auto& [a, b, weight] = nets.bundles()[bundle];
            along(which).costs[bundle] = &nets.cost(bundle, which, orients[a], orients[b]);
        }
        for (const auto& [net, member] : wideOf[die]) {
            along(which).reaches[member] =
                nets.wideNets()[net].members[member - firstMembers[net]].range(which, orient);
        }
    }
}

void SlidLayout::turn(unsigned die, Orient orient) {
    turnedFrom.emplace_back(die, orients[die]);
    setOrientation(die, orient);
}

void SlidLayout::release(unsigned die) {
    released.push_back(die);
    isReleased[die] = 1;
}

void SlidLayout::carry(unsigned die, Spot step) {
    const std::array steps{step.x, step.y};
    for (unsigned axis = 0; axis < 2; ++axis) {
        double& at = axes[axis].at[die];
        at = std::max(0.0, std::min(at + steps[axis], axes[axis].side - axes[axis].size[die]));
    }
}

void SlidLayout::carryTo(unsigned die, Spot centre) {
    const Spot now = this->centre(die);
    carry(die, {centre.x - now.x, centre.y - now.y});
}

bool SlidLayout::arrange(RandomStream& random, Most most) {
    const std::array fromLow{(random.bits() >> 63) != 0, (random.bits() >> 63) != 0};
    findLimits<kX>(fromLow[0]);
    findLimits<kY>(fromLow[1]);
    if (excess() > most.excess) {
        return false;
    }
    for (const unsigned die : released) {
        const Spot wanted = wish(die);
        placeReleased(die, kX, wanted.x);
        placeReleased(die, kY, wanted.y);
    }
    makeRoom<kX>(fromLow[0]);
    makeRoom<kY>(fromLow[1]);
    measureMoved();
    const double pushed = length();
    if (excess() <= 0.0) {
        if (pushed > most.pushed) {
            return false;
        }
        slideMoved();
        measureSlid();
    }
    bySliding = pushed - length();
    return true;
}

void SlidLayout::keep() {
    for (Along& axis : axes) {
        std::copy(axis.at.begin(), axis.at.end(), axis.kept.begin());
        axis.keptNeed = axis.need;
        axis.keptLength = axis.length;
    }
    keptOrders = orders;
    endChange();
}

void SlidLayout::undo() {
    for (Along& axis : axes) {
        std::copy(axis.kept.begin(), axis.kept.end(), axis.at.begin());
        axis.need = axis.keptNeed;
        axis.length = axis.keptLength;
    }
    orders = keptOrders;
    for (std::size_t turn = turnedFrom.size(); turn-- > 0;) {
        setOrientation(turnedFrom[turn].first, turnedFrom[turn].second);
    }
    for (std::size_t entry = journal.size(); entry-- > 0;) {
        const Measured& measured = journal[entry];
        (measured.isWide ? axes[measured.axis].wideCost
                         : axes[measured.axis].bundleCost)[measured.net] = measured.before;
    }
    endChange();
}

void SlidLayout::endChange() {
    for (const unsigned die : released) {
        isReleased[die] = 0;
    }
    released.clear();
    turnedFrom.clear();
    journal.clear();
}

void SlidLayout::place(const SequencePair& sequences, const Placement& placement) {
    orders = sequences;
    for (unsigned die = 0; die < dieNum(); ++die) {
        setOrientation(die, placement[die].orient);
        along(kX).at[die] = placement[die].at.x;
        along(kY).at[die] = placement[die].at.y;
    }
    for (Along& axis : axes) {
        axis.need = 0.0;
    }
    measureAll();
    keep();
}

// --- Room ------------------------------------------------------------------------------------

// Calls `put(die, low)` for the dies from low to high, where `low` is the highest end of those
// before; it answers where the die begins. `chain[r]` is the highest end of the dies below rank r
// in the lower order, so it never falls with r, and an end raises a short stretch of it.
template <Axis which, typename Put>
void SlidLayout::fromLowEnd(const Put& put) {
    const Along& axis = along(which);
    const auto& upper = orders.order(SequencePair::Upper);
    const auto& ranks = orders.rankOfDies(SequencePair::Lower);
    const unsigned dieNum = this->dieNum();
    std::fill(chain.begin(), chain.end(), 0.0);
    for (unsigned step = 0; step < dieNum; ++step) {
        const unsigned die = which == kX ? upper[step] : upper[dieNum - 1 - step];
        const unsigned rank = ranks[die];
        const double end = put(die, chain[rank]) + axis.size[die];
        for (unsigned above = rank + 1; above < dieNum && chain[above] < end; ++above) {
            chain[above] = end;
        }
    }
}

// The same from the other end: `put(die, high)` with the lowest start of those after it.
template <Axis which, typename Put>
void SlidLayout::fromHighEnd(const Put& put) {
    const Along& axis = along(which);
    const auto& upper = orders.order(SequencePair::Upper);
    const auto& ranks = orders.rankOfDies(SequencePair::Lower);
    const unsigned dieNum = this->dieNum();
    std::fill(chain.begin(), chain.end(), axis.side);
    for (unsigned step = 0; step < dieNum; ++step) {
        const unsigned die = which == kX ? upper[dieNum - 1 - step] : upper[step];
        const unsigned rank = ranks[die];
        const double start = put(die, chain[rank] - axis.size[die]);
        for (unsigned below = rank; below > 0 && chain[below - 1] > start; --below) {
            chain[below - 1] = start;
        }
    }
}

// How far each die can give way, to the end that the others will be pushed to.
template <Axis which>
void SlidLayout::findLimits(bool fromLow) {
    Along& axis = along(which);
    double lowest = 0.0;
    double highest = axis.side;
    if (fromLow) {
        fromHighEnd<which>([&](unsigned die, double high) {
            lowest = std::min(lowest, high);
            return axis.limit[die] = high;
        });
    } else {
        fromLowEnd<which>([&](unsigned die, double low) {
            highest = std::max(highest, low + axis.size[die]);
            return axis.limit[die] = low;
        });
    }
    axis.need = highest - lowest;
}

// Every die stays where it is unless another one pushes it or the region's end does. Which end the
// dies give way from is the caller's: either alone would drag the layout to one side.
template <Axis which>
void SlidLayout::makeRoom(bool fromLow) {
    Along& axis = along(which);
    if (fromLow) {
        fromLowEnd<which>([&](unsigned die, double low) {
            return axis.at[die] = std::max(low, std::min(axis.at[die], axis.limit[die]));
        });
    } else {
        fromHighEnd<which>([&](unsigned die, double high) {
            return axis.at[die] = std::min(high, std::max(axis.at[die], axis.limit[die]));
        });
    }
}

double SlidLayout::excess() const {
    double sum = 0.0;
    for (const Along& axis : axes) {
        // Chains that fill the side may be longer by rounding.
        sum += std::max(0.0, axis.need / axis.side - (1.0 + kFitting));
    }
    return sum;
}

// --- Sliding ---------------------------------------------------------------------------------

void SlidLayout::slideMoved() {
    for (const unsigned die : released) {
        slide(die, kX);
        slide(die, kY);
    }
    for (const Axis which : {kX, kY}) {
        const Along& axis = along(which);
        unsigned slid = 0;
        for (unsigned die = 0; die < dieNum() && slid < kMostSlid; ++die) {
            if (axis.at[die] != axis.kept[die]) {
                slide(die, which);
                ++slid;
            }
        }
    }
}

// Where there is less room than the die needs, it goes between, and pushes.
void SlidLayout::placeReleased(unsigned die, Axis which, double wanted) {
    const auto [low, high] = slack(die, which, isReleased);
    along(which).at[die] = std::clamp(wanted, std::min(low, high), std::max(low, high));
}

std::pair<double, double> SlidLayout::slack(unsigned die, Axis which,
                                            const DieFlags& ignored) const {
    const Along& axis = along(which);
    const auto& upper = orders.rankOfDies(SequencePair::Upper);
    const auto& lower = orders.rankOfDies(SequencePair::Lower);
    const bool isX = which == kX;
    double low = 0.0;
    double high = axis.side;
    for (unsigned other = 0; other < dieNum(); ++other) {
        const bool sameInBoth = (upper[other] < upper[die]) == (lower[other] < lower[die]);
        if (other == die || sameInBoth != isX || ignored[other] != 0) {
            continue;
        }
        if (lower[other] < lower[die]) {
            low = std::max(low, axis.at[other] + axis.size[other]);
        } else {
            high = std::min(high, axis.at[other]);
        }
    }
    return {low, high - axis.size[die]};
}

void SlidLayout::slide(unsigned die, Axis which) {
    Along& axis = along(which);
    const Local here = localAt(die, which, axis.at[die]);
    if (here.left <= 0.0 && here.right >= 0.0) {
        return;
    }
    const auto [low, high] = slack(die, which, nobody);
    const double from = axis.at[die];
    if (here.right < 0.0 && high > from) {
        axis.at[die] = bestBetween(die, which, from, high);
    } else if (here.left > 0.0 && low < from) {
        axis.at[die] = bestBetween(die, which, low, from);
    }
    if (axis.at[die] != from) {
        axis.slid.push_back(die);
    }
}

Spot SlidLayout::wish(unsigned die) const {
    if (!hasNets(die)) {
        return {along(kX).at[die], along(kY).at[die]};
    }
    return {bestBetween(die, kX, 0.0, along(kX).side - along(kX).size[die]),
            bestBetween(die, kY, 0.0, along(kY).side - along(kY).size[die])};
}

Spot SlidLayout::centre(unsigned die) const {
    const auto& [x, y] = axes;
    return {x.at[die] + x.size[die] / 2, y.at[die] + y.size[die] / 2};
}

// Where the tangents at both ends meet, there may be a breakpoint; if only one is in between, they
// meet at it. So a few tangents find the lowest point.
double SlidLayout::bestBetween(unsigned die, Axis which, double low, double high) const {
    Local atLow = localAt(die, which, low);
    if (atLow.right >= 0.0 || high <= low) {
        return low;
    }
    Local atHigh = localAt(die, which, high);
    if (atHigh.left <= 0.0) {
        return high;
    }
    const double enough = kSlidingEnough * along(which).side;
    for (int tangent = 0; tangent < kMostTangents && high - low > enough; ++tangent) {
        const double meet = (atHigh.value - atLow.value + atLow.right * low - atHigh.left * high) /
                            (atLow.right - atHigh.left);
        const bool halves = tangent % 3 == 2 || !(meet > low && meet < high);
        const double middle = halves ? (low + high) / 2 : meet;
        const Local atMiddle = localAt(die, which, middle);
        if (atMiddle.right < 0.0) {
            low = middle;
            atLow = atMiddle;
        } else if (atMiddle.left > 0.0) {
            high = middle;
            atHigh = atMiddle;
        } else {
            return middle;
        }
    }
    return atLow.value < atHigh.value ? low : high;
}

SlidLayout::Local SlidLayout::localAt(unsigned die, Axis which, double at) const {
    const Along& axis = along(which);
    Local sum{0.0, 0.0, 0.0};
    for (const unsigned bundle : bundlesOf[die]) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        if (a == die) {
            const Local one = axis.costs[bundle]->around(at - axis.at[b]);
            sum = {sum.value + one.value, sum.left + one.left, sum.right + one.right};
        } else {
            const Local one = axis.costs[bundle]->around(axis.at[a] - at);
            sum = {sum.value + one.value, sum.left - one.right, sum.right - one.left};
        }
    }
    for (const Place& place : wideOf[die]) {
        const Local one = wideAt(place, axis, at);
        sum = {sum.value + one.value, sum.left + one.left, sum.right + one.right};
    }
    return sum;
}

SlidLayout::Local SlidLayout::wideAt(Place place, const Along& axis, double at) const {
    double low = kInfiniteLength;
    double high = -kInfiniteLength;
    for (unsigned member = firstMembers[place.net]; member < firstMembers[place.net + 1];
         ++member) {
        if (member != place.member) {
            const double other = axis.at[memberBodies[member]];
            low = std::min(low, other + axis.reaches[member].low);
            high = std::max(high, other + axis.reaches[member].high);
        }
    }
    const double ownLow = at + axis.reaches[place.member].low;
    const double ownHigh = at + axis.reaches[place.member].high;
    const double count = wideCounts[place.net];
    return {count * (std::max(high, ownHigh) - std::min(low, ownLow)),
            count * ((ownHigh > high ? 1.0 : 0.0) - (ownLow <= low ? 1.0 : 0.0)),
            count * ((ownHigh >= high ? 1.0 : 0.0) - (ownLow < low ? 1.0 : 0.0))};
}

// --- Measuring -------------------------------------------------------------------------------

double SlidLayout::bundleLength(unsigned bundle, const Along& axis) const {
    const auto& [a, b, weight] = nets.bundles()[bundle];
    return axis.costs[bundle]->around(axis.at[a] - axis.at[b]).value;
}

double SlidLayout::wideLength(unsigned net, const Along& axis) const {
    double low = kInfiniteLength;
    double high = -kInfiniteLength;
    for (unsigned member = firstMembers[net]; member < firstMembers[net + 1]; ++member) {
        const double at = axis.at[memberBodies[member]];
        low = std::min(low, at + axis.reaches[member].low);
        high = std::max(high, at + axis.reaches[member].high);
    }
    return wideCounts[net] * (high - low);
}

void SlidLayout::measureAll() {
    for (Along& axis : axes) {
        axis.length = 0.0;
        for (unsigned bundle = 0; bundle < axis.bundleCost.size(); ++bundle) {
            axis.length += axis.bundleCost[bundle] = bundleLength(bundle, axis);
        }
        for (unsigned net = 0; net < axis.wideCost.size(); ++net) {
            axis.length += axis.wideCost[net] = wideLength(net, axis);
        }
    }
}

void SlidLayout::measureMoved() {
    for (unsigned axis = 0; axis < 2; ++axis) {
        ++stamp;
        for (unsigned die = 0; die < dieNum(); ++die) {
            if (axes[axis].at[die] != axes[axis].kept[die]) {
                measureNetsOf(die, axis);
            }
        }
        for (const auto& [die, before] : turnedFrom) {
            measureNetsOf(die, axis);
        }
    }
}

void SlidLayout::measureSlid() {
    for (unsigned axis = 0; axis < 2; ++axis) {
        ++stamp;
        for (const unsigned die : axes[axis].slid) {
            measureNetsOf(die, axis);
        }
        axes[axis].slid.clear();
    }
}

void SlidLayout::measureNetsOf(unsigned die, unsigned axis) {
    Along& here = axes[axis];
    for (const unsigned bundle : bundlesOf[die]) {
        if (bundleSeen[bundle] != stamp) {
            bundleSeen[bundle] = stamp;
            const double length = bundleLength(bundle, here);
            journal.push_back({axis, false, bundle, here.bundleCost[bundle]});
            here.length += length - here.bundleCost[bundle];
            here.bundleCost[bundle] = length;
        }
    }
    for (const auto& [net, member] : wideOf[die]) {
        if (wideSeen[net] != stamp) {
            wideSeen[net] = stamp;
            const double length = wideLength(net, here);
            journal.push_back({axis, true, net, here.wideCost[net]});
            here.length += length - here.wideCost[net];
            here.wideCost[net] = length;
        }
    }
}

Placement SlidLayout::placement() const {
    Placement result(dieNum());
    for (unsigned die = 0; die < dieNum(); ++die) {
        result[die] = {{axes[0].at[die], axes[1].at[die]}, orients[die]};
    }
    return result;
}

}  // namespace korvel
