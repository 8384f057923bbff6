#include "LengthAscent.h"

#include <algorithm>
#include <limits>

#include "Quad.h"

namespace korvel {

namespace {

constexpr std::int32_t kNone = -1;
constexpr unsigned kUnlimited = ~0U;
// Beyond that the alignment is cheaper than finding out that it is not needed.
constexpr unsigned kMostCycles = 100;

// The sum of distances to the points that grows and shrinks with the choice.
double groupValue(const LengthNets::PairGroup::Points& points, unsigned halfPoints) {
    return -points.sums[(halfPoints + 1) / 2] - points.sums[halfPoints / 2];
}

}  // namespace

double LengthAscent::raise(LengthCut& cut, const AxisView& view, double target) {
    load(cut, view);
    double value = cut.value(view);
    for (unsigned i = 0; i < kMostCycles && value < target; ++i) {
        collectArcs(cut, view);
        const double gain = findCycle() ? followCycle(cut, view) : 0.0;
        if (gain <= 0.0) {
            break;
        }
        value += gain;
    }
    cut.setCarried(units, slotNum, stride);
    return cut.value(view);
}

void LengthAscent::load(const LengthCut& cut, const AxisView& view) {
    slotNum = view.slotNum;
    quadNum = view.quadNum;
    stride = quadNum * kLanes;
    gains.resize(std::size_t{slotNum} * quadNum);
    choices.resize(std::size_t{slotNum} * stride);
    potentials.resize(quadNum);
    successors.resize(quadNum);
    units.assign(choices.size(), 0);
    for (const Carried& one : cut.getCarried()) {
        carriedUnits(one.from, one.to) = one.units;
    }
    loadMembers(view);
}

// Terminals come first; after the last placed block there is nothing more.
void LengthAscent::loadMembers(const AxisView& view) {
    const unsigned terminals = slotNum - 1;
    members.clear();
    firstMembers.assign(1, 0);
    for (unsigned n = 0; n < nets.boxNum(terminals); ++n) {
        for (const LengthNets::Member& member : nets.getBoxNets()[n].members) {
            const unsigned slot = std::min(member.body, terminals);
            if (slot == terminals && firstMembers.back() != members.size()) {
                break;
            }
            const unsigned orient = view.orients[slot];
            members.push_back(
                {slot, member.low[view.axis][orient], member.high[view.axis][orient]});
        }
        firstMembers.push_back(static_cast<unsigned>(members.size()));
    }
}

void LengthAscent::collectArcs(const LengthCut& cut, const AxisView& view) {
    collectCarrying(view);
    for (unsigned g = 0; g < view.points.size(); ++g) {
        collectGroup(g, cut.getHalfPoints(g), view);
    }
    for (unsigned n = 0; n + 1 < firstMembers.size(); ++n) {
        collectEnds(n, cut.getEnds(n));
    }
}

void LengthAscent::collectCarrying(const AxisView& view) {
    std::copy_n(view.gaps.begin(), gains.size(), gains.begin());
    std::fill(choices.begin(), choices.end(), Choice{});
    for (unsigned to = 0; to < slotNum; ++to) {
        for (unsigned from = 0; from < slotNum; ++from) {
            if (carriedUnits(from, to) != 0) {
                gainsTo(from)[to / kLanes][to % kLanes] = -view.gap(from, to);
                choices[from * stride + to] = {Way::CarryLess};
            }
        }
    }
}

// Half a point more lets the second body pull forward by one and the first one backward.
void LengthAscent::collectGroup(unsigned group, unsigned halfPoints, const AxisView& view) {
    const std::vector<double>& at = view.points[group]->at;
    const unsigned first = nets.getPairGroups()[group].first;
    const unsigned second = std::min(nets.getPairGroups()[group].second, slotNum - 1);
    if (halfPoints < 2 * at.size()) {
        offer(second, first, static_cast<float>(-at[halfPoints / 2]),
              {Way::GroupForward, 0, group});
    }
    if (halfPoints > 0) {
        offer(first, second, static_cast<float>(at[(halfPoints - 1) / 2]),
              {Way::GroupBackward, 0, group});
    }
}

void LengthAscent::collectEnds(unsigned net, LengthCut::Ends ends) {
    const Member* first = members.data() + firstMembers[net];
    const unsigned memberNum = firstMembers[net + 1] - firstMembers[net];
    const Member low = first[ends.low];
    const Member high = first[ends.high];
    for (unsigned m = 0; m < memberNum; ++m) {
        const Member& other = first[m];
        const auto member = static_cast<std::uint16_t>(m);
        if (m != ends.high) {
            offer(other.slot, high.slot, other.high - high.high, {Way::HighEnd, member, net});
        }
        if (m != ends.low) {
            offer(low.slot, other.slot, low.low - other.low, {Way::LowEnd, member, net});
        }
    }
}

// Longest ways by relaxation; a slot that comes back to itself lies on a cycle of positive gain.
bool LengthAscent::findCycle() {
    std::fill(potentials.begin(), potentials.end(), allLanes(0.0F));
    std::fill(successors.begin(), successors.end(), allLanes(kNone));
    for (unsigned round = 0; round < slotNum; ++round) {
        unsigned lastRelaxed = slotNum;
        for (unsigned to = 0; to < slotNum; ++to) {
            lastRelaxed = relaxTowards(to) ? to : lastRelaxed;
        }
        if (lastRelaxed == slotNum) {
            return false;
        }
        if (traceCycle(lastRelaxed)) {
            return true;
        }
    }
    return false;
}

bool LengthAscent::relaxTowards(unsigned to) {
    const Quad* row = gainsTo(to);
    const Quad base = allLanes(potentials[to / kLanes][to % kLanes]);
    const Quad least = allLanes(negligible);
    QuadMask anyLonger = allLanes(0);
    for (unsigned q = 0; q < quadNum; ++q) {
        const Quad way = base + row[q];
        const QuadMask longer = way - least > potentials[q];
        potentials[q] = choose(longer, way, potentials[q]);
        successors[q] = longer ? allLanes(static_cast<std::int32_t>(to)) : successors[q];
        anyLonger |= longer;
    }
    return (anyLonger[0] | anyLonger[1] | anyLonger[2] | anyLonger[3]) != 0;
}

bool LengthAscent::traceCycle(unsigned slot) {
    const auto next = [&](unsigned s) { return successors[s / kLanes][s % kLanes]; };
    for (unsigned i = 0; i < slotNum; ++i) {
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
            {from, to, choices[to * stride + from], gainsTo(to)[from / kLanes][from % kLanes]});
        from = to;
    } while (from != slot);
    return true;
}

