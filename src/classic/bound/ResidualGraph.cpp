#include "classic/bound/ResidualGraph.h"

#include <algorithm>
#include <bit>

namespace korvel {

namespace {

void flipBit(std::uint64_t* words, unsigned bit) {
    words[bit / VertexSet::kWordBits] ^= std::uint64_t{1} << (bit % VertexSet::kWordBits);
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
    {&ResidualGraph::oneEnd, &ResidualGraph::moveLowEnd, &ResidualGraph::refreshLowEnd},
    // MoveHighEnd
    {&ResidualGraph::oneEnd, &ResidualGraph::moveHighEnd, &ResidualGraph::refreshHighEnd},
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
    lowest.clear();
    highest.clear();
    for (unsigned body = 0; body < bodyNum; ++body) {
        lowest.push_back(nets.lowest(oriented->axis, body, oriented->orients[body]));
        highest.push_back(nets.highest(oriented->axis, body, oriented->orients[body]));
    }
    lowEnds.assign(std::size_t{bodyNum} * nets.getWordNum(), 0);
    highEnds.assign(lowEnds.size(), 0);
    for (unsigned n = 0; n < cut->boxNum(); ++n) {
        const LengthCut::Ends ends = cut->getEnds(n);
        flipBit(&lowEnds[std::size_t{ends.low} * nets.getWordNum()], n);
        flipBit(&highEnds[std::size_t{ends.high} * nets.getWordNum()], n);
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
    offerEnds(from, to, best);
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

// A low end moves along the arc, a high end against it.
void ResidualGraph::offerEnds(unsigned from, unsigned to, Offer& best) const {
    const unsigned words = nets.getWordNum();
    offerMoves(&lowEnds[from * words], nets.netsOn(to), lowest[from], lowest[to],
               Change::MoveLowEnd, best);
    offerMoves(&highEnds[to * words], nets.netsOn(from), highest[from], highest[to],
               Change::MoveHighEnd, best);
}

// Of the nets with an end on one body, those that are on the other body as well.
void ResidualGraph::offerMoves(const std::uint64_t* ends, const std::uint64_t* netsOnOther,
                               const float* pinsFrom, const float* pinsTo, Change change,
                               Offer& best) const {
    for (unsigned w = 0; w < nets.getWordNum(); ++w) {
        for (std::uint64_t rest = ends[w] & netsOnOther[w]; rest != 0; rest &= rest - 1) {
            const unsigned net = w * VertexSet::kWordBits + std::countr_zero(rest);
            best.improve(pinsFrom[net] - pinsTo[net], {change, net});
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

double ResidualGraph::moveLowEnd(const Arc& arc, unsigned units) {
    const unsigned net = arc.choice.item;
    cut->readLowOff(nets, oriented->axis, net, arc.to);
    flipBit(&lowEnds[std::size_t{arc.from} * nets.getWordNum()], net);
    flipBit(&lowEnds[std::size_t{arc.to} * nets.getWordNum()], net);
    return double{arc.gain} * units;
}

double ResidualGraph::moveHighEnd(const Arc& arc, unsigned units) {
    const unsigned net = arc.choice.item;
    cut->readHighOff(nets, oriented->axis, net, arc.from);
    flipBit(&highEnds[std::size_t{arc.from} * nets.getWordNum()], net);
    flipBit(&highEnds[std::size_t{arc.to} * nets.getWordNum()], net);
    return double{arc.gain} * units;
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

// The end has moved from arc.from to arc.to. The arcs on which it can move lead away from where it
// is.
void ResidualGraph::refreshLowEnd(const Arc& arc) {
    for (unsigned body = 0; body < bodyNum; ++body) {
        if (!nets.isOn(arc.choice.item, body)) {
            continue;
        }
        if (body != arc.from && choice(arc.from, body) == arc.choice) {
            refreshArc(arc.from, body);
        }
        if (body != arc.to) {
            refreshArc(arc.to, body);
        }
    }
}

// The end has moved from arc.to to arc.from. The arcs on which it can move lead to where it is.
void ResidualGraph::refreshHighEnd(const Arc& arc) {
    for (unsigned body = 0; body < bodyNum; ++body) {
        if (!nets.isOn(arc.choice.item, body)) {
            continue;
        }
        if (body != arc.to && choice(body, arc.to) == arc.choice) {
            refreshArc(body, arc.to);
        }
        if (body != arc.from) {
            refreshArc(body, arc.from);
        }
    }
}

}  // namespace korvel
