// What one net advises about moving a group of its pins (a block's, or all placed ones toward the
// terminals). Horizontal and vertical advice follow the same rules, and so do advice to move
// forward (right, up) and backward (left, down): everything is said four times at once, by lane.
#pragma once

#include "base/FloatBelow.h"
#include "base/Quad.h"

namespace korvel {

// Pins closer than this are at the same position.
inline constexpr float kSamePosition = floatBelow(0.01);
// Another pin beyond the group's end takes the end from it only by more than this.
inline constexpr float kClearlyApart = floatBelow(0.1);

struct offsetCalcReturn {
    // The net gets shorter if the group moves that way, and by how much it should move.
    QuadMask moves{};
    Quad steps{};
    // The group holds neither end of the net along that axis alone: the net's extent does not
    // change while the group moves that way by no more than the free distance.
    QuadMask inside{};
    Quad freeDistances{};
    // The group already sits where the net wants it along that axis.
    QuadMask stays{};
};

// Advice of a net of two pins: the group's pin should move by `offset` onto the other one.
inline offsetCalcReturn adviceForPair(Quad offset) {
    offsetCalcReturn advice;
    advice.moves = offset > allLanes(kSamePosition);
    advice.steps = offset;
    advice.stays = ~(advice.moves | opposite(advice.moves));
    return advice;
}

// Advice to stay whatever the positions.
inline offsetCalcReturn adviceToStay() {
    offsetCalcReturn advice;
    advice.stays = allLanes(-1);
    return advice;
}

// Advice of any other net. Feed it the net's placed pins in the net's order: who holds an end
// depends on that order where pins lie within 0.1 of each other, on purpose. Consecutive pins of
// the same side may be added as one, by the smallest of each lane: of such pins only the outermost
// pin can win or lose an end. Coordinates are assumed not to be negative.
class NetScan {
public:
    void addOwn(Quad position) {
        const QuadMask further = position < own;
        ownsEnd |= further & (other >= position);
        own = smaller(position, own);
    }

    void addOther(Quad position) {
        const QuadMask takes =
            (position < other) & (position < own) & (own - position > allLanes(kClearlyApart));
        ownsEnd &= ~takes;
        other = smaller(position, other);
    }

    // To be asked only when another pin was added.
    offsetCalcReturn advice() const {
        // By how much the other pins reach beyond the group, to the left, below, right and above;
        // `ends` are the group's in these directions.
        const Quad gap = own - other;
        const QuadMask ends = ownsEnd;
        const QuadMask otherIsWider = other + opposite(other) < own + opposite(own);

        offsetCalcReturn advice;
        // Alone at one end: toward the other pins.
        advice.moves = ends & ~opposite(ends);
        advice.steps = choose(otherIsWider, -gap, opposite(gap));
        // Between the net's ends, or around all of its other pins.
        advice.inside = ~(ends ^ opposite(ends));
        advice.freeDistances = choose(ends, -gap, opposite(gap));
        const QuadMask same = (gap <= allLanes(kSamePosition)) & (-gap <= allLanes(kSamePosition));
        advice.stays = same & opposite(same);
        return advice;
    }

private:
    static constexpr float kMost = std::numeric_limits<float>::max();

    // The ends of the group's and of the other pins; by lane the smallest x, the smallest y, the
    // largest x, the largest y (negated).
    Quad own = {kMost, kMost, 0.0F, 0.0F};
    Quad other = {kMost, kMost, 0.0F, 0.0F};
    QuadMask ownsEnd{};
};

}  // namespace korvel
