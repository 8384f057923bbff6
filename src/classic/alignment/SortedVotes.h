// What the nets of sorted groups want along one axis, without asking each net. While two bodies
// keep their orientations, their moves shift the wishes of all nets between them by the same
// distance: the order of the wishes is known before the search, and the wish at a rank is found by
// bisection.
//
// Positions are floats that were added up move by move, so what a list foretells of a wish is an
// estimate: right within a tolerance, but not to the bit. It only narrows the pairs down to those
// that may have the rank; the wishes of these few are computed from the positions.
#pragma once

#include <utility>
#include <vector>

#include "classic/alignment/SortedList.h"
#include "classic/alignment/StepList.h"

namespace korvel {

class SortedVotes {
public:
    // Makes room for up to `most` lists, and as many pairs and other votes: nothing is allocated as
    // long as there are no more.
    void reserve(std::size_t most);
    // Forgets all votes.
    void clear();
    void add(const ShiftedList& list);

    bool empty() const { return lists.empty(); }
    // Nets that want to move forward, backward or not at all.
    unsigned getForward() const { return forward; }
    unsigned getBackward() const { return backward; }
    unsigned getStays() const { return stays; }

    // Selects the nets that want to move in that direction for stepAt(). `others`: steps in that
    // direction of nets that are in no list.
    void chooseSide(bool isForward, const StepList& others);
    // The step at `rank` of these, from the shortest on; positive.
    float stepAt(unsigned rank);

private:
    // A list, and which of its pairs certainly want to move.
    struct DividedList {
        ShiftedList list;
        unsigned backwardEnd;   // up to this pair, backward
        unsigned forwardBegin;  // from this pair on, forward
    };
    // Those that want to move in the direction chosen.
    struct Part {
        ShiftedList list;
        unsigned begin;
        unsigned end;
        // Where the rank may be.
        unsigned low;
        unsigned high;
        unsigned divided = 0;  // by a pivot
    };

    void addNear(float wish, unsigned weight);
    void addPart(const ShiftedList& list, unsigned begin, unsigned end);
    void addOthers(const StepList& others);
    void narrowDown(unsigned rank);
    std::pair<double, double> estimates() const;
    unsigned divideAt(double pivot);
    void widenByTolerance();
    unsigned gatherCandidates();

    std::vector<DividedList> lists;
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
    std::vector<float> otherTracks;
    StepList candidates;
};

}  // namespace korvel
