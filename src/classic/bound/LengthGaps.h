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

#include "base/Axis.h"
#include "classic/bound/SlotMatrix.h"
#include "classic/node/BBNode.h"

namespace korvel {

class LengthGaps {
public:
    LengthGaps(Axis axis, unsigned numBlocks, Area area);

    // Takes over a node that fits the area, with its coordinates found. False when a block is not
    // known to stay inside; there are no gaps for this node then.
    bool follow(const BBNode& node);

    // The gaps of the node followed last. Rounding may have made them a little too large.
    const SlotMatrix& get() const { return gaps[placed]; }

private:
    // Of a block along the axis.
    struct Side {
        float weight = 0.0F;
        float extent = 0.0F;  // the same in whole units
        float reach = 0.0F;   // how far its end can come
    };

    bool takeSides(const ConsraintGraphList& graph);
    void takeEdges(const ConsraintGraphList& graph);
    void addBlock(const ConsraintGraphList& graph, unsigned block);
    void findGapsTo(const ConsraintGraphList& graph, unsigned block);
    void findSlotsBehind(const ConsraintGraphList& graph, unsigned block);
    float gapFrom(unsigned block, const float* gapsTo) const;

    Axis axis;
    float areaExtent;
    unsigned wordNum;              // of a block's edges
    std::vector<SlotMatrix> gaps;  // by number of blocks
    // Of the node followed last.
    unsigned placed = 0;
    std::uint64_t family = 0;
    bool measured = false;
    // Of the last one that was no sibling of the one before.
    unsigned known = 0;  // blocks whose gaps still follow from these:
    std::vector<Side> sides;
    std::vector<std::uint64_t> edges;  // bits of the blocks behind each block
    // Of the block that is added: the gaps from the slots before it, and what lies behind it.
    std::vector<Quad> gapsToNewest;
    std::vector<unsigned> slotsBehind;
};

}  // namespace korvel
