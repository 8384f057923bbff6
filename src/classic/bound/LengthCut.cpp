#include "classic/bound/LengthCut.h"

namespace korvel {

void AxisView::turn(const LengthNets& nets, const std::vector<Orient>& blockOrients) {
    orients.assign(1, 0);  // of the terminals
    for (const Orient orient : blockOrients) {
        orients.push_back(orientIndex(orient));
    }
    points.clear();
    for (const LengthNets::PairGroup& group :
         nets.groups(static_cast<unsigned>(blockOrients.size()))) {
        points.push_back(&group.points(axis, orients[group.first], orients[group.second]));
    }
}

LengthCut::LengthCut(const LengthNets& nets, Axis axis, unsigned placed)
    : places(std::size_t{placed + 1} * kUnmirroredOrients, 0.0) {
    for (const LengthNets::PairGroup& group : nets.groups(placed)) {
        halfPoints.push_back(static_cast<unsigned>(group.size()));
    }
    for (unsigned n = 0; n < nets.boxNum(placed); ++n) {
        const unsigned body = nets.firstBody(n);
        ends.push_back({body, body});
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            place(body, o) += double{nets.highest(axis, body, o)[n]};
            place(body, o) -= double{nets.lowest(axis, body, o)[n]};
        }
    }
}

double LengthCut::fixedPart(const AxisView& view, double slack) const {
    double sum = 0.0;
    for (std::size_t g = 0; g < halfPoints.size(); ++g) {
        sum += view.points[g]->values[halfPoints[g]];
    }
    const double* placesOfBody = places.data();
    for (const unsigned orient : view.orients) {
        sum += placesOfBody[orient];
        placesOfBody += kUnmirroredOrients;
    }
    return sum - slack * carriedUnits;
}

void LengthCut::setCarried(const std::vector<unsigned>& unitsByCell) {
    carried.clear();
    carriedUnits = 0.0;
    for (std::size_t cell = 0; cell < unitsByCell.size(); ++cell) {
        if (unitsByCell[cell] != 0) {
            carried.push_back({cell, static_cast<double>(unitsByCell[cell])});
            carriedUnits += carried.back().units;
        }
    }
}

void LengthCut::readLowOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body) {
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        place(ends[net].low, o) += double{nets.lowest(axis, ends[net].low, o)[net]};
        place(body, o) -= double{nets.lowest(axis, body, o)[net]};
    }
    ends[net].low = body;
}

void LengthCut::readHighOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body) {
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        place(ends[net].high, o) -= double{nets.highest(axis, ends[net].high, o)[net]};
        place(body, o) += double{nets.highest(axis, body, o)[net]};
    }
    ends[net].high = body;
}

}  // namespace korvel