// As many units as every way has room for; returns what they gain.
double LengthAscent::followCycle(LengthCut& cut, const AxisView& view) {
    float gain = 0.0F;
    for (const Step& step : cycle) {
        gain += step.gain;
    }
    if (gain <= negligible) {
        return 0.0;
    }
    // The gain shrinks from point to point of a group; it stays positive within the tolerance.
    const double tolerance = gain / (2.0 * static_cast<double>(cycle.size()));
    unsigned room = kUnlimited;
    for (const Step& step : cycle) {
        room = std::min(room, roomAlong(step, cut, view, tolerance));
    }
    if (room == kUnlimited) {
        return 0.0;  // the gaps contradict one another
    }
    double gained = 0.0;
    for (const Step& step : cycle) {
        gained += follow(step, room, cut, view);
    }
    return gained;
}

unsigned LengthAscent::roomAlong(const Step& step, const LengthCut& cut, const AxisView& view,
                                 double tolerance) const {
    switch (step.choice.way) {
        case Way::Carry:
            return kUnlimited;
        case Way::CarryLess:
            return units[step.from * stride + step.to];
        case Way::GroupForward: {
            const std::vector<double>& at = view.points[step.choice.item]->at;
            const unsigned half = cut.getHalfPoints(step.choice.item);
            const auto next = at.begin() + half / 2;
            const auto end = std::upper_bound(next, at.end(), *next + tolerance);
            return 2 * static_cast<unsigned>(end - at.begin()) - half;
        }
        case Way::GroupBackward: {
            const std::vector<double>& at = view.points[step.choice.item]->at;
            const unsigned half = cut.getHalfPoints(step.choice.item);
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

double LengthAscent::follow(const Step& step, unsigned room, LengthCut& cut, const AxisView& view) {
    const unsigned item = step.choice.item;
    switch (step.choice.way) {
        case Way::Carry:
            carriedUnits(step.from, step.to) += room;
            break;
        case Way::CarryLess:
            carriedUnits(step.to, step.from) -= room;
            break;
        case Way::GroupForward:
        case Way::GroupBackward: {
            const unsigned half = cut.getHalfPoints(item);
            const unsigned now = step.choice.way == Way::GroupForward ? half + room : half - room;
            cut.setHalfPoints(item, now);
            return groupValue(*view.points[item], now) - groupValue(*view.points[item], half);
        }
        case Way::LowEnd:
            cut.readLowOff(nets, view.axis, item, step.choice.member);
            break;
        case Way::HighEnd:
            cut.readHighOff(nets, view.axis, item, step.choice.member);
            break;
    }
    return double{step.gain} * room;
}

}  // namespace korvel
