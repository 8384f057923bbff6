#include "anneal/NetCosts.h"

#include <algorithm>

namespace korvel {

namespace {

// A few tangents find the lowest place of most functions; the rest is not worth the time.
constexpr int kMostTangents = 16;
// One in so many is replaced by the middle: tangents alone can close in from one side only.
constexpr int kHalvesEvery = 3;

}  // namespace

NetsOfDies findNetsOfDies(const NetModel& nets) {
    NetsOfDies result(nets.dieNum() + 1);
    unsigned number = 0;
    for (const auto& [a, b, weight] : nets.bundles()) {
        result[a].push_back(number);
        result[b].push_back(number++);
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const BodyPins& member : net.members) {
            result[member.body].push_back(number);
        }
        ++number;
    }
    result.pop_back();  // the ground
    return result;
}

NetCosts::NetCosts(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis,
                   const std::vector<Orient>& orients, const std::vector<double>& corners)
    : nets(nets),
      netsOfDies(netsOfDies),
      bundleNum(static_cast<unsigned>(nets.bundles().size())),
      axis(axis),
      orients(orients),
      corners(corners),
      bundleCost(bundleNum),
      costs(bundleNum + nets.wideNets().size()),
      stamps(costs.size(), 0) {
    for (const NetModel::WideNet& net : nets.wideNets()) {
        members.emplace_back();
        for (const BodyPins& pins : net.members) {
            members.back().push_back({pins.body, pins.range(axis, orients[pins.body])});
        }
    }
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        turned(die);
    }
    measureAll();
}

void NetCosts::turned(unsigned die) {
    for (const unsigned net : netsOfDies[die]) {
        if (net < bundleNum) {
            const auto& [a, b, weight] = nets.bundles()[net];
            bundleCost[net] = &nets.cost(net, axis, orients[a], orients[b]);
            continue;
        }
        std::vector<Member>& wide = members[net - bundleNum];
        std::size_t member = 0;
        while (wide[member].body != die) {
            ++member;
        }
        wide[member].pins =
            nets.wideNets()[net - bundleNum].members[member].range(axis, orients[die]);
    }
}

// --- One die ----------------------------------------------------------------------------------

inline NetCosts::Local NetCosts::bundleAt(unsigned bundle, unsigned die, double corner) const {
    const auto& [a, b, weight] = nets.bundles()[bundle];
    if (a == die) {
        return bundleCost[bundle]->around(corner - corners[b]);
    }
    // The distance falls as the die goes up.
    const Local local = bundleCost[bundle]->around(corners[a] - corner);
    return {local.value, -local.right, -local.left};
}

inline NetCosts::Local NetCosts::wideAt(unsigned net, unsigned die, double corner) const {
    PinRange own;
    PinRange others;
    for (const auto& [body, pins] : members[net]) {
        if (body == die) {
            own = pins.movedBy(corner);
        } else {
            others.cover(pins.movedBy(corners[body]));
        }
    }
    const double weight = nets.wideNets()[net].weight;
    return {weight * (std::max(others.high, own.high) - std::min(others.low, own.low)),
            weight * ((own.high > others.high ? 1.0 : 0.0) - (own.low <= others.low ? 1.0 : 0.0)),
            weight * ((own.high >= others.high ? 1.0 : 0.0) - (own.low < others.low ? 1.0 : 0.0))};
}

NetCosts::Local NetCosts::costAt(unsigned die, double corner) const {
    Local all{0.0, 0.0, 0.0};
    for (const unsigned net : netsOfDies[die]) {
        const Local one =
            net < bundleNum ? bundleAt(net, die, corner) : wideAt(net - bundleNum, die, corner);
        all = {all.value + one.value, all.left + one.left, all.right + one.right};
    }
    return all;
}

// The function lies above its tangents at both ends, so the place where these meet is where it can
// be lowest: the method of cutting planes (J. E. Kelley, "The cutting-plane method for solving
// convex programs", 1960) along a line. With one breakpoint in between they meet in it.
double NetCosts::bestBetween(unsigned die, double low, double high, double enough) const {
    Local atLow = costAt(die, low);
    if (atLow.right >= 0.0 || high <= low) {
        return low;
    }
    Local atHigh = costAt(die, high);
    if (atHigh.left <= 0.0) {
        return high;
    }
    for (int tangent = 0; tangent < kMostTangents && high - low > enough; ++tangent) {
        const double meet = (atHigh.value - atLow.value + atLow.right * low - atHigh.left * high) /
                            (atLow.right - atHigh.left);
        const bool halves =
            tangent % kHalvesEvery == kHalvesEvery - 1 || !(meet > low && meet < high);
        const double middle = halves ? (low + high) / 2 : meet;
        const Local atMiddle = costAt(die, middle);
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

// --- Measuring -------------------------------------------------------------------------------

inline double NetCosts::measured(unsigned net) const {
    if (net < bundleNum) {
        const auto& [a, b, weight] = nets.bundles()[net];
        return bundleCost[net]->around(corners[a] - corners[b]).value;
    }
    PinRange all;
    for (const auto& [body, pins] : members[net - bundleNum]) {
        all.cover(pins.movedBy(corners[body]));
    }
    return nets.wideNets()[net - bundleNum].weight * all.length();
}

void NetCosts::measureAll() {
    total = 0.0;
    for (unsigned net = 0; net < costs.size(); ++net) {
        total += costs[net] = measured(net);
    }
    journal.clear();
    keptTotal = total;
}

void NetCosts::measureNetsOf(unsigned die) {
    for (const unsigned net : netsOfDies[die]) {
        if (stamps[net] != stamp) {
            const double length = measured(net);
            stamps[net] = stamp;
            journal.push_back({net, costs[net]});
            total += length - costs[net];
            costs[net] = length;
        }
    }
}

void NetCosts::keep() {
    keptTotal = total;
    journal.clear();
}

// Backwards: a net may have been measured twice.
void NetCosts::undo() {
    for (std::size_t entry = journal.size(); entry-- > 0;) {
        costs[journal[entry].net] = journal[entry].before;
    }
    total = keptTotal;
    journal.clear();
}

}  // namespace korvel
