#include "classic/node/BBNode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/Invariant.h"

namespace korvel {

namespace {

constexpr float kNoMove = floatBelow(0.001);
constexpr unsigned kAlignmentRounds = 3;

bool isMove(float distance) {
    return std::fabs(distance) > kNoMove;
}

}  // namespace

void BBNode::addBlock(Orient orient, const Netlist& netlist) {
    ++numBlocks;
    horizontalGraph.addVert();
    verticalGraph.addVert();
    blocksOrients.push_back(orient);
    const unsigned newest = numBlocks - 1;
    const Block& block = netlist.blocks[newest];
    if (keepsWidthHorizontal(orient)) {
        horizontalGraph.addWeight(newest, block.getWidth());
        verticalGraph.addWeight(newest, block.getHeight());
    } else if (swapsWidthAndHeight(orient)) {
        horizontalGraph.addWeight(newest, block.getHeight());
        verticalGraph.addWeight(newest, block.getWidth());
    } else {
        std::cout << "ERROR: unknown block orientation // BBNode::addBlock" << std::endl;
        std::exit(0);
    }
    KORVEL_INVARIANT(numBlocks == blocksOrients.size(), "numBlocks == blocksOrients.size ()");
}

void BBNode::relate(unsigned a, unsigned b, Topology topology) {
    const Edge edge = edgeOf(a, b, topology);
    graph(edge.axis).addEdge(edge.from, edge.to);
}

bool BBNode::sortGraphs() {
    return horizontalGraph.topologicalSort() && verticalGraph.topologicalSort();
}

void BBNode::findCoords() {
    horizontalGraph.findCoord();
    verticalGraph.findCoord();
}

void BBNode::updateSizes() {
    width = horizontalGraph.getLength();
    height = verticalGraph.getLength();
}

void BBNode::updateBlockCoordsConstGraph(WorkingPlacement& placement) const {
    KORVEL_INVARIANT(numBlocks <= placement.getBlockNum(), "numBlocks <= blocks[thread].size()");
    placement.start(numBlocks);
    for (unsigned i = 0; i < numBlocks; ++i) {
        placement.place(i, {horizontalGraph.returnCoord(i), verticalGraph.returnCoord(i)},
                        blocksOrients[i]);
    }
}

void BBNode::combinedAlignToTerms(WorkingPlacement& placement, bool keepInside, Area area) const {
    Point step = placement.wantedStepToTerminals();
    if (!isMove(step.x) && !isMove(step.y)) {
        return;
    }
    if (keepInside) {
        if (step.x < 0) {
            step.x = 0;
        } else if (step.x + width > area.width) {
            step.x = area.width - width;
        }
        if (step.y < 0) {
            step.y = 0;
        } else if (step.y + height > area.height) {
            step.y = area.height - height;
        }
    }
    placement.moveAll(step);
}

bool BBNode::combinedAlignBlock(WorkingPlacement& placement, Area area, unsigned blockIndex) const {
    const Point step = placement.wantedStep(blockIndex);
    return (isMove(step.x) || isMove(step.y)) && avoidOverlapp(placement, step, blockIndex, area);
}

bool BBNode::avoidOverlapp(WorkingPlacement& placement, Point offset, unsigned blockIndex,
                           Area area) const {
    if (std::isnan(offset.x) || std::isnan(offset.y)) {
        std::cout << "ERROR: CANNOT DEFINE DIRECTIN OF DIE MOVOMENT -- BBNode::avoidOverlapp"
                  << std::endl;
    } else {
        // A side that does not move is not limited; what little it moves is kept.
        if (isMove(offset.x)) {
            offset.x = limitMove(placement, kX, offset.x, blockIndex, area.width);
        }
        if (isMove(offset.y)) {
            offset.y = limitMove(placement, kY, offset.y, blockIndex, area.height);
        }
    }
    if (!isMove(offset.x) && !isMove(offset.y)) {
        return false;
    }
    placement.moveBlock(blockIndex, offset);
    return true;
}

// The block's move along one axis, cut at its neighbours and at the area's edge. Neighbours stand
// where earlier alignments have left them.
float BBNode::limitMove(const WorkingPlacement& placement, Axis axis, float distance,
                        unsigned block, float areaExtent) const {
    if (distance > 0) {
        float end = placement.edge(axis, block) + distance + placement.wholeExtent(axis, block);
        for (const unsigned next : graph(axis).getOutcomingEdges(block)) {
            const float begin = placement.edge(axis, next);
            if (end > begin) {
                distance += begin - end;
                end = begin;
            }
        }
        return end > areaExtent ? distance + (areaExtent - end) : distance;
    }
    float begin = placement.edge(axis, block) + distance;
    for (const unsigned previous : graph(axis).getIncomingEdges(block)) {
        const float end = placement.edge(axis, previous) + placement.wholeExtent(axis, previous);
        if (begin < end) {
            distance += end - begin;
            begin = end;
        }
    }
    return begin < 0 ? distance - begin : distance;
}

void BBNode::placeAndAlign(WorkingPlacement& placement, bool areaConst, Area area) const {
    updateBlockCoordsConstGraph(placement);
    combinedAlignToTerms(placement, areaConst, area);
    // A round that moves nothing would be repeated by all that follow.
    bool moved = true;
    for (unsigned round = 0; round < kAlignmentRounds && moved; ++round) {
        moved = false;
        for (unsigned block = 0; block < numBlocks; ++block) {
            moved |= combinedAlignBlock(placement, area, block);
        }
    }
}

std::optional<Topology> BBNode::relationOf(unsigned a, unsigned b) const {
    if (horizontalGraph.getOutcomingEdges(a).contains(b)) {
        return Topology::L;
    }
    if (horizontalGraph.getIncomingEdges(a).contains(b)) {
        return Topology::R;
    }
    if (verticalGraph.getOutcomingEdges(a).contains(b)) {
        return Topology::B;
    }
    if (verticalGraph.getIncomingEdges(a).contains(b)) {
        return Topology::A;
    }
    return std::nullopt;
}

Topology BBNode::findPrepTopology(unsigned a, unsigned b) const {
    if (const std::optional<Topology> relation = relationOf(a, b)) {
        return *relation;
    }
    std::cout << "ERROR (BBNode::findPrepTopology): cannot find relative positions of two blocks"
              << std::endl;
    std::exit(0);
}

void BBNode::printPlacement(const Netlist& netlist, std::ostream& out) const {
    out << std::endl << "==    Placement information    ==" << std::endl << "Blocks: " << std::endl;
    for (unsigned i = 0; i < numBlocks; ++i) {
        const Block& block = netlist.blocks[i];
        out << "Name: " << block.getName()
            << ", Orientation: " << OrientConverter::OrientToString(blocksOrients[i]) << std::endl
            << "\tCoordinate: (" << block.getCoord().x << ", " << block.getCoord().y << ")"
            << std::endl;
    }
}

}  // namespace korvel
