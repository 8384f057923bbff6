// The best coordinates for given orientations and relations: with both fixed, shortest wirelength
// is a linear program, along x and y apart.
#pragma once

#include <optional>
#include <vector>

#include "design/Placement.h"
#include "exact/AxisOrder.h"
#include "nets/DieLimits.h"
#include "nets/NetModel.h"

namespace korvel {

// Owns what is prepared once per design; use one for many programs. Any thread may call it.
class CoordinateSolver {
public:
    CoordinateSolver(const Design& design, Region region);

    // The legal placement inside the region with the shortest wirelength that these relations and
    // orientations (by die; N, E, S or W) allow. Nothing if the relations contradict one another or
    // need more room than there is (see kFitting).
    std::optional<Placement> solve(const Relations& relations,
                                   const std::vector<Orient>& orients) const;

    const NetModel& nets() const { return model; }

private:
    DieLimits limits;
    DieLimits generousLimits;
    NetModel model;
};

// The same for a single use.
std::optional<Placement> exactCoordinates(const Design& design, Region region,
                                          const Relations& relations,
                                          const std::vector<Orient>& orients);

}  // namespace korvel
