#include "exact/ExactCoordinates.h"

#include "base/Invariant.h"
#include "exact/AxisProgram.h"

namespace korvel {

CoordinateSolver::CoordinateSolver(const Design& design, Region region)
    : region(region), model(design) {}

bool CoordinateSolver::fits(const AxisOrder& order, Axis axis,
                            const std::vector<Orient>& orients) const {
    std::vector<double> sizes;
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        sizes.push_back(model.size(die, axis, orients[die]));
    }
    const std::vector<double> low = order.lowest(sizes);
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        if (low[die] + sizes[die] > side(axis) * (1.0 + 1e-9)) {
            return false;
        }
    }
    return true;
}

std::optional<Placement> CoordinateSolver::solve(const Relations& relations,
                                                 const std::vector<Orient>& orients) const {
    KORVEL_INVARIANT(relations.getDieNum() == model.dieNum() && orients.size() == model.dieNum(),
                     "relations and orientations of this design");
    const auto alongX = AxisOrder::of(relations, kX);
    const auto alongY = AxisOrder::of(relations, kY);
    if (!alongX || !alongY || !fits(*alongX, kX, orients) || !fits(*alongY, kY, orients)) {
        return std::nullopt;
    }
    const auto x = bestPositions(model, kX, region.width, *alongX, orients);
    const auto y = bestPositions(model, kY, region.height, *alongY, orients);
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
