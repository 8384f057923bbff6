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

double LengthCut::value(const AxisView& view) const {
    double sum = view.pointSum;
    for (std::size_t g = 0; g < halfPoints.size(); ++g) {
        const double* sums = view.points[g]->sums.data();
        sum -= sums[(halfPoints[g] + 1) / 2] + sums[halfPoints[g] / 2];
    }
    const double* placesOfSlot = places.data();
    for (const unsigned orient : view.orients) {
        sum += placesOfSlot[orient];
        placesOfSlot += kUnmirroredOrients;
    }
    for (const Carried& one : carried) {
        sum += double{view.gap(one.from, one.to)} * one.units;
    }
    return sum;
}

void LengthCut::setCarried(const std::vector<unsigned>& units, unsigned slotNum, unsigned stride) {
    carried.clear();
    for (unsigned to = 0; to < slotNum; ++to) {
        for (unsigned from = 0; from < slotNum; ++from) {
            if (units[to * stride + from] != 0) {
                carried.push_back({from, to, units[to * stride + from]});
            }
        }
    }
}

// The terminals' body is the largest of all, their slot comes after the placed blocks.
unsigned LengthCut::slotOf(unsigned body) const {
    return std::min(body, static_cast<unsigned>(places.size() / kUnmirroredOrients) - 1);
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
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        places[slot * kUnmirroredOrients + o] += times * double{offsets[o]};
    }
}

}  // namespace korvel
