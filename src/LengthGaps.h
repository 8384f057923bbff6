// How far the bodies of a partial placement lie at least apart along one axis, wherever its
// alignment slides the blocks: two blocks in a chain of relations by the (whole) extents along the
// chain, and no block leaves the area, against which the terminals stand still. A gap is negative
// where bodies may pass one another.
//
// Nodes come from a search in depth, so most of them differ from the one before in the newest block
// only. The gaps among the first blocks are kept for each number of them, and a block is added to
// those of the blocks before it; only blocks that are new or tied differently are added again.
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <cstdint>
#include <vector>

#include "Axis.h"
#include "BBNode.h"
#include "SlotMatrix.h"

namespace korvel {

class LengthGaps {
public:
    LengthGaps(Axis axis, unsigned numBlocks, Area area);

    // Takes over a node that fits the area, with its coordinates found. False when a block is not
    // known to stay inside; there are no gaps for this node then.
    bool follow(const BBNode& node);

    // The gaps of the node followed last. Rounding may have made them a little too large.
    const SlotMatrix& get() const { return levels[placed].gaps; }

private:
    // What fixes a block's place among the blocks before it.
    struct Ties {
        float weight = 0.0F;
        float reach = 0.0F;  // how far its end can come
        // Bits of earlier blocks: words of those before it, then words of those behind it.
        std::vector<std::uint64_t> related;
    };
    struct Level {
        SlotMatrix gaps;  // of the blocks before
        Ties ties;        // of the next block
    };

    bool takeTies(const ConsraintGraphList& graph, unsigned block);
    void addBlock(unsigned block);
    void findGapsTo(unsigned block);
    float gapFrom(unsigned block, unsigned to) const;
    VertexSet blocksBefore(unsigned block) const;
    VertexSet blocksBehind(unsigned block) const;

    Axis axis;
    float areaExtent;
    std::vector<Level> levels;  // by number of blocks
    unsigned placed = 0;        // blocks of the node followed last
    unsigned known = 0;         // levels whose gaps still follow from the ties before them
    std::vector<Quad> gapsToNewest;
};

}  // namespace korvel
