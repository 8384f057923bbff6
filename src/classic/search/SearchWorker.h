// What one worker of a search has for itself: where it places blocks, its open nodes and its
// counters. And the tables that all workers read.
#pragma once

#include "classic/alignment/WorkingPlacement.h"
#include "classic/bound/LengthBound.h"
#include "classic/node/NodeStack.h"
#include "classic/search/SearchStats.h"

namespace korvel {

// Worked out from the netlist before the workers start; nothing in it changes while they live.
struct SearchTables {
    SearchTables(const Netlist& netlist, unsigned numBlocks, Area area)
        : alignment(netlist, numBlocks), lengthBound(netlist, numBlocks, area) {}

    AlignmentTables alignment;
    LengthBound lengthBound;
};

struct SearchWorker {
    // `tables` must outlive the worker.
    SearchWorker(const SearchTables& tables, unsigned levelCount)
        : tables(tables),
          placement(tables.alignment),
          boundSpace(tables.lengthBound.makeWorkspace()),
          counters(levelCount) {}

    const SearchTables& tables;
    WorkingPlacement placement;
    LengthBound::Workspace boundSpace;
    NodeStack ownStack;
    BBNode node;  // the one taken from the shared stack
    SearchCounters counters;
    // Of the counters, what the observer knows of.
    std::uint64_t toldNodes = 0;
    double toldFraction = 0.0;
};

}  // namespace korvel
