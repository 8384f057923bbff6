#include "classic/bound/ResidualGraph.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace korvel {

namespace {

constexpr ResidualGraph::Change kMoves[kEnds] = {ResidualGraph::Change::MoveLowEnd,
                                                 ResidualGraph::Change::MoveHighEnd};

constexpr End endOf(ResidualGraph::Choice choice) {
    return choice.change == kMoves[kLow] ? kLow : kHigh;
}

// The bodies that an end leaves and comes to on an arc: a low end moves along it, a high end
// against it. Likewise the first and the second body of the arc on which an end so moves.
constexpr std::pair<unsigned, unsigned> directed(End end, unsigned first, unsigned second) {
    return end == kLow ? std::pair(first, second) : std::pair(second, first);
}

}  // namespace

const ResidualGraph::Operations ResidualGraph::kOperations[] = {
    // AddFlow
    {&ResidualGraph::unlimited, &ResidualGraph::addFlow, &ResidualGraph::refreshBackward},
    // RemoveFlow
    {&ResidualGraph::flowToRemove, &ResidualGraph::removeFlow, &ResidualGraph::refreshForward},
    // RaiseSlope
    {&ResidualGraph::stepsToRaise, &ResidualGraph::raiseSlope, &ResidualGraph::refreshBoth},
    // LowerSlope
    {&ResidualGraph::stepsToLower, &ResidualGraph::lowerSlope, &ResidualGraph::refreshBoth},
    // MoveLowEnd
    {&ResidualGraph::oneEnd, &ResidualGraph::moveEnd, &ResidualGraph::refreshEnd},
    // MoveHighEnd
    {&ResidualGraph::oneEnd, &ResidualGraph::moveEnd, &ResidualGraph::refreshEnd},
};

// --- Loading ---------------------------------------------------------------------------------

void ResidualGraph::load(LengthCut& newCut, const OrientedNets& node, const BodyMatrix& newGaps) {
    cut = &newCut;
    oriented = &node;
    gaps = &newGaps;
    bodyNum = newGaps.getBodyNum();
    gains.resize(bodyNum);
    choices.resize(gains.cellNum());
    flowUnits.assign(gains.cellNum(), 0);
    for (const LengthCut::Flow& one : cut->getFlows()) {
        flowUnits[one.cell] = static_cast<unsigned>(one.units);
    }
    loadEnds();
    for (unsigned to = 0; to < bodyNum; ++to) {
        std::fill_n(gains.rowTo(to), gains.getQuadNum(), allLanes(-kInfinity));
        for (unsigned from = 0; from < bodyNum; ++from) {
            if (from != to) {
                refreshArc(from, to);
            }
        }
    }
}

void ResidualGraph::loadEnds() {
    for (const End end : {kLow, kHigh}) {
        outermost[end].clear();
        for (unsigned body = 0; body < bodyNum; ++body) {
            outermost[end].push_back(
                nets.outermost(end, oriented->axis, body, oriented->orients[body]));
        }
        readOff[end].assign(std::size_t{bodyNum} * nets.getWordNum(), 0);
        for (unsigned n = 0; n < cut->boxNum(); ++n) {
            flipReadOff(end, cut->getBody(end, n), n);
        }
    }
}

// --- The best change between two bodies --------------------------------------------------------

void ResidualGraph::refreshArc(unsigned from, unsigned to) {
    const Offer best = bestOffer(from, to);
    gains.at(from, to) = best.gain - negligible;
    choices[gains.cell(from, to)] = best.choice;
}

ResidualGraph::Offer ResidualGraph::bestOffer(unsigned from, unsigned to) const {
    const auto taken = static_cast<float>(slack);
    Offer best = flow(to, from) != 0 ? Offer{taken - gaps->at(to, from), {Change::RemoveFlow}}
                                     : Offer{gaps->at(from, to) - taken, {Change::AddFlow}};
    offerSlope(from, to, best);
    offerEnd(kLow, from, to, best);
    offerEnd(kHigh, from, to, best);
    return best;
}

// Each breakpoint of a pair group is passed in two steps of the slope. One step changes the
// intercept by the breakpoint.
void ResidualGraph::offerSlope(unsigned from, unsigned to, Offer& best) const {
    const unsigned group = nets.groupBetween(from, to);
    if (group == LengthNets::kNoGroup) {
        return;
    }
    const std::vector<double>& breakpoints = lengthOf(group).breakpoints;
    const unsigned steps = cut->getSlopeSteps(group);
    if (from > to) {
        if (steps < 2 * breakpoints.size()) {
            best.improve(static_cast<float>(-breakpoints[steps / 2]), {Change::RaiseSlope, group});
        }
    } else if (steps > 0) {
        best.improve(static_cast<float>(breakpoints[(steps - 1) / 2]), {Change::LowerSlope, group});
    }
}

