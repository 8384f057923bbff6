#include "StepVotes.h"

#include <algorithm>
#include <utility>

namespace korvel {

void StepVotes::clear(std::size_t most) {
    if (wanted.size() < most) {
        wanted.resize(most);
        weights.resize(most);
        freeDistances.resize(most);
        gatheredSteps.resize(2 * most);
        gatheredFree.resize(most);
        for (AlongAxis& along : alongAxes) {
            along.offsets.resize(most);
        }
    }
    wantedNum = 0;
    freeNum = 0;
    leastFree = allLanes(kInfinity);
    moves = allLanes(0);
    stays = allLanes(0);
    for (AlongAxis& along : alongAxes) {
        along.num = 0;
        along.forward = 0;
        along.backward = 0;
        along.stays = 0;
    }
}

float StepVotes::step(Axis axis, Middle middle) {
    const AlongAxis& along = alongAxes[axis];
    const std::int64_t forward = std::int64_t{moves[axis]} + along.forward;
    const std::int64_t backward = std::int64_t{moves[backwardLane(axis)]} + along.backward;
    const std::int64_t margin = forward > backward ? forward - backward : backward - forward;
    const std::int64_t k = margin - stays[axis] - along.stays;
    if (k < 1) {
        return 0.0F;
    }
    const unsigned lane = forward > backward ? unsigned{axis} : backwardLane(axis);
    const auto majority = static_cast<unsigned>(k);
    std::span<WeightedStep> steps = gatherSteps(axis, lane);
    const auto stepOfRank = [&](unsigned rank) { return stepAtRank(steps, rank); };
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

std::span<WeightedStep> StepVotes::gatherSteps(Axis axis, unsigned lane) {
    WeightedStep* next = gatheredSteps.data();
    for (std::size_t i = 0; i < wantedNum; ++i) {
        *next = {wanted[i][lane], weights[i]};
        next += next->step != -kInfinity ? 1 : 0;
    }
    const AlongAxis& along = alongAxes[axis];
    const float sign = lane == axis ? 1.0F : -1.0F;
    for (std::size_t i = 0; i < along.num; ++i) {
        *next = {sign * along.offsets[i].step, along.offsets[i].weight};
        next += next->step > kSamePosition ? 1 : 0;
    }
    return {gatheredSteps.data(), next};
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

namespace {

float stepAtRankOfSorted(std::span<const WeightedStep> steps, unsigned rank) {
    auto step = steps.begin();
    for (; rank >= step->weight; ++step) {
        rank -= step->weight;
    }
    return step->step;
}

// Sorts by insertion what is needed of a short list and drops the rest.
std::span<WeightedStep> keepSmallest(std::span<WeightedStep> steps, unsigned rank) {
    std::size_t kept = 0;
    unsigned weight = 0;  // of those kept
    for (const WeightedStep next : steps) {
        if (weight > rank && next.step >= steps[kept - 1].step) {
            continue;
        }
        std::size_t at = kept++;
        for (; at > 0 && next.step < steps[at - 1].step; --at) {
            steps[at] = steps[at - 1];
        }
        steps[at] = next;
        weight += next.weight;
        while (weight - steps[kept - 1].weight > rank) {
            weight -= steps[--kept].weight;
        }
    }
    return steps.first(kept);
}

}  // namespace

float stepAtRank(std::span<WeightedStep>& steps, unsigned rank) {
    constexpr std::size_t kFew = 32;
    if (steps.size() <= kFew) {
        steps = keepSmallest(steps, rank);
        return stepAtRankOfSorted(steps, rank);
    }
    // Narrow down the part that the rank falls into.
    std::span<WeightedStep> part = steps;
    while (part.size() > kFew) {
        const float a = part.front().step;
        const float b = part[part.size() / 2].step;
        const float c = part.back().step;
        const float pivot = std::max(std::min(a, b), std::min(std::max(a, b), c));

        // Less than the pivot, equal to it, not yet looked at, greater.
        std::size_t equalBegin = 0;
        std::size_t next = 0;
        std::size_t greaterBegin = part.size();
        unsigned less = 0;
        unsigned equal = 0;
        while (next < greaterBegin) {
            if (part[next].step < pivot) {
                less += part[next].weight;
                std::swap(part[equalBegin++], part[next++]);
            } else if (part[next].step > pivot) {
                std::swap(part[--greaterBegin], part[next]);
            } else {
                equal += part[next++].weight;
            }
        }
        if (rank < less) {
            part = part.first(equalBegin);
        } else if (rank < less + equal) {
            return pivot;
        } else {
            rank -= less + equal;
            part = part.subspan(greaterBegin);
        }
    }
    std::sort(part.begin(), part.end(),
              [](const WeightedStep& a, const WeightedStep& b) { return a.step < b.step; });
    return stepAtRankOfSorted(part, rank);
}

}  // namespace korvel
