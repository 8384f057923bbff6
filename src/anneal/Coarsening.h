// A smaller design that shows how a large one is best arranged on the whole: satellites, which are
// dies that have nets to one other die only, their host, and are smaller than it, are left out, and
// the host is as much larger. The coarse design is annealed in a fraction of the time, and its
// layouts are starts for the whole.
// Filled once and never changed.
#pragma once

#include <vector>

#include "anneal/Layout.h"
#include "nets/NetModel.h"

namespace korvel {

class Coarsening {
public:
    // The nets are those of the design. Neither is referred to afterwards.
    Coarsening(const Design& design, const NetModel& nets);

    // Whether enough dies are left out.
    bool isWorthwhile() const;
    const Design& coarse() const { return smaller; }
    // A layout of the coarse design as a start for the whole one: the dies left out are around
    // those that they hang on in both orders, and lie in their middle.
    Layout::Snapshot expand(const Layout::Snapshot& start) const;

private:
    struct Host {
        unsigned die;
        double margin;  // by which its sides are longer, to make room for:
        std::vector<unsigned> satellites;
    };

    void findHosts(const std::vector<unsigned>& hostOfDies);
    void keepNets(const Design& design);

    std::vector<Extent> sizes;       // by die
    std::vector<Host> hosts;         // by coarse die; without satellites it is any die kept
    std::vector<unsigned> coarseOf;  // by die, the coarse one
    Design smaller;
};

}  // namespace korvel
