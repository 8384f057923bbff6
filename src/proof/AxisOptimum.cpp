#include "proof/AxisOptimum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base/Invariant.h"

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// More than the relative rounding error of any sum of lengths here.
constexpr double kSumError = 1e-12;

constexpr unsigned kPatience = 12;
constexpr double kBlur = 1e8;
constexpr double kFocus = 10.0;

constexpr bool holdsThree(std::uint32_t set) {
    const std::uint32_t butOne = set & (set - 1);
    return (butOne & (butOne - 1)) != 0;
}

}  // namespace

void AxisOptimum::begin(unsigned newBodyNum, double newNearness) {
    KORVEL_INVARIANT(newBodyNum <= kMaxProofDies + 1, "few enough bodies to look at all sets");
    bodyNum = newBodyNum;
    nearness = newNearness;
    netNum = 0;
    links.clear();
    gaps.clear();
    parts.clear();
    netBegins.clear();
}

void AxisOptimum::addBundle(unsigned a, unsigned b, const BundleCost& cost) {
    links.push_back({a, b, &cost, 0, 0});
    netNum += cost.getNetNum();
}

void AxisOptimum::addGap(unsigned a, unsigned b, double gap) {
    gaps.push_back({a, b, gap});
}

void AxisOptimum::beginWideNet() {
    netBegins.push_back(parts.size());
    ++netNum;
}

void AxisOptimum::addPart(unsigned body, const PinRange& range) {
    parts.push_back({body, range});
}

// The margin: what counts as at a kink may be one nearness off it. A tangent there is too high by
// two of them times the range of slopes, which is 2 for a net. A gap's slope is at most the number
// of nets (its pull has to be balanced by theirs), and pulls pass each body once.
double AxisOptimum::minimise(double* positions) {
    std::copy(positions, positions + bodyNum - 1, at.begin());
    at[bodyNum - 1] = 0.0;
    // No nets can pull harder than this, so no gap is given up for them.
    heavy = 2 * netNum + 1;
    netBegins.push_back(parts.size());
    descend();
    const double found = length();
    netBegins.pop_back();
    std::copy(at.begin(), at.begin() + bodyNum - 1, positions);
    return found * (1.0 - kSumError) - nearness * netNum * (4.0 + 2.0 * bodyNum);
}

// Kinks that nearly coincide can make two sets push one another along a valley in tiny steps. After
// too many pushes kinks are therefore blurred, so that a push has to gain beyond all that are near,
// and brought into focus again step by step.
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
    for (Link& link : links) {
        const double here = displacement(link.a, link.b);
        link.below = link.cost->kinksBelow(here - blur);
        const auto& kinks = link.cost->getKinks();
        link.upTo = link.below;
        while (link.upTo < kinks.size() && kinks[link.upTo].at <= here + blur) {
            ++link.upTo;
        }
        addPair(link.a, link.b, link.cost->slopeBefore(link.below),
                link.cost->slopeBefore(link.upTo));
    }
    for (const Gap& gap : gaps) {
        const double spare = displacement(gap.a, gap.b) - gap.least;
        addPair(gap.a, gap.b, spare <= blur ? -heavy : 0, spare < -blur ? -heavy : 0);
    }
    locateWideNets();
}

void AxisOptimum::locateWideNets() {
    for (std::size_t net = 0; net + 1 < netBegins.size(); ++net) {
        PinRange reach;
        for (std::size_t p = netBegins[net]; p < netBegins[net + 1]; ++p) {
            reach.low = std::min(reach.low, at[parts[p].body] + parts[p].range.low);
            reach.high = std::max(reach.high, at[parts[p].body] + parts[p].range.high);
        }
        Set lowest = 0;
        Set highest = 0;
        for (std::size_t p = netBegins[net]; p < netBegins[net + 1]; ++p) {
            const Set bit = Set{1} << parts[p].body;
            const double here = at[parts[p].body];
            lowest |= here + parts[p].range.low <= reach.low + blur ? bit : 0;
            highest |= here + parts[p].range.high >= reach.high - blur ? bit : 0;
        }
        addHighest(highest);
        addLowest(lowest);
    }
}

// A function of how far b is above a: moving b up costs the right slope, moving a up saves the left
// one, moving both changes nothing.
void AxisOptimum::addPair(unsigned a, unsigned b, int slopeLeft, int slopeRight) {
    single[b] += slopeRight;
    single[a] -= slopeLeft;
    joint[std::max(a, b)][std::min(a, b)] += slopeLeft - slopeRight;
}

void AxisOptimum::addHighest(Set bodies) {
    if (holdsThree(bodies)) {
        touched.push_back(bodies);
        return;
    }
    const int low = std::countr_zero(bodies);
    const int high = std::bit_width(bodies) - 1;
    ++single[low];
    if (high != low) {
        ++single[high];
        --joint[high][low];
    }
}

