// All that a worker reads while it aligns and measures partial placements: worked out for the first
// blocks of an order before a search, then read by all workers without locks.
//
// The order of the blocks is fixed, so the placed ones are always the first m of it. What is left
// of the netlist for each m is flat arrays of positions to compare.
#pragma once

#include "classic/alignment/BallotTable.h"
#include "classic/alignment/LengthTable.h"
#include "classic/alignment/PinTable.h"
#include "classic/alignment/SortedGroups.h"

namespace korvel {

struct AlignmentTables {
    // For the first numBlocks blocks of the netlist, in their final order; the netlist is not
    // needed later.
    AlignmentTables(const Netlist& netlist, unsigned numBlocks)
        : AlignmentTables(AlignmentNets(netlist, numBlocks)) {}

    unsigned bodyNum() const { return Bodies::ofBlock(numBlocks); }

    const unsigned numBlocks;
    const PinTable pins;
    const SortedGroups sortedGroups;
    const BallotTable ballots;
    const LengthTable lengths;

private:
    explicit AlignmentTables(const AlignmentNets& nets)
        : numBlocks(nets.numBlocks),
          pins(nets),
          sortedGroups(nets, pins),
          ballots(nets, pins, sortedGroups),
          lengths(nets, pins) {}
};

}  // namespace korvel
