#include "exact/AxisProgram.h"

#include <lemon/network_simplex.h>
#include <lemon/smart_graph.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "base/Invariant.h"
#include "base/Tolerances.h"

namespace korvel {

namespace {

using Unit = std::int64_t;  // the simplex method must not round, so it sees whole numbers

// Thousands of breakpoints between two dies would be as many arcs, of which the solution sees a
// few. So neighbouring breakpoints are taken together as one, in their middle. This lowers the cost
// inside the group and leaves it as it is outside; a solution with no distance inside a group is
// therefore the optimum. Otherwise the groups are divided around the distances found, and the flow
// is solved again.
class GroupedCost {
public:
    explicit GroupedCost(const PiecewiseLinear& cost) : cost(cost), points(cost.breakpoints()) {
        const std::size_t step = std::max<std::size_t>(1, points.size() / kFirstGroups);
        for (std::size_t first = 0; first < points.size(); first += step) {
            starts.push_back(first);
        }
    }

    // Calls `take` with the middle of every group and the sum of its jumps.
    template <typename Take>
    void forGroups(const Take& take) const {
        for (std::size_t group = 0; group < starts.size(); ++group) {
            double jumps = 0.0;
            double moment = 0.0;
            const std::size_t first = starts[group];
            for (std::size_t point = first; point < endOf(group); ++point) {
                jumps += cost.jumpAt(point);
                moment += cost.jumpAt(point) * (points[point].at - points[first].at);
            }
            take(points[first].at + moment / jumps, jumps);
        }
    }

    // Divides the group that the distance lies inside of; false if there is none.
    bool refineAt(double distance) {
        const std::size_t below = cost.numBelow(distance);
        if (below == 0) {
            return false;
        }
        // The group of the last breakpoint below, which is also the last group that begins below.
        const auto next = std::lower_bound(starts.begin(), starts.end(), below);
        const auto group = static_cast<std::size_t>(next - starts.begin()) - 1;
        const std::size_t first = starts[group];
        const std::size_t end = endOf(group);
        if (points[end - 1].at <= distance) {
            return false;
        }
        const std::size_t low = std::max(first + 1, below - std::min(below, kApart));
        const std::size_t high = std::min(end, below + kApart + 1);
        std::vector<std::size_t> parts;
        addHalf(first, low, parts);
        for (std::size_t point = low; point < high; ++point) {
            parts.push_back(point);
        }
        if (high < end) {
            parts.push_back(high);
            addHalf(high, end, parts);
        }
        starts.insert(next, parts.begin(), parts.end());
        return true;
    }

private:
    static constexpr std::size_t kFirstGroups = 12;
    static constexpr std::size_t kApart = 3;

    std::size_t endOf(std::size_t group) const {
        return group + 1 < starts.size() ? starts[group + 1] : points.size();
    }

    static void addHalf(std::size_t first, std::size_t end, std::vector<std::size_t>& parts) {
        if (end > first + 1) {
            parts.push_back(first + (end - first) / 2);
        }
    }

