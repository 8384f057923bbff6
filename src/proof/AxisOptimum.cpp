#include "proof/AxisOptimum.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "base/Infinity.h"
#include "base/Invariant.h"
#include "base/Tolerances.h"

namespace korvel {

namespace {

// For `descend`: pushes before breakpoints are blurred, by how much, and the steps back.
constexpr unsigned kPatience = 12;
constexpr double kBlur = 1e8;
constexpr double kFocus = 10.0;

// Nets weigh whole numbers, so slopes are whole, and sums over all sets of bodies are exact and
// twice as fast as in double precision.
int whole(double slope) {
    return static_cast<int>(slope);
}

constexpr bool holdsThree(std::uint32_t set) {
    const std::uint32_t butOne = set & (set - 1);
    return (butOne & (butOne - 1)) != 0;
}

}  // namespace

void AxisOptimum::begin(unsigned newBodyNum, double newNearness) {
    KORVEL_INVARIANT(newBodyNum <= kMaxProofDies + 1, "few enough bodies to look at all sets");
    bodyNum = newBodyNum;
    nearness = newNearness;
    weight = 0;
    bundles.clear();
    gaps.clear();
    pins.clear();
    wideNets.clear();
}

void AxisOptimum::addBundle(unsigned from, unsigned to, const PiecewiseLinear& cost) {
    bundles.push_back({from, to, &cost, 0, 0});
    weight -= whole(cost.slopeBefore(0));
}

void AxisOptimum::addGap(unsigned from, unsigned to, double least) {
    gaps.push_back({from, to, least});
}

void AxisOptimum::beginWideNet(double netWeight) {
    wideNets.push_back({pins.size(), pins.size(), whole(netWeight)});
    weight += whole(netWeight);
}

void AxisOptimum::addPins(unsigned body, const PinRange& range) {
    pins.push_back({body, range});
    wideNets.back().end = pins.size();
}

// The margin: what counts as at a breakpoint may be one nearness off it. A tangent there is too
// high by two of them times the range of slopes, which is 2 for a net. A gap's slope is at most the
// weight of all nets (its pull has to be balanced by theirs), and pulls pass each body once.
double AxisOptimum::minimise(double* positions) {
    std::copy(positions, positions + bodyNum - 1, at.begin());
    at[bodyNum - 1] = 0.0;
    // No nets can pull harder than this, so no gap is given up for them.
    heavy = 2 * weight + 1;
    descend();
    std::copy(at.begin(), at.begin() + bodyNum - 1, positions);
    return length() * (1.0 - kSumError) - nearness * weight * (4.0 + 2.0 * bodyNum);
}

// Breakpoints that nearly coincide can make two sets push one another along a valley in tiny steps.
// After too many pushes breakpoints are therefore blurred, so that a push has to gain beyond all
// that are near, and brought into focus again step by step.
void AxisOptimum::descend() {
    blur = nearness;
    for (unsigned pushes = 0;; ++pushes) {
        blur = pushes == kPatience ? nearness * kBlur : blur;
        locate();
        sumOverSets();
        const Set best = steepest();
        if (bySet[best] < 0) {
            push(best, bySet[best]);
        } else if (blur > nearness) {
            blur = std::max(nearness, blur / kFocus);
        } else {
            return;
        }
    }
}

void AxisOptimum::locate() {
    single.fill(0);
    for (auto& row : joint) {
        row.fill(0);
    }
    touched.clear();
    held.clear();
    for (Bundle& bundle : bundles) {
        const double here = distance(bundle.from, bundle.to);
        const auto& points = bundle.cost->breakpoints();
        bundle.below = bundle.cost->numBelow(here - blur);
        bundle.upTo = bundle.below;
        while (bundle.upTo < points.size() && points[bundle.upTo].at <= here + blur) {
            ++bundle.upTo;
        }
        addPair(bundle.from, bundle.to, whole(bundle.cost->slopeBefore(bundle.below)),
                whole(bundle.cost->slopeBefore(bundle.upTo)));
    }
    for (const Gap& gap : gaps) {
        const double spare = distance(gap.from, gap.to) - gap.least;
        addPair(gap.from, gap.to, spare <= blur ? -heavy : 0, spare < -blur ? -heavy : 0);
    }
    locateWideNets();
}

// From the lowest to the highest pin of a net.
PinRange AxisOptimum::reachOf(const WideNet& net) const {
    PinRange reach;
    for (std::size_t p = net.begin; p < net.end; ++p) {
        reach.cover(pins[p].range.movedBy(at[pins[p].body]));
    }
    return reach;
}

void AxisOptimum::locateWideNets() {
    for (const WideNet& net : wideNets) {
        const PinRange reach = reachOf(net);
        Set lowest = 0;
        Set highest = 0;
        for (std::size_t p = net.begin; p < net.end; ++p) {
            const Set bit = Set{1} << pins[p].body;
            const PinRange here = pins[p].range.movedBy(at[pins[p].body]);
            lowest |= here.low <= reach.low + blur ? bit : 0;
            highest |= here.high >= reach.high - blur ? bit : 0;
        }
        addHighest(highest, net.weight);
        addLowest(lowest, net.weight);
    }
}

// A function of how far `to` is above `from`: moving `to` up costs the right slope, moving `from`
// up saves the left one, moving both changes nothing.
void AxisOptimum::addPair(unsigned from, unsigned to, int slopeLeft, int slopeRight) {
    single[to] += slopeRight;
    single[from] -= slopeLeft;
    joint[std::max(from, to)][std::min(from, to)] += slopeLeft - slopeRight;
}

void AxisOptimum::addHighest(Set bodies, int netWeight) {
    if (holdsThree(bodies)) {
        touched.push_back({bodies, netWeight});
        return;
    }
    const int low = std::countr_zero(bodies);
    const int high = std::bit_width(bodies) - 1;
    single[low] += netWeight;
    if (high != low) {
        single[high] += netWeight;
        joint[high][low] -= netWeight;
    }
}

void AxisOptimum::addLowest(Set bodies, int netWeight) {
    if (holdsThree(bodies)) {
        held.push_back({bodies, netWeight});
        return;
    }
    const int low = std::countr_zero(bodies);
    const int high = std::bit_width(bodies) - 1;
    if (high == low) {
        single[low] -= netWeight;
    } else {
        joint[high][low] -= netWeight;
    }
}

// Sets in the order of their numbers: those with body i as the highest follow all those without it.
void AxisOptimum::sumOverSets() {
    const std::size_t setNum = std::size_t{1} << bodyNum;
    bySet.resize(setNum);
    ofNewest.resize(setNum / 2);
    bySet[0] = 0;
    for (unsigned body = 0; body < bodyNum; ++body) {
        ofNewest[0] = single[body];
        for (unsigned other = 0; other < body; ++other) {
            const std::size_t half = std::size_t{1} << other;
            for (std::size_t set = 0; set < half; ++set) {
                ofNewest[half + set] = ofNewest[set] + joint[body][other];
            }
        }
        const std::size_t half = std::size_t{1} << body;
        for (std::size_t set = 0; set < half; ++set) {
            bySet[half + set] = bySet[set] + ofNewest[set];
        }
    }
    for (const auto& [bodies, netWeight] : touched) {
        for (Set set = 0; set < setNum; ++set) {
            bySet[set] += (set & bodies) != 0 ? netWeight : 0;
        }
    }
    for (const auto& [bodies, netWeight] : held) {
        for (Set set = 0; set < setNum; ++set) {
            bySet[set] -= (set & bodies) == bodies ? netWeight : 0;
        }
    }
}

AxisOptimum::Set AxisOptimum::steepest() const {
    return static_cast<Set>(std::min_element(bySet.begin(), bySet.end()) - bySet.begin());
}

// The ground stays: where it would have to move, all others move the other way.
void AxisOptimum::push(Set up, int slope) {
    gather(up);
    const double step = distanceToMinimum(slope);
    const bool otherWay = (up >> (bodyNum - 1) & 1) != 0;
    for (unsigned body = 0; body + 1 < bodyNum; ++body) {
        const bool isUp = (up >> body & 1) != 0;
        if (isUp != otherWay) {
            at[body] += otherWay ? -step : step;
        }
    }
}

void AxisOptimum::gather(Set up) {
    sweeps.clear();
    jumps.clear();
    for (const Bundle& bundle : bundles) {
        const bool movesFrom = (up >> bundle.from & 1) != 0;
        const bool movesTo = (up >> bundle.to & 1) != 0;
        if (movesFrom != movesTo) {
            const std::size_t count =
                movesTo ? bundle.cost->breakpoints().size() - bundle.upTo : bundle.below;
            sweeps.push_back(
                {&bundle, nullptr, distance(bundle.from, bundle.to), movesTo, 0, count});
        }
    }
    gatherGaps(up);
    gatherWideNets(up);
    settleJumps();
}

void AxisOptimum::settleJumps() {
    if (jumps.empty()) {
        return;
    }
    std::sort(jumps.begin(), jumps.end(),
              [](const Jump& a, const Jump& b) { return a.distance < b.distance; });
    int sum = 0;
    for (Jump& jump : jumps) {
        jump.by = sum += jump.by;
    }
    sweeps.push_back({nullptr, jumps.data(), 0.0, true, 0, jumps.size()});
}

void AxisOptimum::gatherGaps(Set up) {
    for (const Gap& gap : gaps) {
        const bool movesFrom = (up >> gap.from & 1) != 0;
        const bool movesTo = (up >> gap.to & 1) != 0;
        const double spare = distance(gap.from, gap.to) - gap.least;
        if (movesFrom && !movesTo && spare > blur) {
            jumps.push_back({spare, heavy});
        } else if (movesTo && !movesFrom && spare < -blur) {
            jumps.push_back({-spare, heavy});
        }
    }
}

// The slope grows where the highest pin that moves passes the highest one that stays, and where the
// lowest one that moves passes the lowest one that stays.
void AxisOptimum::gatherWideNets(Set up) {
    for (const WideNet& net : wideNets) {
        std::array<PinRange, 2> reach;  // of the bodies that stay, and that move
        for (std::size_t p = net.begin; p < net.end; ++p) {
            reach[up >> pins[p].body & 1].cover(pins[p].range.movedBy(at[pins[p].body]));
        }
        for (const double step : {reach[0].high - reach[1].high, reach[0].low - reach[1].low}) {
            if (step > blur && step < kInfiniteLength) {
                jumps.push_back({step, net.weight});
            }
        }
    }
}

double AxisOptimum::Sweep::distance(std::size_t index) const {
    if (bundle == nullptr) {
        return jumps[index].distance;
    }
    const auto& points = bundle->cost->breakpoints();
    return grows ? points[bundle->upTo + index].at - here
                 : here - points[bundle->below - 1 - index].at;
}

int AxisOptimum::Sweep::rise(std::size_t passedNow) const {
    if (bundle == nullptr) {
        return passedNow == 0 ? 0 : jumps[passedNow - 1].by;
    }
    const PiecewiseLinear& cost = *bundle->cost;
    return whole(grows ? cost.slopeBefore(bundle->upTo + passedNow) - cost.slopeBefore(bundle->upTo)
                       : cost.slopeBefore(bundle->below) -
                             cost.slopeBefore(bundle->below - passedNow));
}

std::size_t AxisOptimum::Sweep::passedAt(double distanceNow) const {
    std::size_t low = from;
    std::size_t high = to;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (distance(middle) <= distanceNow) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// The first breakpoint after which the slope is no longer negative. Breakpoints come in sorted
// sequences, so the middle one of the longest is tried and halves it.
double AxisOptimum::distanceToMinimum(int slope) {
    double best = kInfiniteLength;
    while (true) {
        const auto longest = std::max_element(
            sweeps.begin(), sweeps.end(),
            [](const Sweep& a, const Sweep& b) { return a.to - a.from < b.to - b.from; });
        if (longest == sweeps.end() || longest->to == longest->from) {
            break;
        }
        const std::size_t middle = (longest->from + longest->to) / 2;
        const double tried = longest->distance(middle);
        if (slopeAfter(slope, tried) >= 0) {
            best = tried;
            for (Sweep& sweep : sweeps) {
                sweep.to = sweep.passed;
            }
            longest->to = middle;
        } else {
            for (Sweep& sweep : sweeps) {
                sweep.from = sweep.passed;
            }
        }
    }
    KORVEL_INVARIANT(best < kInfiniteLength, "no push goes on for ever");
    return best;
}

int AxisOptimum::slopeAfter(int slope, double distanceNow) {
    for (Sweep& sweep : sweeps) {
        sweep.passed = sweep.passedAt(distanceNow);
        slope += sweep.rise(sweep.passed);
    }
    return slope;
}

double AxisOptimum::length() const {
    double sum = 0.0;
    for (const Bundle& bundle : bundles) {
        sum += bundle.cost->value(distance(bundle.from, bundle.to));
    }
    for (const Gap& gap : gaps) {
        sum += heavy * std::max(0.0, gap.least - distance(gap.from, gap.to));
    }
    for (const WideNet& net : wideNets) {
        sum += net.weight * reachOf(net).length();
    }
    return sum;
}

}  // namespace korvel
