// The bodies of a netlist: what pins move with. All terminals together are one body, which never
// moves; each block is another. They are numbered so that those of a placement of the first m
// blocks of the order are the first m + 1 bodies: whether a pin is placed depends on m alone, and
// no marks or counts of placed pins have to be kept while searching.
//
// Read-only after construction.
#pragma once

#include <vector>

#include "classic/netlist/Netlist.h"

namespace korvel {

class Bodies {
public:
    static constexpr unsigned kTerminals = 0;
    static constexpr unsigned ofBlock(unsigned block) { return block + 1; }
    static constexpr unsigned blockOf(unsigned body) { return body - 1; }
    // With the first `placed` blocks in place.
    static constexpr bool isPlaced(unsigned body, unsigned placed) { return body <= placed; }

    // For the first numBlocks blocks of the netlist in their final order. The netlist must outlive
    // the bodies and keep its pins.
    Bodies(const Netlist& netlist, unsigned numBlocks);

    // How many there are, the terminals' one included.
    unsigned size() const { return number; }
    // The pins of all further blocks belong to this one, which is not counted and never placed.
    unsigned neverPlaced() const { return number; }
    unsigned of(const Pin& pin) const { return bodyOfPin[pinNumber(pin)]; }
    std::size_t pinNumber(const Pin& pin) const { return &pin - netlist.pins.data(); }

    unsigned countPlaced(const Net& net, unsigned placed) const;

private:
    const Netlist& netlist;
    unsigned number;
    std::vector<unsigned> bodyOfPin;
};

}  // namespace korvel
