#include "classic/alignment/StepVotes.h"

#include <algorithm>
#include <utility>

namespace korvel {

void StepVotes::clear(std::size_t most) {
    if (wanted.size() < most) {
        wanted.resize(most);
        weights.resize(most);
        freeDistances.resize(most);
        gatheredSteps.reserve(most);
        gatheredFree.resize(most);
        for (SortedVotes& along : alongAxes) {
            along.reserve(most);
        }
    }
    wantedNum = 0;
    freeNum = 0;
    leastFree = allLanes(kInfinity);
    moves = allLanes(0);
    stays = allLanes(0);
    for (SortedVotes& along : alongAxes) {
        along.clear();
    }
}

float StepVotes::step(Axis axis, Middle middle) {
    SortedVotes& along = alongAxes[axis];
    const std::int64_t forward = std::int64_t{moves[axis]} + along.getForward();
    const std::int64_t backward = std::int64_t{moves[backwardLane(axis)]} + along.getBackward();
    const std::int64_t margin = forward > backward ? forward - backward : backward - forward;
    const std::int64_t k = margin - stays[axis] - along.getStays();
    if (k < 1) {
        return 0.0F;
    }
    const unsigned lane = forward > backward ? unsigned{axis} : backwardLane(axis);
    const auto majority = static_cast<unsigned>(k);
    gatherSteps(lane);
    if (!along.empty()) {
        along.chooseSide(lane == axis, gatheredSteps);
    }
    const auto stepOfRank = [&](unsigned rank) {
        return along.empty() ? gatheredSteps.atRank(rank) : along.stepAt(rank);
    };
    std::span<const float> free;
    const auto freeOfRank = [&](unsigned rank) {
        if (rank == 0) {
            return leastFree[lane];
        }
        if (free.empty()) {
            free = sortFree(lane);
        }
        return rank < free.size() ? free[rank] : kInfinity;
    };
    const float step = selectStep(stepOfRank, freeOfRank, majority, middle);
    return lane == axis ? step : -step;
}

void StepVotes::gatherSteps(unsigned lane) {
    gatheredSteps.clear();
    for (std::size_t i = 0; i < wantedNum; ++i) {
        const float step = wanted[i][lane];
        gatheredSteps.add({step, weights[i]}, step != -kInfinity);
    }
}

std::span<float> StepVotes::sortFree(unsigned lane) {
    float* next = gatheredFree.data();
    for (std::size_t i = 0; i < freeNum; ++i) {
        *next = freeDistances[i][lane];
        next += *next != kInfinity ? 1 : 0;
    }
    std::sort(gatheredFree.data(), next);
    return {gatheredFree.data(), next};
}

}  // namespace korvel
