// When annealing takes the time for exact coordinates.

#include <gtest/gtest.h>

#include "anneal/LevelAnnealer.h"
#include "support/random_designs.h"

namespace korvel::test {
namespace {

// Layouts about as short as the best one are refined long before the routine one in a hundred moves
// per die; whoever listens hears of a placement then.
TEST(LevelAnnealer, GoodLayoutsAreRefinedAtOnce) {
    const Design design = RandomDesigns(9).make({8, 4, 40, 4, 8, 20, 1.0});
    const PreparedDesign prepared(design, {40, 40});
    for (unsigned seed = 1; seed <= 5; ++seed) {
        unsigned told = 0;
        LevelAnnealer annealer(prepared, RandomStream(seed, 1), CoolingSchedule::Kind::Usual,
                               [&](const Placement&) { ++told; });
        annealer.advance(400, 0.0);
        EXPECT_GT(told, 0U) << "seed " << seed;
    }
}

}  // namespace
}  // namespace korvel::test
