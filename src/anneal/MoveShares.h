// How often each kind of move is tried. What is worth trying differs between designs and changes
// while they cool down: groups of dies early, single turns late. So each kind's share follows what
// its moves changed, on average, where they were kept, as proposed by S. Hustin and
// A. Sangiovanni-Vincentelli ("TIM, a new standard cell placement program based on the simulated
// annealing algorithm", 1987). Here it follows the square root of that, and never falls to nothing.
// Owned and used by one thread.
#pragma once

#include <vector>

#include "anneal/RandomStream.h"

namespace korvel {

class MoveShares {
public:
    // What the shares are like at first, to any scale; a kind without a share never gets one.
    explicit MoveShares(std::vector<double> initial);

    // Begins anew.
    void restart();
    // The kind of the next move.
    unsigned draw(RandomStream& random);
    // The move drawn last was kept and made that much difference, for better or worse.
    void reward(double difference);

private:
    void adapt();
    double worth(unsigned kind) const;

    std::vector<double> initial, shares;  // by kind; their sum is 1
    std::vector<double> tries, rewards;   // by kind; older ones count less
    unsigned last = 0;                    // kind
    unsigned sinceAdapted = 0;            // moves
};

}  // namespace korvel
