// A design as the annealer takes it, with what is prepared once for all restarts.
// Filled once and never changed; any thread may read.
#pragma once

#include "anneal/DieGroups.h"
#include "exact/ExactCoordinates.h"

namespace korvel {

struct PreparedDesign {
    // The design must outlive it.
    PreparedDesign(const Design& design, Region region)
        : design(design),
          region(region),
          limits(design, region),
          solver(design, region),
          groups(solver.nets()) {}

    const NetModel& nets() const { return solver.nets(); }

    const Design& design;
    const Region region;
    const DieLimits limits;
    const CoordinateSolver solver;
    const DieGroups groups;
};

}  // namespace korvel
