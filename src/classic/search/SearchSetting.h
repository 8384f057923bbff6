// What a search is about: which blocks, within which area, by which bounds.
#pragma once

#include "classic/node/BoundTables.h"
#include "classic/search/PreviousStage.h"

namespace korvel {

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
