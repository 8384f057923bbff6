// Lists of steps that nets want, each with the number of nets that want it.
#pragma once

#include <span>

namespace korvel {

// A step, and how many nets want it.
struct WeightedStep {
    float step;
    unsigned weight;
};

// The step at `rank` when each stands as often as its weight says, found by selection: the whole
// order is not needed. Reorders the list, and may shorten it to what can answer for this and lower
// ranks.
float stepAtRank(std::span<WeightedStep>& steps, unsigned rank);

}  // namespace korvel
