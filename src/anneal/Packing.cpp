#include "anneal/Packing.h"

#include <algorithm>

#include "base/Tolerances.h"

namespace korvel {

Packing::Packing(const DieLimits& limits, Axis axis)
    : limits(limits),
      axis(axis),
      dieNum(limits.dieNum()),
      side(limits.side(axis)),
      corners(dieNum + 1, 0.0),
      keptCorners(corners),
      sizes(dieNum),
      distances(dieNum),
      ranges(dieNum),
      furthest(dieNum),
      chain(dieNum) {
    for (unsigned die = 0; die < dieNum; ++die) {
        setOrientation(die, Orient::N);
    }
}

void Packing::setOrientation(unsigned die, Orient orient) {
    sizes[die] = limits.size(die, axis, orient);
    ranges[die] = limits.cornerRange(die, axis, orient);
    // The sweeps need one distance, whichever die comes after: that to a die like itself.
    distances[die] = limits.leastDistance(die, die, axis, orient);
}

// Calls `put(die, low)` for each die after all dies before it, where `low` is the least corner that
// these leave it; `put` returns the corner it gets. `chain[rank]` is that least corner for a die of
// that rank in the lower order. It never falls with the rank, so a die raises a short stretch.
template <typename Put>
void Packing::sweepFromLow(const SequencePair& orders, const Put& put) {
    const std::vector<unsigned>& upper = orders.order(SequencePair::Upper);
    const std::vector<unsigned>& ranks = orders.rankOfDies(SequencePair::Lower);
    const bool isForward = axis == kX;
    std::fill(chain.begin(), chain.end(), 0.0);
    for (unsigned step = 0; step < dieNum; ++step) {
        const unsigned die = upper[isForward ? step : dieNum - 1 - step];
        const unsigned rank = ranks[die];
        const double end = put(die, chain[rank]) + distances[die];
        for (unsigned above = rank + 1; above < dieNum && chain[above] < end; ++above) {
            chain[above] = end;
        }
    }
}

// The mirror image: `put(die, high)` for each die after all dies behind it, with the highest corner
// that these leave it. `chain[rank]` is where a die of that rank must end.
template <typename Put>
void Packing::sweepFromHigh(const SequencePair& orders, const Put& put) {
    const std::vector<unsigned>& upper = orders.order(SequencePair::Upper);
    const std::vector<unsigned>& ranks = orders.rankOfDies(SequencePair::Lower);
    const bool isForward = axis == kY;
    std::fill(chain.begin(), chain.end(), side);
    for (unsigned step = 0; step < dieNum; ++step) {
        const unsigned die = upper[isForward ? step : dieNum - 1 - step];
        const unsigned rank = ranks[die];
        const double start = put(die, chain[rank] - distances[die]);
        for (unsigned below = rank; below > 0 && chain[below - 1] > start; --below) {
            chain[below - 1] = start;
        }
    }
}

void Packing::findLimits(const SequencePair& orders, Sweep sweep) {
    double lowest = 0.0;
    double highest = side;
    if (sweep == Sweep::FromLow) {
        sweepFromHigh(orders, [&](unsigned die, double high) {
            lowest = std::min(lowest, high);
            return furthest[die] = high;
        });
    } else {
        sweepFromLow(orders, [&](unsigned die, double low) {
            highest = std::max(highest, low + sizes[die]);
            return furthest[die] = low;
        });
    }
    longestChain = highest - lowest;
}

void Packing::pushApart(const SequencePair& orders, Sweep sweep) {
    if (sweep == Sweep::FromLow) {
        sweepFromLow(orders, [&](unsigned die, double low) {
            return corners[die] = std::max(low, std::min(corners[die], furthest[die]));
        });
    } else {
        sweepFromHigh(orders, [&](unsigned die, double high) {
            return corners[die] = std::min(high, std::max(corners[die], furthest[die]));
        });
    }
}

double Packing::overflow() const {
    return std::max(0.0, longestChain / side - (1.0 + kFitting));
}

DieLimits::Range Packing::slack(const SequencePair& orders, unsigned die,
                                const DieFlags& ignored) const {
    const std::vector<unsigned>& upper = orders.rankOfDies(SequencePair::Upper);
    const std::vector<unsigned>& lower = orders.rankOfDies(SequencePair::Lower);
    const bool isX = axis == kX;
    auto [low, high] = cornerRange(die);
    for (unsigned other = 0; other < dieNum; ++other) {
        const bool sameInBoth = (upper[other] < upper[die]) == (lower[other] < lower[die]);
        if (other == die || sameInBoth != isX || ignored[other] != 0) {
            continue;
        }
        if (lower[other] < lower[die]) {
            low = std::max(low, corners[other] + distances[other]);
        } else {
            high = std::min(high, corners[other] - distances[die]);
        }
    }
    return {low, high};
}

void Packing::place(const std::vector<double>& cornersOfDies) {
    std::copy(cornersOfDies.begin(), cornersOfDies.end(), corners.begin());
    longestChain = 0.0;
    keep();
}

void Packing::keep() {
    std::copy(corners.begin(), corners.end(), keptCorners.begin());
    keptChain = longestChain;
}

void Packing::undo() {
    std::copy(keptCorners.begin(), keptCorners.end(), corners.begin());
    longestChain = keptChain;
}

}  // namespace korvel
