#include "classic/alignment/AlignmentNets.h"

#include "classic/alignment/SortedGroups.h"

namespace korvel {

AlignmentNets::AlignmentNets(const Netlist& netlist, unsigned numBlocks)
    : netlist(netlist),
      numBlocks(numBlocks),
      bodies(netlist, numBlocks),
      groups(groupPairs(netlist, bodies)),
      groupsOfBody(bodies.size()),
      othersOfBlock(numBlocks),
      sortedPins(netlist.pins.size(), false) {
    for (unsigned number = 0; number < groups.size(); ++number) {
        const PairGroup& group = groups[number];
        groupsOfBody[group.first].push_back(number);
        if (group.second != group.first) {
            groupsOfBody[group.second].push_back(number);
        }
        sorted.push_back(SortedGroups::isWorthSorting(group));
        for (const auto& [first, second] : group.joints) {
            sortedPins[bodies.pinNumber(*first)] = sorted.back();
            sortedPins[bodies.pinNumber(*second)] = sorted.back();
        }
    }
    findOthers();
}

void AlignmentNets::findOthers() {
    for (const Net& net : netlist.nets) {
        if (!isPair(net)) {
            others.push_back(&net);
        }
    }
    for (unsigned block = 0; block < numBlocks; ++block) {
        for (const unsigned index : netlist.blocks[block].getNetsIndexes()) {
            if (!isPair(netlist.nets[index])) {
                othersOfBlock[block].push_back(&netlist.nets[index]);
            }
        }
    }
}

bool AlignmentNets::isPlacedAsPair(const Net& net, unsigned placed) const {
    return net.getDeclaredDegree() == 2 && net.getNetDegree() > 2 &&
           Bodies::isPlaced(bodies.of(*net.getPins()[0]), placed) &&
           Bodies::isPlaced(bodies.of(*net.getPins()[1]), placed) &&
           bodies.countPlaced(net, placed) == 2;
}

}  // namespace korvel
