// The vote of many nets about one step along one axis, and the choice of that step. Shared by the
// block alignment, the alignment to terminals and the trials of the pre-calculation.
#pragma once

#include <span>
#include <vector>

#include "AxisAdvice.h"

namespace korvel {

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

// The step for a majority of k >= 1 votes. `offsetOfRank(i)` is the i-th smallest step that the
// winning side wants, of at least k; `freeOfRank(i)` the i-th smallest of the `freeNum` free
// distances of the nets that the group lies inside of. Only what is needed is asked for.
//
// The middle of the first k wanted steps is taken unless it passes the smallest free distance.
// Every net whose free distance is smaller than the candidate counts against the majority: the
// candidate is taken again from a shrinking majority, and when a free distance lies between the
// old and the new candidate, the step stops there, where the net would start to grow.
template <typename OffsetOfRank, typename FreeOfRank>
float selectStep(const OffsetOfRank& offsetOfRank, const FreeOfRank& freeOfRank,
                 std::size_t freeNum, unsigned k, Middle middle) {
    const float first = offsetOfRank(firstMiddle(k, middle));
    if (freeNum == 0 || first <= freeOfRank(0)) {
        return first;
    }
    if (k == 1) {
        return freeOfRank(0);
    }
    unsigned passed = 1;  // free distances that the step has passed
    unsigned majority = k;
    do {
        const float candidate = offsetOfRank(nextMiddle(majority, middle));
        if (freeOfRank(passed - 1) > candidate) {
            return freeOfRank(passed - 1);
        }
        if (passed == freeNum || candidate <= freeOfRank(passed)) {
            return candidate;
        }
        ++passed;
        --majority;
    } while (passed != k);
    return freeOfRank(passed - 1);
}

class AxisVotes {
public:
    // Forgets all votes and keeps the memory: voting allocates only until the largest vote came.
    void clear();

    void add(const AxisAdvice& advice) { add(advice, 1); }

    // `weight` nets of two pins that all ask for the same step.
    void addPairs(float offset, unsigned weight) { add(adviceForPair(offset), weight); }

    // `number` nets that want no step.
    void addStays(unsigned number) { stays += number; }

    // Signed step of the majority, 0 without one. Reorders the collected lists.
    float step(Middle middle);

private:
    // Equal steps that several nets want.
    struct Wanted {
        float offset;  // a positive amount
        unsigned weight;
    };
    struct Side {
        unsigned votes = 0;
        std::vector<Wanted> offsets;
        std::vector<float> freeDistances;  // of the nets that the group lies inside of
    };

    void add(const AxisAdvice& advice, unsigned weight);
    static void vote(Side& side, float offset, unsigned weight) {
        side.votes += weight;
        side.offsets.push_back({offset, weight});
    }
    static float offsetOfRank(std::span<Wanted> offsets, unsigned rank);
    static float offsetOfRankAmongFew(std::span<Wanted> offsets, unsigned rank);

    Side forward;
    Side backward;
    unsigned stays = 0;
};

inline void AxisVotes::add(const AxisAdvice& advice, unsigned weight) {
    if (advice.forward) {
        vote(forward, advice.offset, weight);
    }
    if (advice.backward) {
        vote(backward, -advice.offset, weight);
    }
    if (advice.stay) {
        stays += weight;
    }
    if (advice.inside) {
        forward.freeDistances.push_back(advice.freeForward);
        backward.freeDistances.push_back(advice.freeBackward);
    }
}

}  // namespace korvel
