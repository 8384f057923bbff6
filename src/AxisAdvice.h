// What one net advises, along one axis, about moving a group of its pins (a block's, or all placed
// ones toward the terminals). Horizontal and vertical advice follow the same rules, so everything
// here speaks of one axis: "forward" is right or up, "backward" left or down.
#pragma once

#include <limits>

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

// Advice of a net of two pins: the group's pin should move by `offset` onto the other one.
AxisAdvice adviceForPair(float offset);

// Advice of any other net. Feed it the net's placed pins in the net's order: the end marks depend
// on that order where pins lie within 0.1 of each other, on purpose.
class AxisScan {
public:
    void addOwn(float position);
    void addOther(float position);

    // All zero as long as no other pin was added.
    AxisAdvice advice() const;

private:
    float ownMin = std::numeric_limits<float>::max();
    float ownMax = 0.0F;
    float otherMin = std::numeric_limits<float>::max();
    float otherMax = 0.0F;
    bool lowEnd = false;   // the group holds the net's lower end
    bool highEnd = false;  // ... the upper end
    bool hasOther = false;
};

}  // namespace korvel
