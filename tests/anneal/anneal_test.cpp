// The annealer: what it finds on designs small enough to try everything, and what it promises.
#include <cmath>
#include <limits>
#include <thread>

#include "anneal/Annealer.h"
#include "anneal/Moves.h"
#include "anneal/SlidLayout.h"
#include "exact/ExactCoordinates.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::isLegal;
using test::RandomDesigns;

constexpr double kSlack = 1e-9;
constexpr double kAnything = std::numeric_limits<double>::infinity();
constexpr auto kSoon = std::chrono::milliseconds(150);

std::optional<Found> annealed(const Design& design, Region region, const AnnealOptions& options) {
    Incumbent incumbent(design, region);
    AnnealProgress progress;
    anneal(design, region, options, incumbent, std::stop_source().get_token(), progress);
    return incumbent.best();
}

// The least wirelength over all relations and orientations; infinity if nothing fits.
class AllRelations {
public:
    AllRelations(const Design& design, Region region)
        : design(design),
          solver(design, region),
          relations(design.dies.size()),
          orients(design.dies.size()) {}

    double shortest() {
        turnFrom(0);
        return best;
    }

private:
    void turnFrom(unsigned die) {
        if (die == orients.size()) {
            relateFrom(0, 1);
            return;
        }
        for (const Orient orient : test::kNotMirrored) {
            orients[die] = orient;
            turnFrom(die + 1);
        }
    }

    void relateFrom(unsigned a, unsigned b) {
        if (b == orients.size()) {
            if (const auto found = solver.solve(relations, orients)) {
                best = std::min(best, wirelength(design, *found));
            }
            return;
        }
        for (unsigned topology = 0; topology < 4; ++topology) {
            relations.set(a, b, static_cast<Topology>(topology));
            relateFrom(a + 1 < b ? a + 1 : 0, a + 1 < b ? b : b + 1);
        }
    }

    const Design& design;
    CoordinateSolver solver;
    Relations relations;
    std::vector<Orient> orients;
    double best = std::numeric_limits<double>::infinity();
};

TEST(Annealer, ReachesTheOptimumOfSmallDesigns) {
    RandomDesigns random(11);
    int placed = 0;
    for (int round = 0; round < 5; ++round) {
        const Design design = random.make({3, 3, 8, 4, 5, 12, 1.0});
        const Region region{random.number(5, 9) * 1.0, random.number(5, 9) * 1.0};
        const double best = AllRelations(design, region).shortest();
        AnnealOptions options;
        options.seed = static_cast<unsigned>(round);
        options.iterations = 90000;
        const auto found = annealed(design, region, options);
        ASSERT_EQ(found.has_value(), std::isfinite(best)) << "round " << round;
        if (found) {
            ++placed;
            EXPECT_TRUE(isLegal(design, region, found->placement, kSlack));
            EXPECT_NEAR(found->wirelength(), best, 1e-9) << "round " << round;
        }
    }
    EXPECT_GT(placed, 1);
    EXPECT_LT(placed, 5);
}

TEST(Annealer, SameSeedSameResult) {
    const Design design = RandomDesigns(5).make({9, 6, 40, 4, 8, 20, 1.0});
    const Region region{22, 20};
    for (const unsigned threads : {1U, 2U}) {
        AnnealOptions options;
        options.threads = threads;
        options.iterations = 6000;
        options.seed = 3;
        const auto first = annealed(design, region, options);
        const auto second = annealed(design, region, options);
        ASSERT_TRUE(first && second);
        EXPECT_TRUE(isLegal(design, region, first->placement, kSlack));
        EXPECT_DOUBLE_EQ(first->wirelength(), wirelength(design, first->placement));
        for (unsigned die = 0; die < 9; ++die) {
            EXPECT_EQ(first->placement[die].orient, second->placement[die].orient);
            EXPECT_EQ(first->placement[die].at.x, second->placement[die].at.x);
            EXPECT_EQ(first->placement[die].at.y, second->placement[die].at.y);
        }
    }
}

TEST(Annealer, OneDieWithoutNetsIsPlaced) {
    Design design;
    design.dies.push_back({"long", {9, 2}});
    AnnealOptions options;
    options.iterations = 200;
    const auto found = annealed(design, {2, 9}, options);
    ASSERT_TRUE(found);
    EXPECT_TRUE(isLegal(design, {2, 9}, found->placement));
}

