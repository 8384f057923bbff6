// What the nets of a layout cost along one axis, net by net. Costs are kept from move to move: only
// nets of dies that moved or turned are measured again, and a journal of their former costs undoes
// that. The cost of one die's nets is a convex function of its corner; sliding goes by it.
// Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <vector>

#include "nets/NetModel.h"

namespace korvel {

// Which nets are on which die. The same for both axes. Filled once and never changed.
struct NetsOfDies {
    // Where a die stands among the members of the wide nets.
    struct Membership {
        unsigned net;
        unsigned member;
    };

    explicit NetsOfDies(const NetModel& nets);

    bool hasNets(unsigned die) const { return !bundles[die].empty() || !wide[die].empty(); }

    std::vector<std::vector<unsigned>> bundles;  // by die
    std::vector<std::vector<Membership>> wide;   // by die
    std::vector<unsigned> firstMembers;          // by wide net and one more, into:
    std::vector<unsigned> memberBodies;
};

class NetCosts {
public:
    using Local = PiecewiseLinear::Local;

    // All dies in orientation N. `corners` are those of the bodies, along the axis. All three must
    // outlive the costs.
    NetCosts(const NetModel& nets, const NetsOfDies& netsOfDies, Axis axis,
             const std::vector<double>& corners);

    // A die has another orientation; `orients` are those of all bodies. Its nets are to be measured
    // afterwards.
    void setOrientation(unsigned die, const std::vector<Orient>& orients);

    // Of all nets, as they were measured last.
    double length() const { return total; }
    // The cost of the die's nets if its corner were there, the others where they are.
    Local costAt(unsigned die, double corner) const;

    // Measures all nets from scratch; cannot be undone.
    void measureAll();
    // Dies named between two beginnings have each net measured once, however many of its dies are.
    void beginMeasuring() { ++stamp; }
    void measureNetsOf(unsigned die);
    void keep();
    void undo();

private:
    enum class Table : bool { Bundles, Wide };
    struct Entry {
        Table table;
        unsigned net;
        double before;
    };

    PinRange rangeOf(unsigned net, unsigned leftOut) const;
    Local wideAt(NetsOfDies::Membership membership, double corner) const;
    double bundleLength(unsigned bundle) const;
    double wideLength(unsigned net) const;
    void replace(Table table, unsigned net, double length);
    std::vector<double>& costs(Table table) {
        return table == Table::Bundles ? bundleCosts : wideCosts;
    }

    const NetModel& nets;
    const NetsOfDies& netsOfDies;
    const Axis axis;
    const std::vector<double>& corners;              // by body
    std::vector<const PiecewiseLinear*> bundleCost;  // by bundle, for the orientations
    std::vector<PinRange> memberPins;                // by member of the wide nets, likewise

    std::vector<double> bundleCosts, wideCosts;
    double total = 0.0;
    double keptTotal = 0.0;
    std::vector<Entry> journal;  // since the last keep or undo
    // When a net was measured last.
    std::vector<unsigned> bundleStamps, wideStamps;
    unsigned stamp = 0;
};

}  // namespace korvel
