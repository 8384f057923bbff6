// A design as runs of the annealer take it: what is prepared once for all of them.
// Filled once and never changed; any thread may read.
#pragma once

#include "anneal/DieGroups.h"
#include "exact/ExactCoordinates.h"

namespace korvel {

struct AnnealLevel {
    // The design must outlive the level.
    AnnealLevel(const Design& design, Region region)
        : design(design), region(region), solver(design, region), groups(solver.nets()) {}

    const Design& design;
    const Region region;
    const CoordinateSolver solver;
    const DieGroups groups;
};

}  // namespace korvel
