// The netlist as the alignment tables are made from it: nets of two pins in groups by the bodies
// that they join, and all others, whose part depends on how many of their pins are placed. Needed
// only while the tables are built.
#pragma once

#include <vector>

#include "classic/netlist/Bodies.h"
#include "classic/netlist/PairGroups.h"

namespace korvel {

struct AlignmentNets {
    // For the first numBlocks blocks of the netlist, in their final order. The netlist must outlive
    // it.
    AlignmentNets(const Netlist& netlist, unsigned numBlocks);

    // A net that declares two pins but has more is treated as a pair while its first two are
    // placed, and they alone.
    bool isPlacedAsPair(const Net& net, unsigned placed) const;
    bool isInSortedGroup(const Pin& pin) const { return sortedPins[bodies.pinNumber(pin)]; }

    const Netlist& netlist;
    unsigned numBlocks;
    Bodies bodies;
    std::vector<PairGroup> groups;
    std::vector<bool> sorted;  // by group: its nets are kept in sorted lists, its pins on tracks
    std::vector<std::vector<unsigned>> groupsOfBody;
    std::vector<const Net*> others;  // all nets but pairs
    std::vector<std::vector<const Net*>> othersOfBlock;

private:
    void findOthers();

    std::vector<bool> sortedPins;  // by pin
};

}  // namespace korvel
