#include "exact/AxisProgram.h"

#include <lemon/network_simplex.h>
#include <lemon/smart_graph.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "base/Invariant.h"

namespace korvel {

namespace {

using Bend = NetModel::Bend;
using Bends = std::span<const Bend>;
using Unit = std::int64_t;  // the simplex method must not round, so it sees whole numbers

// Thousands of bends between two dies would be as many arcs, of which the solution sees a few. So
// neighbouring bends are taken together as one, in their middle. This lowers the cost inside the
// group and leaves it as it is outside; a solution with no distance inside a group is therefore the
// optimum. Otherwise the groups are parted around the distances found, and the flow solved again.
class GroupedCost {
public:
    explicit GroupedCost(Bends bends) : bends(bends) {
        const std::size_t step = std::max<std::size_t>(1, bends.size() / kFirstGroups);
        for (std::size_t first = 0; first < bends.size(); first += step) {
            starts.push_back(first);
        }
    }

    // Calls `take` with the place and the turn of every group.
    template <typename Take>
    void forGroups(const Take& take) const {
        for (std::size_t group = 0; group < starts.size(); ++group) {
            double turn = 0.0;
            double moment = 0.0;
            const std::size_t first = starts[group];
            for (std::size_t bend = first; bend < endOf(group); ++bend) {
                turn += bends[bend].turn;
                moment += bends[bend].turn * (bends[bend].at - bends[first].at);
            }
            take(bends[first].at + moment / turn, turn);
        }
    }

    // Parts the group that the distance lies inside of; false if there is none.
    bool refineAt(double distance) {
        const auto group = groupBefore(distance);
        if (group == starts.size() || bends[endOf(group) - 1].at <= distance) {
            return false;
        }
        const std::size_t first = starts[group];
        const std::size_t end = endOf(group);
        if (bends[first].at >= distance) {
            return false;
        }
        const auto middle = static_cast<std::size_t>(
            std::lower_bound(bends.begin() + static_cast<std::ptrdiff_t>(first),
                             bends.begin() + static_cast<std::ptrdiff_t>(end), distance,
                             [](const Bend& bend, double at) { return bend.at < at; }) -
            bends.begin());
        const std::size_t low = std::max(first + 1, middle - std::min(middle, kApart));
        const std::size_t high = std::min(end, middle + kApart + 1);
        std::vector<std::size_t> parts;
        addHalf(first, low, parts);
        for (std::size_t bend = low; bend < high; ++bend) {
            parts.push_back(bend);
        }
        if (high < end) {
            parts.push_back(high);
            addHalf(high, end, parts);
        }
        starts.insert(starts.begin() + static_cast<std::ptrdiff_t>(group) + 1, parts.begin(),
                      parts.end());
        return true;
    }

private:
    static constexpr std::size_t kFirstGroups = 12;
    static constexpr std::size_t kApart = 3;

    std::size_t endOf(std::size_t group) const {
        return group + 1 < starts.size() ? starts[group + 1] : bends.size();
    }

    // The group that begins below the distance; the number of groups if none does.
    std::size_t groupBefore(double distance) const {
        const auto next =
            std::lower_bound(starts.begin(), starts.end(), distance,
                             [this](std::size_t start, double at) { return bends[start].at < at; });
        return next == starts.begin() ? starts.size()
                                      : static_cast<std::size_t>(next - starts.begin()) - 1;
    }

    static void addHalf(std::size_t first, std::size_t end, std::vector<std::size_t>& parts) {
        if (end > first + 1) {
            parts.push_back(first + (end - first) / 2);
        }
    }

    Bends bends;
    std::vector<std::size_t> starts;  // of the groups, ascending, the first one 0
};

// One axis with all that the program needs of it.
class AxisProgram {
public:
    AxisProgram(const NetModel& nets, Axis axis, double side, const AxisOrder& order,
                const std::vector<Orient>& orients)
        : nets(nets), axis(axis), order(order), orients(orients) {
        for (unsigned die = 0; die < nets.dieNum(); ++die) {
            sizes.push_back(nets.size(die, axis, orients[die]));
        }
        for (std::size_t pair = 0; pair < nets.pairs().size(); ++pair) {
            costs.emplace_back(bendsOf(pair));
        }
        low = order.lowest(sizes);
        fits = side;
        for (unsigned die = 0; die < nets.dieNum(); ++die) {
            fits = std::max(fits, low[die] + sizes[die]);
        }
        high = order.highest(sizes, fits);
        chooseScale();
    }

    std::vector<double> solve() {
        std::vector<double> at = flowPotentials();
        while (refineAt(at)) {
            at = flowPotentials();
        }
        settle(at);
        return at;
    }

private:
    struct Arc {
        unsigned from;
        unsigned to;
        Unit most;
        Unit cost;
    };

