// The best coordinates for given orientations and relations: with both fixed, shortest wirelength
// is a linear program, along x and y apart.
#pragma once

#include <optional>
#include <vector>

#include "design/Placement.h"
#include "exact/AxisOrder.h"
#include "exact/NetModel.h"

namespace korvel {

// Owns what is prepared once per design; use one for many programs. Any thread may call it.
class CoordinateSolver {
public:
    // The design must outlive the solver.
    CoordinateSolver(const Design& design, Region region);

    // The legal placement inside the region with the shortest wirelength that these relations and
    // orientations (by die; N, E, S or W) allow. Nothing if the relations contradict one another or
    // need more room than the region by more than 1e-9 of its side.
    std::optional<Placement> solve(const Relations& relations,
                                   const std::vector<Orient>& orients) const;

    const NetModel& nets() const { return model; }

private:
    bool fits(const AxisOrder& order, Axis axis, const std::vector<Orient>& orients) const;
    double side(Axis axis) const { return axis == kX ? region.width : region.height; }

    Region region;
    NetModel model;
};

// The same for a single use.
std::optional<Placement> exactCoordinates(const Design& design, Region region,
                                          const Relations& relations,
                                          const std::vector<Orient>& orients);

}  // namespace korvel
