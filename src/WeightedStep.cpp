#include "WeightedStep.h"

#include <algorithm>
#include <utility>

namespace korvel {

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
