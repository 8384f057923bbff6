// The changes that the annealer tries. Half of them put dies near where their nets want them, the
// others anywhere; all of them can be undone by others, so that every layout stays in reach.
#pragma once

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
    unsigned nearWish(unsigned die, RandomStream& random) const;

    SlidLayout& layout;
    Region region;
    std::vector<std::vector<unsigned>> partners;  // by die, those that it alone shares nets with
};

}  // namespace korvel
