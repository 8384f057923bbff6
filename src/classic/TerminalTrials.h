// Trials of one block against the terminals: the block is placed at the origin of the netlist's
// area, moved to where its nets to terminals want it, and these nets are measured. Every trial ends
// with all nets unplaced; the block's position means nothing then.
#pragma once

#include <vector>

#include "classic/alignment/StepVotes.h"
#include "classic/netlist/Netlist.h"
#include "classic/node/BBNode.h"

namespace korvel {

class TerminalTrials {
public:
    // With areaConst blocks are kept inside the area. Main thread only; the netlist must outlive
    // the trials.
    TerminalTrials(Netlist& netlist, unsigned numBlocks, bool areaConst, Area area)
        : netlist(netlist), numBlocks(numBlocks), areaConst(areaConst), area(area) {}

    // The cost of block b; termNets: its nets to terminals, ascending.
    float cost(unsigned b, Orient orient, const std::vector<unsigned>& termNets);

private:
    Point shiftOf(unsigned b, const std::vector<unsigned>& termNets);
    Point keepInArea(Point shift, const Block& block) const;

    Netlist& netlist;
    unsigned numBlocks;
    bool areaConst;
    Area area;
    StepVotes votes;
};

}  // namespace korvel