    const PiecewiseLinear& cost;
    const std::vector<PiecewiseLinear::Breakpoint>& points;
    std::vector<std::size_t> starts;  // of the groups, ascending, the first one 0
};

// One axis with all that the program needs of it.
class AxisProgram {
public:
    AxisProgram(const NetModel& nets, const AxisLimits& limits, const AxisOrder& order)
        : nets(nets), limits(limits), order(order), span(limits.side()), low(order.lowest(limits)) {
        for (unsigned die = 0; die < limits.dieNum(); ++die) {
            ends.push_back(std::max(limits.cornerRange(die).high, low[die]));
            span = std::max(span, low[die]);
        }
        high = order.highest(limits, ends);
        for (std::size_t bundle = 0; bundle < nets.bundles().size(); ++bundle) {
            costs.emplace_back(costOf(bundle));
        }
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

    const PiecewiseLinear& costOf(std::size_t bundle) const {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        return nets.cost(bundle, limits.axis, orientOfBody(a), orientOfBody(b));
    }
    Orient orientOfBody(unsigned body) const {
        return body == nets.ground() ? Orient::N : limits.orients[body];
    }
    const PinRange& rangeOf(const BodyPins& pins) const {
        return pins.range(limits.axis, orientOfBody(pins.body));
    }
    unsigned highEnd(std::size_t wideNet) const {
        return nets.ground() + 1 + 2 * static_cast<unsigned>(wideNet);
    }
    unsigned lowEnd(std::size_t wideNet) const { return highEnd(wideNet) + 1; }
    unsigned nodeNum() const { return highEnd(nets.wideNets().size()); }

    void chooseScale();
    Unit units(double length) const { return std::llround(length * scale); }
    Unit cutUnits(double length) const { return static_cast<Unit>(std::floor(length * scale)); }

    Unit cutDistance(unsigned die, unsigned later) const {
        return cutUnits(limits.leastDistance(die, later));
    }

    void addOrder(std::vector<Arc>& arcs) const;
    void addBundles(std::vector<Arc>& arcs, std::vector<Unit>& supply) const;
    void addWideNets(std::vector<Arc>& arcs, std::vector<Unit>& supply) const;
    std::vector<double> flowPotentials() const;
    bool refineAt(const std::vector<double>& at);

    struct Tie {
        unsigned to;
        double distance;
    };
    using Ties = std::vector<std::vector<Tie>>;  // by body
    Ties tiesAt(const std::vector<double>& at) const;
    void settle(std::vector<double>& at) const;

    const NetModel& nets;
    const AxisLimits limits;
    const AxisOrder& order;
    double scale = 1.0;
    double span;               // no two positions are farther apart
    std::vector<double> ends;  // by die: of its range, or more if the order needs that by rounding
    std::vector<double> low, high;   // by die: where it may lie, by its range and the order
    std::vector<GroupedCost> costs;  // by bundle
};

// A power of two, which makes whole numbers of most lengths that people write, as large as the
// simplex method's sums of costs allow: a path through all nodes stays within 62 bits.
void AxisProgram::chooseScale() {
    double longest = span;
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const BodyPins& pins : net.members) {
            const PinRange& range = rangeOf(pins);
            longest = std::max({longest, std::abs(range.low), std::abs(range.high)});
        }
    }
    const int bits = std::min(45, 60 - static_cast<int>(std::bit_width(nodeNum())));
    int exponent = 0;
    std::frexp(longest, &exponent);
    scale = std::ldexp(1.0, bits - exponent);
}

// Lengths are cut rather than rounded: a chain that fills the side still does. A die's own range is
// left out where the order implies it.
void AxisProgram::addOrder(std::vector<Arc>& arcs) const {
    const Unit free = std::numeric_limits<Unit>::max();
    std::vector<Unit> least;
    std::vector<Unit> most;
    for (unsigned die = 0; die < limits.dieNum(); ++die) {
        least.push_back(cutUnits(limits.cornerRange(die).low));
        most.push_back(cutUnits(ends[die]));
    }
    std::vector<Unit> lowest = least;
    for (const unsigned die : order.dies()) {
        most[die] = std::max(most[die], lowest[die]);
        for (const unsigned later : order.after(die)) {
            lowest[later] = std::max(lowest[later], lowest[die] + cutDistance(die, later));
        }
    }
    std::vector<bool> isLeastImplied(least.size(), false);
    std::vector<bool> isMostImplied(least.size(), false);
    for (const unsigned die : order.dies()) {
        for (const unsigned later : order.after(die)) {
            const Unit distance = cutDistance(die, later);
            arcs.push_back({later, die, free, -distance});
            isLeastImplied[later] = isLeastImplied[later] || least[die] + distance >= least[later];
            isMostImplied[die] = isMostImplied[die] || most[later] - distance <= most[die];
        }
    }
    for (const unsigned die : order.dies()) {
        if (!isLeastImplied[die]) {
            arcs.push_back({die, nets.ground(), free, -least[die]});
        }
        if (!isMostImplied[die]) {
            arcs.push_back({nets.ground(), die, free, most[die]});
        }
    }
}

void AxisProgram::addBundles(std::vector<Arc>& arcs, std::vector<Unit>& supply) const {
    for (std::size_t bundle = 0; bundle < costs.size(); ++bundle) {
        const unsigned a = nets.bundles()[bundle].a;
        const unsigned b = nets.bundles()[bundle].b;
        Unit sum = 0;
        costs[bundle].forGroups([&](double at, double jumps) {
            // Breakpoints beyond all distances may lie at the farthest as well.
            arcs.push_back({b, a, std::llround(jumps), units(std::clamp(at, -span, span))});
            sum += arcs.back().most;
        });
        // The flow begins at the slope far left, half of all jumps below zero.
        supply[a] -= sum / 2;
        supply[b] += sum / 2;
    }
}

void AxisProgram::addWideNets(std::vector<Arc>& arcs, std::vector<Unit>& supply) const {
    for (std::size_t net = 0; net < nets.wideNets().size(); ++net) {
        const NetModel::WideNet& wide = nets.wideNets()[net];
        const Unit weight = std::llround(wide.weight);
        for (const BodyPins& pins : wide.members) {
            const PinRange& range = rangeOf(pins);
            arcs.push_back({highEnd(net), pins.body, weight, -units(range.high)});
            arcs.push_back({pins.body, lowEnd(net), weight, units(range.low)});
        }
        supply[highEnd(net)] += weight;
        supply[lowEnd(net)] -= weight;
    }
}

std::vector<double> AxisProgram::flowPotentials() const {
    std::vector<Arc> arcs;
    std::vector<Unit> supply(nodeNum(), 0);
    addOrder(arcs);
    addBundles(arcs, supply);
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
    std::vector<double> at(limits.dieNum());
    for (unsigned die = 0; die < at.size(); ++die) {
        const Unit potential = simplex.potential(Graph::nodeFromId(static_cast<int>(die)));
        at[die] = static_cast<double>(potential - origin) / scale;
    }
    return at;
}

bool AxisProgram::refineAt(const std::vector<double>& at) {
    bool refined = false;
    for (std::size_t bundle = 0; bundle < costs.size(); ++bundle) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        refined |= costs[bundle].refineAt(at[a] - (b == nets.ground() ? 0.0 : at[b]));
    }
    return refined;
}

