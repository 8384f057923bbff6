#include "AxisVotes.h"

#include <algorithm>
#include <cstdint>

namespace korvel {

namespace {

// Index of the middle of the first `majority` wanted steps.
unsigned firstMiddle(unsigned majority, Middle middle) {
    return middle == Middle::Lower ? (majority + 1) / 2 - 1 : majority / 2;
}

// The same for a majority that has shrunk; majority >= 2.
unsigned nextMiddle(unsigned majority, Middle middle) {
    return middle == Middle::Lower ? majority / 2 - 1 : (majority - 1) / 2;
}

}  // namespace

float selectStep(const std::vector<float>& offsets, const std::vector<float>& freeDistances,
                 unsigned k, Middle middle) {
    const float first = offsets[firstMiddle(k, middle)];
    if (freeDistances.empty() || first <= freeDistances[0]) {
        return first;
    }
    if (k == 1) {
        return freeDistances[0];
    }
    unsigned passed = 1;  // free distances that the step has passed
    unsigned majority = k;
    do {
        const float candidate = offsets[nextMiddle(majority, middle)];
        if (freeDistances[passed - 1] > candidate) {
            return freeDistances[passed - 1];
        }
        if (passed == freeDistances.size() || candidate <= freeDistances[passed]) {
            return candidate;
        }
        ++passed;
        --majority;
    } while (passed != k);
    return freeDistances[passed - 1];
}

void AxisVotes::clear() {
    for (Side* side : {&forward, &backward}) {
        side->offsets.clear();
        side->freeDistances.clear();
    }
    stays = 0;
}

void AxisVotes::add(const AxisAdvice& advice) {
    if (advice.forward) {
        forward.offsets.push_back(advice.offset);
    }
    if (advice.backward) {
        backward.offsets.push_back(-advice.offset);
    }
    if (advice.stay) {
        ++stays;
    }
    if (advice.inside) {
        forward.freeDistances.push_back(advice.freeForward);
        backward.freeDistances.push_back(advice.freeBackward);
    }
}

float AxisVotes::step(Middle middle) {
    const bool forwardWins = forward.offsets.size() > backward.offsets.size();
    Side& winner = forwardWins ? forward : backward;
    const Side& loser = forwardWins ? backward : forward;
    const std::int64_t k = static_cast<std::int64_t>(winner.offsets.size()) -
                           static_cast<std::int64_t>(loser.offsets.size()) - stays;
    if (k < 1) {
        return 0.0F;
    }
    std::sort(winner.offsets.begin(), winner.offsets.end());
    std::sort(winner.freeDistances.begin(), winner.freeDistances.end());
    const float step =
        selectStep(winner.offsets, winner.freeDistances, static_cast<unsigned>(k), middle);
    return forwardWins ? step : -step;
}

}  // namespace korvel
