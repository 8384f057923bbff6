// What is worked out from the netlist before the workers of a search start: all of them read it,
// nothing in it changes while they live.
#pragma once

#include "classic/alignment/AlignmentTables.h"
#include "classic/bound/LengthBound.h"

namespace korvel {

struct SearchTables {
    SearchTables(const Netlist& netlist, unsigned numBlocks, Area area)
        : alignment(netlist, numBlocks), lengthBound(netlist, numBlocks, area) {}

    AlignmentTables alignment;
    LengthBound lengthBound;
};

}  // namespace korvel
