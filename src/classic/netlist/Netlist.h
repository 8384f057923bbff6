// The benchmark's netlist: blocks, terminals, nets and pins, each in contiguous memory and
// referring to one another by pointers. Only the main thread places blocks in it, before a search
// (trials of the pre-calculation) and after (the result); the workers read it and place in copies
// of what matters to them.
#pragma once

#include <vector>

#include "classic/netlist/Block.h"
#include "classic/netlist/Net.h"
#include "classic/netlist/Pin.h"

namespace korvel {

struct Netlist {
    Netlist() = default;
    // Copying would leave the copy's pointers in the original.
    Netlist(const Netlist&) = delete;
    Netlist& operator=(const Netlist&) = delete;
    Netlist(Netlist&&) = default;
    Netlist& operator=(Netlist&&) = default;
    ~Netlist() = default;

    std::vector<Block> blocks;
    std::vector<Block> terminals;
    std::vector<Net> nets;
    std::vector<Pin> pins;

    void unplaceAllNets() {
        for (Net& net : nets) {
            net.unplacePins();
        }
    }
};

}  // namespace korvel