// Of the nets that are read off one body, those that are on the other body as well.
void ResidualGraph::offerEnd(End end, unsigned from, unsigned to, Offer& best) const {
    const auto [left, reached] = directed(end, from, to);
    const unsigned words = nets.getWordNum();
    const std::uint64_t* const read = &readOff[end][left * words];
    const std::uint64_t* const onReached = nets.netsOn(reached);
    const float* const pinsFrom = outermost[end][from];
    const float* const pinsTo = outermost[end][to];
    for (unsigned w = 0; w < words; ++w) {
        for (std::uint64_t rest = read[w] & onReached[w]; rest != 0; rest &= rest - 1) {
            const unsigned net = w * VertexSet::kWordBits + std::countr_zero(rest);
            best.improve(pinsFrom[net] - pinsTo[net], {kMoves[end], net});
        }
    }
}

// --- Room ------------------------------------------------------------------------------------

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): it stands in kOperations
unsigned ResidualGraph::unlimited(const Arc& /*arc*/, double /*tolerance*/) const {
    return kUnlimited;
}

unsigned ResidualGraph::flowToRemove(const Arc& arc, double /*tolerance*/) const {
    return flow(arc.to, arc.from);
}

unsigned ResidualGraph::stepsToRaise(const Arc& arc, double tolerance) const {
    const std::vector<double>& breakpoints = lengthOf(arc.choice.item).breakpoints;
    const unsigned steps = cut->getSlopeSteps(arc.choice.item);
    const auto next = breakpoints.begin() + steps / 2;
    const auto end = std::upper_bound(next, breakpoints.end(), *next + tolerance);
    return 2 * static_cast<unsigned>(end - breakpoints.begin()) - steps;
}

unsigned ResidualGraph::stepsToLower(const Arc& arc, double tolerance) const {
    const std::vector<double>& breakpoints = lengthOf(arc.choice.item).breakpoints;
    const unsigned steps = cut->getSlopeSteps(arc.choice.item);
    const auto last = breakpoints.begin() + (steps - 1) / 2;
    const auto begin = std::lower_bound(breakpoints.begin(), last, *last - tolerance);
    return steps - 2 * static_cast<unsigned>(begin - breakpoints.begin());
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): it stands in kOperations
unsigned ResidualGraph::oneEnd(const Arc& /*arc*/, double /*tolerance*/) const {
    return 1;
}

// --- Changes ---------------------------------------------------------------------------------

double ResidualGraph::addFlow(const Arc& arc, unsigned units) {
    flow(arc.from, arc.to) += units;
    return double{arc.gain} * units;
}

double ResidualGraph::removeFlow(const Arc& arc, unsigned units) {
    flow(arc.to, arc.from) -= units;
    return double{arc.gain} * units;
}

double ResidualGraph::raiseSlope(const Arc& arc, unsigned units) {
    return setSlope(arc.choice.item, cut->getSlopeSteps(arc.choice.item) + units);
}

double ResidualGraph::lowerSlope(const Arc& arc, unsigned units) {
    return setSlope(arc.choice.item, cut->getSlopeSteps(arc.choice.item) - units);
}

double ResidualGraph::setSlope(unsigned group, unsigned steps) {
    const std::vector<double>& intercepts = lengthOf(group).intercepts;
    const unsigned before = cut->getSlopeSteps(group);
    cut->setSlopeSteps(group, steps);
    return intercepts[steps] - intercepts[before];
}

double ResidualGraph::moveEnd(const Arc& arc, unsigned units) {
    const End end = endOf(arc.choice);
    const unsigned net = arc.choice.item;
    cut->readOff(nets, oriented->axis, end, net, directed(end, arc.from, arc.to).second);
    flipReadOff(end, arc.from, net);
    flipReadOff(end, arc.to, net);
    return double{arc.gain} * units;
}

void ResidualGraph::flipReadOff(End end, unsigned body, unsigned net) {
    readOff[end][std::size_t{body} * nets.getWordNum() + net / VertexSet::kWordBits] ^=
        std::uint64_t{1} << (net % VertexSet::kWordBits);
}

// --- Arcs whose best change may be another one after a change ----------------------------------

void ResidualGraph::refreshForward(const Arc& arc) {
    refreshArc(arc.from, arc.to);
}

void ResidualGraph::refreshBackward(const Arc& arc) {
    refreshArc(arc.to, arc.from);
}

void ResidualGraph::refreshBoth(const Arc& arc) {
    refreshForward(arc);
    refreshBackward(arc);
}

// The arcs on which the end could move from where it was, and on which it can from where it is.
void ResidualGraph::refreshEnd(const Arc& arc) {
    const End end = endOf(arc.choice);
    const auto [left, reached] = directed(end, arc.from, arc.to);
    for (unsigned body = 0; body < bodyNum; ++body) {
        if (!nets.isOn(arc.choice.item, body)) {
            continue;
        }
        const auto [oldFrom, oldTo] = directed(end, left, body);
        if (body != left && choices[gains.cell(oldFrom, oldTo)] == arc.choice) {
            refreshArc(oldFrom, oldTo);
        }
        if (body != reached) {
            const auto [from, to] = directed(end, reached, body);
            refreshArc(from, to);
        }
    }
}

}  // namespace korvel
