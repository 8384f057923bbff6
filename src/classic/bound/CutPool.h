// The cuts that one worker has found for one axis and one number of placed blocks. They are tried
// on every further node with as many blocks. The one that was useful last comes first.
//
// Nodes that come one after the other mostly have the same orientations, so the constant of each
// cut is kept until the orientations change.
//
// Belongs to one thread. Allocates nothing once it is full.
#pragma once

#include <cstdint>
#include <vector>

#include "classic/bound/LengthCut.h"
#include "classic/node/BBNode.h"

namespace korvel {

class CutPool {
public:
    // Trying more costs more than it saves.
    static constexpr unsigned kMostCuts = 32;

    // `nets` must outlive the pool. `slack` is that of LengthCut::constant.
    CutPool(const LengthNets& nets, Axis axis, unsigned placed, double slack);

    // Turns to a node with that many placed blocks, one at least: all values are for its
    // orientations from now on.
    void startNode(const BBNode& node);
    const OrientedNets& getOrientedNets() const { return oriented; }

    unsigned size() const { return static_cast<unsigned>(order.size()); }
    // The bound that the cut of that rank gives for the node.
    double value(unsigned rank, const BodyMatrix& gaps) {
        Entry& entry = entries[order[rank]];
        if (entry.orientsNumber != orientsNumber) {
            entry.constant = entry.cut.constant(oriented, slack);
            entry.orientsNumber = orientsNumber;
        }
        return entry.constant + entry.cut.flowLength(gaps);
    }

    // Puts the cut of that rank first.
    void moveToFront(unsigned rank);
    // Copies the cut of that rank; a cut without slopes if the pool is empty.
    void copyTo(LengthCut& cut, unsigned rank) const;
    // Puts the cut first, in place of the last one if the pool is full. Leaves `cut` undefined.
    void add(LengthCut& cut);

private:
    struct Entry {
        LengthCut cut;
        double constant = 0.0;
        std::uint64_t orientsNumber = 0;  // when `constant` was computed; 0 is never
    };

    const LengthNets& nets;
    double slack;
    std::vector<Orient> orients;      // of the node's blocks
    std::uint64_t orientsNumber = 0;  // counts the changes of `orients`
    OrientedNets oriented;
    std::vector<Entry> entries;
    std::vector<unsigned> order;  // positions in `entries`, by rank
};

}  // namespace korvel
