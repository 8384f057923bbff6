// What an engine offers that has decided relations and orientations but knows its coordinates only
// roughly: the best coordinates that go with them.
#pragma once

#include <string>

#include "exact/ExactCoordinates.h"
#include "results/Incumbent.h"

namespace korvel {

// Offers the exact coordinates for these relations and the orientations of `draft`; the draft as it
// is if there are none, or none that are legal. Any thread; takes a linear program per axis.
void offerExact(const CoordinateSolver& solver, const Relations& relations, const Placement& draft,
                const std::string& finder, Incumbent& incumbent);

}  // namespace korvel
