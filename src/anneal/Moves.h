// The changes that the annealer tries. Half of them put dies near where their nets want them, the
// others anywhere; all of them can be undone by others, so that every layout stays in reach.
#pragma once

#include "anneal/DieGroups.h"
#include "anneal/SlidLayout.h"

namespace korvel {

class Moves {
public:
    // Layout and nets must outlive the moves.
    Moves(SlidLayout& layout, const NetModel& nets, Region region);

    // Makes one random change, to be arranged. Needs two dies; with one it only turns.
    void change(RandomStream& random);

private:
    void turnSomehow(unsigned die, RandomStream& random);
    void turnByAQuarter(unsigned die, RandomStream& random);
    void exchangeAndTurn(unsigned a, unsigned b, RandomStream& random);
    void exchange(unsigned a, unsigned b);
    void exchangeInOneOrder(unsigned die, unsigned other, RandomStream& random);
    void putBeside(unsigned die, unsigned other, RandomStream& random);
    void putGroupBeside(unsigned die, unsigned other, RandomStream& random);
    void insertBeside(unsigned die, unsigned other, std::array<bool, 2> isBefore);
    void changeGroup(RandomStream& random);
    void putBeside(const DieGroups::Group& group, unsigned other, RandomStream& random);
    void turn(const DieGroups::Group& group, unsigned quarters);
    void turnByAQuarter(const DieGroups::Group& group);
    void exchangePlaces(const DieGroups::Group& a, const DieGroups::Group& b);
    void moveCentre(unsigned die, Spot from, Spot to);
    Spot centre(const DieGroups::Group& group) const;
    unsigned nearWish(unsigned die, RandomStream& random) const;

    SlidLayout& layout;
    Region region;
    const DieGroups groups;
    std::array<std::vector<unsigned>, 2> slots, members;  // of a group that is turned, by order
    std::vector<std::vector<unsigned>> partners;  // by die, those that it alone shares nets with
};

}  // namespace korvel
