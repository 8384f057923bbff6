// Changes of a layout that keep a group of dies as it is in itself: carried elsewhere, turned,
// exchanged for another. Owns room for the work only.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "anneal/SlidLayout.h"

namespace korvel {

class GroupMoves {
public:
    using Dies = std::span<const unsigned>;

    // The layout must outlive the moves.
    explicit GroupMoves(SlidLayout& layout) : layout(layout), roles(layout.dieNum()) {}

    // Side by side with `other`, which is none of them: before it or after it in each order.
    void putBeside(Dies group, unsigned other, std::array<bool, 2> isBefore);
    // To the left, about the middle of the group.
    void turn(Dies group, unsigned quarters);
    // Each goes to where the other one was; they share no die.
    void exchange(Dies a, Dies b);
    // Each takes the places and orientations of the other one, die by die. Dies that correspond are
    // of equal size.
    void takeOver(Dies a, Dies b);

private:
    enum class Role : unsigned char { Bystander, OfA, OfB };

    void turnByAQuarter(Dies group);
    void exchangeInOrder(SequencePair::Which which, Dies a, Dies b);
    void sortInto(std::vector<unsigned>& sorted, Dies group, SequencePair::Which which) const;
    void carry(Dies group, Spot from, Spot to);
    Spot centre(Dies group) const;

    SlidLayout& layout;
    std::array<std::vector<unsigned>, 2> inOrder;  // the dies of a group, by order
    std::array<std::vector<unsigned>, 2> ranks;    // of these
    std::vector<unsigned> before;                  // an order
    std::vector<Role> roles;                       // by die
};

}  // namespace korvel
