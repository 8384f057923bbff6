// Who votes about what when the blocks of a partial placement are aligned, and which nets count
// towards its wirelength: worked out once per pass, read by all workers.
//
// The block order is fixed, so the placed blocks are always the first m of it, and the marks and
// counts of placed pins need not be kept while searching: they depend on m alone. What is left of
// the netlist for each m is flat arrays of positions to compare.
//
// A "body" is what its pins move with: block i is body i, all terminals are one more body that
// never moves. Many pins of a body share their coordinate along one axis (a column of bumps, pins
// at the centre), so positions are kept per "lane": one u lane for each distinct place along the
// block's width, one v lane for each along its height. A block that lies on its side has its u
// lanes along y. Nets of two pins between the same two bodies are a "bundle", and ask for the same
// step along an axis when they join the same two lanes: they vote once, with their number as
// weight. Nets of more pins read their pins' places from "sites", which know both coordinates.
#pragma once

#include <array>
#include <vector>

#include "Netlist.h"

namespace korvel {

enum Axis : unsigned { kX, kY, kAxes };

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

    struct Body {
        Range lanes[kFamilies];
        Range sites;
        int index;  // what votes and moves go by; the block's place in the order but for netlists
                    // in separate pieces
    };

    struct LanePair {
        unsigned first;
        unsigned second;
        unsigned weight;  // nets that join these lanes
    };
    struct Bundle {
        unsigned first;   // body
        unsigned second;  // body
        // By kFamilies * (family of first) + (family of second).
        std::array<Range, kFamilies * kFamilies> pairs;  // of lanePairs
    };

    // The own side of a bundle is the block that is to be moved.
    struct BundleVote {
        unsigned bundle;
        bool ownIsSecond;
    };
    struct ScanPin {
        unsigned site;
        bool own;
    };
    // A net of more than two pins, or not all placed: its placed pins.
    struct NetVote {
        Range own;    // of siteLists
        Range other;  // of siteLists
        Range scan;   // of scanPins: all of them, in the net's order
    };
    struct Ballot {
        Range bundles;       // of bundleVotes
        Range nets;          // of netVotes
        unsigned stays = 0;  // nets that want no step whatever the positions
    };

    struct PairNet {
        unsigned lanes[2][kFamilies];  // of the first and of the second pin
    };
    // A net of more than two pins, or consecutive nets of two pins between the same bodies.
    struct LengthRun {
        bool pairs;
        unsigned first;   // body, of pairs
        unsigned second;  // body, of pairs
        Range items;      // of pairNets, or of siteLists
    };

    // The votes about block b with the first `placed` blocks placed, b < placed.
    const Ballot& blockBallot(unsigned placed, unsigned b) const {
        return blockBallots[static_cast<std::size_t>(placed) * (placed - 1) / 2 + b];
    }
    // The votes about moving all placed blocks together toward the terminals.
    const Ballot& terminalBallot(unsigned placed) const { return terminalBallots[placed]; }

    // Nets of known length, in the order in which they are to be summed: runs of lengthRuns.
    Range lengthRunsOf(unsigned placed) const { return lengthRunRanges[placed]; }

    // The blocks whose ballots the body takes part in.
    const std::vector<unsigned>& dependents(unsigned body) const { return dependentBlocks[body]; }
    // The bodies of a block index; see Body::index.
    const std::vector<unsigned>& bodiesOf(unsigned index) const { return indexBodies[index]; }

    // Ends the process when a net has more pins placed than its degree says.
    void checkPlacedCounts(unsigned placed) const;

    unsigned getBlockNum() const { return numBlocks; }
    unsigned terminalBody() const { return numBlocks; }

    // Places relative to the corner of the block in an unmirrored orientation: of lanes along the
    // axis that they then have, of sites along both.
    const std::vector<float>& laneOffsets(Orient orient) const {
        return laneOffsetsByOrient[orientIndex(orient)];
    }
    const std::vector<Point>& siteOffsets(Orient orient) const {
        return siteOffsetsByOrient[orientIndex(orient)];
    }

    // The body and lanes of each pin of the netlist.
    struct PinPlace {
        unsigned body;
        unsigned lanes[kFamilies];
    };

    std::vector<Body> bodies;
    std::vector<Bundle> bundles;
    std::vector<LanePair> lanePairs;
    std::vector<BundleVote> bundleVotes;
    std::vector<NetVote> netVotes;
    std::vector<unsigned> siteLists;
    std::vector<ScanPin> scanPins;
    std::vector<PairNet> pairNets;
    std::vector<LengthRun> lengthRuns;
    std::vector<PinPlace> pinPlaces;
    std::vector<float> extents[kAxes];  // unrotated width and height by block

private:
    class Builder;

    unsigned numBlocks;
    std::vector<Ballot> blockBallots;
    std::vector<Ballot> terminalBallots;
    std::vector<Range> lengthRunRanges;
    struct Fill {
        unsigned degree;
        unsigned placedPins;
    };
    std::vector<Fill> fullestNets;  // by number of placed blocks: the net nearest to overflowing
    std::vector<std::vector<unsigned>> dependentBlocks;
    std::vector<std::vector<unsigned>> indexBodies;
    std::vector<float> laneOffsetsByOrient[kUnmirroredOrients];
    std::vector<Point> siteOffsetsByOrient[kUnmirroredOrients];
};

}  // namespace korvel
