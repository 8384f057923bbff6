// What the annealer does when: how hot it is, and which moves it tries.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "anneal/CoolingSchedule.h"
#include "anneal/MoveProbabilities.h"

namespace korvel {
namespace {

constexpr int kSteps = 2000;

double progressOf(int step) {
    return static_cast<double>(step) / kSteps;
}

class EveryKind : public testing::TestWithParam<CoolingSchedule::Kind> {};

// Coolings follow one another, and each cools down all the way through.
TEST_P(EveryKind, CoolsDownAgainAndAgain) {
    const CoolingSchedule schedule(GetParam());
    CoolingSchedule::Point before = schedule.at(0.0);
    EXPECT_EQ(before.cooling, 0U);
    for (int step = 1; step < kSteps; ++step) {
        const CoolingSchedule::Point now = schedule.at(progressOf(step));
        ASSERT_GE(now.cooled, 0.0);
        ASSERT_LT(now.cooled, 1.0);
        if (now.cooling == before.cooling) {
            ASSERT_GT(now.cooled, before.cooled);
            ASSERT_LT(schedule.temperature(now), schedule.temperature(before));
        } else {
            ASSERT_EQ(now.cooling, before.cooling + 1);
            ASSERT_GT(schedule.temperature(now), schedule.temperature(before));
        }
        before = now;
    }
    const bool heatsUpAgain = GetParam() != CoolingSchedule::Kind::SingleStart &&
                              GetParam() != CoolingSchedule::Kind::CoarseLevel;
    EXPECT_EQ(schedule.isFromStart(before.cooling), !heatsUpAgain);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind,
                         testing::Values(CoolingSchedule::Kind::Usual,
                                         CoolingSchedule::Kind::FewDies,
                                         CoolingSchedule::Kind::SingleStart,
                                         CoolingSchedule::Kind::CoarseLevel,
                                         CoolingSchedule::Kind::ExpandedStarts));

// A design that settles between two heats is cooled down between these, and one that settles all
// the way, all the way.
TEST(CoolingSchedule, LearnsWhereLayoutsSettle) {
    struct Settling {
        double from, to;  // parts of the way
    };
    for (const Settling settling : {Settling{0.3, 0.6}, Settling{0.0, 1.0}, Settling{0.6, 0.7}}) {
        CoolingSchedule schedule(CoolingSchedule::Kind::Usual);
        const CoolingSchedule untaught = schedule;
        for (int step = 0; schedule.at(progressOf(step)).cooling == 0; ++step) {
            const CoolingSchedule::Point point = schedule.at(progressOf(step));
            const double settled = std::clamp(
                (point.cooled - settling.from) / (settling.to - settling.from), 0.0, 1.0);
            schedule.note(point, 500.0 - 400.0 * settled);
        }
        schedule.learn();
        const auto heatAt = [&untaught](double part) { return untaught.temperature({0, part}); };
        const double hottest = schedule.temperature({1, 0.0});
        const double coldest = schedule.temperature({1, 1.0});
        EXPECT_GE(hottest, heatAt(settling.from + 0.8 * (settling.to - settling.from)));
        EXPECT_LE(hottest, heatAt(settling.from + 0.5 * (settling.to - settling.from) - 0.06));
        EXPECT_LE(coldest, heatAt(settling.to - 0.06));
        EXPECT_GE(coldest, heatAt(std::min(1.0, settling.to + 0.2)) * 0.999);
        EXPECT_LE(schedule.temperature({9, 0.0}), hottest) << "heated up again, but no further";
        EXPECT_GT(schedule.temperature({9, 0.0}), coldest);
    }
}

// Random layouts that are hardly longer than good ones leave little to choose between starts.
TEST(CoolingSchedule, SmoothDesignsHaveFewerSlowerStarts) {
    const auto coolingsWith = [](double randomLength) {
        CoolingSchedule schedule(CoolingSchedule::Kind::Usual);
        for (int step = 0; schedule.at(progressOf(step)).cooling == 0; ++step) {
            const CoolingSchedule::Point point = schedule.at(progressOf(step));
            schedule.note(point, 100.0 + (1.0 - point.cooled) * (randomLength - 100.0));
        }
        schedule.learn();
        EXPECT_TRUE(schedule.isFromStart(1));
        return schedule.at(progressOf(kSteps - 1)).cooling;
    };
    EXPECT_LT(coolingsWith(150.0), coolingsWith(400.0) / 2);
}

// As when a busy machine stalls the run while it is cold.
TEST(CoolingSchedule, LearnsNothingFromAStartWithoutEnd) {
    CoolingSchedule schedule(CoolingSchedule::Kind::Usual);
    const CoolingSchedule untaught = schedule;
    schedule.note({0, 0.2}, 500.0);
    schedule.note({0, 0.6}, 100.0);
    schedule.learn();
    for (const CoolingSchedule::Point point :
         {CoolingSchedule::Point{1, 0.0}, {1, 0.99}, {9, 0.0}, {9, 0.99}}) {
        EXPECT_EQ(schedule.temperature(point), untaught.temperature(point));
    }
}

TEST(MoveProbabilities, FollowWhatMovesChange) {
    MoveProbabilities probabilities({3.0, 1.0, 0.0, 1.0});
    RandomStream random(5, 2);
    std::array<int, 4> drawn{};
    const auto draw = [&](int times, unsigned rewarded) {
        drawn = {};
        for (int time = 0; time < times; ++time) {
            const unsigned kind = probabilities.draw(random);
            ++drawn[kind];
            if (kind == rewarded) {
                probabilities.reward(-7.0);
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
    probabilities.restart();
    draw(1500, 1);
    EXPECT_NEAR(drawn[0], 900, 100);
}

}  // namespace
}  // namespace korvel
