// The nets of two pins, grouped by the two bodies that they join: whatever their pins' places, all
// nets of a group depend on the same two corners and orientations.
#pragma once

#include <vector>

#include "classic/netlist/Bodies.h"

namespace korvel {

struct PairGroup {
    // A net's two pins.
    struct Joint {
        const Pin* first;
        const Pin* second;
    };
    unsigned first;   // body
    unsigned second;  // body
    // What the pins say they lie on. It is the block's number, but for two oddities of input: in a
    // netlist of separate pieces blocks may share an index, and a terminal may have a block's one.
    // Beyond the blocks all indexes are one.
    unsigned firstIndex;
    unsigned secondIndex;
    std::vector<Joint> joints;  // in the order of the nets
};

// Declared with two pins, and has two.
bool isPair(const Net& net);

// The groups in the order of their first nets, without nets on blocks that are never placed. The
// smaller body comes first, unless both pins have the same index: then the net's first pin does.
std::vector<PairGroup> groupPairs(const Netlist& netlist, const Bodies& bodies);

}  // namespace korvel
