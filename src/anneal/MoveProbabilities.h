// How likely each kind of move is to be tried. What is worth trying differs between designs and
// changes while they cool down: groups of dies early, turns of single dies late. So a kind's
// probability follows its quality, which is how much its moves changed the cost where they were
// kept, by move tried, as proposed by S. Hustin and A. Sangiovanni-Vincentelli ("TIM, a new
// standard cell placement program based on the simulated annealing algorithm", 1987). Here it
// follows the square root of that, and never falls to nothing.
// Owned and used by one thread.
#pragma once

#include <vector>

#include "anneal/RandomStream.h"

namespace korvel {

class MoveProbabilities {
public:
    // The first probabilities, to any scale; a kind that begins with 0 keeps it.
    explicit MoveProbabilities(std::vector<double> initial);

    // Begins anew.
    void restart();
    // The kind of the next move.
    unsigned draw(RandomStream& random);
    // The move drawn last was kept and made that much difference, for better or worse.
    void reward(double difference);

private:
    void adapt();
    double quality(unsigned kind) const;

    std::vector<double> initial, probabilities;  // by kind; their sum is 1
    std::vector<double> tries, rewards;          // by kind; older ones count less
    unsigned last = 0;                           // kind
    unsigned sinceAdapted = 0;                   // moves
};

}  // namespace korvel
