// The layout that is being annealed: a sequence pair, orientations, and positions that are kept
// from move to move. A packing alone says little of the wirelength where the region is roomy. So
// dies are not packed into a corner after each move: they stay where they were as far as the new
// order lets them, and those that a move touches slide to where their nets want them. Only nets of
// dies that did move are measured again.
//
// The axes are independent of each other once orders and orientations are given (AxisLayout); here
// a change goes through both, and is kept or undone in both.
// Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <array>
#include <vector>

#include "anneal/AxisLayout.h"
#include "anneal/RandomStream.h"
#include "anneal/StartLayout.h"

namespace korvel {

class Layout {
public:
    // The model must outlive the layout. All dies in orientation N.
    Layout(const NetModel& nets, Region region);

    // A change: edit the orders, turn dies, name the dies that are to be placed anew; then arrange,
    // and keep or undo. Whatever is changed must be kept or undone before the next change.
    SequencePair& editOrders() { return orders; }
    void turn(unsigned die, Orient orient);
    // To be placed where its nets want it, as far as the dies leave room that are not released.
    void release(unsigned die);
    // Moves it by that much, inside the region; the others give way.
    void shift(unsigned die, Spot step);
    void shiftCentreTo(unsigned die, Spot centre);

    // What arranging gives up at.
    struct Limits {
        double overflow;
        double pushedLength;  // of a legal layout before dies slide
    };
    // False if the layout is beyond a limit; the change is to be undone then.
    bool arrange(RandomStream& random, Limits limits);
    // By how much sliding shortened the layout that was arranged last.
    double savedBySliding() const { return saved; }
    void keep();
    void undo();

    // All dies at these places, which are taken for legal until the next arranging; kept.
    void place(const SequencePair& sequences, const Placement& placement);

    // Wirelength of the nets that join bodies; those on one die are left out.
    double length() const { return axes[kX].length() + axes[kY].length(); }
    // By how much the dies need more than the region, in parts of its sides; 0 is legal.
    double overflow() const { return axes[kX].overflow() + axes[kY].overflow(); }

    const SequencePair& sequences() const { return orders; }
    // Before the change at hand.
    const SequencePair& keptSequences() const { return keptOrders; }
    Orient orientation(unsigned die) const { return orients[die]; }
    Placement placement() const;
    StartLayout snapshot() const { return {orders, placement()}; }

    unsigned dieNum() const { return static_cast<unsigned>(isReleased.size()); }
    // Where the die's nets would like its low corner, if nothing were in the way; without nets
    // where it is.
    Spot preferredCorner(unsigned die) const {
        return {axes[kX].preferredCorner(die), axes[kY].preferredCorner(die)};
    }
    bool hasNets(unsigned die) const { return netsOfDies.hasNets(die); }
    Spot centre(unsigned die) const { return {axes[kX].centre(die), axes[kY].centre(die)}; }
    bool isUpright(unsigned die) const { return axes[kX].size(die) < axes[kY].size(die); }

private:
    void setOrientation(unsigned die, Orient orient);
    void endChange();

    const NetsOfDies netsOfDies;
    SequencePair orders, keptOrders;
    std::vector<Orient> orients;  // by body
    std::array<AxisLayout, kAxes> axes;

    // Of the change at hand.
    std::vector<unsigned> released;
    Packing::DieFlags isReleased;       // by die
    std::vector<unsigned> turned;       // dies, as often as they were
    std::vector<Orient> orientsBefore;  // by place in `turned`
    double saved = 0.0;
};

}  // namespace korvel
