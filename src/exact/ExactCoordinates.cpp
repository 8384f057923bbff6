#include "exact/ExactCoordinates.h"

#include "base/Invariant.h"
#include "exact/AxisProgram.h"

namespace korvel {

namespace {

bool fits(const AxisOrder& order, const AxisLimits& limits) {
    const std::vector<double> low = order.lowest(limits);
    for (unsigned die = 0; die < low.size(); ++die) {
        if (low[die] > limits.cornerRange(die).high) {
            return false;
        }
    }
    return true;
}

}  // namespace

CoordinateSolver::CoordinateSolver(const Design& design, Region region)
    : limits(design, region), generousLimits(DieLimits::generous(design, region)), model(design) {}

std::optional<Placement> CoordinateSolver::solve(const Relations& relations,
                                                 const std::vector<Orient>& orients) const {
    KORVEL_INVARIANT(relations.getDieNum() == model.dieNum() && orients.size() == model.dieNum(),
                     "relations and orientations of this design");
    const auto alongX = AxisOrder::of(relations, kX);
    const auto alongY = AxisOrder::of(relations, kY);
    if (!alongX || !alongY || !fits(*alongX, {generousLimits, kX, orients}) ||
        !fits(*alongY, {generousLimits, kY, orients})) {
        return std::nullopt;
    }
    const auto x = bestPositions(model, {limits, kX, orients}, *alongX);
    const auto y = bestPositions(model, {limits, kY, orients}, *alongY);
    Placement placement(model.dieNum());
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        placement[die] = {{x[die], y[die]}, orients[die]};
    }
    return placement;
}

std::optional<Placement> exactCoordinates(const Design& design, Region region,
                                          const Relations& relations,
                                          const std::vector<Orient>& orients) {
    return CoordinateSolver(design, region).solve(relations, orients);
}

}  // namespace korvel
