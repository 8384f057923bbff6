#include "anneal/AxisLayout.h"

#include <algorithm>

#include "base/Tolerances.h"

namespace korvel {

namespace {

// Of the pushed dies, so many slide after a change; with more of them, fewer moves a second cost
// more than the shorter layouts gain.
constexpr unsigned kMostSlid = 12;

// A few tangents find the lowest place of most functions; the rest is not worth the time.
constexpr int kMostTangents = 16;
// One in so many is replaced by the middle: tangents alone can close in from one side only.
constexpr int kHalvesEvery = 3;

}  // namespace

AxisLayout::AxisLayout(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis, double side)
    : nets(nets),
      netsOfDies(netsOfDies),
      axis(axis),
      packing(axis, nets.dieNum(), side),
      costs(nets, netsOfDies, axis, packing.cornersOfBodies()),
      ignoresNobody(nets.dieNum(), 0) {
    for (unsigned die = 0; die < dieNum(); ++die) {
        packing.setSize(die, nets.size(die, axis, Orient::N));
    }
}

double AxisLayout::preferredCorner(unsigned die) const {
    if (!netsOfDies.hasNets(die)) {
        return packing.corner(die);
    }
    const auto [low, high] = packing.cornerRange(die);
    return bestBetween(die, low, high);
}

void AxisLayout::shift(unsigned die, double step) {
    const auto [low, high] = packing.cornerRange(die);
    packing.setCorner(die, std::max(low, std::min(packing.corner(die) + step, high)));
}

void AxisLayout::setOrientation(unsigned die, const std::vector<Orient>& orientsOfBodies) {
    packing.setSize(die, nets.size(die, axis, orientsOfBodies[die]));
    costs.setOrientation(die, orientsOfBodies);
}

// Where there is less room than the die needs, it goes between its neighbours, which are pushed
// apart afterwards.
void AxisLayout::placeReleased(const SequencePair& orders, std::span<const unsigned> released,
                               const Packing::DieFlags& isReleased) {
    for (const unsigned die : released) {
        const double preferred = preferredCorner(die);
        const auto [low, high] = packing.slack(orders, die, isReleased);
        packing.setCorner(die, std::clamp(preferred, std::min(low, high), std::max(low, high)));
    }
}

void AxisLayout::measureMoved(std::span<const unsigned> turned) {
    costs.beginMeasuring();
    for (unsigned die = 0; die < dieNum(); ++die) {
        if (packing.hasMoved(die)) {
            costs.measureNetsOf(die);
        }
    }
    for (const unsigned die : turned) {
        costs.measureNetsOf(die);
    }
}

// --- Sliding ---------------------------------------------------------------------------------

void AxisLayout::slideMoved(const SequencePair& orders, std::span<const unsigned> released) {
    for (const unsigned die : released) {
        slide(orders, die);
    }
    unsigned moved = 0;
    for (unsigned die = 0; die < dieNum() && moved < kMostSlid; ++die) {
        if (packing.hasMoved(die)) {
            slide(orders, die);
            ++moved;
        }
    }
    costs.beginMeasuring();
    for (const unsigned die : slid) {
        costs.measureNetsOf(die);
    }
    slid.clear();
}

void AxisLayout::slide(const SequencePair& orders, unsigned die) {
    const double from = packing.corner(die);
    const NetCosts::Local here = costs.costAt(die, from);
    if (here.left <= 0.0 && here.right >= 0.0) {
        return;
    }
    const auto [low, high] = packing.slack(orders, die, ignoresNobody);
    if (here.right < 0.0 && high > from) {
        packing.setCorner(die, bestBetween(die, from, high));
    } else if (here.left > 0.0 && low < from) {
        packing.setCorner(die, bestBetween(die, low, from));
    }
    if (packing.corner(die) != from) {
        slid.push_back(die);
    }
}

// The function lies above its tangents at both ends, so the place where these meet is where it can
// be lowest: the method of cutting planes (J. E. Kelley, "The cutting-plane method for solving
// convex programs", 1960) along a line. With one breakpoint in between they meet in it.
double AxisLayout::bestBetween(unsigned die, double low, double high) const {
    NetCosts::Local atLow = costs.costAt(die, low);
    if (atLow.right >= 0.0 || high <= low) {
        return low;
    }
    NetCosts::Local atHigh = costs.costAt(die, high);
    if (atHigh.left <= 0.0) {
        return high;
    }
    const double enough = kSlidingEnough * packing.side();
    for (int tangent = 0; tangent < kMostTangents && high - low > enough; ++tangent) {
        const double meet = (atHigh.value - atLow.value + atLow.right * low - atHigh.left * high) /
                            (atLow.right - atHigh.left);
        const bool halves =
            tangent % kHalvesEvery == kHalvesEvery - 1 || !(meet > low && meet < high);
        const double middle = halves ? (low + high) / 2 : meet;
        const NetCosts::Local atMiddle = costs.costAt(die, middle);
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

// --- Keeping ---------------------------------------------------------------------------------

void AxisLayout::place(const std::vector<double>& cornersOfDies) {
    for (unsigned die = 0; die < dieNum(); ++die) {
        packing.setCorner(die, cornersOfDies[die]);
    }
    packing.keepLegal();
    costs.measureAll();
}

void AxisLayout::keep() {
    packing.keep();
    costs.keep();
}

void AxisLayout::undo() {
    packing.undo();
    costs.undo();
}

}  // namespace korvel
