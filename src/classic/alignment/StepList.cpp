#include "classic/alignment/StepList.h"

#include <algorithm>

#include "base/Quad.h"

namespace korvel {

void StepList::reserve(std::size_t most) {
    const std::size_t room = (most / kLanes + 1) * kLanes;
    steps.resize(std::max(steps.size(), room));
    weights.resize(steps.size());
}

// Dividing the list by any of its steps tells on which side of it the rank lies, so that a few
// divisions find the step at the rank; each is one pass without branches.
float StepList::atRank(unsigned rank) {
    std::fill_n(weights.begin() + static_cast<std::ptrdiff_t>(num), kLanes - num % kLanes, 0);
    float low = -kInfinity;
    float high = kInfinity;
    for (std::size_t i = 0; i < num; ++i) {
        const float pivot = steps[i];
        if (pivot <= low || pivot >= high) {
            continue;
        }
        const Divided weight = divideAt(pivot);
        if (rank < weight.less) {
            high = pivot;
        } else if (rank >= weight.notMore) {
            low = pivot;
        } else {
            return pivot;
        }
    }
    return kInfinity;  // which is never a pivot, so it is all that is left
}

StepList::Divided StepList::divideAt(float pivot) const {
    QuadMask less{};
    QuadMask notMore{};
    for (std::size_t i = 0; i < num; i += kLanes) {
        const Quad four = loadQuad(&steps[i]);
        const QuadMask weight = loadMask(&weights[i]);
        less += (four < allLanes(pivot)) & weight;
        notMore += (four <= allLanes(pivot)) & weight;
    }
    return {static_cast<unsigned>(sumOf(less)), static_cast<unsigned>(sumOf(notMore))};
}

}  // namespace korvel
