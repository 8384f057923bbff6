// The annealer: what it finds on designs small enough to try everything, and what it promises.
#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include "anneal/Annealer.h"
#include "anneal/LevelAnnealer.h"
#include "anneal/OrderedResults.h"
#include "exact/ExactCoordinates.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::isLegal;
using test::RandomDesigns;

constexpr double kSlack = 1e-9;
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

bool same(const Placement& a, const Placement& b) {
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [](const PlacedDie& one, const PlacedDie& other) {
            return one.at.x == other.at.x && one.at.y == other.at.y && one.orient == other.orient;
        });
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
        options.seed = 4;
        const auto other = annealed(design, region, options);
        ASSERT_TRUE(first && second && other);
        EXPECT_TRUE(isLegal(design, region, first->placement, kSlack));
        EXPECT_DOUBLE_EQ(first->wirelength(), wirelength(design, first->placement));
        EXPECT_TRUE(same(first->placement, second->placement));
        EXPECT_FALSE(same(first->placement, other->placement));
    }
}

// As many whole restarts as the moves allow, equally many on every thread.
TEST(Annealer, MovesAreDividedAmongRestarts) {
    const Design design = RandomDesigns(7).make({2, 3, 8, 4, 5, 12, 1.0});
    constexpr std::uint64_t kUsual = 40000;  // of a restart with two dies
    struct Case {
        unsigned threads, restarts;
    };
    for (const Case one : {Case{1, 2}, Case{2, 2}, Case{3, 3}, Case{4, 4}}) {
        AnnealOptions options;
        options.threads = one.threads;
        options.iterations = 5 * kUsual / 2;
        Incumbent incumbent(design, {12, 12});
        AnnealProgress progress;
        anneal(design, {12, 12}, options, incumbent, {}, progress);
        EXPECT_EQ(progress.restarts.load(), one.restarts);
        EXPECT_NEAR(static_cast<double>(progress.iterations.load()),
                    static_cast<double>(options.iterations), 64.0 * one.restarts);
        EXPECT_TRUE(incumbent.best().has_value());
    }
}

// Whichever ends first; a restart may have found nothing, or never have begun.
TEST(OrderedResults, AreOfferedByTheNumberOfTheirRestart) {
    std::vector<double> offered;
    OrderedResults results([&](const Placement& one) { offered.push_back(one[0].at.x); });
    const auto numbered = [](double number) { return Placement{{{number, 0}}}; };
    results.add(3, numbered(3));
    results.add(1, std::nullopt);
    results.add(2, numbered(2));
    EXPECT_TRUE(offered.empty());
    results.add(0, numbered(0));
    EXPECT_EQ(offered, (std::vector<double>{0, 2, 3}));
    results.add(6, numbered(6));
    results.add(5, numbered(5));
    EXPECT_EQ(offered.size(), 3U);
    results.offerRest();
    EXPECT_EQ(offered, (std::vector<double>{0, 2, 3, 5, 6}));
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

// On one level, which is what a restart relies on: what is told is ever shorter and legal, and the
// outcomes of the coolings are legal and in order.
TEST(LevelAnnealer, TellsOfShorterLegalPlacements) {
    const Design design = RandomDesigns(9).make({8, 4, 40, 4, 8, 20, 1.0});
    const Region region{24, 24};
    const PreparedDesign prepared(design, region);
    for (const auto kind : {CoolingSchedule::Kind::Usual, CoolingSchedule::Kind::CoarseLevel}) {
        std::vector<double> told;
        LevelAnnealer annealer(prepared, RandomStream(1, 1), kind, [&](const Placement& found) {
            const double length = wirelength(design, found);
            EXPECT_TRUE(isLegal(design, region, found, kSlack));
            EXPECT_TRUE(told.empty() || length < told.back());
            told.push_back(length);
        });
        constexpr int kSteps = 200;
        for (int step = 0; step < kSteps; ++step) {
            annealer.advance(64, static_cast<double>(step) / kSteps);
        }
        annealer.reportBest();
        const std::size_t toldNum = told.size();
        annealer.reportBest();
        EXPECT_EQ(told.size(), toldNum) << "told once";
        ASSERT_FALSE(told.empty());
        const std::vector<Layout::Snapshot> outcomes = annealer.outcomes();
        ASSERT_GT(outcomes.size(), 5U);
        double before = 0.0;
        for (const Layout::Snapshot& outcome : outcomes) {
            const double length = wirelength(design, outcome.placement);
            EXPECT_TRUE(isLegal(design, region, outcome.placement, kSlack));
            EXPECT_GE(length, before - 1e-9);
            EXPECT_GE(length, told.back() - 1e-9);
            before = length;
        }
    }
}

// In a row there is one way to say how the dies of a placement lie, so its best coordinates are
// known. Sliding one die at a time does not reach them.
TEST(LevelAnnealer, TellsOfExactCoordinatesAlone) {
    constexpr unsigned kDies = 6;
    const Region row{40, 4};
    Layout::Snapshot start{SequencePair(kDies), Placement(kDies)};
    for (unsigned die = 0; die < kDies; ++die) {
        start.placement[die].at.x = 6.0 * die;
    }
    for (unsigned seed = 1; seed <= 5; ++seed) {
        const Design design = RandomDesigns(seed).make({kDies, 4, 60, 4, 4, 36, 1.0});
        const PreparedDesign prepared(design, row);
        int told = 0;
        const auto expectExact = [&](const Placement& found) {
            std::vector<Orient> orients;
            for (const PlacedDie& die : found) {
                orients.push_back(die.orient);
            }
            const auto exact = exactCoordinates(design, row, Relations::of(design, found), orients);
            ASSERT_TRUE(exact);
            EXPECT_NEAR(wirelength(design, found), wirelength(design, *exact), 1e-9);
            ++told;
        };
        LevelAnnealer annealer(prepared, RandomStream(seed, 1), CoolingSchedule::Kind::SingleStart,
                               expectExact, {start});
        annealer.reportBest();
        EXPECT_EQ(told, 1);
    }
}

}  // namespace
}  // namespace korvel
