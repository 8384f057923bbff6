#include "anneal/NetCosts.h"

#include <algorithm>
#include <limits>

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr unsigned kNobody = std::numeric_limits<unsigned>::max();

NetCosts::Local sum(const NetCosts::Local& a, const NetCosts::Local& b) {
    return {a.value + b.value, a.left + b.left, a.right + b.right};
}

}  // namespace

NetsOfDies::NetsOfDies(const NetModel& nets) : pairs(nets.dieNum()), wide(nets.dieNum()) {
    for (unsigned pair = 0; pair < nets.pairs().size(); ++pair) {
        for (const unsigned body : {nets.pairs()[pair].a, nets.pairs()[pair].b}) {
            if (body != nets.ground()) {
                pairs[body].push_back(pair);
            }
        }
    }
    for (unsigned net = 0; net < nets.wideNets().size(); ++net) {
        firstMembers.push_back(static_cast<unsigned>(memberBodies.size()));
        for (const NetModel::Member& member : nets.wideNets()[net].members) {
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
      bends(nets.pairs().size()),
      pairCosts(nets.pairs().size(), 0.0),
      wideCosts(nets.wideNets().size(), 0.0),
      pairStamps(nets.pairs().size(), 0),
      wideStamps(nets.wideNets().size(), 0) {
    for (const NetModel::WideNet& net : nets.wideNets()) {
        wideCounts.push_back(net.count);
        for (const NetModel::Member& member : net.members) {
            reaches.push_back(member.reach[axis][orientIndex(Orient::N)]);
        }
    }
    const std::vector<Orient> orients(nets.dieNum() + 1, Orient::N);
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        setOrientation(die, orients);
    }
    measureAll();
}

void NetCosts::setOrientation(unsigned die, const std::vector<Orient>& orients) {
    for (const unsigned pair : netsOfDies.pairs[die]) {
        const auto [a, b] = nets.pairs()[pair];
        bends[pair] = nets.bends(pair, axis, orients[a], orients[b]);
    }
    for (const auto& [net, member] : netsOfDies.wide[die]) {
        reaches[member] = nets.wideNets()[net]
                              .members[member - netsOfDies.firstMembers[net]]
                              .reach[axis][orientIndex(orients[die])];
    }
}

// --- One function ----------------------------------------------------------------------------

// Pins are mostly in rows of equal steps, so the bend before the distance is near where it would be
// if bends were that as well.
inline NetCosts::Local NetCosts::localAt(Bends bends, double distance) {
    const NetModel::Bend& lowest = bends.front();
    if (distance < lowest.at) {
        const double slope = lowest.slope - lowest.turn;
        return {lowest.value + slope * (distance - lowest.at), slope, slope};
    }
    const std::size_t highest = bends.size() - 1;
    std::size_t before = highest;
    if (distance < bends[highest].at) {
        const double part = (distance - lowest.at) / (bends[highest].at - lowest.at);
        before = static_cast<std::size_t>(part * static_cast<double>(highest));
        while (bends[before].at > distance) {
            --before;
        }
        while (bends[before + 1].at <= distance) {
            ++before;
        }
    }
    const NetModel::Bend& last = bends[before];
    return {last.value + last.slope * (distance - last.at),
            last.at == distance ? last.slope - last.turn : last.slope, last.slope};
}

// From the lowest to the highest pin of a wide net, without those of one member.
inline NetModel::Reach NetCosts::reachOf(unsigned net, unsigned leftOut) const {
    double low = kInfinity;
    double high = -kInfinity;
    const unsigned end = netsOfDies.firstMembers[net + 1];
    for (unsigned member = netsOfDies.firstMembers[net]; member < end; ++member) {
        if (member != leftOut) {
            const double corner = corners[netsOfDies.memberBodies[member]];
            low = std::min(low, corner + reaches[member].low);
            high = std::max(high, corner + reaches[member].high);
        }
    }
    return {low, high};
}

NetCosts::Local NetCosts::wideAt(NetsOfDies::Membership membership, double corner) const {
    const auto [low, high] = reachOf(membership.net, membership.member);
    const double ownLow = corner + reaches[membership.member].low;
    const double ownHigh = corner + reaches[membership.member].high;
    const double count = wideCounts[membership.net];
    return {count * (std::max(high, ownHigh) - std::min(low, ownLow)),
            count * ((ownHigh > high ? 1.0 : 0.0) - (ownLow <= low ? 1.0 : 0.0)),
            count * ((ownHigh >= high ? 1.0 : 0.0) - (ownLow < low ? 1.0 : 0.0))};
}

NetCosts::Local NetCosts::costAt(unsigned die, double corner) const {
    Local all{0.0, 0.0, 0.0};
    for (const unsigned pair : netsOfDies.pairs[die]) {
        const auto [a, b] = nets.pairs()[pair];
        if (a == die) {
            all = sum(all, localAt(bends[pair], corner - corners[b]));
        } else {
            // The distance falls as the die goes up.
            const Local one = localAt(bends[pair], corners[a] - corner);
            all = sum(all, {one.value, -one.right, -one.left});
        }
    }
    for (const NetsOfDies::Membership& membership : netsOfDies.wide[die]) {
        all = sum(all, wideAt(membership, corner));
    }
    return all;
}

// --- Measuring -------------------------------------------------------------------------------

inline double NetCosts::pairLength(unsigned pair) const {
    const auto [a, b] = nets.pairs()[pair];
    return localAt(bends[pair], corners[a] - corners[b]).value;
}

inline double NetCosts::wideLength(unsigned net) const {
    const auto [low, high] = reachOf(net, kNobody);
    return wideCounts[net] * (high - low);
}

void NetCosts::measureAll() {
    total = 0.0;
    for (unsigned pair = 0; pair < pairCosts.size(); ++pair) {
        total += pairCosts[pair] = pairLength(pair);
    }
    for (unsigned net = 0; net < wideCosts.size(); ++net) {
        total += wideCosts[net] = wideLength(net);
    }
    journal.clear();
    keptTotal = total;
}

void NetCosts::measureNetsOf(unsigned die) {
    for (const unsigned pair : netsOfDies.pairs[die]) {
        if (pairStamps[pair] != stamp) {
            pairStamps[pair] = stamp;
            replace(Table::Pairs, pair, pairLength(pair));
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