    Bends bendsOf(std::size_t pair) const {
        const auto [a, b] = nets.pairs()[pair];
        return nets.bends(pair, axis, orients[a], orientOf(b));
    }
    Orient orientOf(unsigned body) const {
        return body == nets.ground() ? Orient::N : orients[body];
    }
    NetModel::Reach reachOf(const NetModel::Member& member) const {
        return member.reach[axis][orientIndex(orientOf(member.body))];
    }
    unsigned highEnd(std::size_t wideNet) const {
        return nets.ground() + 1 + 2 * static_cast<unsigned>(wideNet);
    }
    unsigned lowEnd(std::size_t wideNet) const { return highEnd(wideNet) + 1; }
    unsigned nodeNum() const { return highEnd(nets.wideNets().size()); }

    void chooseScale();
    Unit units(double length) const { return std::llround(length * scale); }

    void addOrder(std::vector<Arc>& arcs) const;
    void addPairs(std::vector<Arc>& arcs, std::vector<Unit>& supply) const;
    void addWideNets(std::vector<Arc>& arcs, std::vector<Unit>& supply) const;
    std::vector<double> flowPotentials() const;
    bool refineAt(const std::vector<double>& at);

    struct Tie {
        unsigned to;
        double distance;
    };
    std::vector<std::vector<Tie>> tiesAt(const std::vector<double>& at) const;
    void settle(std::vector<double>& at) const;

    const NetModel& nets;
    const Axis axis;
    const AxisOrder& order;
    const std::vector<Orient>& orients;
    double fits = 0.0;  // the side, or what the order needs if rounding makes it more
    double scale = 1.0;
    std::vector<double> sizes;
    std::vector<double> low, high;   // where each die may lie, by the order
    std::vector<GroupedCost> costs;  // by pair
};

// A power of two, which makes whole numbers of most lengths that people write, as large as the
// simplex method's sums of costs allow: a path through all nodes stays within 62 bits.
void AxisProgram::chooseScale() {
    double longest = fits;
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const NetModel::Member& member : net.members) {
            const NetModel::Reach reach = reachOf(member);
            longest = std::max({longest, std::abs(reach.low), std::abs(reach.high)});
        }
    }
    const int bits = std::min(45, 60 - static_cast<int>(std::bit_width(nodeNum())));
    int exponent = 0;
    std::frexp(longest, &exponent);
    scale = std::ldexp(1.0, bits - exponent);
}

void AxisProgram::addOrder(std::vector<Arc>& arcs) const {
    const Unit free = std::numeric_limits<Unit>::max();
    // Lengths are cut rather than rounded: a chain that fills the side still does.
    Unit space = static_cast<Unit>(std::floor(fits * scale));
    std::vector<Unit> lengths;
    std::vector<bool> isFirst(sizes.size(), true);
    for (const double size : sizes) {
        lengths.push_back(static_cast<Unit>(std::floor(size * scale)));
    }
    std::vector<Unit> lowest(sizes.size(), 0);
    for (const unsigned die : order.dies()) {
        space = std::max(space, lowest[die] + lengths[die]);
        for (const unsigned later : order.after(die)) {
            arcs.push_back({later, die, free, -lengths[die]});
            lowest[later] = std::max(lowest[later], lowest[die] + lengths[die]);
            isFirst[later] = false;
        }
    }
    for (const unsigned die : order.dies()) {
        if (isFirst[die]) {
            arcs.push_back({die, nets.ground(), free, 0});
        }
        if (order.after(die).empty()) {
            arcs.push_back({nets.ground(), die, free, space - lengths[die]});
        }
    }
}

void AxisProgram::addPairs(std::vector<Arc>& arcs, std::vector<Unit>& supply) const {
    for (std::size_t pair = 0; pair < costs.size(); ++pair) {
        const auto [a, b] = nets.pairs()[pair];
        Unit turns = 0;
        costs[pair].forGroups([&, bodyA = a, bodyB = b](double at, double turn) {
            // No distance is larger than the side, so bends beyond may lie there as well.
            arcs.push_back({bodyB, bodyA, std::llround(turn), units(std::clamp(at, -fits, fits))});
            turns += arcs.back().most;
        });
        // The flow begins at the slope far left, half of all turns below zero.
        supply[a] -= turns / 2;
        supply[b] += turns / 2;
    }
}

void AxisProgram::addWideNets(std::vector<Arc>& arcs, std::vector<Unit>& supply) const {
    for (std::size_t net = 0; net < nets.wideNets().size(); ++net) {
        const NetModel::WideNet& wide = nets.wideNets()[net];
        const Unit count = std::llround(wide.count);
        for (const NetModel::Member& member : wide.members) {
            const NetModel::Reach reach = reachOf(member);
            arcs.push_back({highEnd(net), member.body, count, -units(reach.high)});
            arcs.push_back({member.body, lowEnd(net), count, units(reach.low)});
        }
        supply[highEnd(net)] += count;
        supply[lowEnd(net)] -= count;
    }
}

