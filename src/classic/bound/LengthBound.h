// A lower bound on the wirelength that the alignment of a node can reach, found without aligning
// it. Most nodes with all relations of their newest block are rejected because they are too long.
// The bound rejects nearly all of these at a fraction of the cost of their alignment, which would
// have rejected them as well: it makes the search faster and changes nothing that it finds.
//
// The idea is linear programming duality. Along each axis by itself:
// 1. The alignment slides the blocks, but keeps their relations and the area. So between any two
//    bodies (a body is a placed block, or all terminals, which stand still)
//        position(b) - position(a) >= gap(a, b).                                  [LengthGaps]
// 2. A net is at least as long as any two of its pins are apart. A cut chooses these pins for
//    every net; the sum of all nets is then at least a linear function of the positions.
//    [LengthCut]
// 3. The cut also writes that function as a constant plus a sum of differences of positions with
//    weights >= 0, the flow. So the length is at least
//        constant + sum of flow(a, b) * gap(a, b).
// The largest of these bounds is the least length that the gaps allow at all. But every cut gives a
// bound, and a cut that is good for one node is mostly good for others: what differs is the gaps
// and the constant. So each worker keeps the cuts that it has found (CutPool), tries them first,
// and only where none will do improves the best of them for the node (LengthAscent).
//
// The alignment computes in floats and has tolerances. What these can take away is taken off every
// gap (`slack`), every net (`rounding`) and the sum (`sumKept`), so the bound holds for the length
// as the program computes it. Lengths are in the unit of the netlist.
#pragma once

#include <vector>

#include "classic/bound/CutPool.h"
#include "classic/bound/LengthAscent.h"
#include "classic/bound/LengthGaps.h"
#include "classic/bound/LengthNets.h"
#include "classic/node/BBNode.h"

namespace korvel {

// Read-only after construction: all workers share it.
class LengthBound {
public:
    // For the first numBlocks blocks in their final order.
    LengthBound(const Netlist& netlist, unsigned numBlocks, Area area);

    // What one worker computes with, and the cuts that it has found. Belongs to its thread. The
    // bound must outlive it.
    class Workspace {
    public:
        explicit Workspace(const LengthBound& bound);

    private:
        friend class LengthBound;

        struct AxisSpace {
            LengthGaps gaps;
            std::vector<CutPool> pools;  // by number of placed blocks
        };
        // A node along one axis: its pool of cuts, and the best one that was tried.
        struct Trial {
            CutPool& pool;
            const BodyMatrix& gaps;
            double bound = 0.0;
            unsigned rank = 0;

            void tryCut(unsigned tried) {
                if (tried >= pool.size()) {
                    return;
                }
                const double triedBound = pool.value(tried, gaps);
                if (triedBound > bound) {
                    bound = triedBound;
                    rank = tried;
                }
            }
        };

        bool follow(const BBNode& node);
        Trial startTrial(Axis axis, const BBNode& node);

        AxisSpace axes[kAxes];
        LengthAscent ascent;
        LengthCut improved;  // the cut that the ascent works on
    };
    Workspace makeWorkspace() const { return Workspace(*this); }

    // The bound for a node with two blocks at least that fits the area, with its coordinates found;
    // 0 or less when none is known. The work ends when it has reached `enough`. For a node that
    // lacks relations of its newest block it holds for all nodes that this one can become; then
    // only a few known cuts are tried, since those nodes are asked for themselves.
    double leastLength(const BBNode& node, Workspace& space, double enough) const;

private:
    using Trial = Workspace::Trial;

    static bool tryCuts(Trial& x, Trial& y, double target, unsigned most);
    static void improve(Trial& trial, double target, Workspace& space);

    LengthNets nets;
    unsigned numBlocks;
    Area area;
    double rounding;  // at most this much of one gap, or of one net along one axis, is rounding
    double slack;     // at most this much can rounding and tolerances take off a gap
    double sumKept;   // rounding leaves at least this part of the sum of all nets
    bool usable;      // blocks have the sizes and indexes that the rest relies on
};

}  // namespace korvel