void AxisOptimum::addLowest(Set bodies) {
    if (holdsThree(bodies)) {
        held.push_back(bodies);
        return;
    }
    const int low = std::countr_zero(bodies);
    const int high = std::bit_width(bodies) - 1;
    if (high == low) {
        --single[low];
    } else {
        --joint[high][low];
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
    for (const Set bodies : touched) {
        for (Set set = 0; set < setNum; ++set) {
            bySet[set] += (set & bodies) != 0 ? 1 : 0;
        }
    }
    for (const Set bodies : held) {
        for (Set set = 0; set < setNum; ++set) {
            bySet[set] -= (set & bodies) == bodies ? 1 : 0;
        }
    }
}

AxisOptimum::Set AxisOptimum::steepest() const {
    return static_cast<Set>(std::min_element(bySet.begin(), bySet.end()) - bySet.begin());
}

// The ground stays: where it would have to move, all others move the other way.
void AxisOptimum::push(Set up, int slope) {
    gather(up);
    const double distance = distanceToMinimum(slope);
    const bool otherWay = (up >> (bodyNum - 1) & 1) != 0;
    for (unsigned body = 0; body + 1 < bodyNum; ++body) {
        const bool isUp = (up >> body & 1) != 0;
        if (isUp != otherWay) {
            at[body] += otherWay ? -distance : distance;
        }
    }
}

void AxisOptimum::gather(Set up) {
    sweeps.clear();
    stops.clear();
    for (const Link& link : links) {
        const bool movesA = (up >> link.a & 1) != 0;
        const bool movesB = (up >> link.b & 1) != 0;
        if (movesA != movesB) {
            const std::size_t count =
                movesB ? link.cost->getKinks().size() - link.upTo : link.below;
            sweeps.push_back({&link, nullptr, displacement(link.a, link.b), movesB, 0, count});
        }
    }
    gatherGaps(up);
    gatherWideNets(up);
    settleStops();
}

void AxisOptimum::settleStops() {
    if (stops.empty()) {
        return;
    }
    std::sort(stops.begin(), stops.end(),
              [](const Stop& a, const Stop& b) { return a.distance < b.distance; });
    int sum = 0;
    for (Stop& stop : stops) {
        stop.jumps = sum += stop.jumps;
    }
    sweeps.push_back({nullptr, stops.data(), 0.0, true, 0, stops.size()});
}

void AxisOptimum::gatherGaps(Set up) {
    for (const Gap& gap : gaps) {
        const bool movesA = (up >> gap.a & 1) != 0;
        const bool movesB = (up >> gap.b & 1) != 0;
        const double spare = displacement(gap.a, gap.b) - gap.least;
        if (movesA && !movesB && spare > blur) {
            stops.push_back({spare, heavy});
        } else if (movesB && !movesA && spare < -blur) {
            stops.push_back({-spare, heavy});
        }
    }
}

// A net's end comes to a kink when a moving body overtakes, or reaches, one that stays.
void AxisOptimum::gatherWideNets(Set up) {
    for (std::size_t net = 0; net + 1 < netBegins.size(); ++net) {
        std::array<PinRange, 2> reach;  // of the bodies that stay, and that move
        for (std::size_t p = netBegins[net]; p < netBegins[net + 1]; ++p) {
            PinRange& range = reach[up >> parts[p].body & 1];
            range.low = std::min(range.low, at[parts[p].body] + parts[p].range.low);
            range.high = std::max(range.high, at[parts[p].body] + parts[p].range.high);
        }
        for (const double distance : {reach[0].high - reach[1].high, reach[0].low - reach[1].low}) {
            if (distance > blur && distance < kInfinity) {
                stops.push_back({distance, 1});
            }
        }
    }
}

double AxisOptimum::Sweep::distance(std::size_t index) const {
    if (link == nullptr) {
        return stops[index].distance;
    }
    const auto& kinks = link->cost->getKinks();
    return grows ? kinks[link->upTo + index].at - here : here - kinks[link->below - 1 - index].at;
}

int AxisOptimum::Sweep::gain(std::size_t passedNow) const {
    if (link == nullptr) {
        return passedNow == 0 ? 0 : stops[passedNow - 1].jumps;
    }
    const BundleCost& cost = *link->cost;
    return grows ? cost.slopeBefore(link->upTo + passedNow) - cost.slopeBefore(link->upTo)
                 : cost.slopeBefore(link->below) - cost.slopeBefore(link->below - passedNow);
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

// The first kink after which the slope is no longer negative. Kinks come in sorted sequences, so
// the middle one of the longest is tried and halves it.
double AxisOptimum::distanceToMinimum(int slope) {
    double best = kInfinity;
    while (true) {
        const auto longest = std::max_element(
            sweeps.begin(), sweeps.end(),
            [](const Sweep& a, const Sweep& b) { return a.to - a.from < b.to - b.from; });
        if (longest == sweeps.end() || longest->to == longest->from) {
            break;
        }
        const std::size_t middle = (longest->from + longest->to) / 2;
        const double distance = longest->distance(middle);
        if (slopeAfter(slope, distance) >= 0) {
            best = distance;
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
    KORVEL_INVARIANT(best < kInfinity, "no push goes on for ever");
    return best;
}

int AxisOptimum::slopeAfter(int slope, double distance) {
    for (Sweep& sweep : sweeps) {
        sweep.passed = sweep.passedAt(distance);
        slope += sweep.gain(sweep.passed);
    }
    return slope;
}

double AxisOptimum::length() const {
    double sum = 0.0;
    for (const Link& link : links) {
        sum += link.cost->at(displacement(link.a, link.b));
    }
    for (const Gap& gap : gaps) {
        sum += heavy * std::max(0.0, gap.least - displacement(gap.a, gap.b));
    }
    for (std::size_t net = 0; net + 1 < netBegins.size(); ++net) {
        PinRange reach;
        for (std::size_t p = netBegins[net]; p < netBegins[net + 1]; ++p) {
            reach.low = std::min(reach.low, at[parts[p].body] + parts[p].range.low);
            reach.high = std::max(reach.high, at[parts[p].body] + parts[p].range.high);
        }
        sum += reach.high - reach.low;
    }
    return sum;
}

}  // namespace korvel