std::vector<double> AxisProgram::flowPotentials() const {
    std::vector<Arc> arcs;
    std::vector<Unit> supply(nodeNum(), 0);
    addOrder(arcs);
    addPairs(arcs, supply);
    addWideNets(arcs, supply);

    using Graph = lemon::SmartDigraph;
    Graph graph;
    graph.reserveNode(static_cast<int>(nodeNum()));
    graph.reserveArc(static_cast<int>(arcs.size()));
    for (unsigned node = 0; node < nodeNum(); ++node) {
        graph.addNode();
    }
    Graph::ArcMap<Unit> most(graph);
    Graph::ArcMap<Unit> cost(graph);
    for (const Arc& arc : arcs) {
        const Graph::Arc added = graph.addArc(Graph::nodeFromId(static_cast<int>(arc.from)),
                                              Graph::nodeFromId(static_cast<int>(arc.to)));
        most[added] = arc.most;
        cost[added] = arc.cost;
    }
    Graph::NodeMap<Unit> supplies(graph);
    for (unsigned node = 0; node < nodeNum(); ++node) {
        supplies[Graph::nodeFromId(static_cast<int>(node))] = supply[node];
    }
    using Simplex = lemon::NetworkSimplex<Graph, Unit, Unit>;
    Simplex simplex(graph);
    const auto end = simplex.upperMap(most).costMap(cost).supplyMap(supplies).run();
    KORVEL_INVARIANT(end == Simplex::OPTIMAL, "an order that fits has best positions");

    const Unit origin = simplex.potential(Graph::nodeFromId(static_cast<int>(nets.ground())));
    std::vector<double> at(sizes.size());
    for (unsigned die = 0; die < at.size(); ++die) {
        const Unit potential = simplex.potential(Graph::nodeFromId(static_cast<int>(die)));
        at[die] = static_cast<double>(potential - origin) / scale;
    }
    return at;
}

bool AxisProgram::refineAt(const std::vector<double>& at) {
    bool refined = false;
    for (std::size_t pair = 0; pair < costs.size(); ++pair) {
        const auto [a, b] = nets.pairs()[pair];
        refined |= costs[pair].refineAt(at[a] - (b == nets.ground() ? 0.0 : at[b]));
    }
    return refined;
}

// What holds two bodies at their distance: they touch, or a net has a bend or an end there.
std::vector<std::vector<AxisProgram::Tie>> AxisProgram::tiesAt(
    const std::vector<double>& at) const {
    const double near = 1e-10 * fits;
    std::vector<std::vector<Tie>> ties(sizes.size() + 1);
    const auto position = [&](unsigned body) { return body == nets.ground() ? 0.0 : at[body]; };
    const auto tie = [&](unsigned from, unsigned to, double distance) {
        if (std::abs(position(to) - position(from) - distance) <= near) {
            ties[from].push_back({to, distance});
            ties[to].push_back({from, -distance});
        }
    };
    for (const unsigned die : order.dies()) {
        tie(nets.ground(), die, 0.0);
        tie(nets.ground(), die, fits - sizes[die]);
        for (const unsigned later : order.after(die)) {
            tie(die, later, sizes[die]);
        }
    }
    for (std::size_t pair = 0; pair < costs.size(); ++pair) {
        const auto [a, b] = nets.pairs()[pair];
        const Bends bends = bendsOf(pair);
        const auto bend =
            std::lower_bound(bends.begin(), bends.end(), position(a) - position(b) - near,
                             [](const Bend& one, double distance) { return one.at < distance; });
        if (bend != bends.end()) {
            tie(b, a, bend->at);
        }
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (std::size_t m = 1; m < net.members.size(); ++m) {
            for (std::size_t k = 0; k < m; ++k) {
                const NetModel::Member& one = net.members[k];
                const NetModel::Member& other = net.members[m];
                tie(one.body, other.body, reachOf(one).high - reachOf(other).high);
                tie(one.body, other.body, reachOf(one).low - reachOf(other).low);
            }
        }
    }
    return ties;
}

// From whole units back to the lengths themselves: along the ties, positions are sums of them.
void AxisProgram::settle(std::vector<double>& at) const {
    const auto ties = tiesAt(at);
    std::vector<bool> isSettled(sizes.size() + 1, false);
    std::vector<unsigned> settled{nets.ground()};
    isSettled[nets.ground()] = true;
    for (std::size_t next = 0; next < settled.size(); ++next) {
        const unsigned from = settled[next];
        for (const auto& [to, distance] : ties[from]) {
            if (!isSettled[to]) {
                at[to] = (from == nets.ground() ? 0.0 : at[from]) + distance;
                isSettled[to] = true;
                settled.push_back(to);
            }
        }
    }
    std::vector<double> least(sizes.size(), 0.0);
    for (const unsigned die : order.dies()) {
        at[die] = std::max(least[die], std::min(at[die], high[die]));
        for (const unsigned later : order.after(die)) {
            least[later] = std::max(least[later], at[die] + sizes[die]);
        }
    }
}

}  // namespace

std::vector<double> bestPositions(const NetModel& nets, Axis axis, double side,
                                  const AxisOrder& order, const std::vector<Orient>& orients) {
    return AxisProgram(nets, axis, side, order, orients).solve();
}

}  // namespace korvel
