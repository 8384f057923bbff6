// What the annealer does when: how hot it is, and which moves it tries.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "anneal/Cooling.h"
#include "anneal/MoveShares.h"

namespace korvel {
namespace {

constexpr int kShares = 2000;

double shareOf(int step) {
    return static_cast<double>(step) / kShares;
}

class EveryPlan : public testing::TestWithParam<Cooling::Plan> {};

// Stages follow one another, and each cools down all the way through.
TEST_P(EveryPlan, CoolsDownStageByStage) {
    const Cooling cooling(GetParam());
    Cooling::Stage before = cooling.stageAt(0.0);
    EXPECT_EQ(before.number, 0U);
    for (int step = 1; step < kShares; ++step) {
        const Cooling::Stage now = cooling.stageAt(shareOf(step));
        ASSERT_GE(now.part, 0.0);
        ASSERT_LT(now.part, 1.0);
        if (now.number == before.number) {
            ASSERT_GT(now.part, before.part);
            ASSERT_LT(cooling.heat(now), cooling.heat(before));
        } else {
            ASSERT_EQ(now.number, before.number + 1);
            ASSERT_GT(cooling.heat(now), cooling.heat(before));
        }
        before = now;
    }
    const bool heatsUpAgain =
        GetParam() != Cooling::Plan::Single && GetParam() != Cooling::Plan::Coarse;
    EXPECT_EQ(cooling.isStart(before.number), !heatsUpAgain);
}

INSTANTIATE_TEST_SUITE_P(Plans, EveryPlan,
                         testing::Values(Cooling::Plan::Usual, Cooling::Plan::FewDies,
                                         Cooling::Plan::Single, Cooling::Plan::Coarse,
                                         Cooling::Plan::Expanded));

// A design that settles between two heats is cooled down between these, and one that settles all
// the way, all the way.
TEST(Cooling, LearnsWhereLayoutsSettle) {
    struct Settling {
        double from, to;  // parts of the way
    };
    for (const Settling settling : {Settling{0.3, 0.6}, Settling{0.0, 1.0}, Settling{0.6, 0.7}}) {
        Cooling cooling(Cooling::Plan::Usual);
        const Cooling untaught = cooling;
        for (int step = 0; cooling.stageAt(shareOf(step)).number == 0; ++step) {
            const Cooling::Stage stage = cooling.stageAt(shareOf(step));
            const double settled =
                std::clamp((stage.part - settling.from) / (settling.to - settling.from), 0.0, 1.0);
            cooling.note(stage, 500.0 - 400.0 * settled);
        }
        cooling.learn();
        const auto heatAt = [&untaught](double part) { return untaught.heat({0, part}); };
        const double hottest = cooling.heat({1, 0.0});
        const double coldest = cooling.heat({1, 1.0});
        EXPECT_GE(hottest, heatAt(settling.from + 0.8 * (settling.to - settling.from)));
        EXPECT_LE(hottest, heatAt(settling.from + 0.5 * (settling.to - settling.from) - 0.06));
        EXPECT_LE(coldest, heatAt(settling.to - 0.06));
        EXPECT_GE(coldest, heatAt(std::min(1.0, settling.to + 0.2)) * 0.999);
        EXPECT_LE(cooling.heat({9, 0.0}), hottest) << "heated up again, but no further";
        EXPECT_GT(cooling.heat({9, 0.0}), coldest);
    }
}

// Random layouts that are hardly longer than good ones leave little to choose between starts.
TEST(Cooling, SmoothDesignsHaveFewerSlowerStarts) {
    const auto stagesWith = [](double randomLength) {
        Cooling cooling(Cooling::Plan::Usual);
        for (int step = 0; cooling.stageAt(shareOf(step)).number == 0; ++step) {
            const Cooling::Stage stage = cooling.stageAt(shareOf(step));
            cooling.note(stage, 100.0 + (1.0 - stage.part) * (randomLength - 100.0));
        }
        cooling.learn();
        EXPECT_TRUE(cooling.isStart(1));
        return cooling.stageAt(shareOf(kShares - 1)).number;
    };
    EXPECT_LT(stagesWith(150.0), stagesWith(400.0) / 2);
}

// As when a busy machine stalls the run while it is cold.
TEST(Cooling, LearnsNothingFromAStartWithoutEnd) {
    Cooling cooling(Cooling::Plan::Usual);
    const Cooling untaught = cooling;
    cooling.note({0, 0.2}, 500.0);
    cooling.note({0, 0.6}, 100.0);
    cooling.learn();
    for (const Cooling::Stage stage : {Cooling::Stage{1, 0.0}, {1, 0.99}, {9, 0.0}, {9, 0.99}}) {
        EXPECT_EQ(cooling.heat(stage), untaught.heat(stage));
    }
}

TEST(MoveShares, FollowWhatMovesChange) {
    MoveShares shares({3.0, 1.0, 0.0, 1.0});
    RandomStream random(5, 2);
    std::array<int, 4> drawn{};
    const auto draw = [&](int times, unsigned rewarded) {
        drawn = {};
        for (int time = 0; time < times; ++time) {
            const unsigned kind = shares.draw(random);
            ++drawn[kind];
            if (kind == rewarded) {
                shares.reward(-7.0);
            }
        }
    };
    draw(1500, 1);
    EXPECT_NEAR(drawn[0], 900, 100) << "as asked for at first";
    draw(40000, 1);
    EXPECT_GT(drawn[1], 30000);
    EXPECT_EQ(drawn[2], 0);
    EXPECT_GT(drawn[0], 500) << "never forgotten altogether";
    draw(40000, 3);
    EXPECT_GT(drawn[3], 25000);
    shares.restart();
    draw(1500, 1);
    EXPECT_NEAR(drawn[0], 900, 100);
}

}  // namespace
}  // namespace korvel
