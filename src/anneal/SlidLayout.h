// A layout that is being annealed: a sequence pair, orientations, and positions that are kept from
// move to move. A packing alone says little of the wirelength where the region is roomy. So dies do
// not fall back to a corner after each move: they stay where they were as far as the new order lets
// them, and those that a move touches slide to where their nets want them. Only nets of dies that
// did move are measured again.
// Owned and used by one thread; allocates nothing once it has seen its largest change.
#pragma once

#include <array>
#include <vector>

#include "anneal/RandomStream.h"
#include "anneal/SequencePair.h"
#include "nets/NetModel.h"

namespace korvel {

class SlidLayout {
public:
    // The model must outlive the layout. All dies in orientation N.
    SlidLayout(const NetModel& nets, Region region);

    // A change: edit the orders, turn dies, name the dies that are to be placed anew; then arrange,
    // and keep or undo. Whatever is changed must be kept or undone before the next change.
    SequencePair& editOrders() { return orders; }
    void turn(unsigned die, Orient orient);
    // To be placed where its nets want it, as far as the dies leave room that are not released.
    void release(unsigned die);
    // Moves it by that much, inside the region; the others give way.
    void carry(unsigned die, Spot step);
    void carryTo(unsigned die, Spot centre);
    struct Most {
        double excess;
        double pushed;  // length of a legal layout before dies slide
    };
    // False if there is more than that; the change is to be undone then.
    bool arrange(RandomStream& random, Most most);
    double savedBySliding() const { return bySliding; }
    void keep();
    void undo();

    // All dies at these places, which agree with the orders and are inside the region; kept.
    void place(const SequencePair& sequences, const Placement& placement);

    // Wirelength of the nets that join bodies; those on one die are left out.
    double length() const { return axes[0].length + axes[1].length; }
    // By how much the dies need more than the region, in parts of its sides; 0 is legal.
    double excess() const;

    const SequencePair& sequences() const { return orders; }
    // Before the change at hand.
    const SequencePair& keptSequences() const { return keptOrders; }
    Orient orientation(unsigned die) const { return orients[die]; }
    Placement placement() const;
    unsigned dieNum() const { return nets.dieNum(); }
    // Where the die's nets would like its low corner, if nothing were in the way; without nets
    // it is content where it is.
    Spot wish(unsigned die) const;
    bool hasNets(unsigned die) const { return !bundlesOf[die].empty() || !wideOf[die].empty(); }
    Spot centre(unsigned die) const;
    bool isUpright(unsigned die) const { return axes[0].size[die] < axes[1].size[die]; }

private:
    using Local = PiecewiseLinear::Local;
    // Where a die stands among the members of the wide nets.
    struct Place {
        unsigned net;
        unsigned member;
    };
    struct Along {
        double side;
        double need, keptNeed;                      // the longest chain of dies, the side at least
        double length, keptLength;                  // of all nets
        std::vector<double> at, kept;               // by body, now and before the change
        std::vector<double> size;                   // by body
        std::vector<double> limit;                  // by die, how far it can give way
        std::vector<const PiecewiseLinear*> costs;  // by bundle, for the orientations
        std::vector<PinRange> reaches;  // by member of the wide nets, for the orientations
        std::vector<double> bundleCost, wideCost;
        std::vector<unsigned> slid;  // dies, since they were measured
    };

    Along& along(Axis axis) { return axes[axis]; }
    const Along& along(Axis axis) const { return axes[axis]; }
    void setOrientation(unsigned die, Orient orient);
    void endChange();

    template <Axis which, typename Put>
    void fromLowEnd(const Put& put);
    template <Axis which, typename Put>
    void fromHighEnd(const Put& put);
    template <Axis which>
    void findLimits(bool fromLow);
    template <Axis which>
    void makeRoom(bool fromLow);

    void placeReleased(unsigned die, Axis which, double wanted);
    void slideMoved();
    void slide(unsigned die, Axis which);
    using DieFlags = std::vector<char>;
    std::pair<double, double> slack(unsigned die, Axis which, const DieFlags& ignored) const;
    double bestBetween(unsigned die, Axis which, double low, double high) const;
    Local localAt(unsigned die, Axis which, double at) const;
    Local wideAt(Place place, const Along& axis, double at) const;

    double bundleLength(unsigned bundle, const Along& axis) const;
    double wideLength(unsigned net, const Along& axis) const;
    void measureAll();
    void measureMoved();
    void measureSlid();
    void measureNetsOf(unsigned die, unsigned axis);

    const NetModel& nets;
    SequencePair orders, keptOrders;
    std::vector<Orient> orients;  // by body
    std::array<Along, 2> axes;
    std::vector<std::vector<unsigned>> bundlesOf;  // by die
    std::vector<std::vector<Place>> wideOf;        // by die
    std::vector<unsigned> firstMembers;            // by wide net and one more, into:
    std::vector<unsigned> memberBodies;
    std::vector<double> wideCounts;  // by wide net

    // Of the change at hand.
    std::vector<unsigned> released;
    DieFlags isReleased, nobody;  // by die
    std::vector<std::pair<unsigned, Orient>> turnedFrom;
    struct Measured {
        unsigned axis;
        bool isWide;
        unsigned net;
        double before;
    };
    std::vector<Measured> journal;
    std::vector<unsigned> bundleSeen, wideSeen;  // stamps
    unsigned stamp = 0;
    double bySliding = 0.0;
    std::vector<double> chain;  // by rank in the lower order
    static constexpr int kMostTangents = 16;
    // Pushed dies that slide after a change, the first ones; more of them cost more than they gain.
    static constexpr unsigned kMostSlid = 12;
};

}  // namespace korvel
