// The changes that the annealer tries: of single dies, of chains of dies that share nets, and of
// groups. Some put dies near where their nets want them, others anywhere; all of them can be undone
// by others, so that every layout stays in reach.
// Owned and used by one thread.
#pragma once

#include "anneal/DieGroups.h"
#include "anneal/GroupMoves.h"
#include "anneal/MoveShares.h"
#include "anneal/SlidLayout.h"

namespace korvel {

class Moves {
public:
    // Layout and groups, which are of these nets, must outlive the moves.
    Moves(SlidLayout& layout, const NetModel& nets, const DieGroups& groups, Region region);

    // Makes one random change, to be arranged.
    void change(RandomStream& random);
    // The last change was kept, and made that much difference to what the annealer goes by.
    void wasKept(double difference) { shares.reward(difference); }
    // Forgets what kinds of changes were worth.
    void restart() { shares.restart(); }

private:
    std::vector<double> usualShares() const;
    void turnSomehow(unsigned die, RandomStream& random);
    void turnByAQuarter(unsigned die, RandomStream& random);
    void exchangeInOneOrder(unsigned die, RandomStream& random);
    void putBeside(unsigned die, unsigned other, RandomStream& random);
    void putChainBeside(unsigned die, unsigned other, RandomStream& random);
    void insertBeside(unsigned die, unsigned other, std::array<bool, 2> isBefore);
    void exchangeAndTurn(unsigned a, unsigned b, RandomStream& random);
    void exchange(unsigned a, unsigned b);
    void turnGroup(RandomStream& random);
    void putGroupBeside(RandomStream& random);
    void exchangeGroup(RandomStream& random);
    void takeOverGroup(RandomStream& random);
    unsigned anyOther(unsigned die, RandomStream& random) const;
    unsigned nearWish(unsigned die, RandomStream& random) const;

    SlidLayout& layout;
    const Region region;
    std::vector<std::vector<unsigned>> partners;  // by die, those that it alone shares nets with
    const DieGroups& groups;
    GroupMoves groupMoves;
    MoveShares shares;
};

}  // namespace korvel
