#include "classic/bound/LengthAscent.h"

#include <algorithm>

namespace korvel {

namespace {

// After so many the alignment is cheaper than finding out that it is not needed.
constexpr unsigned kMostCycles = 100;

}  // namespace

double LengthAscent::raise(LengthCut& cut, const OrientedNets& node, const BodyMatrix& gaps,
                           double target) {
    const auto valueNow = [&] { return cut.constant(node, slack) + cut.flowLength(gaps); };
    double value = valueNow();
    graph.load(cut, node, gaps);
    for (unsigned i = 0; i < kMostCycles && value < target; ++i) {
        const double gain = findCycle() ? followCycle() : 0.0;
        if (gain <= 0.0) {
            break;
        }
        value += gain;
    }
    graph.storeFlows();
    return valueNow();
}

bool LengthAscent::findCycle() {
    const std::vector<unsigned>& bodies = search.find(graph.getGains());
    cycle.clear();
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        cycle.push_back(graph.arc(bodies[i], bodies[(i + 1) % bodies.size()]));
    }
    return !cycle.empty();
}

// Goes around the cycle with as many units as all arcs have room for; returns what they gain.
double LengthAscent::followCycle() {
    float gain = 0.0F;
    for (const ResidualGraph::Arc& arc : cycle) {
        gain += arc.gain;
    }
    if (gain <= static_cast<float>(negligible)) {
        return 0.0;
    }
    // A slope's gain falls from breakpoint to breakpoint. With this tolerance for every arc at
    // least half of the cycle's gain is left for the last unit.
    const double tolerance = gain / (2.0 * static_cast<double>(cycle.size()));
    unsigned room = ResidualGraph::kUnlimited;
    for (const ResidualGraph::Arc& arc : cycle) {
        room = std::min(room, graph.room(arc, tolerance));
    }
    if (room == ResidualGraph::kUnlimited) {
        return 0.0;  // a cycle of gaps only: they contradict one another
    }
    double gained = 0.0;
    for (const ResidualGraph::Arc& arc : cycle) {
        gained += graph.apply(arc, room);
    }
    for (const ResidualGraph::Arc& arc : cycle) {
        graph.refreshAfter(arc);
    }
    return gained;
}

}  // namespace korvel
