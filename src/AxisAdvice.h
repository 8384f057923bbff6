// What one net advises, along one axis, about moving a group of its pins (a block's, or all placed
// ones toward the terminals). Horizontal and vertical advice follow the same rules, so everything
// here speaks of one axis: "forward" is right or up, "backward" left or down.
#pragma once

#include <algorithm>
#include <limits>

#include "FloatBelow.h"

namespace korvel {

struct AxisAdvice {
    bool forward = false;   // the net gets shorter if the group moves forward
    bool backward = false;  // ... backward
    bool stay = false;      // the group already sits where the net wants it
    // The group holds neither end of the net alone: the net's extent does not change while the
    // group moves within the free distances below.
    bool inside = false;
    float offset = 0.0F;  // signed step that the net asks for
    float freeForward = 0.0F;
    float freeBackward = 0.0F;
};

// Pins closer than this are at the same position.
inline constexpr float kSamePosition = floatBelow(0.01);

// Advice of a net of two pins: the group's pin should move by `offset` onto the other one.
inline AxisAdvice adviceForPair(float offset) {
    AxisAdvice advice;
    advice.offset = offset;
    advice.forward = offset > kSamePosition;
    advice.backward = offset < -kSamePosition;
    advice.stay = !advice.forward && !advice.backward;
    return advice;
}

// The ends of some pins along one axis. The starting values assume positions beyond 0.
struct AxisEnds {
    float min = std::numeric_limits<float>::max();
    float max = 0.0F;

    void add(float position) {
        min = std::min(min, position);
        max = std::max(max, position);
    }
};

// Advice of any other net. Feed it the net's placed pins in the net's order: the end marks depend
// on that order where pins lie within 0.1 of each other, on purpose.
class AxisScan {
public:
    void addOwn(float position);
    void addOther(float position);

    // All zero as long as no other pin was added.
    AxisAdvice advice() const;

private:
    AxisEnds own;
    AxisEnds other;
    bool hasOther = false;
    bool lowEnd = false;   // the group holds the net's lower end
    bool highEnd = false;  // ... the upper end
};

// The same advice as the scan's from the ends of the own and of the other pins (at least one),
// unless their order matters: then it is left alone and the answer is false. It matters where an
// own end lies within 0.1 inside of the other's, and where no own pin is beyond 0.
bool adviceFromEnds(const AxisEnds& own, const AxisEnds& other, AxisAdvice& advice);

}  // namespace korvel
