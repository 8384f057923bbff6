// One copy of the benchmark's netlist: blocks, terminals, nets and pins, each in contiguous memory
// and referring to one another by pointers within the copy. Placing and measuring blocks changes
// it, so every worker has its own.
#pragma once

#include <vector>

#include "Block.h"
#include "Net.h"
#include "Pin.h"

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
