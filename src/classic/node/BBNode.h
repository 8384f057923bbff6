// A node of the search tree: a partial placement of the first blocks of the block order. It holds
// their orientations and their relations, as edges of two constraint graphs; coordinates are
// written into a worker's placement when the node is estimated or reported, and the alignment
// slides the blocks toward their nets there.
//
// Why alignment: the graphs say how far left and down each block can lie, and its nets would often
// have it further right or up. First all blocks move together toward the terminals; then, in up to
// three rounds, each block moves as its nets vote (StepVotes), as far as its neighbours and the
// area allow. It is a heuristic: a block cannot push others away, and what it ends with depends on
// the order of the blocks.
//
// A node is a value. It is worked on by one thread at a time, which passes its own placement.
// Copying a node into one that was as large before allocates nothing.
#pragma once

#include <optional>
#include <vector>

#include "base/BasicStructs.h"
#include "classic/alignment/WorkingPlacement.h"
#include "classic/netlist/Netlist.h"
#include "classic/node/Graphs.h"

namespace korvel {

// The region that the blocks are to be placed in, from the origin.
struct Area {
    float width = 0.0F;
    float height = 0.0F;
};

class BBNode {
public:
    ConsraintGraphList horizontalGraph;  // a -> b: a lies left of b; weights are widths
    ConsraintGraphList verticalGraph;    // a -> b: a lies below b; weights are heights
    std::vector<Orient> blocksOrients;
    unsigned numBlocks = 0;
    unsigned blockLevel = 0;    // branching decisions taken from the root
    unsigned definedNodes = 0;  // relations fixed between the newest block and the earlier ones
    float wirelength = 0.0F;
    float remaining = 0.0F;  // estimate of the wirelength still to come
    float width = 0.0F;
    float height = 0.0F;
    float treeFraction = 1.0F;  // of the search tree, which siblings divide equally

    // Adds the next block of the order, without relations. A mirrored orientation is reported and
    // ends the process with status 0.
    void addBlock(Orient orient, const Netlist& netlist);

    // Fixes the relation of block a to block b: `topology` says where a lies.
    void relate(unsigned a, unsigned b, Topology topology);
    // Whether that relation would close a cycle.
    bool closesCycle(unsigned a, unsigned b, Topology topology) const {
        const Edge edge = edgeOf(a, b, topology);
        return graph(edge.axis).closesCycle(edge.from, edge.to);
    }
    // Whether that relation, which closes no cycle, would certainly make the placement wider or
    // higher than the area. For a node with its coordinates found.
    bool leavesArea(unsigned a, unsigned b, Topology topology, Area area) const {
        const Edge edge = edgeOf(a, b, topology);
        const float extent = edge.axis == kX ? area.width : area.height;
        return graph(edge.axis).lengthThrough(edge.from, edge.to) > extent * kBeyondRounding;
    }

    // Every relation of the newest block is fixed.
    bool isBlockComplete() const { return numBlocks == 0 || definedNodes == numBlocks - 1; }

    // False when the relations close a cycle.
    bool sortGraphs();
    void findCoords();
    // Takes width and height from the graphs; call it after findCoords.
    void updateSizes();

    // Puts the placed blocks where the graphs say.
    void updateBlockCoordsConstGraph(WorkingPlacement& placement) const;

    // Moves all placed blocks by one common step toward the terminals. With keepInside they stay
    // inside the area: a step toward the origin is dropped, since the placement touches it already.
    void combinedAlignToTerms(WorkingPlacement& placement, bool keepInside, Area area) const;

    // Slides one block toward the pins of its nets as far as its neighbours and the area allow.
    // False when it stays.
    bool combinedAlignBlock(WorkingPlacement& placement, Area area, unsigned blockIndex) const;

    // Moves the block by `offset`, cut where it would run into a related block or leave the area.
    // Sizes are cut to whole units here, on purpose. False when nothing is left to move.
    bool avoidOverlapp(WorkingPlacement& placement, Point offset, unsigned blockIndex,
                       Area area) const;

    // The whole way from relations to coordinates: the graphs' ones, the alignment to terminals,
    // then rounds of block alignment.
    void placeAndAlign(WorkingPlacement& placement, bool areaConst, Area area) const;

    Orient findPrepOrient(unsigned block) const { return blocksOrients[block]; }
    // Where block a lies relative to b, if they have a relation; a horizontal one wins over a
    // vertical one.
    std::optional<Topology> relationOf(unsigned a, unsigned b) const;
    // The same for a pair that must have one: else it is reported and ends the process with status
    // 0.
    Topology findPrepTopology(unsigned a, unsigned b) const;

    // Reads the netlist's blocks, so bring them up to date first.
    void printPlacement(const Netlist& netlist, std::ostream& out) const;

private:
    // The edge that stands for a relation: `from` lies before `to`.
    struct Edge {
        Axis axis;
        unsigned from;
        unsigned to;
    };
    static Edge edgeOf(unsigned a, unsigned b, Topology topology) {
        const Axis axis = topology == Topology::L || topology == Topology::R ? kX : kY;
        const bool aFirst = topology == Topology::L || topology == Topology::B;
        return aFirst ? Edge{axis, a, b} : Edge{axis, b, a};
    }
    // Larger than the error that rounding can add up to along a path of a thousand blocks.
    static constexpr float kBeyondRounding = 1.0001F;

    const ConsraintGraphList& graph(Axis axis) const {
        return axis == kX ? horizontalGraph : verticalGraph;
    }
    ConsraintGraphList& graph(Axis axis) { return axis == kX ? horizontalGraph : verticalGraph; }
    float limitMove(const WorkingPlacement& placement, Axis axis, float distance, unsigned block,
                    float areaExtent) const;
};

}  // namespace korvel
