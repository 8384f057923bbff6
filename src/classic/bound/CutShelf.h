// The cuts that one worker has learnt for one axis and number of placed blocks, the last useful one
// first. Nodes that come one after the other mostly have the same orientations, so what these fix
// in a cut's value is kept with the cut.
//
// Allocates nothing once it is full.
#pragma once

#include <cstdint>
#include <vector>

#include "classic/bound/LengthCut.h"
#include "classic/node/BBNode.h"

namespace korvel {

class CutShelf {
public:
    // More cost more to try than they save.
    static constexpr unsigned kMostCuts = 32;

    // `nets` must outlive the shelf. Gaps may be smaller by `slack`.
    CutShelf(const LengthNets& nets, Axis axis, unsigned placed, double slack);

    // Values are for nodes of these orientations from now on. One block at least.
    void turn(const BBNode& node);
    const AxisView& getView() const { return view; }

    unsigned size() const { return static_cast<unsigned>(order.size()); }
    double value(unsigned rank, const SlotMatrix& gaps) {
        Kept& one = kept[order[rank]];
        if (one.turn != currentTurn) {
            one.fixedPart = one.cut.fixedPart(view, slack);
            one.turn = currentTurn;
        }
        return one.fixedPart + one.cut.carriedPart(gaps);
    }

    // The cut of that rank becomes the first one.
    void promote(unsigned rank);
    // A copy of the cut of that rank, or a plain cut when the shelf is empty, to be improved.
    void copyTo(LengthCut& cut, unsigned rank) const;
    // The cut becomes the first one, for the last one if the shelf is full. `cut` then holds
    // something undefined.
    void keep(LengthCut& cut);

private:
    struct Kept {
        LengthCut cut;
        double fixedPart = 0.0;
        std::uint64_t turn = 0;  // that `fixedPart` was found in
    };

    const LengthNets& nets;
    double slack;
    std::uint64_t family = 0;     // of the last node
    std::vector<Orient> orients;  // of the blocks, in the current turn
    AxisView view;
    std::uint64_t currentTurn = 0;
    std::vector<Kept> kept;
    std::vector<unsigned> order;  // positions in `kept`
};

}  // namespace korvel
