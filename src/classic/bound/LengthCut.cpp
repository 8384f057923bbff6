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
        for (const End end : {kHigh, kLow}) {
            endBodies[end].push_back(nets.firstBody(n));
            addToParts(nets, axis, end, n, 1.0);
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

void LengthCut::readOff(const LengthNets& nets, Axis axis, End end, unsigned net, unsigned body) {
    addToParts(nets, axis, end, net, -1.0);
    endBodies[end][net] = body;
    addToParts(nets, axis, end, net, 1.0);
}

// What the end adds to the length, times `sign`.
void LengthCut::addToParts(const LengthNets& nets, Axis axis, End end, unsigned net, double sign) {
    const unsigned body = endBodies[end][net];
    const double factor = end == kHigh ? sign : -sign;
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        boxParts[body * kUnmirroredOrients + o] += factor * nets.outermost(end, axis, body, o)[net];
    }
}

}  // namespace korvel
