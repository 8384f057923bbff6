// Makes the random changes that the annealer tries: of single dies, of chains of dies that share
// nets, and of groups. Some put dies near where their nets want them, others anywhere; each can be
// reversed by others, so that every layout stays in reach.
// Owned and used by one thread.
#pragma once

#include "anneal/GroupMoves.h"
#include "anneal/MoveProbabilities.h"
#include "anneal/PreparedDesign.h"

namespace korvel {

class MoveGenerator {
public:
    // Both, which are of one design, must outlive the generator.
    MoveGenerator(Layout& layout, const PreparedDesign& prepared);

    // Makes one random change, to be arranged.
    void change(RandomStream& random);
    // The last change was kept, and the layout costs that much more; less if it is negative.
    void wasKept(double cost) { probabilities.reward(cost); }
    // Every kind of move is as likely as at first.
    void restart() { probabilities.restart(); }

private:
    std::vector<double> firstProbabilities() const;
    void turnSomehow(unsigned die, RandomStream& random);
    void exchangeInOneOrder(unsigned die, RandomStream& random);
    void putBeside(unsigned die, unsigned other, RandomStream& random);
    void putChainBeside(unsigned die, unsigned other, RandomStream& random);
    void exchangeAndTurn(unsigned a, unsigned b, RandomStream& random);
    void putGroupBeside(RandomStream& random);
    void exchangeGroup(RandomStream& random);
    void exchangeAlikeGroups(RandomStream& random);
    unsigned anyOther(unsigned die, RandomStream& random) const;
    unsigned nearPreferred(unsigned die, RandomStream& random) const;

    Layout& layout;
    const Region region;
    const DieGroups& groups;
    std::vector<std::vector<unsigned>> partners;  // by die: dies that it has two-body nets with
    GroupMoves groupMoves;
    MoveProbabilities probabilities;
};

}  // namespace korvel
