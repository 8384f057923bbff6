#include "classic/bound/LengthGaps.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace korvel {

namespace {

constexpr unsigned bodyOf(unsigned block) {
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
      gapsToNewest(BodyMatrix::quadsFor(numBlocks + 1)) {
    successors.reserve(numBlocks);
    gaps.front().resize(1);
    *gaps.front().rowTo(0) = allLanes(-kInfinity);
    gaps.front().at(0, 0) = 0.0F;
}

bool LengthGaps::follow(const BBNode& node) {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    placed = node.numBlocks;
    known = std::min(known, placed);
    if (!takeSides(graph)) {
        return false;
    }
    takeEdges(graph);
    for (; known < placed; ++known) {
        addBlock(graph, known);
    }
    return true;
}

bool LengthGaps::takeSides(const ConsraintGraphList& graph) {
    for (unsigned block = 0; block < placed; ++block) {
        const float weight = graph.getWeight(block);
        const float end = graph.returnCoord(block) + weight;
        if (end > areaExtent) {
            return false;
        }
        // The common step toward the terminals keeps the graph's length in the area, in which a
        // block without an edge along this axis does not count: it can get out by as much as its
        // end is beyond that length.
        const float farthestEnd = areaExtent + std::max(0.0F, end - graph.getLength());
        if (weight != sides[block].weight || farthestEnd != sides[block].farthestEnd) {
            sides[block] = {weight, std::trunc(weight), farthestEnd};
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
                // An edge counts when the later one of its blocks is added.
                const unsigned other = w * VertexSet::kWordBits + std::countr_zero(now ^ before);
                known = std::min(known, std::max(block, other));
                before = now;
            }
        }
    }
}

// The gaps to and from the block, and those between earlier bodies, whose longest path may now go
// by way of the block.
void LengthGaps::addBlock(const ConsraintGraphList& graph, unsigned block) {
    findGapsTo(graph, block);
    findSuccessors(graph, block);
    const BodyMatrix& old = gaps[block];
    BodyMatrix& wider = gaps[block + 1];
    const unsigned newest = bodyOf(block);
    wider.resize(newest + 1);
    const unsigned oldQuads = old.getQuadNum();
    const unsigned newQuads = wider.getQuadNum();
    for (unsigned to = 0; to < newest; ++to) {
        const Quad* oldRow = old.rowTo(to);
        const float gap = gapFrom(block, old.valuesTo(to));
        Quad* row = wider.rowTo(to);
        row[newQuads - 1] = allLanes(-kInfinity);
        for (unsigned q = 0; q < oldQuads; ++q) {
            row[q] = larger(oldRow[q], gapsToNewest[q] + allLanes(gap));
        }
        wider.valuesTo(to)[newest] = gap;
    }
    std::copy_n(gapsToNewest.begin(), newQuads, wider.rowTo(newest));
    wider.at(newest, newest) = 0.0F;
}

// To the block: over its predecessors, or over the terminals, since it stays at 0 or above.
void LengthGaps::findGapsTo(const ConsraintGraphList& graph, unsigned block) {
    const BodyMatrix& old = gaps[block];
    const unsigned quadNum = old.getQuadNum();
    std::copy_n(old.rowTo(0), quadNum, gapsToNewest.begin());
    std::fill(gapsToNewest.begin() + quadNum, gapsToNewest.end(), allLanes(-kInfinity));
    for (const unsigned predecessor : graph.getIncomingEdges(block)) {
        if (predecessor > block) {
            break;
        }
        const Quad extent = allLanes(sides[predecessor].wholeExtent);
        const Quad* row = old.rowTo(bodyOf(predecessor));
        for (unsigned q = 0; q < quadNum; ++q) {
            gapsToNewest[q] = larger(gapsToNewest[q], row[q] + extent);
        }
    }
}

void LengthGaps::findSuccessors(const ConsraintGraphList& graph, unsigned block) {
    successors.clear();
    for (const unsigned successor : graph.getOutcomingEdges(block)) {
        if (successor > block) {
            break;
        }
        successors.push_back(bodyOf(successor));
    }
}

// From the block to an earlier body, whose gaps from all earlier bodies are given: over the block's
// successors, or over the terminals, since its end stays within its farthest end.
float LengthGaps::gapFrom(unsigned block, const float* gapsTo) const {
    float gap = gapsTo[0] - sides[block].farthestEnd;
    for (const unsigned successor : successors) {
        gap = std::max(gap, gapsTo[successor]);
    }
    return gap + sides[block].wholeExtent;
}

}  // namespace korvel
