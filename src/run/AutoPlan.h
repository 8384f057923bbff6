// How a run of the automatic engine divides its time: annealing finds good placements, the proof
// improves them and ends when none can be better. The proof's work grows so steeply with the number
// of dies that it is everything for a few and nothing for many.
#pragma once

#include <cstddef>
#include <optional>

#include "run/RunResult.h"

namespace korvel {

// In seconds.
struct AutoPlan {
    std::optional<double> whole;  // none: until proved
    double annealing;             // of the whole; the rest is the proof's
    bool proves;                  // there is a proof at all
};

AutoPlan planFor(std::size_t dies, const RunOptions& options);

}  // namespace korvel
