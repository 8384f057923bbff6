// The gaps of a partial placement along one axis: gap(a, b) is a lower bound on the position of
// body b minus that of body a, wherever the alignment slides the blocks. A position is that of a
// block's lower or left edge; the terminals (body 0) are at 0. A gap is negative where b may lie
// before a.
//
// Three rules of the alignment make gaps: a block stays after those that a relation puts before it,
// by their extents in whole units; it stays at 0 or above; and its end stays in the area. All other
// gaps are longest paths over these.
//
// The search goes in depth, so most nodes differ from the one before in the newest block only. The
// gaps among the first blocks are kept for every number of them, and a node only adds the blocks
// that differ.
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Axis.h"
#include "classic/bound/BodyMatrix.h"
#include "classic/node/BBNode.h"

namespace korvel {

class LengthGaps {
public:
    LengthGaps(Axis axis, unsigned numBlocks, Area area);

    // Takes a node that fits the area, with its coordinates found. False when a block's end is
    // beyond the area all the same, as the node's size leaves out blocks without a relation along
    // this axis; there are no gaps then.
    bool follow(const BBNode& node);

    // Those of the node that was taken last. Float rounding may have made them slightly too large.
    const BodyMatrix& get() const { return gaps[placed]; }

private:
    // Of a block along the axis.
    struct Side {
        float weight = 0.0F;       // its extent, as in the graph
        float wholeExtent = 0.0F;  // without the fraction, as the alignment counts it
        float farthestEnd = 0.0F;  // that the alignment can bring it to
    };

    bool takeSides(const ConsraintGraphList& graph);
    void takeEdges(const ConsraintGraphList& graph);
    void addBlock(const ConsraintGraphList& graph, unsigned block);
    void findGapsTo(const ConsraintGraphList& graph, unsigned block);
    void findSuccessors(const ConsraintGraphList& graph, unsigned block);
    float gapFrom(unsigned block, const float* gapsTo) const;

    Axis axis;
    float areaExtent;
    unsigned wordNum;              // of a block's bits in `edges`
    std::vector<BodyMatrix> gaps;  // by number of blocks
    unsigned placed = 0;           // blocks of the node that was taken last
    // What the kept gaps were computed from. They hold among the first `known` blocks.
    unsigned known = 0;
    std::vector<Side> sides;
    std::vector<std::uint64_t> edges;  // bits of each block's successors
    // Of the block that is added, among the bodies before it.
    std::vector<Quad> gapsToNewest;    // by body
    std::vector<unsigned> successors;  // bodies
};

}  // namespace korvel
