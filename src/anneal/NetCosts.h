// What the nets of a layout cost along one axis, net by net. Costs are kept from move to move: only
// nets of dies that moved or turned are measured again, and a journal of their former costs undoes
// that. The cost of one die's nets is a convex function of its corner, so it has one lowest
// stretch, which sliding goes by.
// Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <vector>

#include "nets/NetModel.h"

namespace korvel {

// By die, the numbers of its nets: the bundles of the model first, its wide nets after them.
using NetsOfDies = std::vector<std::vector<unsigned>>;
NetsOfDies findNetsOfDies(const NetModel& nets);

class NetCosts {
public:
    using Local = PiecewiseLinear::Local;

    // `netsOfDies` are those of the model, `orients` and `corners`, along the axis, those of the
    // bodies. All four must outlive the costs.
    NetCosts(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis,
             const std::vector<Orient>& orients, const std::vector<double>& corners);

    // A die has another orientation. Its nets are to be measured afterwards.
    void turned(unsigned die);

    // Of all nets, as they were measured last.
    double length() const { return total; }
    // The cost of the die's nets if its corner were there, the others where they are.
    Local costAt(unsigned die, double corner) const;
    // Where between two corners of the die that is least, or closer to it than `enough`.
    double bestBetween(unsigned die, double low, double high, double enough) const;

    // Measures all nets from scratch; cannot be undone.
    void measureAll();
    // Dies named between two beginnings have each net measured once, however many of its dies are.
    void beginMeasuring() { ++stamp; }
    void measureNetsOf(unsigned die);
    void keep();
    void undo();

private:
    struct Member {
        unsigned body;
        PinRange pins;
    };
    struct Entry {
        unsigned net;
        double before;
    };

    Local bundleAt(unsigned bundle, unsigned die, double corner) const;
    Local wideAt(unsigned net, unsigned die, double corner) const;
    double measured(unsigned net) const;

    const NetModel& nets;
    const NetsOfDies& netsOfDies;
    const unsigned bundleNum;
    const Axis axis;
    const std::vector<Orient>& orients;              // by body
    const std::vector<double>& corners;              // by body
    std::vector<const PiecewiseLinear*> bundleCost;  // by bundle, for the orientations
    std::vector<std::vector<Member>> members;        // by wide net, likewise

    // By net.
    std::vector<double> costs;
    std::vector<unsigned> stamps;  // when it was measured last
    unsigned stamp = 0;
    std::vector<Entry> journal;  // since the last keep or undo
    double total = 0.0;
    double keptTotal = 0.0;
};

}  // namespace korvel
