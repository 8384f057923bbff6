// The nets of a placed design gathered into what a picture shows of them: one bundle for each pair
// of dies, and one for each terminal and die.
#pragma once

#include <vector>

#include "design/Placement.h"

namespace korvel {

struct Bundle {
    unsigned first;   // a die, unless the nets join terminals only
    unsigned second;  // a die, or a terminal
    std::size_t netNum = 0;
    std::size_t fartherNetNum = 0;  // of these, those that go on to other dies
    // A net of k dies counts 2 / k for each of its pairs, k - 1 in all: so many wires join k dies.
    double weight = 0.0;
    Spot from;  // the middle of its pins on the first
    Spot to;    // and on the second
};

struct Bundles {
    std::vector<Bundle> betweenDies;  // by falling weight
    std::vector<Bundle> toTerminals;
    std::size_t wideNetNum = 0;  // in no bundle
};

// Clock and supply run to many dies and tell nothing of which belong together. Nets of more dies
// than these are in no bundle between dies.
inline constexpr std::size_t kMostBundledDies = 24;

Bundles bundlesOf(const Design& design, const Placement& placement);

}  // namespace korvel
