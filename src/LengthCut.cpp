#include "LengthCut.h"

#include <algorithm>

namespace korvel {

void AxisView::start(const LengthNets& nets, Axis along, const std::vector<Orient>& blockOrients) {
    axis = along;
    slotNum = static_cast<unsigned>(blockOrients.size()) + 1;
    quadNum = (slotNum + kLanes - 1) / kLanes;
    gaps.resize(std::size_t{slotNum} * quadNum);
    orients.clear();
    for (const Orient orient : blockOrients) {
        orients.push_back(orientIndex(orient));
    }
    orients.push_back(0);
    points.clear();
    pointSum = 0.0;
    const unsigned groupNum = nets.groupNum(slotNum - 1);
    for (unsigned g = 0; g < groupNum; ++g) {
        const LengthNets::PairGroup& group = nets.getPairGroups()[g];
        points.push_back(&group.points(axis, orients[group.first],
                                       orients[std::min(group.second, slotNum - 1)]));
        pointSum += points.back()->sums.back();
    }
}

LengthCut::LengthCut(const LengthNets& nets, Axis axis, unsigned placed)
    : ends(nets.boxNum(placed), Ends{0, 0}),
      pulls(placed + 1, 0),
      places(std::size_t{placed + 1} * kUnmirroredOrients, 0.0) {
    for (unsigned g = 0; g < nets.groupNum(placed); ++g) {
        halfPoints.push_back(static_cast<unsigned>(nets.getPairGroups()[g].size()));
    }
    for (unsigned n = 0; n < ends.size(); ++n) {
        const LengthNets::Member& member = nets.getBoxNets()[n].members.front();
        addPin(member.body, 1, member.high[axis]);
        addPin(member.body, -1, member.low[axis]);
    }
}

// Pulls are paired greedily, so this may be somewhat less than the gaps allow. Each unit of pull
// counts with the gap that it is carried over.
double LengthCut::value(const AxisView& view, std::vector<Carried>& carried) const {
    double sum = valueOfPins(view);
    // Every transfer uses up what one side has left.
    carried.resize(backward.size() + forward.size());
    std::copy(backward.begin(), backward.end(), carried.begin());
    Carried* next = carried.data();
    Carried* end = next + backward.size();
    for (const Carried& pulled : forward) {
        const auto* row = reinterpret_cast<const float*>(view.rowTo(pulled.to));
        for (int units = pulled.units; units > 0; ++next) {
            Carried* best = next;
            for (Carried* other = next + 1; other < end; ++other) {
                best = row[other->from] > row[best->from] ? other : best;
            }
            std::swap(*best, *next);
            next->to = pulled.to;
            if (next->units > units) {
                *end++ = {next->from, 0, next->units - units};
                next->units = units;
            }
            sum += double{row[next->from]} * next->units;
            units -= next->units;
        }
    }
    carried.resize(static_cast<std::size_t>(next - carried.data()));
    return sum;
}

double LengthCut::valueOfPins(const AxisView& view) const {
    double sum = view.pointSum;
    for (std::size_t g = 0; g < halfPoints.size(); ++g) {
        const double* sums = view.points[g]->sums.data();
        sum -= sums[(halfPoints[g] + 1) / 2] + sums[halfPoints[g] / 2];
    }
    for (std::size_t slot = 0; slot < pulls.size(); ++slot) {
        sum += places[slot * kUnmirroredOrients + view.orients[slot]];
    }
    return sum;
}

// The terminals' body is the largest of all, their slot comes after the placed blocks.
unsigned LengthCut::slotOf(unsigned body) const {
    return std::min(body, static_cast<unsigned>(pulls.size()) - 1);
}

void LengthCut::setHalfPoints(const LengthNets& nets, unsigned group, unsigned number) {
    const int more = static_cast<int>(number) - static_cast<int>(halfPoints[group]);
    pulls[nets.getPairGroups()[group].first] -= more;
    pulls[slotOf(nets.getPairGroups()[group].second)] += more;
    halfPoints[group] = number;
}

void LengthCut::readLowOff(const LengthNets& nets, Axis axis, unsigned net, unsigned member) {
    const std::vector<LengthNets::Member>& members = nets.getBoxNets()[net].members;
    addPin(members[ends[net].low].body, 1, members[ends[net].low].low[axis]);
    addPin(members[member].body, -1, members[member].low[axis]);
    ends[net].low = member;
}

void LengthCut::readHighOff(const LengthNets& nets, Axis axis, unsigned net, unsigned member) {
    const std::vector<LengthNets::Member>& members = nets.getBoxNets()[net].members;
    addPin(members[ends[net].high].body, -1, members[ends[net].high].high[axis]);
    addPin(members[member].body, 1, members[member].high[axis]);
    ends[net].high = member;
}

void LengthCut::addPin(unsigned body, int times, const float* offsets) {
    const unsigned slot = slotOf(body);
    pulls[slot] += times;
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        places[slot * kUnmirroredOrients + o] += times * double{offsets[o]};
    }
}

void LengthCut::sumUp() {
    forward.clear();
    backward.clear();
    for (unsigned slot = 0; slot < pulls.size(); ++slot) {
        if (pulls[slot] > 0) {
            forward.push_back({slot, slot, pulls[slot]});
        } else if (pulls[slot] < 0) {
            backward.push_back({slot, slot, -pulls[slot]});
        }
    }
}

}  // namespace korvel
