#include "LengthGaps.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace korvel {

namespace {

constexpr unsigned slotOf(unsigned block) {
    return block + 1;
}

constexpr unsigned wordsFor(unsigned blocks) {
    return (blocks + VertexSet::kWordBits - 1) / VertexSet::kWordBits;
}

}  // namespace

LengthGaps::LengthGaps(Axis axis, unsigned numBlocks, Area area)
    : axis(axis),
      areaExtent(axis == kX ? area.width : area.height),
      wordNum(wordsFor(numBlocks)),
      gaps(numBlocks + 1),
      sides(numBlocks),
      edges(std::size_t{numBlocks} * wordNum),
      gapsToNewest(SlotMatrix::quadsFor(numBlocks + 1)),
      gapsFromNewest(numBlocks + 1) {
    gaps.front().resize(1);
    *gaps.front().rowTo(0) = allLanes(-kInfinity);
    gaps.front().at(0, 0) = 0.0F;
}

bool LengthGaps::follow(const BBNode& node) {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    firstNew = std::min(placed, node.numBlocks);
    placed = 0;
    if (!takeSides(graph, node.numBlocks)) {
        return false;
    }
    takeEdges(graph, node.numBlocks);
    for (unsigned block = firstNew; block < node.numBlocks; ++block) {
        addBlock(graph, block);
    }
    placed = node.numBlocks;
    return true;
}

bool LengthGaps::takeSides(const ConsraintGraphList& graph, unsigned numBlocks) {
    for (unsigned block = 0; block < numBlocks; ++block) {
        const float weight = graph.getWeight(block);
        const float end = graph.returnCoord(block) + weight;
        if (end > areaExtent) {
            return false;
        }
        // The alignment's common step looks at the graph's length only, in which a block without
        // an edge on this axis does not count.
        const float reach = areaExtent + std::max(0.0F, end - graph.getLength());
        if (weight != sides[block].weight || reach != sides[block].reach) {
            sides[block] = {weight, std::trunc(weight), reach};
            firstNew = std::min(firstNew, block);
        }
    }
    return true;
}

void LengthGaps::takeEdges(const ConsraintGraphList& graph, unsigned numBlocks) {
    const unsigned words = wordsFor(numBlocks);
    for (unsigned block = 0; block < numBlocks; ++block) {
        for (unsigned w = 0; w < words; ++w) {
            std::uint64_t& known = edges[block * wordNum + w];
            const std::uint64_t now = graph.getOutcomingEdges(block).word(w);
            if (now != known) {
                // Of two blocks the later one is new.
                const unsigned other = w * VertexSet::kWordBits + std::countr_zero(now ^ known);
                firstNew = std::min(firstNew, std::max(block, other));
                known = now;
            }
        }
    }
}

// A chain between two other bodies may now go by this block.
void LengthGaps::addBlock(const ConsraintGraphList& graph, unsigned block) {
    findGapsTo(graph, block);
    findGapsFrom(graph, block);
    const SlotMatrix& old = gaps[block];
    SlotMatrix& wider = gaps[block + 1];
    const unsigned newest = slotOf(block);
    wider.resize(newest + 1);
    for (unsigned to = 0; to < newest; ++to) {
        const Quad gap = allLanes(gapsFromNewest[to]);
        const Quad* oldRow = old.rowTo(to);
        Quad* row = wider.rowTo(to);
        row[wider.getQuadNum() - 1] = allLanes(-kInfinity);
        for (unsigned q = 0; q < old.getQuadNum(); ++q) {
            row[q] = larger(oldRow[q], gapsToNewest[q] + gap);
        }
        wider.at(newest, to) = gapsFromNewest[to];
    }
    std::copy_n(gapsToNewest.begin(), wider.getQuadNum(), wider.rowTo(newest));
    wider.at(newest, newest) = 0.0F;
}

// It lies behind the blocks before it, and nowhere below the origin.
void LengthGaps::findGapsTo(const ConsraintGraphList& graph, unsigned block) {
    const SlotMatrix& old = gaps[block];
    const unsigned quadNum = old.getQuadNum();
    std::copy_n(old.rowTo(0), quadNum, gapsToNewest.begin());
    std::fill(gapsToNewest.begin() + quadNum, gapsToNewest.end(), allLanes(-kInfinity));
    for (const unsigned before : graph.getIncomingEdges(block)) {
        if (before > block) {
            break;
        }
        const Quad extent = allLanes(sides[before].extent);
        const Quad* row = old.rowTo(slotOf(before));
        for (unsigned q = 0; q < quadNum; ++q) {
            gapsToNewest[q] = larger(gapsToNewest[q], row[q] + extent);
        }
    }
}

// The blocks behind it come after its end, which stays within its reach.
void LengthGaps::findGapsFrom(const ConsraintGraphList& graph, unsigned block) {
    const SlotMatrix& old = gaps[block];
    const Side& side = sides[block];
    for (unsigned to = 0; to < old.getSlotNum(); ++to) {
        gapsFromNewest[to] = old.at(0, to) - side.reach;
    }
    for (const unsigned behind : graph.getOutcomingEdges(block)) {
        if (behind > block) {
            break;
        }
        for (unsigned to = 0; to < old.getSlotNum(); ++to) {
            gapsFromNewest[to] = std::max(gapsFromNewest[to], old.at(slotOf(behind), to));
        }
    }
    for (unsigned to = 0; to < old.getSlotNum(); ++to) {
        gapsFromNewest[to] += side.extent;
    }
}

}  // namespace korvel
