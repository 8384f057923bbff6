// The vote of many nets about one step, and the choice of that step, along both axes. Shared by
// the block alignment, the alignment to terminals and the trials of the pre-calculation.
//
// Why the middle: each net that wants to move says how far, and the sum of distances to a number of
// points is least at their median. So the group moves to the side that more nets want, by the
// middle of what they want; each net that wants the other side, or to stay, cancels the largest of
// these steps. Other nets do not change while the group moves by no more than a free distance: each
// one whose distance the step would pass counts against the majority too.
#pragma once

#include <span>
#include <vector>

#include "base/Axis.h"
#include "classic/alignment/SortedVotes.h"
#include "classic/alignment/StepList.h"
#include "classic/netlist/NetAdvice.h"

namespace korvel {

// The lane of a quad that answers for moving backward along an axis; that of forward is the axis.
constexpr unsigned backwardLane(Axis axis) {
    return axis == kX ? kLeft : kDown;
}

// Which of the wanted steps of an even majority is its middle.
enum class Middle { Lower, Upper };

// Index of the middle of the first `majority` wanted steps.
constexpr unsigned firstMiddle(unsigned majority, Middle middle) {
    return middle == Middle::Lower ? (majority + 1) / 2 - 1 : majority / 2;
}

// The same for a majority that has shrunk; majority >= 2.
constexpr unsigned nextMiddle(unsigned majority, Middle middle) {
    return middle == Middle::Lower ? majority / 2 - 1 : (majority - 1) / 2;
}

// The step for a majority of k >= 1 votes. `stepOfRank(i)` is the i-th smallest step that the
// winning side wants, of at least k; it is not asked for more than the middle of the first k.
// `freeOfRank(i)` is the i-th smallest free distance of the nets that the group lies inside of, or
// infinity beyond the last.
//
// The middle of the first k wanted steps is taken unless it passes the smallest free distance.
// Every net whose free distance is smaller than the candidate counts against the majority: the
// candidate is taken again from a shrinking majority, and when a free distance lies between the
// old and the new candidate, the step stops there, where the net would start to grow.
template <typename StepOfRank, typename FreeOfRank>
float selectStep(const StepOfRank& stepOfRank, const FreeOfRank& freeOfRank, unsigned k,
                 Middle middle) {
    const float first = stepOfRank(firstMiddle(k, middle));
    if (first <= freeOfRank(0)) {
        return first;
    }
    if (k == 1) {
        return freeOfRank(0);
    }
    unsigned passed = 1;  // free distances that the step has passed
    unsigned majority = k;
    do {
        const float candidate = stepOfRank(nextMiddle(majority, middle));
        if (freeOfRank(passed - 1) > candidate) {
            return freeOfRank(passed - 1);
        }
        if (candidate <= freeOfRank(passed)) {
            return candidate;
        }
        ++passed;
        --majority;
    } while (passed != k);
    return freeOfRank(passed - 1);
}

class StepVotes {
public:
    // Forgets all votes and makes room for up to `most` calls of add and pairs of lists; memory is
    // kept, so that voting allocates nothing once the largest vote has been.
    void clear(std::size_t most);

    // The same advice from `weight` nets.
    void add(const offsetCalcReturn& advice, std::int32_t weight = 1) {
        wanted[wantedNum] = choose(advice.moves, advice.steps, allLanes(-kInfinity));
        weights[wantedNum] = static_cast<unsigned>(weight);
        ++wantedNum;
        moves += advice.moves & allLanes(weight);
        stays += advice.stays & allLanes(weight);
    }
    // Advice that may have the group inside of the net.
    void addWithFree(const offsetCalcReturn& advice) {
        add(advice);
        const Quad free = choose(advice.inside, advice.freeDistances, allLanes(kInfinity));
        freeDistances[freeNum++] = free;
        leastFree = smaller(free, leastFree);
    }

    // What the nets of a sorted group want along one axis.
    void addAlong(Axis axis, const ShiftedList& list) { alongAxes[axis].add(list); }

    // Signed step of the majority along the axis, 0 without one.
    float step(Axis axis, Middle middle);
    Point step(Middle middle) { return {step(kX, middle), step(kY, middle)}; }

private:
    void gatherSteps(unsigned lane);
    std::span<float> sortFree(unsigned lane);

    std::vector<Quad> wanted;  // minus infinity where a net does not want to move that way
    std::vector<unsigned> weights;
    std::size_t wantedNum = 0;
    std::vector<Quad> freeDistances;  // infinity where the group is not inside
    std::size_t freeNum = 0;
    Quad leastFree{};
    QuadMask moves{};
    QuadMask stays{};
    SortedVotes alongAxes[kAxes];  // votes about one axis only
    StepList gatheredSteps;
    std::vector<float> gatheredFree;
};

}  // namespace korvel
