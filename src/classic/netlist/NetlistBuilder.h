// Fills a netlist that has its blocks and terminals with nets and pins, all of which know each
// other by pointers.
#pragma once

#include <iosfwd>

#include "classic/netlist/Netlist.h"

namespace korvel {

class NetlistBuilder {
public:
    // The numbers of all nets and pins that will be added: no array may grow while others point
    // into it. Nor may the blocks and terminals move from now on.
    NetlistBuilder(Netlist& netlist, std::size_t netNum, std::size_t pinNum);

    // The next net, of a declared degree. The pins that follow are its; so many will.
    void addNet(unsigned degree, std::size_t pinNum);
    // Of a block; the offset is given as fractions of its width and height.
    void addBlockPin(Block& block, char direction, Point offset);
    // Placed for good where the terminal is.
    void addTerminalPin(Block& terminal, char direction);

    // When all are there: tells the blocks which nets they are on. Warnings go to `out`.
    void finish(std::ostream& out);

private:
    Pin& addPin(Block& owner, char direction, Point coord, Point offset, bool isTerminal);

    Netlist& netlist;
};

}  // namespace korvel
