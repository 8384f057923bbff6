// The test that every node of a search has to pass: is it free of cycles, does it fit the area, and
// can what it leads to still be shorter than the best placement known?
//
// Read-only: all workers use the same one, each with its own placement and counters.
#pragma once

#include "classic/search/SearchWorker.h"

namespace korvel {

class NodeEstimator {
public:
    // With areaConst the blocks have to stay inside the area.
    NodeEstimator(bool areaConst, Area area) : areaConst(areaConst), area(area) {}

    // True keeps the node, with its wirelength when all relations of its newest block are fixed:
    // then its blocks are placed and aligned in the worker's placement.
    bool estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const;

    // Whether no alignment saves the node, nor any that it becomes by further relations of its
    // newest block: with what later blocks add at least (`remaining`) its wirelength is too long.
    // Takes nodes inside the area, with their coordinates found.
    bool isHopeless(const BBNode& node, float remaining, float bestWL, SearchWorker& worker) const;

    // Whether that relation, which closes no cycle, certainly leaves no room; see BBNode.
    bool leavesArea(const BBNode& node, unsigned a, unsigned b, Topology topology) const {
        return areaConst && node.leavesArea(a, b, topology, area);
    }

private:
    bool hasRoom(BBNode& node, bool isComplete) const;

    bool areaConst;
    Area area;
};

}  // namespace korvel
