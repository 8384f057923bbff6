#include "LengthCut.h"

#include <algorithm>

#include "Quad.h"

namespace korvel {

void AxisView::start(const LengthNets& nets, Axis along, const std::vector<Orient>& blockOrients) {
    axis = along;
    slotNum = static_cast<unsigned>(blockOrients.size()) + 1;
    stride = (slotNum + kLanes - 1) / kLanes * kLanes;
    gaps.resize(std::size_t{slotNum} * stride);
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
    carried.clear();
    for (const Pulled& pulled : backward) {
        carried.push_back({pulled.slot, 0, pulled.units});
    }
    std::size_t done = 0;  // those before are used up
    for (const Pulled& pulled : forward) {
        const float* row = view.rowTo(pulled.slot);
        for (int units = pulled.units; units > 0; ++done) {
            std::size_t best = done;
            for (std::size_t i = done + 1; i < carried.size(); ++i) {
                best = row[carried[i].from] > row[carried[best].from] ? i : best;
            }
            std::swap(carried[best], carried[done]);
            Carried& next = carried[done];
            next.to = pulled.slot;
            sum += double{row[next.from]} * std::min(units, next.units);
            if (next.units > units) {
                carried.push_back({next.from, 0, next.units - units});
                carried[done].units = units;
            }
            units -= carried[done].units;
        }
    }
    return sum;
}

double LengthCut::valueOfPins(const AxisView& view) const {
    double sum = view.pointSum;
    for (std::size_t g = 0; g < halfPoints.size(); ++g) {
        const double* sums = view.points[g]->sums.data();
        sum -= sums[(halfPoints[g] + 1) / 2] + sums[halfPoints[g] / 2];
    }
    for (unsigned slot = 0; slot < view.slotNum; ++slot) {
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
            forward.push_back({slot, pulls[slot]});
        } else if (pulls[slot] < 0) {
            backward.push_back({slot, -pulls[slot]});
        }
    }
}

}  // namespace korvel
