#include "anneal/NetCosts.h"

#include <algorithm>
#include <limits>

#include "base/Infinity.h"

namespace korvel {

namespace {

constexpr unsigned kNobody = std::numeric_limits<unsigned>::max();

NetCosts::Local sum(const NetCosts::Local& a, const NetCosts::Local& b) {
    return {a.value + b.value, a.left + b.left, a.right + b.right};
}

}  // namespace

NetsOfDies::NetsOfDies(const NetModel& nets) : bundles(nets.dieNum()), wide(nets.dieNum()) {
    for (unsigned bundle = 0; bundle < nets.bundles().size(); ++bundle) {
        for (const unsigned body : {nets.bundles()[bundle].a, nets.bundles()[bundle].b}) {
            if (body != nets.ground()) {
                bundles[body].push_back(bundle);
            }
        }
    }
    for (unsigned net = 0; net < nets.wideNets().size(); ++net) {
        firstMembers.push_back(static_cast<unsigned>(memberBodies.size()));
        for (const BodyPins& member : nets.wideNets()[net].members) {
            if (member.body != nets.ground()) {
                wide[member.body].push_back({net, static_cast<unsigned>(memberBodies.size())});
            }
            memberBodies.push_back(member.body);
        }
    }
    firstMembers.push_back(static_cast<unsigned>(memberBodies.size()));
}

NetCosts::NetCosts(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis,
                   const std::vector<double>& corners)
    : nets(nets),
      netsOfDies(netsOfDies),
      axis(axis),
      corners(corners),
      bundleCost(nets.bundles().size()),
      bundleCosts(nets.bundles().size(), 0.0),
      wideCosts(nets.wideNets().size(), 0.0),
      bundleStamps(nets.bundles().size(), 0),
      wideStamps(nets.wideNets().size(), 0) {
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const BodyPins& member : net.members) {
            memberPins.push_back(member.range(axis, Orient::N));
        }
    }
    const std::vector<Orient> orients(nets.dieNum() + 1, Orient::N);
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        setOrientation(die, orients);
    }
    measureAll();
}

void NetCosts::setOrientation(unsigned die, const std::vector<Orient>& orients) {
    for (const unsigned bundle : netsOfDies.bundles[die]) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        bundleCost[bundle] = &nets.cost(bundle, axis, orients[a], orients[b]);
    }
    for (const auto& [net, member] : netsOfDies.wide[die]) {
        const NetModel::WideNet& wide = nets.wideNets()[net];
        memberPins[member] =
            wide.members[member - netsOfDies.firstMembers[net]].range(axis, orients[die]);
    }
}

// --- One die ----------------------------------------------------------------------------------

// From the lowest to the highest pin of a wide net, without those of one member.
inline PinRange NetCosts::rangeOf(unsigned net, unsigned leftOut) const {
    double low = kInfiniteLength;
    double high = -kInfiniteLength;
    const unsigned end = netsOfDies.firstMembers[net + 1];
    for (unsigned member = netsOfDies.firstMembers[net]; member < end; ++member) {
        if (member != leftOut) {
            const double corner = corners[netsOfDies.memberBodies[member]];
            low = std::min(low, corner + memberPins[member].low);
            high = std::max(high, corner + memberPins[member].high);
        }
    }
    return {low, high};
}

NetCosts::Local NetCosts::wideAt(NetsOfDies::Membership membership, double corner) const {
    const auto [low, high] = rangeOf(membership.net, membership.member);
    const double ownLow = corner + memberPins[membership.member].low;
    const double ownHigh = corner + memberPins[membership.member].high;
    const double weight = nets.wideNets()[membership.net].weight;
    return {weight * (std::max(high, ownHigh) - std::min(low, ownLow)),
            weight * ((ownHigh > high ? 1.0 : 0.0) - (ownLow <= low ? 1.0 : 0.0)),
            weight * ((ownHigh >= high ? 1.0 : 0.0) - (ownLow < low ? 1.0 : 0.0))};
}

NetCosts::Local NetCosts::costAt(unsigned die, double corner) const {
    Local all{0.0, 0.0, 0.0};
    for (const unsigned bundle : netsOfDies.bundles[die]) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        if (a == die) {
            all = sum(all, bundleCost[bundle]->around(corner - corners[b]));
        } else {
            // The distance falls as the die goes up.
            const Local one = bundleCost[bundle]->around(corners[a] - corner);
            all = sum(all, {one.value, -one.right, -one.left});
        }
    }
    for (const NetsOfDies::Membership& membership : netsOfDies.wide[die]) {
        all = sum(all, wideAt(membership, corner));
    }
    return all;
}

// --- Measuring -------------------------------------------------------------------------------

inline double NetCosts::bundleLength(unsigned bundle) const {
    const auto& [a, b, weight] = nets.bundles()[bundle];
    return bundleCost[bundle]->around(corners[a] - corners[b]).value;
}

inline double NetCosts::wideLength(unsigned net) const {
    const auto [low, high] = rangeOf(net, kNobody);
    return nets.wideNets()[net].weight * (high - low);
}

void NetCosts::measureAll() {
    total = 0.0;
    for (unsigned bundle = 0; bundle < bundleCosts.size(); ++bundle) {
        total += bundleCosts[bundle] = bundleLength(bundle);
    }
    for (unsigned net = 0; net < wideCosts.size(); ++net) {
        total += wideCosts[net] = wideLength(net);
    }
    journal.clear();
    keptTotal = total;
}

void NetCosts::measureNetsOf(unsigned die) {
    for (const unsigned bundle : netsOfDies.bundles[die]) {
        if (bundleStamps[bundle] != stamp) {
            bundleStamps[bundle] = stamp;
            replace(Table::Bundles, bundle, bundleLength(bundle));
        }
    }
    for (const auto& [net, member] : netsOfDies.wide[die]) {
        if (wideStamps[net] != stamp) {
            wideStamps[net] = stamp;
            replace(Table::Wide, net, wideLength(net));
        }
    }
}

inline void NetCosts::replace(Table table, unsigned net, double length) {
    double& cost = costs(table)[net];
    journal.push_back({table, net, cost});
    total += length - cost;
    cost = length;
}

void NetCosts::keep() {
    keptTotal = total;
    journal.clear();
}

// Backwards: a net may have been measured twice.
void NetCosts::undo() {
    for (std::size_t entry = journal.size(); entry-- > 0;) {
        costs(journal[entry].table)[journal[entry].net] = journal[entry].before;
    }
    total = keptTotal;
    journal.clear();
}

}  // namespace korvel
