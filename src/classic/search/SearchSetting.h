// What a search is about: which blocks, within which area, by which bounds, after which stage.
#pragma once

#include <optional>

#include "classic/node/BBNode.h"
#include "classic/node/BoundTables.h"

namespace korvel {

// What the stage before has decided, in a staged run: the next one repeats it on the levels that it
// covers, where it has an answer, and only then searches.
struct PreviousStage {
    unsigned numBlocks = 0;  // 0: there was none
    unsigned levels = 0;
    BBNode bestNode;

    // The orientation that the node's next block is to take, if that is decided.
    std::optional<Orient> orientFor(const BBNode& node, unsigned block) const {
        if (covers(node) && block < bestNode.numBlocks) {
            return bestNode.findPrepOrient(block);
        }
        return std::nullopt;
    }
    // Where the node's block a is to lie relative to b, if that is decided.
    std::optional<Topology> topologyFor(const BBNode& node, unsigned a, unsigned b) const {
        if (covers(node) && a < bestNode.numBlocks) {
            return bestNode.findPrepTopology(a, b);
        }
        return std::nullopt;
    }

private:
    bool covers(const BBNode& node) const { return numBlocks != 0 && node.blockLevel <= levels; }
};

// What it refers to must outlive the search, and nothing of it changes while workers live.
struct SearchSetting {
    const Netlist& netlist;
    unsigned numBlocks;  // to be placed: the first ones of the order
    const BoundTables& bounds;
    const PreviousStage& previous;
    bool hasTerminals;
    bool areaConst;  // the blocks have to stay inside the area
    Area area;
};

}  // namespace korvel
