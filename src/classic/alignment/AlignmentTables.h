// Who votes about what when the blocks of a partial placement are aligned, and which nets count
// towards its wirelength: worked out once per pass, read by all workers.
//
// The block order is fixed, so the placed blocks are always the first m of it, and the marks and
// counts of placed pins need not be kept while searching: they depend on m alone. What is left of
// the netlist for each m is flat arrays of positions to compare.
//
// A "body" is what its pins move with: block i is body i, all terminals are one more body that
// never moves. Pins of a body at the same place share a "site", which is where their position is
// kept. Nets of two pins between the same two bodies are a "bundle"; those that join the same two
// sites ask for the same step, so they vote once, with their number as weight.
//
// In large bundles (thousands of bumps between two dies) hardly two nets join the same sites, but
// many join the same columns or rows of pins. There positions are kept per "lane": one u lane for
// each distinct place along the block's width, one v lane for each along its height. Nets that join
// the same two lanes along an axis vote once about it, and stand in a list in the order of what
// they want. A block that lies on its side has its u lanes along y.
#pragma once

#include <array>
#include <vector>

#include "base/Axis.h"
#include "base/Quad.h"
#include "classic/alignment/SortedVotes.h"
#include "classic/netlist/Netlist.h"

namespace korvel {

class AlignmentTables {
public:
    // For the first numBlocks blocks of the netlist, in their final order.
    AlignmentTables(const Netlist& netlist, unsigned numBlocks);

    // Half-open range of an array.
    struct Range {
        unsigned begin = 0;
        unsigned end = 0;
    };

    // Along one axis a body's lanes are its u lanes (family 0) or its v lanes (family 1).
    static constexpr unsigned kFamilies = 2;
    // The body's turn says how it lies along the axis: by family, and whether the lanes are
    // reversed. Gaps in sorted lists are between lanes that are counted from the body's lower or
    // left edge, or backward from its other edge if they are reversed.
    static constexpr unsigned kTurns = 2 * kFamilies;
    // Of a body in an unmirrored orientation.
    static unsigned turnAlong(Axis axis, Orient orient) {
        constexpr unsigned kTurnsAlong[kAxes][kUnmirroredOrients] = {{0, 2, 1, 3}, {2, 1, 3, 0}};
        return kTurnsAlong[axis][orientIndex(orient)];
    }
    static constexpr unsigned turnOf(unsigned family, bool isReversed) {
        return 2 * family + (isReversed ? 1 : 0);
    }
    static constexpr unsigned familyOf(unsigned turn) { return turn / 2; }
    static constexpr bool isReversed(unsigned turn) { return turn % 2 != 0; }
    // When the body is turned by half.
    static constexpr unsigned oppositeTurn(unsigned turn) { return turn ^ 1U; }

    struct Body {
        Range lanes[kFamilies];
        Range sites;
        float reach;  // how far from the corner its lanes lie at the most, and it itself
        int index;    // what votes and moves go by; the block's place in the order but for
                      // netlists in separate pieces
    };

    struct Bundle {
        unsigned first;                            // body
        unsigned second;                           // body
        std::array<Range, kTurns * kTurns> lists;  // of sortedPairs, by the bodies' turns

        Range& list(unsigned firstTurn, unsigned secondTurn) {
            return lists[kTurns * firstTurn + secondTurn];
        }
        const Range& list(unsigned firstTurn, unsigned secondTurn) const {
            return lists[kTurns * firstTurn + secondTurn];
        }
    };

    // The own side of a bundle is the block that is to be moved.
    struct BundleVote {
        unsigned bundle;
        bool ownIsSecond;
    };
    struct PairVote {
        unsigned own;         // site
        unsigned other;       // site
        std::int32_t weight;  // nets that join these sites
    };
    struct Ballot {
        Range bundles;           // of bundleVotes
        Range pairs;             // of pairVotes
        Range nets;              // of netVotes: of more than two pins, or not all placed
        std::int32_t stays = 0;  // nets that want no step whatever the positions
        unsigned mostVotes = 0;  // whatever the orientations
    };

    static constexpr unsigned kNoSite = ~0U;

    enum class Length { Box, Sites, Lanes };
    // A net of more than two pins, or consecutive nets of two pins between the same bodies.
    struct LengthRun {
        Length kind;
        unsigned first;   // body, of lanes
        unsigned second;  // body, of lanes
        Range items;      // of siteLists, sitePairs or laneJoints
    };
    struct SitePair {
        unsigned first;
        unsigned second;
    };
    struct LaneJoint {
        unsigned lanes[2][kFamilies];  // of the first and of the second pin
    };

