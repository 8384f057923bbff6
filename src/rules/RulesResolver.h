// From what a rules file says to the rules of a design: finds the dies that are meant, merges the
// entries, and checks what no placement could keep.
#pragma once

#include <optional>

#include "design/Diagnostics.h"
#include "rules/RulesDraft.h"

namespace korvel {

// No rules come back if there is an error: names and patterns that match no die, a pair of a die
// with itself, an area that is empty after its edge, dies without room in an allowed orientation,
// fixed dies whose turn is not known, or that lie outside the area or their rectangle, in a
// keep-out, or too near one another. Whatever else contradicts is not found here. The region is
// usable.
std::optional<Rules> resolveRules(const RulesDraft& draft, const Design& design, Region region,
                                  Diagnostics& diagnostics);

}  // namespace korvel
