#include "classic/alignment/SortedVotes.h"

#include <algorithm>

#include "classic/netlist/NetAdvice.h"

namespace korvel {

void SortedVotes::reserve(std::size_t most) {
    lists.reserve(most);
    parts.reserve(most);
    nearWishes.reserve(most);
    otherSteps.reserve(most);
    otherPairs.reserve(most + 1);
    otherTracks.reserve(most + 1);
    candidates.reserve(most);
}

void SortedVotes::clear() {
    lists.clear();
    nearWishes.clear();
    forward = 0;
    backward = 0;
    stays = 0;
}

// Only what the estimates are certain about is taken from the list; nothing is certain with a
// tolerance that is no number.
void SortedVotes::add(const ShiftedList& list) {
    const unsigned end = list.pairNum();
    const double certain = kSamePosition + list.tolerance;
    const unsigned backwardEnd = list.firstNotBelow(-certain, 0, end);
    const unsigned forwardBegin = list.firstAbove(certain, backwardEnd, end);
    backward += list.weight(0, backwardEnd);
    forward += list.weight(forwardBegin, end);
    for (unsigned pair = backwardEnd; pair < forwardBegin; ++pair) {
        addNear(list.wish(pair), list.weight(pair, pair + 1));
    }
    lists.push_back({list, backwardEnd, forwardBegin});
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
    for (const DividedList& divided : lists) {
        if (isForward) {
            addPart(divided.list, divided.forwardBegin, divided.list.pairNum());
        } else {
            addPart(divided.list, 0, divided.backwardEnd);
        }
    }
    addOthers(others);
}

void SortedVotes::addPart(const ShiftedList& list, unsigned begin, unsigned end) {
    if (begin < end) {
        parts.push_back({list, begin, end, begin, end});
        total += list.weight(begin, end);
        tolerance = std::max(tolerance, list.tolerance);
    }
}

// What is not in a list makes one more list, of tracks that face one at 0.
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
    otherTracks.assign(1, 0.0F);
    otherPairs.clear();
    unsigned weightBefore = 0;
    for (const auto [step, weight] : otherSteps) {
        otherPairs.push_back({step, weightBefore, 0, static_cast<unsigned>(otherTracks.size())});
        otherTracks.push_back(step);
        weightBefore += weight;
    }
    otherPairs.push_back({0.0F, weightBefore, 0, 0});
    const ShiftedList list{otherPairs, otherTracks.data(), 1.0F, 0.0, 0.0};
    addPart(list, 0, list.pairNum());
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
        const unsigned less = divideAt(widest.list.estimate((widest.low + widest.high) / 2));
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
            least = std::min(least, part.list.estimate(part.low));
            most = std::max(most, part.list.estimate(part.high - 1));
        }
    }
    return {least, most};
}

// Returns the weight of what is less.
unsigned SortedVotes::divideAt(double pivot) {
    unsigned less = 0;
    for (Part& part : parts) {
        part.divided = part.list.firstNotBelow(pivot, part.low, part.high);
        less += part.list.weight(part.begin, part.divided);
    }
    return less;
}

// The wish at a rank is within the tolerance of the estimate at that rank, and so is every wish of
// its own estimate.
void SortedVotes::widenByTolerance() {
    const auto [least, most] = estimates();
    for (Part& part : parts) {
        while (part.low > part.begin && part.list.estimate(part.low - 1) >= least - 2 * tolerance) {
            --part.low;
        }
        while (part.high < part.end && part.list.estimate(part.high) <= most + 2 * tolerance) {
            ++part.high;
        }
    }
}

// Returns the weight of what lies before them.
unsigned SortedVotes::gatherCandidates() {
    candidates.clear();
    unsigned before = 0;
    for (const Part& part : parts) {
        before += part.list.weight(part.begin, part.low);
        for (unsigned pair = part.low; pair < part.high; ++pair) {
            candidates.add({part.list.wish(pair), part.list.weight(pair, pair + 1)});
        }
    }
    return before;
}

}  // namespace korvel