    // The votes about block b with the first `placed` blocks placed, b < placed.
    const Ballot& blockBallot(unsigned placed, unsigned b) const {
        return blockBallots[static_cast<std::size_t>(placed) * (placed - 1) / 2 + b];
    }
    // The votes about moving all placed blocks together toward the terminals.
    const Ballot& terminalBallot(unsigned placed) const { return terminalBallots[placed]; }

    // Bundles of known length, of lengthBundles.
    Range lengthBundlesOf(unsigned placed) const { return lengthBundleRanges[placed]; }
    // Nets of known length, in the order in which they are to be summed: runs of lengthRuns.
    Range lengthRunsOf(unsigned placed) const { return lengthRunRanges[placed]; }

    // The blocks whose ballots the body takes part in.
    const std::vector<unsigned>& dependents(unsigned body) const { return dependentBlocks[body]; }
    // The blocks that take part in the block's ballots, itself as well: all that may move. For the
    // terminals' body all blocks.
    const std::vector<unsigned>& partners(unsigned asker) const { return partnersOfAsker[asker]; }
    // The bodies of a block index; see Body::index.
    const std::vector<unsigned>& bodiesOf(unsigned index) const { return indexBodies[index]; }

    unsigned getNetNum() const { return netNum; }
    // Of a list of a bundle.
    std::span<const SortedPair> entriesOf(Range list) const {
        return {&sortedPairs[list.begin], list.end - list.begin};
    }

    const double* gapsBeforeOf(std::span<const SortedPair> entries) const {
        return &gapsBefore[entries.data() - sortedPairs.data()];
    }

    // Ends the process when a net has more pins placed than its degree says.
    void checkPlacedCounts(unsigned placed) const;

    unsigned getBlockNum() const { return numBlocks; }
    unsigned terminalBody() const { return numBlocks; }
    // Of the pins on blocks that this pass does not place.
    unsigned unplacedBody() const { return numBlocks + 1; }

    // Places relative to the corner of the block: of lanes along the axis that they then have, of
    // sites along both, in an unmirrored orientation.
    const std::vector<float>& laneOffsets(unsigned turn) const {
        return laneOffsetsByDirection[isReversed(turn) ? 1 : 0];
    }
    const std::vector<Quad>& siteOffsets(Orient orient) const {
        return siteOffsetsByOrient[orientIndex(orient)];
    }

    // Where each pin of the netlist is kept.
    struct PinPlace {
        unsigned body;
        unsigned site;  // kNoSite if it has lanes
        unsigned lanes[kFamilies];
    };

    std::vector<Body> bodies;
    std::vector<Bundle> bundles;  // those with lanes
    std::vector<SortedPair> sortedPairs;
    std::vector<double> gapsBefore;  // sum over the nets before the pair in its list
    std::vector<BundleVote> bundleVotes;
    std::vector<PairVote> pairVotes;
    std::vector<Range> netVotes;  // of scanLists
    // A net's placed pins in its order: those that are not to be moved and those that are, in turn;
    // each time their number, then their sites. The first number may be 0.
    std::vector<unsigned> scanLists;
    std::vector<unsigned> lengthBundles;
    std::vector<LengthRun> lengthRuns;
    std::vector<unsigned> siteLists;
    std::vector<SitePair> sitePairs;
    std::vector<LaneJoint> laneJoints;
    std::vector<PinPlace> pinPlaces;
    std::vector<float> extents[kFamilies];  // by body; 0 of the terminals

private:
    class Builder;

    unsigned numBlocks;
    unsigned netNum = 0;
    std::vector<Ballot> blockBallots;
    std::vector<Ballot> terminalBallots;
    std::vector<Range> lengthRunRanges;
    std::vector<Range> lengthBundleRanges;
    struct Fill {
        unsigned degree;
        unsigned placedPins;
    };
    std::vector<Fill> fullestNets;  // by number of placed blocks: the net nearest to overflowing
    std::vector<std::vector<unsigned>> dependentBlocks;
    std::vector<std::vector<unsigned>> partnersOfAsker;
    std::vector<std::vector<unsigned>> indexBodies;
    std::vector<float> laneOffsetsByDirection[2];  // as they are, reversed
    std::vector<Quad> siteOffsetsByOrient[kUnmirroredOrients];
};

}  // namespace korvel
