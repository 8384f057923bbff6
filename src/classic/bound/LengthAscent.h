// Improves a cut for one node until it is good enough or no better one is found.
//
// The best cut is a maximum of a flow problem, which is the linear programming dual of finding the
// positions of least length under the gaps. So it is approached as such problems are: as long as
// the residual graph holds a cycle of positive gain, going around it makes the bound larger
// (M. Klein, "A primal method for minimal cost flows", Management Science 14, 1967).
//
// The example of LengthCut.h, from a cut without slopes, of the bound 0:
//   1 -> 2  AddFlow of one unit         gap(1, 2) = 10
//   2 -> 1  RaiseSlope of P from 0 to 1             10    bound 20
//   0 -> 1  MoveLowEnd of Q             50 -  0  =  50
//   1 -> 2  AddFlow of one unit         gap(1, 2) = 10
//   2 -> 0  MoveHighEnd of Q            10 - 50  = -40    bound 40
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <vector>

#include "classic/bound/CycleSearch.h"
#include "classic/bound/ResidualGraph.h"

namespace korvel {

class LengthAscent {
public:
    // As for ResidualGraph.
    LengthAscent(const LengthNets& nets, double slack, double negligible)
        : slack(slack), negligible(negligible), graph(nets, slack, negligible) {}

    // Returns the bound that the cut then gives for the node with these gaps. Stops when it has
    // reached `target`.
    double raise(LengthCut& cut, const OrientedNets& node, const BodyMatrix& gaps, double target);

private:
    bool findCycle();
    double followCycle();

    double slack;
    double negligible;
    ResidualGraph graph;
    CycleSearch search;
    std::vector<ResidualGraph::Arc> cycle;
};

}  // namespace korvel
