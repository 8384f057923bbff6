// Whether rules leave room: an area inside the edge, and for each die that is not fixed an
// orientation in which it fits into what is left.
#pragma once

#include "design/Diagnostics.h"
#include "rules/MergedRules.h"

namespace korvel {

void checkRoom(const MergedRules& merged, Diagnostics& diagnostics);

}  // namespace korvel
