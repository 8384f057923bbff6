#include "classic/netlist/Bodies.h"

#include <algorithm>

namespace korvel {

Bodies::Bodies(const Netlist& netlist, unsigned numBlocks)
    : netlist(netlist), number(numBlocks + 1), bodyOfPin(netlist.pins.size(), kTerminals) {
    for (unsigned block = 0; block < netlist.blocks.size(); ++block) {
        const unsigned body = block < numBlocks ? ofBlock(block) : neverPlaced();
        for (const Pin* pin : netlist.blocks[block].getPins()) {
            bodyOfPin[pinNumber(*pin)] = body;
        }
    }
}

unsigned Bodies::countPlaced(const Net& net, unsigned placed) const {
    const std::vector<Pin*>& pins = net.getPins();
    return static_cast<unsigned>(std::count_if(
        pins.begin(), pins.end(), [&](const Pin* pin) { return isPlaced(of(*pin), placed); }));
}

}  // namespace korvel
