// Lower bounds that the search reads: least distances between pairs of blocks and between blocks
// and terminals, and their sums over what is still to be placed. All are wirelengths in the
// benchmark's unit. Filled by the engine's pre-calculation, then read by all workers without locks.
//
// They are bounds by tuning, not by proof: nets that will reach further blocks are discounted.
//
// A pair has 64 distances: 4 x 4 orientations in four relative positions. Two facts leave 16 to be
// found by trials. Turning a whole arrangement does not change its wirelength: "a left of b" turned
// by a quarter clockwise is "a above b", with both blocks turned as well; by half it is "b left of
// a", by three quarters "b above a". So a trial fills four cells. And "a right of b" says the same
// as "b left of a", so two tables, for left and above, answer for all four positions.
#pragma once

#include <array>
#include <vector>

#include "base/BasicStructs.h"

namespace korvel {

inline constexpr unsigned kOrientPairs = kUnmirroredOrients * kUnmirroredOrients;

class BoundTables {
public:
    // Sizes the pair tables for n blocks, all 0, and empties the rest but the terminal distances.
    void resize(unsigned n);

    // Enters the result of a trial with a, in oa, immediately left of b, in ob.
    void updateMinDistances(unsigned a, unsigned b, Orient oa, Orient ob, float distance);

    // Least distance of a, lying at `topology` relative to b. Another value than left, right, above
    // and below is reported and ends the process with status 0.
    float getMinDistances(unsigned a, unsigned b, Orient oa, Orient ob, Topology topology) const;

    // The least over the four topologies.
    float minOrientPairDist(unsigned a, unsigned b, Orient oa, Orient ob) const {
        return orientPairMinima[pairCell(a, b, oa, ob)];
    }
    // The least that the blocks after `block` add.
    float remainingAfter(unsigned block) const {
        return minLevelRemainingDist[rowStart(block + 1)];
    }
    void setMinOrientPairDist(unsigned a, unsigned b, Orient oa, Orient ob, float distance);

    // Index of the first entry of block i's row in the level lists, i >= 1: its terminal distance,
    // followed by its distances to the blocks before it.
    static constexpr std::size_t rowStart(unsigned i) {
        return static_cast<std::size_t>(i) * (i + 1) / 2 - 1;
    }

    // Fills minLevelRemainingDist with the sums from each entry of levelMinDistance to the end.
    void sumRemainingDistances();

    // Least increase by each decision: rows 1 .. n-1 and a trailing 0.
    std::vector<float> levelMinDistance;
    // Least sum of the increases from each decision to the end.
    std::vector<float> minLevelRemainingDist;
    // Least distance to the terminals, by 4 * block + orientation, and by block. Zeros without
    // terminals.
    std::vector<float> minTermDist;
    std::vector<float> minTermDistBlock;

private:
    std::size_t pairCell(unsigned a, unsigned b, Orient oa, Orient ob) const {
        return (static_cast<std::size_t>(a) * numBlocks + b) * kOrientPairs +
               kUnmirroredOrients * orientIndex(oa) + orientIndex(ob);
    }

    unsigned numBlocks = 0;
    std::vector<float> minDistancesHor;  // a immediately left of b
    std::vector<float> minDistancesVer;  // a immediately above b
    std::vector<float> orientPairMinima;
};

}  // namespace korvel
