#include "classic/bound/LengthGaps.h"

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
      gapsToNewest(SlotMatrix::quadsFor(numBlocks + 1)) {
    slotsBehind.reserve(numBlocks);
    gaps.front().resize(1);
    *gaps.front().rowTo(0) = allLanes(-kInfinity);
    gaps.front().at(0, 0) = 0.0F;
}

bool LengthGaps::follow(const BBNode& node) {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    placed = node.numBlocks;
    const bool sibling = node.family == family && graph.isMeasured() && measured;
    family = node.family;
    measured = graph.isMeasured();
    // What a sibling has other is not noted, since the next one mostly is a sibling again.
    known = std::min(known, sibling ? placed - 1 : placed);
    if (!sibling) {
        if (!takeSides(graph)) {
            family = 0;
            return false;
        }
        takeEdges(graph);
    }
    for (unsigned block = known; block < placed; ++block) {
        addBlock(graph, block);
    }
    known = sibling ? known : placed;
    return true;
}

bool LengthGaps::takeSides(const ConsraintGraphList& graph) {
    for (unsigned block = 0; block < placed; ++block) {
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
            known = std::min(known, block);
        }
    }
    return true;
}

void LengthGaps::takeEdges(const ConsraintGraphList& graph) {
    const unsigned words = wordsFor(placed);
    for (unsigned block = 0; block < placed; ++block) {
        for (unsigned w = 0; w < words; ++w) {
            std::uint64_t& before = edges[block * wordNum + w];
            const std::uint64_t now = graph.getOutcomingEdges(block).word(w);
            if (now != before) {
                // Of two blocks the later one is new.
                const unsigned other = w * VertexSet::kWordBits + std::countr_zero(now ^ before);
                known = std::min(known, std::max(block, other));
                before = now;
            }
        }
    }
}

// A chain between two other bodies may now go by this block.
void LengthGaps::addBlock(const ConsraintGraphList& graph, unsigned block) {
    findGapsTo(graph, block);
    findSlotsBehind(graph, block);
    const SlotMatrix& old = gaps[block];
    SlotMatrix& wider = gaps[block + 1];
    const unsigned newest = slotOf(block);
    wider.resize(newest + 1);
    const unsigned oldQuads = old.getQuadNum();
    const unsigned newQuads = wider.getQuadNum();
    for (unsigned to = 0; to < newest; ++to) {
        const Quad* oldRow = old.rowTo(to);
        const float gap = gapFrom(block, old.lanesTo(to));
        Quad* row = wider.rowTo(to);
        row[newQuads - 1] = allLanes(-kInfinity);
        for (unsigned q = 0; q < oldQuads; ++q) {
            row[q] = larger(oldRow[q], gapsToNewest[q] + allLanes(gap));
        }
        wider.lanesTo(to)[newest] = gap;
    }
    std::copy_n(gapsToNewest.begin(), newQuads, wider.rowTo(newest));
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

void LengthGaps::findSlotsBehind(const ConsraintGraphList& graph, unsigned block) {
    slotsBehind.clear();
    for (const unsigned behind : graph.getOutcomingEdges(block)) {
        if (behind > block) {
            break;
        }
        slotsBehind.push_back(slotOf(behind));
    }
}

// To a slot whose gaps from the slots before the block are known. The blocks behind it come after
// its end, which stays within its reach.
float LengthGaps::gapFrom(unsigned block, const float* gapsTo) const {
    float gap = gapsTo[0] - sides[block].reach;
    for (const unsigned slot : slotsBehind) {
        gap = std::max(gap, gapsTo[slot]);
    }
    return gap + sides[block].extent;
}

}  // namespace korvel
