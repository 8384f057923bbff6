// Finds a cycle of positive gain in a graph that has an arc between every two of its bodies, by
// relaxing arcs until the longest paths run in a circle (R. Bellman, "On a routing problem",
// Quarterly of Applied Mathematics 16, 1958).
//
// Belongs to one thread. Allocates nothing once it has seen the largest graph.
#pragma once

#include <vector>

#include "classic/bound/BodyMatrix.h"

namespace korvel {

class CycleSearch {
public:
    // The bodies of a cycle, each before the next one and the last one before the first; empty if
    // none was found. `gains` are those of the arcs; minus infinity from a body to itself, and in
    // the lanes of a row beyond the bodies.
    const std::vector<unsigned>& find(const BodyMatrix& gains);

private:
    void clear(unsigned bodyNum);
    unsigned relaxAll(const BodyMatrix& gains);
    bool leadsToCycle(unsigned body, unsigned bodyNum);
    std::int32_t successor(unsigned body) const { return successors[body / kLanes][body % kLanes]; }

    // By body: the gain of the best path from it that was found so far, at least 0 for staying, and
    // where that path goes next.
    std::vector<Quad> potentials;
    std::vector<QuadMask> successors;
    std::vector<unsigned> cycle;
};

}  // namespace korvel
