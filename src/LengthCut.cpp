#include "LengthCut.h"

namespace korvel {

void AxisView::turn(const LengthNets& nets, const std::vector<Orient>& blockOrients) {
    orients.assign(1, 0);  // of the terminals
    for (const Orient orient : blockOrients) {
        orients.push_back(orientIndex(orient));
    }
    points.clear();
    pointSum = 0.0;
    for (const LengthNets::PairGroup& group :
         nets.groups(static_cast<unsigned>(blockOrients.size()))) {
        points.push_back(&group.points(axis, orients[group.first], orients[group.second]));
        pointSum += points.back()->sums.back();
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
    double sum = view.pointSum;
    for (std::size_t g = 0; g < halfPoints.size(); ++g) {
        const double* sums = view.points[g]->sums.data();
        sum -= sums[(halfPoints[g] + 1) / 2] + sums[halfPoints[g] / 2];
    }
    const double* placesOfBody = places.data();
    for (const unsigned orient : view.orients) {
        sum += placesOfBody[orient];
        placesOfBody += kUnmirroredOrients;
    }
    for (const Carried& one : carried) {
        sum -= slack * one.units;
    }
    return sum;
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
