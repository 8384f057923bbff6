// A design as the annealer takes it, with what is prepared once for all restarts: its nets, the
// solver of exact coordinates and the groups of dies.
// Filled once and never changed; any thread may read.
#pragma once

#include "anneal/DieGroups.h"
#include "exact/ExactCoordinates.h"

namespace korvel {

struct PreparedDesign {
    // The design must outlive it.
    PreparedDesign(const Design& design, Region region)
        : design(design), region(region), solver(design, region), groups(solver.nets()) {}

    const NetModel& nets() const { return solver.nets(); }

    const Design& design;
    const Region region;
    const CoordinateSolver solver;
    const DieGroups groups;
};

}  // namespace korvel
