// Trials of two blocks side by side: what do their common nets cost at the least? The second block
// is shifted along the first to where the nets want it, and the nets are measured. Blocks are not
// placed for that: each trial computes the pins' positions where it needs them.
//
// Only nets that both blocks are on matter, and of these only the pins on the two blocks. But the
// very first shift is still looked for among all pins that the pass before has left in place, on
// purpose; then all nets are unplaced.
#pragma once

#include <array>
#include <vector>

#include "classic/alignment/StepVotes.h"
#include "classic/netlist/Netlist.h"

namespace korvel {

class PairTrials {
public:
    // Main thread only. The netlist must outlive the trials.
    PairTrials(Netlist& netlist, unsigned numBlocks, bool initialPlacement);

    // The pair that the following trials are about: i left of j.
    void start(unsigned i, unsigned j);

    // The cost of the first block immediately left of the second one.
    float cost(Orient leftOrient, Orient rightOrient);

private:
    // What a pin moves with. All else stays where it is.
    enum Side : unsigned { kElsewhere, kLeftBlock, kRightBlock, kSides };
    struct Spot {
        Point corner;
        unsigned orient = 0;
    };
    struct CommonPin {
        Side side;
        bool shifted;                                  // goes by the index of the shifted block
        std::array<Point, kUnmirroredOrients> places;  // from the corner
    };
    struct CommonNet {
        std::size_t begin;  // of pins
        std::size_t end;
        bool isPair;  // of two pins
        bool isComplete;
        double discount;  // of a net that goes on to other blocks
        float divisor;    // of one that does not
    };

    Side sideOf(const Pin& pin) const;
    void addNet(const Net& net);
    void addPin(const Pin& pin, Side side);
    double discountOf(const Net& net) const;
    Point coordOf(const CommonPin& pin) const;
    float wantedShift();
    offsetCalcReturn adviceOfPair(const CommonNet& net) const;
    offsetCalcReturn adviceOfOther(const CommonNet& net) const;
    float costOf(const CommonNet& net) const;
    float lengthOf(const CommonNet& net) const;

    Netlist& netlist;
    unsigned numBlocks;
    bool initialPlacement;
    bool isCleared = false;           // of what the pass before has left
    std::vector<unsigned> netBlocks;  // blocks with a pin on the net, by net
    std::vector<unsigned> pinBlocks;  // by pin of the netlist
    unsigned first = 0;
    unsigned second = 0;
    std::array<Spot, kSides> spots;
    std::vector<CommonPin> pins;
    std::vector<CommonNet> nets;
    StepVotes votes;
};

}  // namespace korvel
