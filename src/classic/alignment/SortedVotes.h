// What bundles of two-pin nets want along one axis, without asking each net. While two bodies keep
// their orientations, their moves shift the wishes of all nets between them by the same distance:
// the order of the wishes is known before the search, and a wish at a rank is found by bisection.
//
// But for rounding: positions are floats that were added up move by move. So what a list foretells
// of a wish is an estimate that is right within a tolerance. It only narrows the pairs down to
// those that may have the rank; these few are computed from the positions, to the bit.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "classic/alignment/StepList.h"

namespace korvel {

// Nets that join the same two lanes, in a list in the order of gaps. A list ends with an entry that
// only has the weight of all.
struct SortedPair {
    float gap;              // from the first lane to the second while both are counted from 0
    unsigned weightBefore;  // nets of the pairs before it in the list
    unsigned first;         // lane
    unsigned second;        // lane
};

// A list with its bodies where they are.
struct SortedRun {
    std::span<const SortedPair> entries;
    const float* lanes;  // positions
    float sign;          // 1 if the first body is to be moved, -1 if the second
    double shift;        // gap + shift estimates what a pair wants
    double tolerance;    // of the estimate

    unsigned pairNum() const { return static_cast<unsigned>(entries.size()) - 1; }
    double estimate(unsigned pair) const { return entries[pair].gap + shift; }
    float wish(unsigned pair) const {
        return sign * (lanes[entries[pair].second] - lanes[entries[pair].first]);
    }
    unsigned weight(unsigned begin, unsigned end) const {
        return entries[end].weightBefore - entries[begin].weightBefore;
    }
    // The first pair of a range whose estimate is not below a value, or above it; else the end.
    unsigned firstNotBelow(double value, unsigned begin, unsigned end) const {
        return firstBeyond(begin, end, [x = value - shift](double gap) { return !(gap < x); });
    }
    unsigned firstAbove(double value, unsigned begin, unsigned end) const {
        return firstBeyond(begin, end, [x = value - shift](double gap) { return gap > x; });
    }

private:
    template <typename IsBeyond>
    unsigned firstBeyond(unsigned begin, unsigned end, const IsBeyond& isBeyond) const;
};

template <typename IsBeyond>
unsigned SortedRun::firstBeyond(unsigned begin, unsigned end, const IsBeyond& isBeyond) const {
    // Often a whole list lies on one side.
    if (begin == end || isBeyond(entries[begin].gap)) {
        return begin;
    }
    if (!isBeyond(entries[end - 1].gap)) {
        return end;
    }
    while (begin < end) {
        const unsigned middle = (begin + end) / 2;
        if (isBeyond(entries[middle].gap)) {
            end = middle;
        } else {
            begin = middle + 1;
        }
    }
    return begin;
}

class SortedVotes {
public:
    // Makes room for lists of up to `most` pairs and other votes in all, so that nothing is
    // allocated as long as there are no more.
    void reserve(std::size_t most);
    // Forgets all votes.
    void clear();
    void add(const SortedRun& run);

    bool empty() const { return runs.empty(); }
    // Nets that want to move forward, backward or not at all.
    unsigned getForward() const { return forward; }
    unsigned getBackward() const { return backward; }
    unsigned getStays() const { return stays; }

    // Turns to the nets that want to move in that direction, and `others` that do, none of which
    // comes from a list.
    void chooseSide(bool isForward, const StepList& others);
    // The step at `rank` of these, positive in the direction.
    float stepAt(unsigned rank);

private:
    // A run, and which of its pairs certainly want to move.
    struct Run {
        SortedRun run;
        unsigned backwardEnd;   // up to this pair, backward
        unsigned forwardBegin;  // from this pair on, forward
    };
    // Those that want to move in the direction chosen.
    struct Part {
        SortedRun run;
        unsigned begin;
        unsigned end;
        // Where the rank may be.
        unsigned low;
        unsigned high;
        unsigned divided = 0;  // by a pivot
    };

    void addNear(float wish, unsigned weight);
    void addPart(const SortedRun& run, unsigned begin, unsigned end);
    void addOthers(const StepList& others);
    void narrowDown(unsigned rank);
    std::pair<double, double> estimates() const;
    unsigned divideAt(double pivot);
    void widenByTolerance();
    unsigned gatherCandidates();

    std::vector<Run> runs;
    unsigned forward = 0;
    unsigned backward = 0;
    unsigned stays = 0;
    std::vector<WeightedStep> nearWishes;  // of pairs that are too near to the middle to be certain

    float direction = 1.0F;
    std::vector<Part> parts;
    unsigned total = 0;  // weight of all parts
    double tolerance = 0.0;
    std::vector<WeightedStep> otherSteps;
    std::vector<SortedPair> otherPairs;
    std::vector<float> otherLanes;
    StepList candidates;
};

}  // namespace korvel
