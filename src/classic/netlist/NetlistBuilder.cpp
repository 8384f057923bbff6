#include "classic/netlist/NetlistBuilder.h"

namespace korvel {

NetlistBuilder::NetlistBuilder(Netlist& netlist, std::size_t netNum, std::size_t pinNum)
    : netlist(netlist) {
    netlist.nets.reserve(netNum);
    netlist.pins.reserve(pinNum);
}

void NetlistBuilder::addNet(unsigned degree, std::size_t pinNum) {
    const auto index = static_cast<unsigned>(netlist.nets.size());
    netlist.nets.emplace_back(index, degree).reservePins(pinNum);
}

void NetlistBuilder::addBlockPin(Block& block, char direction, Point offset) {
    addPin(block, direction, {}, offset, false);
}

void NetlistBuilder::addTerminalPin(Block& terminal, char direction) {
    addPin(terminal, direction, terminal.getCoord(), {}, true).setPlaced();
}

Pin& NetlistBuilder::addPin(Block& owner, char direction, Point coord, Point offset,
                            bool isTerminal) {
    Net& net = netlist.nets.back();
    Pin& pin = netlist.pins.emplace_back(static_cast<int>(netlist.pins.size()), direction, coord,
                                         offset, isTerminal, owner.getWidth(), owner.getHeight(),
                                         static_cast<unsigned>(owner.getIndex()), &net);
    owner.addPin(&pin);
    net.addPin(&pin);
    return pin;
}

void NetlistBuilder::finish(std::ostream& out) {
    for (Block& block : netlist.blocks) {
        block.findNetsIndexes(out);
    }
}

}  // namespace korvel
