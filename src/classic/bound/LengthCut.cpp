#include "classic/bound/LengthCut.h"

namespace korvel {

void OrientedNets::orient(const LengthNets& nets, const std::vector<Orient>& blockOrients) {
    orients.assign(1, 0);
    for (const Orient orient : blockOrients) {
        orients.push_back(orientIndex(orient));
    }
    pairLengths.clear();
    for (const LengthNets::GroupLength& group :
         nets.groups(static_cast<unsigned>(blockOrients.size()))) {
        pairLengths.push_back(&group.length(axis, orients[group.first], orients[group.second]));
    }
}

LengthCut::LengthCut(const LengthNets& nets, Axis axis, unsigned placed)
    : boxParts(std::size_t{placed + 1} * kUnmirroredOrients, 0.0) {
    for (const LengthNets::GroupLength& group : nets.groups(placed)) {
        slopeSteps.push_back(static_cast<unsigned>(group.size()));
    }
    for (unsigned n = 0; n < nets.boxNum(placed); ++n) {
        const unsigned body = nets.firstBody(n);
        ends.push_back({body, body});
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            boxPart(body, o) += double{nets.highest(axis, body, o)[n]};
            boxPart(body, o) -= double{nets.lowest(axis, body, o)[n]};
        }
    }
}

double LengthCut::constant(const OrientedNets& node, double slack) const {
    double sum = 0.0;
    for (std::size_t g = 0; g < slopeSteps.size(); ++g) {
        sum += node.pairLengths[g]->intercepts[slopeSteps[g]];
    }
    const double* partsOfBody = boxParts.data();
    for (const unsigned orient : node.orients) {
        sum += partsOfBody[orient];
        partsOfBody += kUnmirroredOrients;
    }
    return sum - slack * flowUnits;
}

void LengthCut::setFlows(const std::vector<unsigned>& unitsByCell) {
    flows.clear();
    flowUnits = 0.0;
    for (std::size_t cell = 0; cell < unitsByCell.size(); ++cell) {
        if (unitsByCell[cell] != 0) {
            flows.push_back({cell, static_cast<double>(unitsByCell[cell])});
            flowUnits += flows.back().units;
        }
    }
}

void LengthCut::readLowOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body) {
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        boxPart(ends[net].low, o) += double{nets.lowest(axis, ends[net].low, o)[net]};
        boxPart(body, o) -= double{nets.lowest(axis, body, o)[net]};
    }
    ends[net].low = body;
}

void LengthCut::readHighOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body) {
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        boxPart(ends[net].high, o) -= double{nets.highest(axis, ends[net].high, o)[net]};
        boxPart(body, o) += double{nets.highest(axis, body, o)[net]};
    }
    ends[net].high = body;
}

}  // namespace korvel
