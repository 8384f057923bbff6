// Branching: a kept node's children. A block gets its orientation first, then its relation to each
// earlier block, one per level. Children are tested before they are made, so that one that the
// bound cuts costs a table look-up, and one without room little more.
//
// Read-only: all workers use the same one, each with its own placement and counters.
#pragma once

#include <array>

#include "classic/search/NodeEstimator.h"
#include "classic/search/SearchSetting.h"

namespace korvel {

class Branching {
public:
    explicit Branching(const SearchSetting& setting);

    // Puts the children of the kept node on top of `stack` into its place, the most promising
    // topmost. Counts the relations that the bound cuts (not orientations, nor what the level cut
    // gives up), and as rejected what the estimator would reject for certain: none of these is
    // made.
    void branch(NodeStack& stack, float bestWL, SearchWorker& worker) const;

    // Indexes of the keys in ascending order; the comparisons fix the order of equal keys.
    static std::array<unsigned, 3> sortThreeNodes(const std::array<float, 4>& keys);
    static std::array<unsigned, 4> sortFourNodes(const std::array<float, 4>& keys);

private:
    float remainingDistance(const BBNode& node, unsigned block, Orient orient,
                            unsigned firstEarlier) const;
    void branchOrientations(NodeStack& stack, float bestWL, SearchCounters& counters) const;
    void branchTopologies(NodeStack& stack, float bestWL, SearchWorker& worker) const;
    bool isCut(const BBNode& node, float distance, float remaining, float bestWL,
               SearchCounters& counters) const;

    SearchSetting setting;
    NodeEstimator estimator;
    // A relation is given up that costs more than its level's cheapest one by more than this part
    // of the best wirelength.
    float levelCutFactor;
};

}  // namespace korvel
