#include "BBNode.h"

#include <cmath>
#include <cstdlib>

#include "AxisVotes.h"
#include "Invariant.h"

namespace korvel {

namespace {

constexpr double kNoMove = 0.001;
constexpr unsigned kAlignmentRounds = 3;

bool isMove(float distance) {
    return std::fabs(distance) > kNoMove;
}

// The votes of one alignment, kept per thread so that voting allocates nothing.
struct Ballot {
    AxisVotes x;
    AxisVotes y;

    void clear() {
        x.clear();
        y.clear();
    }
    void add(const offsetCalcReturn& advice) {
        x.add(advice.x);
        y.add(advice.y);
    }
    Point step(Middle middle) { return {x.step(middle), y.step(middle)}; }
};

Ballot& emptyBallot() {
    thread_local Ballot ballot;
    ballot.clear();
    return ballot;
}

}  // namespace

void BBNode::addBlock(Orient orient, const Netlist& copy) {
    ++numBlocks;
    horizontalGraph.addVert();
    verticalGraph.addVert();
    blocksOrients.push_back(orient);
    const unsigned newest = numBlocks - 1;
    const Block& block = copy.blocks[newest];
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
    switch (topology) {
        case Topology::L:
            horizontalGraph.addEdge(a, b);
            break;
        case Topology::R:
            horizontalGraph.addEdge(b, a);
            break;
        case Topology::A:
            verticalGraph.addEdge(b, a);
            break;
        case Topology::B:
            verticalGraph.addEdge(a, b);
            break;
        case Topology::LAST:
            break;
    }
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

void BBNode::updateBlockCoordsConstGraph(Netlist& copy) const {
    KORVEL_INVARIANT(numBlocks <= copy.blocks.size(), "numBlocks <= blocks[thread].size()");
    for (unsigned i = 0; i < numBlocks; ++i) {
        copy.blocks[i].updateBlockState(
            {horizontalGraph.returnCoord(i), verticalGraph.returnCoord(i)}, blocksOrients[i],
            false);
    }
}

float BBNode::evaluatePartialHPWL(Netlist& copy) {
    float sum = 0.0F;
    for (Net& net : copy.nets) {
        sum += net.calcPartialHPWL();
    }
    return sum;
}

float BBNode::evaluateCompleteHPWL(Netlist& copy) {
    float sum = 0.0F;
    for (Net& net : copy.nets) {
        sum += net.calcCompleteHPWL();
    }
    return sum;
}

void BBNode::combinedAlignToTerms(Netlist& copy, bool keepInside, Area area) const {
    Ballot& ballot = emptyBallot();
    for (const Net& net : copy.nets) {
        if (net.getTermNum() != 0 && net.getPlacedPinsNum() > 1 &&
            net.getTermNum() != net.getPlacedPinsNum()) {
            ballot.add(net.combinedOffsetsToTerms());
        }
    }
    Point step = ballot.step(Middle::Upper);
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
    for (Block& block : copy.blocks) {
        if (block.getIndex() < static_cast<int>(numBlocks)) {
            block.moveBlock(step);
        }
    }
}

void BBNode::combinedAlignBlock(Netlist& copy, Area area, unsigned blockIndex) const {
    Ballot& ballot = emptyBallot();
    for (const unsigned index : copy.blocks[blockIndex].getNetsIndexes()) {
        const Net& net = copy.nets[index];
        if (net.getPlacedPinsNum() >= 2) {
            ballot.add(net.combinedOffsetsCalc(blockIndex));
        }
    }
    const Point step = ballot.step(Middle::Lower);
    if (isMove(step.x) || isMove(step.y)) {
        avoidOverlapp(copy, step, blockIndex, area);
    }
}

namespace {

// A block's extent along one axis, cut to whole units.
float wholeWidth(const Block& block) {
    return std::trunc(block.getWidthOriented());
}
float wholeHeight(const Block& block) {
    return std::trunc(block.getHeightOriented());
}

// Cuts a move toward larger coordinates: `end` is the block's new end, `begins` where its
// neighbours begin.
template <typename BeginOf>
void limitForward(float& distance, float end, VertexSet neighbours, const BeginOf& beginOf,
                  float areaEnd) {
    for (const unsigned neighbour : neighbours) {
        const float begin = beginOf(neighbour);
        if (end > begin) {
            distance += begin - end;
            end = begin;
        }
    }
    if (end > areaEnd) {
        distance += areaEnd - end;
    }
}

// The same toward the origin: `begin` is the block's new begin.
template <typename EndOf>
void limitBackward(float& distance, float begin, VertexSet neighbours, const EndOf& endOf) {
    for (const unsigned neighbour : neighbours) {
        const float end = endOf(neighbour);
        if (begin < end) {
            distance += end - begin;
            begin = end;
        }
    }
    if (begin < 0) {
        distance -= begin;
    }
}

}  // namespace

void BBNode::limitAlongX(const Netlist& copy, float& distance, unsigned blockIndex,
                         float areaWidth) const {
    const std::vector<Block>& blocks = copy.blocks;
    const float left = blocks[blockIndex].getCoord().x + distance;
    if (distance > 0) {
        limitForward(
            distance, left + wholeWidth(blocks[blockIndex]),
            horizontalGraph.getOutcomingEdges(blockIndex),
            [&](unsigned s) { return blocks[s].getCoord().x; }, areaWidth);
    } else {
        limitBackward(distance, left, horizontalGraph.getIncomingEdges(blockIndex),
                      [&](unsigned p) { return blocks[p].getCoord().x + wholeWidth(blocks[p]); });
    }
}

void BBNode::limitAlongY(const Netlist& copy, float& distance, unsigned blockIndex,
                         float areaHeight) const {
    const std::vector<Block>& blocks = copy.blocks;
    const float bottom = blocks[blockIndex].getCoord().y + distance;
    if (distance > 0) {
        limitForward(
            distance, bottom + wholeHeight(blocks[blockIndex]),
            verticalGraph.getOutcomingEdges(blockIndex),
            [&](unsigned s) { return blocks[s].getCoord().y; }, areaHeight);
    } else {
        limitBackward(distance, bottom, verticalGraph.getIncomingEdges(blockIndex),
                      [&](unsigned p) { return blocks[p].getCoord().y + wholeHeight(blocks[p]); });
    }
}

void BBNode::avoidOverlapp(Netlist& copy, Point offset, unsigned blockIndex, Area area) const {
    if (!isMove(offset.x) && !isMove(offset.y)) {
        return;
    }
    if (std::isnan(offset.x) || std::isnan(offset.y)) {
        std::cout << "ERROR: CANNOT DEFINE DIRECTIN OF DIE MOVOMENT -- BBNode::avoidOverlapp"
                  << std::endl;
    } else {
        // A side that does not move is not limited; what little it moves is kept.
        if (isMove(offset.x)) {
            limitAlongX(copy, offset.x, blockIndex, area.width);
        }
        if (isMove(offset.y)) {
            limitAlongY(copy, offset.y, blockIndex, area.height);
        }
    }
    if (!isMove(offset.x) && !isMove(offset.y)) {
        return;
    }
    for (Block& moved : copy.blocks) {
        if (moved.getIndex() == static_cast<int>(blockIndex)) {
            moved.moveBlock(offset);
        }
    }
}

void BBNode::placeAndAlign(Netlist& copy, bool areaConst, Area area) const {
    updateBlockCoordsConstGraph(copy);
    if (!copy.terminals.empty()) {
        combinedAlignToTerms(copy, areaConst, area);
    }
    for (unsigned round = 0; round < kAlignmentRounds; ++round) {
        for (unsigned block = 0; block < numBlocks; ++block) {
            combinedAlignBlock(copy, area, block);
        }
    }
}

Topology BBNode::findPrepTopology(unsigned a, unsigned b) const {
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
    std::cout << "ERROR (BBNode::findPrepTopology): cannot find relative positions of two blocks"
              << std::endl;
    std::exit(0);
}

void BBNode::printPlacement(const Netlist& copy, std::ostream& out) const {
    out << std::endl << "==    Placement information    ==" << std::endl << "Blocks: " << std::endl;
    for (unsigned i = 0; i < numBlocks; ++i) {
        const Block& block = copy.blocks[i];
        out << "Name: " << block.getName()
            << ", Orientation: " << OrientConverter::OrientToString(blocksOrients[i]) << std::endl
            << "\tCoordinate: (" << block.getCoord().x << ", " << block.getCoord().y << ")"
            << std::endl;
    }
}

}  // namespace korvel
