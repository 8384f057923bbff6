// Changes of a layout that keep a group of dies as it is in itself: shifted elsewhere, turned,
// exchanged for another. The layout is to be arranged afterwards.
// Owned and used by one thread; owns room for the work only.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "anneal/Layout.h"

namespace korvel {

class GroupMoves {
public:
    using Dies = std::span<const unsigned>;

    // The layout must outlive the moves.
    explicit GroupMoves(Layout& layout) : layout(layout), roles(layout.dieNum()) {}

    // Next to `other`, which is none of them: just before it or just after it in each order.
    void putBeside(Dies group, unsigned other, SequencePair::Sides isBefore);
    // Counterclockwise, about the middle of the group.
    void turn(Dies group, unsigned quarters);
    // Each goes to where the other one was; they share no die.
    void exchange(Dies a, Dies b);
    // The same with orientations: each die goes where the one at its place in the other group was,
    // which has the same size.
    void exchangeDieByDie(Dies a, Dies b);

private:
    enum class Role : unsigned char { Bystander, OfA, OfB };

    void turnByAQuarter(Dies group);
    void exchangeInOrder(SequencePair::Which which, Dies a, Dies b);
    void sortInto(std::vector<unsigned>& sorted, Dies group, SequencePair::Which which) const;
    void shift(Dies group, Spot from, Spot to);
    Spot centre(Dies group) const;

    Layout& layout;
    std::array<std::vector<unsigned>, 2> inOrder;  // the dies of a group, by order
    std::array<std::vector<unsigned>, 2> ranks;    // of these
    std::vector<unsigned> before;                  // an order
    std::vector<Role> roles;                       // by die
};

}  // namespace korvel
