// One axis of a layout: where the dies lie and what their nets cost there. Dies slide here: the
// cost of a die's nets is convex along an axis, so between its neighbours it has one lowest
// stretch. Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <span>
#include <vector>

#include "anneal/NetCosts.h"
#include "anneal/Packing.h"

namespace korvel {

class AxisLayout {
public:
    // Nets and their index must outlive the layout. All dies at 0, in orientation N.
    AxisLayout(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis, double side);
    AxisLayout(const AxisLayout&) = delete;  // the costs refer to the packing

    // Where the die's nets cost least inside the region, whatever lies there; where it is, if it
    // has no nets.
    double preferredCorner(unsigned die) const;
    // Inside the region.
    void shift(unsigned die, double step);
    void setOrientation(unsigned die, const std::vector<Orient>& orientsOfBodies);

    // The steps after a change, in this order. `released` dies go where their nets want them, as
    // far as the others leave room; then dies are pushed apart.
    void findLimits(const SequencePair& orders, Packing::Sweep sweep) {
        packing.findLimits(orders, sweep);
    }
    void placeReleased(const SequencePair& orders, std::span<const unsigned> released,
                       const Packing::DieFlags& isReleased);
    void pushApart(const SequencePair& orders, Packing::Sweep sweep) {
        packing.pushApart(orders, sweep);
    }
    // Nets of dies that are not where they were kept, and of `turned` ones.
    void measureMoved(std::span<const unsigned> turned);
    // The released dies, and the first of the pushed ones; measures them.
    void slideMoved(const SequencePair& orders, std::span<const unsigned> released);

    // All dies at these corners, which are taken for legal; kept.
    void place(const std::vector<double>& cornersOfDies);
    void keep();
    void undo();

    double length() const { return costs.length(); }
    double overflow() const { return packing.overflow(); }
    double corner(unsigned die) const { return packing.corner(die); }
    double centre(unsigned die) const { return packing.centre(die); }
    double size(unsigned die) const { return packing.size(die); }

private:
    void slide(const SequencePair& orders, unsigned die);
    double bestBetween(unsigned die, double low, double high) const;
    unsigned dieNum() const { return nets.dieNum(); }

    const NetModel& nets;
    const NetsOfDies& netsOfDies;
    const Axis axis;
    Packing packing;
    NetCosts costs;
    std::vector<unsigned> slid;             // dies, since they were measured
    const Packing::DieFlags ignoresNobody;  // by die
};

}  // namespace korvel
