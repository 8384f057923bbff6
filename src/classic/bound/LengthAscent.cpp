#include "classic/bound/LengthAscent.h"

#include <algorithm>
#include <bit>

namespace korvel {

namespace {

constexpr std::int32_t kNone = -1;
constexpr unsigned kUnlimited = ~0U;
// Beyond that the alignment is cheaper than finding out that it is not needed.
constexpr unsigned kMostCycles = 100;

void flipBit(std::uint64_t* words, unsigned bit) {
    words[bit / VertexSet::kWordBits] ^= std::uint64_t{1} << (bit % VertexSet::kWordBits);
}

}  // namespace

double LengthAscent::raise(LengthCut& cut, const AxisView& view, const SlotMatrix& gaps,
                           double target) {
    task = {&cut, &view, &gaps, gaps.getSlotNum()};
    const auto valueNow = [&] { return cut.fixedPart(view, slack) + cut.carriedPart(gaps); };
    double value = valueNow();
    load();
    for (unsigned i = 0; i < kMostCycles && value < target; ++i) {
        const double gain = findCycle() ? followCycle() : 0.0;
        if (gain <= 0.0) {
            break;
        }
        value += gain;
    }
    cut.setCarried(units);
    return valueNow();
}

void LengthAscent::load() {
    gains.resize(task.slotNum);
    choices.resize(gains.cellNum());
    potentials.resize(gains.getQuadNum());
    successors.resize(gains.getQuadNum());
    units.assign(gains.cellNum(), 0);
    for (const Carried& one : task.cut->getCarried()) {
        units[one.cell] = static_cast<unsigned>(one.units);
    }
    loadEnds();
    for (unsigned to = 0; to < task.slotNum; ++to) {
        std::fill_n(gains.rowTo(to), gains.getQuadNum(), allLanes(-kInfinity));
        for (unsigned from = 0; from < task.slotNum; ++from) {
            if (from != to) {
                refreshArc(from, to);
            }
        }
    }
}

void LengthAscent::loadEnds() {
    lowest.clear();
    highest.clear();
    for (unsigned slot = 0; slot < task.slotNum; ++slot) {
        lowest.push_back(nets.lowest(task.view->axis, slot, task.view->orients[slot]));
        highest.push_back(nets.highest(task.view->axis, slot, task.view->orients[slot]));
    }
    lowEnds.assign(std::size_t{task.slotNum} * nets.getWordNum(), 0);
    highEnds.assign(lowEnds.size(), 0);
    for (unsigned n = 0; n < task.cut->boxNum(); ++n) {
        const LengthCut::Ends ends = task.cut->getEnds(n);
        flipBit(lowEnds.data() + std::size_t{ends.low} * nets.getWordNum(), n);
        flipBit(highEnds.data() + std::size_t{ends.high} * nets.getWordNum(), n);
    }
}

void LengthAscent::refreshArc(unsigned from, unsigned to) {
    const Arc best = bestArc(from, to);
    gains.at(from, to) = best.gain - negligible;
    choices[gains.cell(from, to)] = best.choice;
}

LengthAscent::Arc LengthAscent::bestArc(unsigned from, unsigned to) const {
    const auto taken = static_cast<float>(slack);
    Arc best = carriedUnits(to, from) != 0 ? Arc{taken - task.gaps->at(to, from), {Way::CarryLess}}
                                           : Arc{task.gaps->at(from, to) - taken, {Way::Carry}};
    offerGroup(from, to, best);
    offerEnds(from, to, best);
    return best;
}

// Half a point more lets the second body pull forward by one and the first one backward.
void LengthAscent::offerGroup(unsigned from, unsigned to, Arc& best) const {
    const unsigned group = nets.groupBetween(from, to);
    if (group == LengthNets::kNoGroup) {
        return;
    }
    const std::vector<double>& at = task.view->points[group]->at;
    const unsigned halfPoints = task.cut->getHalfPoints(group);
    if (from > to) {
        if (halfPoints < 2 * at.size()) {
            best.offer(static_cast<float>(-at[halfPoints / 2]), {Way::GroupForward, group});
        }
    } else if (halfPoints > 0) {
        best.offer(static_cast<float>(at[(halfPoints - 1) / 2]), {Way::GroupBackward, group});
    }
}

// A low end moves along the arc, a high end against it.
void LengthAscent::offerEnds(unsigned from, unsigned to, Arc& best) const {
    const unsigned words = nets.getWordNum();
    offerMoves(&lowEnds[from * words], nets.netsOn(to), lowest[from], lowest[to], Way::LowEnd,
               best);
    offerMoves(&highEnds[to * words], nets.netsOn(from), highest[from], highest[to], Way::HighEnd,
               best);
}

// Those of `ends` that the nets in `reached` can move.
void LengthAscent::offerMoves(const std::uint64_t* ends, const std::uint64_t* reached,
                              const float* placesFrom, const float* placesTo, Way way,
                              Arc& best) const {
    for (unsigned w = 0; w < nets.getWordNum(); ++w) {
        for (std::uint64_t rest = ends[w] & reached[w]; rest != 0; rest &= rest - 1) {
            const unsigned net = w * VertexSet::kWordBits + std::countr_zero(rest);
            best.offer(placesFrom[net] - placesTo[net], {way, net});
        }
    }
}

// Longest ways by relaxation; a slot that comes back to itself lies on a cycle of positive gain.
bool LengthAscent::findCycle() {
    std::fill(potentials.begin(), potentials.end(), allLanes(0.0F));
    std::fill(successors.begin(), successors.end(), allLanes(kNone));
    relaxed.assign(task.slotNum, -kInfinity);
    for (unsigned round = 0; round < task.slotNum; ++round) {
        const unsigned lastRelaxed = relaxAll();
        if (lastRelaxed == task.slotNum) {
            return false;
        }
        if (traceCycle(lastRelaxed)) {
            return true;
        }
    }
    return false;
}

// The last slot that others have got longer ways by; the number of slots if there is none. Slots
// whose own way is no longer than when they were looked at last are passed over.
unsigned LengthAscent::relaxAll() {
    const unsigned quadNum = gains.getQuadNum();
    unsigned lastRelaxed = task.slotNum;
    for (unsigned to = 0; to < task.slotNum; ++to) {
        const float onward = potentials[to / kLanes][to % kLanes];
        if (onward == relaxed[to]) {
            continue;
        }
        relaxed[to] = onward;
        const Quad* row = gains.rowTo(to);
        for (unsigned q = 0; q < quadNum; ++q) {
            const Quad way = allLanes(onward) + row[q];
            const QuadMask longer = way > potentials[q];
            if (anyLane(longer)) {
                lastRelaxed = to;
                potentials[q] = larger(way, potentials[q]);
                successors[q] = longer ? allLanes(static_cast<std::int32_t>(to)) : successors[q];
            }
        }
    }
    return lastRelaxed;
}

bool LengthAscent::traceCycle(unsigned slot) {
    const auto next = [&](unsigned s) { return successors[s / kLanes][s % kLanes]; };
    for (unsigned i = 0; i < task.slotNum; ++i) {
        if (next(slot) == kNone) {
            return false;
        }
        slot = static_cast<unsigned>(next(slot));
    }
    cycle.clear();
    unsigned from = slot;
    do {
        const auto to = static_cast<unsigned>(next(from));
        cycle.push_back(
            {from, to, {gains.at(from, to) + negligible, choices[gains.cell(from, to)]}});
        from = to;
    } while (from != slot);
    return true;
}

// As many units as every way has room for; returns what they gain.
double LengthAscent::followCycle() {
    float gain = 0.0F;
    for (const Step& step : cycle) {
        gain += step.arc.gain;
    }
    if (gain <= negligible) {
        return 0.0;
    }
    // The gain shrinks from point to point of a group; it stays positive within the tolerance.
    const double tolerance = gain / (2.0 * static_cast<double>(cycle.size()));
    unsigned room = kUnlimited;
    for (const Step& step : cycle) {
        room = std::min(room, roomAlong(step, tolerance));
    }
    if (room == kUnlimited) {
        return 0.0;  // the gaps contradict one another
    }
    double gained = 0.0;
    for (const Step& step : cycle) {
        gained += follow(step, room);
    }
    for (const Step& step : cycle) {
        refreshAround(step);
    }
    return gained;
}

unsigned LengthAscent::roomAlong(const Step& step, double tolerance) const {
    const unsigned item = step.arc.choice.item;
    switch (step.arc.choice.way) {
        case Way::Carry:
            return kUnlimited;
        case Way::CarryLess:
            return carriedUnits(step.to, step.from);
        case Way::GroupForward: {
            const std::vector<double>& at = task.view->points[item]->at;
            const unsigned half = task.cut->getHalfPoints(item);
            const auto next = at.begin() + half / 2;
            const auto end = std::upper_bound(next, at.end(), *next + tolerance);
            return 2 * static_cast<unsigned>(end - at.begin()) - half;
        }
        case Way::GroupBackward: {
            const std::vector<double>& at = task.view->points[item]->at;
            const unsigned half = task.cut->getHalfPoints(item);
            const auto last = at.begin() + (half - 1) / 2;
            const auto begin = std::lower_bound(at.begin(), last, *last - tolerance);
            return half - 2 * static_cast<unsigned>(begin - at.begin());
        }
        case Way::LowEnd:
        case Way::HighEnd:
            return 1;
    }
    return 0;
}

double LengthAscent::follow(const Step& step, unsigned room) {
    const auto [way, item] = step.arc.choice;
    switch (way) {
        case Way::Carry:
            carriedUnits(step.from, step.to) += room;
            break;
        case Way::CarryLess:
            carriedUnits(step.to, step.from) -= room;
            break;
        case Way::GroupForward:
        case Way::GroupBackward: {
            const unsigned half = task.cut->getHalfPoints(item);
            const unsigned now = way == Way::GroupForward ? half + room : half - room;
            task.cut->setHalfPoints(item, now);
            const std::vector<double>& values = task.view->points[item]->values;
            return values[now] - values[half];
        }
        case Way::LowEnd:
            task.cut->readLowOff(nets, task.view->axis, item, step.to);
            flipBit(lowEnds.data() + std::size_t{step.from} * nets.getWordNum(), item);
            flipBit(lowEnds.data() + std::size_t{step.to} * nets.getWordNum(), item);
            break;
        case Way::HighEnd:
            task.cut->readHighOff(nets, task.view->axis, item, step.from);
            flipBit(highEnds.data() + std::size_t{step.from} * nets.getWordNum(), item);
            flipBit(highEnds.data() + std::size_t{step.to} * nets.getWordNum(), item);
            break;
    }
    return double{step.arc.gain} * room;
}

// Looks again at the arcs that can be other ones now.
void LengthAscent::refreshAround(const Step& step) {
    switch (step.arc.choice.way) {
        case Way::Carry:
            refreshArc(step.to, step.from);
            break;
        case Way::CarryLess:
            refreshArc(step.from, step.to);
            break;
        case Way::GroupForward:
        case Way::GroupBackward:
            refreshArc(step.from, step.to);
            refreshArc(step.to, step.from);
            break;
        case Way::LowEnd:
        case Way::HighEnd:
            refreshEnd(step);
            break;
    }
}

// The end is no longer offered where it was, and is offered where it has come to.
void LengthAscent::refreshEnd(const Step& step) {
    const Choice moved = step.arc.choice;
    const bool isLow = moved.way == Way::LowEnd;
    const unsigned left = isLow ? step.from : step.to;
    const unsigned reached = isLow ? step.to : step.from;
    for (unsigned slot = 0; slot < task.slotNum; ++slot) {
        if (!nets.isOn(moved.item, slot)) {
            continue;
        }
        if (slot != left) {
            const unsigned from = isLow ? left : slot;
            const unsigned to = isLow ? slot : left;
            if (choices[gains.cell(from, to)] == moved) {
                refreshArc(from, to);
            }
        }
        if (slot != reached) {
            isLow ? refreshArc(reached, slot) : refreshArc(slot, reached);
        }
    }
}

}  // namespace korvel
