#include "classic/alignment/SortedVotes.h"

#include <algorithm>

#include "classic/netlist/NetAdvice.h"

namespace korvel {

void SortedVotes::reserve(std::size_t most) {
    runs.reserve(most);
    parts.reserve(most);
    nearWishes.reserve(most);
    otherSteps.reserve(most);
    otherPairs.reserve(most + 1);
    otherLanes.reserve(most + 1);
    candidates.reserve(most);
}

void SortedVotes::clear() {
    runs.clear();
    nearWishes.clear();
    forward = 0;
    backward = 0;
    stays = 0;
}

// Only what the estimates are certain about is taken from the list; whatever compares with a NaN is
// not.
void SortedVotes::add(const SortedRun& run) {
    const unsigned end = run.pairNum();
    const double certain = kSamePosition + run.tolerance;
    const unsigned backwardEnd = run.firstNotBelow(-certain, 0, end);
    const unsigned forwardBegin = run.firstAbove(certain, backwardEnd, end);
    backward += run.weight(0, backwardEnd);
    forward += run.weight(forwardBegin, end);
    for (unsigned pair = backwardEnd; pair < forwardBegin; ++pair) {
        addNear(run.wish(pair), run.weight(pair, pair + 1));
    }
    runs.push_back({run, backwardEnd, forwardBegin});
}

void SortedVotes::addNear(float wish, unsigned weight) {
    if (wish > kSamePosition) {
        forward += weight;
    } else if (wish < -kSamePosition) {
        backward += weight;
    } else {
        stays += weight;
        return;
    }
    nearWishes.push_back({wish, weight});
}

void SortedVotes::chooseSide(bool isForward, const StepList& others) {
    direction = isForward ? 1.0F : -1.0F;
    parts.clear();
    total = 0;
    tolerance = 0.0;
    for (const Run& run : runs) {
        if (isForward) {
            addPart(run.run, run.forwardBegin, run.run.pairNum());
        } else {
            addPart(run.run, 0, run.backwardEnd);
        }
    }
    addOthers(others);
}

void SortedVotes::addPart(const SortedRun& run, unsigned begin, unsigned end) {
    if (begin < end) {
        parts.push_back({run, begin, end, begin, end});
        total += run.weight(begin, end);
        tolerance = std::max(tolerance, run.tolerance);
    }
}

// What is not in a list makes one more, of lanes that face one at 0.
void SortedVotes::addOthers(const StepList& others) {
    otherSteps.clear();
    for (std::size_t i = 0; i < others.size(); ++i) {
        otherSteps.push_back({direction * others[i].step, others[i].weight});
    }
    for (const WeightedStep& near : nearWishes) {
        if (near.step * direction > 0.0F) {
            otherSteps.push_back(near);
        }
    }
    std::sort(otherSteps.begin(), otherSteps.end(),
              [](const WeightedStep& a, const WeightedStep& b) { return a.step < b.step; });
    otherLanes.assign(1, 0.0F);
    otherPairs.clear();
    unsigned weightBefore = 0;
    for (const auto [step, weight] : otherSteps) {
        otherPairs.push_back({step, weightBefore, 0, static_cast<unsigned>(otherLanes.size())});
        otherLanes.push_back(step);
        weightBefore += weight;
    }
    otherPairs.push_back({0.0F, weightBefore, 0, 0});
    const SortedRun run{otherPairs, otherLanes.data(), 1.0F, 0.0, 0.0};
    addPart(run, 0, run.pairNum());
}

float SortedVotes::stepAt(unsigned rank) {
    const unsigned ascending = direction > 0.0F ? rank : total - 1 - rank;
    narrowDown(ascending);
    widenByTolerance();
    const unsigned before = gatherCandidates();
    return direction * candidates.atRank(ascending - before);
}

// Leaves of each part what may be the estimate at the rank, and not much more, by halving the
// widest part. Where equal estimates prevent that, more candidates are left than needed.
void SortedVotes::narrowDown(unsigned rank) {
    constexpr unsigned kFew = 4;
    constexpr unsigned kMostRounds = 64;
    for (Part& part : parts) {
        part.low = part.begin;
        part.high = part.end;
    }
    for (unsigned round = 0; round < kMostRounds; ++round) {
        const Part& widest = *std::max_element(
            parts.begin(), parts.end(),
            [](const Part& a, const Part& b) { return a.high - a.low < b.high - b.low; });
        const auto [least, most] = estimates();
        if (widest.high - widest.low <= kFew || most - least <= 2 * tolerance) {
            return;
        }
        const unsigned less = divideAt(widest.run.estimate((widest.low + widest.high) / 2));
        for (Part& part : parts) {
            (rank < less ? part.high : part.low) = part.divided;
        }
    }
}

// The least and the largest of what is left.
std::pair<double, double> SortedVotes::estimates() const {
    double least = kInfinity;
    double most = -kInfinity;
    for (const Part& part : parts) {
        if (part.low < part.high) {
            least = std::min(least, part.run.estimate(part.low));
            most = std::max(most, part.run.estimate(part.high - 1));
        }
    }
    return {least, most};
}

// Returns the weight of what is less.
unsigned SortedVotes::divideAt(double pivot) {
    unsigned less = 0;
    for (Part& part : parts) {
        part.divided = part.run.firstNotBelow(pivot, part.low, part.high);
        less += part.run.weight(part.begin, part.divided);
    }
    return less;
}

// The wish at a rank is within the tolerance of the estimate at that rank, and so is every wish of
// its own estimate.
void SortedVotes::widenByTolerance() {
    const auto [least, most] = estimates();
    for (Part& part : parts) {
        while (part.low > part.begin && part.run.estimate(part.low - 1) >= least - 2 * tolerance) {
            --part.low;
        }
        while (part.high < part.end && part.run.estimate(part.high) <= most + 2 * tolerance) {
            ++part.high;
        }
    }
}

// Returns the weight of what lies before them.
unsigned SortedVotes::gatherCandidates() {
    candidates.clear();
    unsigned before = 0;
    for (const Part& part : parts) {
        before += part.run.weight(part.begin, part.low);
        for (unsigned pair = part.low; pair < part.high; ++pair) {
            candidates.add({part.run.wish(pair), part.run.weight(pair, pair + 1)});
        }
    }
    return before;
}

}  // namespace korvel
