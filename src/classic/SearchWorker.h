// What one worker of a search has for itself: where it places blocks, its open nodes and its
// counters. And what all workers read while it works.
#pragma once

#include "classic/SearchState.h"
#include "classic/alignment/AlignmentTables.h"
#include "classic/alignment/WorkingPlacement.h"
#include "classic/bound/LengthBound.h"
#include "classic/node/FamilyBounds.h"
#include "classic/node/NodeStack.h"

namespace korvel {

// Worked out from the netlist before the workers start.
struct SearchTables {
    SearchTables(const Netlist& netlist, unsigned numBlocks, Area area)
        : alignment(netlist, numBlocks), lengthBound(netlist, numBlocks, area) {}

    AlignmentTables alignment;
    LengthBound lengthBound;
};

struct SearchWorker {
    // `shared` and `bounds` must outlive the worker.
    SearchWorker(const SearchTables& shared, const BoundTables& bounds, unsigned levelCount)
        : tables(shared),
          placement(shared.alignment),
          familyBounds(bounds, shared.alignment.numBlocks),
          boundSpace(shared.lengthBound.makeWorkspace()),
          counters(levelCount) {}

    const SearchTables& tables;
    WorkingPlacement placement;
    FamilyBounds familyBounds;
    LengthBound::Workspace boundSpace;
    NodeStack ownStack;
    BBNode node;  // the one at hand
    SearchCounters counters;
    std::uint64_t toldNodes = 0;  // of the counters, what the observer knows of
    double toldShare = 0.0;
};

}  // namespace korvel
