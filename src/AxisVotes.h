// The vote of many nets about one step along one axis, and the choice of that step. Shared by the
// block alignment, the alignment to terminals and the trials of the pre-calculation.
#pragma once

#include <vector>

#include "AxisAdvice.h"

namespace korvel {

// Which of the wanted steps of an even majority is its middle.
enum class Middle { Lower, Upper };

// The step for a majority of `k` votes, given the wanted steps of the winning side and the free
// distances of the nets that the group lies inside of, both ascending; 1 <= k <= offsets.size().
//
// The middle of the first k wanted steps is taken unless it passes the smallest free distance.
// Every net whose free distance is smaller than the candidate counts against the majority: the
// candidate is taken again from a shrinking majority, and when a free distance lies between the
// old and the new candidate, the step stops there, where the net would start to grow.
float selectStep(const std::vector<float>& offsets, const std::vector<float>& freeDistances,
                 unsigned k, Middle middle);

class AxisVotes {
public:
    // Forgets all votes and keeps the memory.
    void clear();
    void add(const AxisAdvice& advice);

    // Signed step of the majority, 0 without one. Sorts the collected lists.
    float step(Middle middle);

private:
    struct Side {
        std::vector<float> offsets;        // wanted steps, positive amounts
        std::vector<float> freeDistances;  // of the nets that the group lies inside of
    };
    Side forward;
    Side backward;
    unsigned stays = 0;
};

}  // namespace korvel
