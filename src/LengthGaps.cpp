#include "LengthGaps.h"

#include <algorithm>
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
    : axis(axis), areaExtent(axis == kX ? area.width : area.height), levels(numBlocks + 1) {
    for (unsigned block = 0; block < numBlocks; ++block) {
        levels[block].ties.related.resize(std::size_t{2} * wordsFor(block), 0);
    }
    levels.front().gaps.resize(1);
    *levels.front().gaps.rowTo(0) = allLanes(-kInfinity);
    levels.front().gaps.at(0, 0) = 0.0F;
}

bool LengthGaps::follow(const BBNode& node) {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    placed = node.numBlocks;
    for (unsigned block = 0; block < placed; ++block) {
        if (graph.returnCoord(block) + graph.getWeight(block) > areaExtent) {
            return false;
        }
        if (takeTies(graph, block) || block >= known) {
            addBlock(block);
            known = block + 1;
        }
    }
    return true;
}

// True when they have changed.
bool LengthGaps::takeTies(const ConsraintGraphList& graph, unsigned block) {
    Ties& ties = levels[block].ties;
    bool changed = false;
    const auto take = [&changed](auto& known, auto now) {
        changed |= known != now;
        known = now;
    };
    const float weight = graph.getWeight(block);
    take(ties.weight, weight);
    // The alignment's common step looks at the graph's length only, which a block without an edge
    // on this axis does not count in.
    const float beyond = graph.returnCoord(block) + weight - graph.getLength();
    take(ties.reach, areaExtent + std::max(0.0F, beyond));
    const unsigned words = wordsFor(block);
    for (unsigned w = 0; w < words; ++w) {
        take(ties.related[w], graph.getIncomingEdges(block).wordBelow(w, block));
        take(ties.related[words + w], graph.getOutcomingEdges(block).wordBelow(w, block));
    }
    return changed;
}

VertexSet LengthGaps::blocksBefore(unsigned block) const {
    return {levels[block].ties.related.data(), wordsFor(block)};
}

VertexSet LengthGaps::blocksBehind(unsigned block) const {
    return {levels[block].ties.related.data() + wordsFor(block), wordsFor(block)};
}

// A chain between two other bodies may now go by this block.
void LengthGaps::addBlock(unsigned block) {
    const SlotMatrix& old = levels[block].gaps;
    SlotMatrix& gaps = levels[block + 1].gaps;
    const unsigned newest = slotOf(block);
    gaps.resize(newest + 1);
    findGapsTo(block);
    for (unsigned to = 0; to < newest; ++to) {
        const float gap = gapFrom(block, to);
        const Quad* oldRow = old.rowTo(to);
        Quad* row = gaps.rowTo(to);
        row[gaps.getQuadNum() - 1] = allLanes(-kInfinity);
        for (unsigned q = 0; q < old.getQuadNum(); ++q) {
            row[q] = larger(oldRow[q], gapsToNewest[q] + allLanes(gap));
        }
        gaps.at(newest, to) = gap;
    }
    std::copy(gapsToNewest.begin(), gapsToNewest.end(), gaps.rowTo(newest));
    gaps.at(newest, newest) = 0.0F;
}

// From all slots: behind the blocks before it, and nowhere below the origin.
void LengthGaps::findGapsTo(unsigned block) {
    const SlotMatrix& old = levels[block].gaps;
    gapsToNewest.assign(SlotMatrix::quadsFor(slotOf(block) + 1), allLanes(-kInfinity));
    std::copy_n(old.rowTo(0), old.getQuadNum(), gapsToNewest.begin());
    for (const unsigned before : blocksBefore(block)) {
        const Quad extent = allLanes(std::trunc(levels[before].ties.weight));
        const Quad* row = old.rowTo(slotOf(before));
        for (unsigned q = 0; q < old.getQuadNum(); ++q) {
            gapsToNewest[q] = larger(gapsToNewest[q], row[q] + extent);
        }
    }
}

// The blocks behind it come after its end, which stays within the area.
float LengthGaps::gapFrom(unsigned block, unsigned to) const {
    const SlotMatrix& old = levels[block].gaps;
    const Ties& ties = levels[block].ties;
    float gap = old.at(0, to) - ties.reach;
    for (const unsigned behind : blocksBehind(block)) {
        gap = std::max(gap, old.at(slotOf(behind), to));
    }
    return gap + std::trunc(ties.weight);
}

}  // namespace korvel