// Stopped in time, by either means, with what was found so far.
class AnnealerStops : public testing::TestWithParam<bool> {};

TEST_P(AnnealerStops, AtOnce) {
    const Design design = RandomDesigns(6).make({30, 10, 100, 4, 8, 60, 1.0});
    AnnealOptions options;
    options.threads = 2;
    Incumbent incumbent(design, {60, 60});
    AnnealProgress progress;
    std::stop_source stop;
    const auto begin = std::chrono::steady_clock::now();
    if (GetParam()) {
        options.deadline = begin + kSoon;
    }
    std::jthread stopper([&] {
        std::this_thread::sleep_for(kSoon);
        if (!GetParam()) {
            stop.request_stop();
        }
    });
    anneal(design, {60, 60}, options, incumbent, stop.get_token(), progress);
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(took, kSoon);
    EXPECT_LT(took, kSoon + std::chrono::seconds(1)) << "generous: sanitizers, busy machines";
    EXPECT_GE(progress.restarts.load(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Means, AnnealerStops, testing::Bool(),
                         [](const auto& one) { return one.param ? "deadline" : "stop"; });

// --- Layout ----------------------------------------------------------------------------------

// After any change, kept or undone, the length is that of the placement measured from scratch, and
// a layout without excess is legal.
TEST(SlidLayout, MeasuresMovedNetsOnlyAndYetAll) {
    RandomDesigns designs(8);
    for (unsigned round = 0; round < 6; ++round) {
        const Design design = designs.make({8, 4, 40, 5, 9, 30, 1.0});
        const Region region{30, 30};
        const NetModel nets(design);
        SlidLayout layout(nets, region);
        const double onOneDie = wirelength(design, layout.placement()) - layout.length();
        RandomStream random(1, round);
        const DieGroups groups(nets);
        Moves moves(layout, nets, groups, region);
        layout.editOrders().shuffle(random);
        layout.arrange(random, {kAnything, kAnything});
        layout.keep();
        int legal = 0;
        for (int change = 0; change < 300; ++change) {
            const double before = layout.length();
            moves.change(random);
            const bool isArranged = layout.arrange(
                random, {change % 7 == 0 ? 0.0 : 1.0, change % 5 == 0 ? before : kAnything});
            if (isArranged && random.below(2) == 0) {
                layout.keep();
            } else {
                layout.undo();
                ASSERT_DOUBLE_EQ(layout.length(), before);
            }
            const Placement placement = layout.placement();
            ASSERT_NEAR(layout.length() + onOneDie, wirelength(design, placement), 1e-7);
            if (layout.excess() <= 0.0) {
                ++legal;
                ASSERT_TRUE(isLegal(design, region, placement, kSlack));
            }
        }
        EXPECT_GT(legal, 0);
    }
}

// The die in the middle is wanted far to the right, but goes no further than the next one.
TEST(SlidLayout, ReleasedDiesPushNobodyWhereThereIsRoom) {
    Design design;
    design.dies = {{"left", {4, 4}}, {"middle", {2, 4}}, {"right", {4, 4}}, {"idle", {2, 2}}};
    design.terminals = {{"t", {30, 2}}};
    design.nets = {{{{1, {1, 2}}, {4, {0, 0}}}}};
    const NetModel nets(design);
    SlidLayout layout(nets, {40, 40});
    SequencePair orders(4);
    layout.place(orders, {{{2, 0}}, {{8, 0}}, {{12, 0}}, {{20, 5}}});
    for (const unsigned die : {1U, 3U}) {
        layout.release(die);
    }
    RandomStream random(1, 1);
    ASSERT_TRUE(layout.arrange(random, {kAnything, kAnything}));
    const Placement placement = layout.placement();
    EXPECT_EQ(placement[0].at.x, 2.0);
    EXPECT_EQ(placement[1].at.x, 10.0);
    EXPECT_EQ(placement[2].at.x, 12.0);
    EXPECT_EQ(placement[3].at.x, 20.0) << "without nets it stays";
}

}  // namespace
}  // namespace korvel
