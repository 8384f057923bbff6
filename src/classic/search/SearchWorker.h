// What one worker of a search has for itself: where it places blocks, its open nodes and its
// counters. And the tables that it reads.
#pragma once

#include "classic/node/FamilyBounds.h"
#include "classic/node/NodeStack.h"
#include "classic/search/SearchStats.h"
#include "classic/search/SearchTables.h"

namespace korvel {

struct SearchWorker {
    // `tables` and `bounds` must outlive the worker.
    SearchWorker(const SearchTables& tables, const BoundTables& bounds, unsigned levelCount)
        : tables(tables),
          placement(tables.alignment),
          familyBounds(bounds, tables.alignment.numBlocks),
          boundSpace(tables.lengthBound.makeWorkspace()),
          counters(levelCount) {}

    const SearchTables& tables;
    WorkingPlacement placement;
    FamilyBounds familyBounds;
    LengthBound::Workspace boundSpace;
    NodeStack ownStack;
    BBNode node;  // the one taken from the shared stack
    SearchCounters counters;
    // Of the counters, what the observer knows of.
    std::uint64_t toldNodes = 0;
    double toldFraction = 0.0;
};

}  // namespace korvel
