// Whether fixed dies can lie where they are fixed, in one of their orientations at least: inside
// the area and their rectangle, in no keep-out, far enough from one another; and whether it is
// known how they lie.
#pragma once

#include "design/Diagnostics.h"
#include "rules/MergedRules.h"

namespace korvel {

void checkFixedDies(const MergedRules& merged, Diagnostics& diagnostics);

}  // namespace korvel
