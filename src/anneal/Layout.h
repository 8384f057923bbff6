// The layout that is being annealed: a sequence pair, orientations, and positions that are kept
// from move to move. A packing alone says little of the wirelength where the region is roomy. So
// dies are not packed into a corner after each move: they stay where they were as far as the new
// order lets them, and those that a move touches slide to where their nets want them. Once orders
// and orientations are given, the axes are independent of each other.
// Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <array>
#include <vector>

#include "anneal/NetCosts.h"
#include "anneal/Packing.h"
#include "anneal/RandomStream.h"

namespace korvel {

class Layout {
public:
    // What a cooling begins with or has ended with. A value.
    struct Snapshot {
        SequencePair orders;
        Placement placement;  // of a start, roughly: dies may overlap
    };

    // The model must outlive the layout. All dies in orientation N.
    Layout(const NetModel& nets, DieLimits limits);
    ~Layout() = default;
    Layout(const Layout&) = delete;  // the costs refer to the packings
    Layout& operator=(const Layout&) = delete;

    // A change: edit the orders, turn dies, name the dies that are to be placed anew; then arrange,
    // and keep or undo. Whatever is changed must be kept or undone before the next change.
    SequencePair& editOrders() { return orders; }
    void turn(unsigned die, Orient orient);
    void turnClockwise(unsigned die, unsigned quarters);
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
    void place(const Snapshot& snapshot);
    Snapshot snapshot() const { return {orders, placement()}; }

    // Wirelength of the nets that join bodies; those on one die are left out.
    double length() const { return costs[kX].length() + costs[kY].length(); }
    // By how much the dies need more than the region, in parts of its sides; 0 is legal.
    double overflow() const { return packings[kX].overflow() + packings[kY].overflow(); }

    const SequencePair& sequences() const { return orders; }
    // Before the change at hand.
    const SequencePair& keptSequences() const { return keptOrders; }
    Orient orientation(unsigned die) const { return orients[die]; }
    Placement placement() const;

    unsigned dieNum() const { return limits.dieNum(); }
    // Where the die's nets would like its low corner, if nothing were in the way; without nets
    // where it is.
    Spot preferredCorner(unsigned die) const {
        return {preferredCorner(die, kX), preferredCorner(die, kY)};
    }
    bool hasNets(unsigned die) const { return !netsOfDies[die].empty(); }
    Spot centre(unsigned die) const { return {packings[kX].centre(die), packings[kY].centre(die)}; }
    bool isUpright(unsigned die) const { return packings[kX].size(die) < packings[kY].size(die); }

private:
    double preferredCorner(unsigned die, Axis axis) const;
    void setOrientation(unsigned die, Orient orient);
    void placeReleased(Axis axis);
    void measureMoved(Axis axis);
    void slideMoved(Axis axis);
    void slide(unsigned die, Axis axis);
    double bestBetween(unsigned die, Axis axis, double low, double high) const;
    void endChange();

    const DieLimits limits;
    const NetsOfDies netsOfDies;
    SequencePair orders, keptOrders;
    std::vector<Orient> orients, keptOrients;  // by body
    std::array<Packing, kAxes> packings;
    std::array<NetCosts, kAxes> costs;
    const Packing::DieFlags ignoresNobody;  // by die

    // Of the change at hand.
    std::vector<unsigned> released;
    Packing::DieFlags isReleased;  // by die
    std::vector<unsigned> turned;  // dies, as often as they were
    std::vector<unsigned> slid;    // dies, along the axis at hand
    double saved = 0.0;
};

}  // namespace korvel
