// A lower bound on the wirelength that the alignment of a node can end with, found without doing
// it. Most block-complete nodes are rejected by their wirelength, and nearly all of those already
// by this bound, at a fraction of the cost. It decides nothing that the wirelength would not decide
// the same way.
//
// Why it is one: wherever the alignment slides the blocks, two blocks in a chain of relations stay
// apart by the (whole) extents along the chain, and no block leaves the area. So the displacement
// between any two blocks, or between a block and the terminals, is at least a known gap. Each net
// is at least as long as any two of its pins are apart; the sum of these distances is linear in the
// blocks' coordinates, and the gaps say how low it can get. What the alignment's tolerances and
// float rounding can take away is taken off every gap, every net and the sum.
//
// Which pins to take is learnt while searching: what was good for one node is tried on the next
// ones, and improved where that is not enough.
#pragma once

#include <vector>

#include "classic/bound/CutShelf.h"
#include "classic/bound/LengthAscent.h"
#include "classic/bound/LengthGaps.h"
#include "classic/bound/LengthNets.h"
#include "classic/node/BBNode.h"

namespace korvel {

class LengthBound {
public:
    // For the first numBlocks blocks in their final order. Read-only from then on.
    LengthBound(const Netlist& netlist, unsigned numBlocks, Area area);

    // What one worker computes with, and what it has learnt. The bound must outlive it.
    class Workspace {
    public:
        explicit Workspace(const LengthBound& bound);

    private:
        friend class LengthBound;

        struct AxisSpace {
            LengthGaps gaps;
            std::vector<CutShelf> shelves;  // by number of placed blocks
        };
        // Of the node at hand along one axis: its shelf, and the best cut that was tried.
        struct Trial {
            CutShelf& shelf;
            const SlotMatrix& gaps;
            double value = 0.0;
            unsigned rank = 0;

            void take(unsigned tried) {
                if (tried >= shelf.size()) {
                    return;
                }
                const double triedValue = shelf.value(tried, gaps);
                if (triedValue > value) {
                    value = triedValue;
                    rank = tried;
                }
            }
        };

        bool follow(const BBNode& node);
        Trial startTrial(Axis axis, const BBNode& node);

        AxisSpace axes[kAxes];
        LengthAscent ascent;
        LengthCut raised;
    };
    Workspace makeWorkspace() const { return Workspace(*this); }

    // The bound for a block-complete node with its coordinates found; 0 when none is known. More
    // than `enough` is not asked for. A node that lacks relations stands for all that it can
    // become, and what is known is only glanced at: those that are left are asked for themselves.
    double leastLength(const BBNode& node, Workspace& space, double enough) const;

private:
    using Trial = Workspace::Trial;

    static bool tryCuts(Trial& x, Trial& y, double target, unsigned most);
    static void raiseBoth(Trial& x, Trial& y, double target, Workspace& space);
    static void raise(Trial& trial, double target, Workspace& space);

    LengthNets nets;
    unsigned numBlocks;
    Area area;
    double rounding;  // what it can take off one displacement, or one net
    double slack;     // what tolerances and rounding can take off a gap
    double sumKept;   // part of the sum that rounding leaves for certain
    bool usable;
};

}  // namespace korvel