// What holds two bodies at their distance: the limits do, or a net has a breakpoint or an end
// there.
AxisProgram::Ties AxisProgram::tiesAt(const std::vector<double>& at) const {
    const double near = kMeantPosition * span;
    Ties ties(limits.dieNum() + 1);
    const auto position = [&](unsigned body) { return body == nets.ground() ? 0.0 : at[body]; };
    const auto tie = [&](unsigned from, unsigned to, double distance) {
        if (std::abs(position(to) - position(from) - distance) <= near) {
            ties[from].push_back({to, distance});
            ties[to].push_back({from, -distance});
        }
    };
    for (const unsigned die : order.dies()) {
        tie(nets.ground(), die, limits.cornerRange(die).low);
        tie(nets.ground(), die, ends[die]);
        for (const unsigned later : order.after(die)) {
            tie(die, later, limits.leastDistance(die, later));
        }
    }
    for (std::size_t bundle = 0; bundle < costs.size(); ++bundle) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        const PiecewiseLinear& cost = costOf(bundle);
        const std::size_t next = cost.numBelow(position(a) - position(b) - near);
        if (next < cost.breakpoints().size()) {
            tie(b, a, cost.breakpoints()[next].at);
        }
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (std::size_t m = 1; m < net.members.size(); ++m) {
            for (std::size_t k = 0; k < m; ++k) {
                const PinRange& one = rangeOf(net.members[k]);
                const PinRange& other = rangeOf(net.members[m]);
                tie(net.members[k].body, net.members[m].body, one.high - other.high);
                tie(net.members[k].body, net.members[m].body, one.low - other.low);
            }
        }
    }
    return ties;
}

// From whole units back to the lengths themselves: along the ties, positions are sums of them.
void AxisProgram::settle(std::vector<double>& at) const {
    const Ties ties = tiesAt(at);
    std::vector<bool> isSettled(ties.size(), false);
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
    std::vector<double> least = low;
    for (const unsigned die : order.dies()) {
        at[die] = std::max(least[die], std::min(at[die], high[die]));
        for (const unsigned later : order.after(die)) {
            least[later] = std::max(least[later], at[die] + limits.leastDistance(die, later));
        }
    }
}

}  // namespace

std::vector<double> bestPositions(const NetModel& nets, const AxisLimits& limits,
                                  const AxisOrder& order) {
    return AxisProgram(nets, limits, order).solve();
}

}  // namespace korvel
