#include "classic/alignment/StepList.h"

#include <algorithm>

#include "base/Quad.h"

namespace korvel {

void StepList::reserve(std::size_t most) {
    const std::size_t room = (most / kLanes + 1) * kLanes;
    steps.resize(std::max(steps.size(), room));
    weights.resize(steps.size());
}

// Any step says by how much the one at the rank is less or more, so only a few have to be tried; to
// divide the list by one takes a pass without a branch.
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
    return kInfinity;  // the only step that is no pivot
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
