// How a run of the automatic engine divides its time: annealing finds good placements, the proof
// improves them and ends when none can be better. The proof's work grows so steeply with the number
// of dies that it is everything for a few and nothing for many; in between it gets a chance, and
// annealing goes on if that was not enough. A plan is a value; nothing of it changes during a run.
#pragma once

#include <cstddef>
#include <optional>

#include "run/RunResult.h"

namespace korvel {

// Seconds from the run's beginning.
struct AutoPlan {
    bool proves;                  // there is a proof at all
    std::optional<double> whole;  // none: until proved, or until the iterations are made
    double annealedUntil;         // then comes the proof, unless the whole is over
    std::optional<double> provedUntil = std::nullopt;  // then annealing again; none: to the end
};

AutoPlan planFor(std::size_t dies, const RunOptions& options);

}  // namespace korvel
