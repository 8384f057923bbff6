// Runs of `place` without the command around them: time, plans, both engines, starts and stops.

#include <future>
#include <random>
#include <thread>

#include "judge/Judge.h"
#include "run/AutoPlan.h"
#include "run/ClassicEngine.h"
#include "run/Duration.h"
#include "run/PlaceRun.h"
#include "support/random_designs.h"

namespace korvel::test {
namespace {

// --- Time ------------------------------------------------------------------------------------

TEST(Duration, IsReadAsUsersWriteIt) {
    const std::pair<const char*, double> good[] = {
        {"90", 90},   {"90s", 90},  {"15m", 900},      {"2h", 7200},
        {"0.5", 0.5}, {"1.5m", 90}, {"366h", 1317600}, {".25h", 900},
    };
    for (const auto& [text, seconds] : good) {
        EXPECT_EQ(parseDuration(text), seconds) << text;
    }
    for (const char* bad : {"", "s", "0", "0s", "-1", "+1", "1d", "1 s", " 1", "1ss", "1e3", "nan",
                            "inf", "1,5", "0x10", "99999999h", "1.2.3", "m15"}) {
        EXPECT_EQ(parseDuration(bad), std::nullopt) << bad;
    }
}

TEST(Duration, IsWrittenAsExactlyAsNeeded) {
    EXPECT_EQ(durationText(0.26), "0.2 s");
    EXPECT_EQ(durationText(59.999), "59.9 s");
    EXPECT_EQ(durationText(60), "1 min 0 s");
    EXPECT_EQ(durationText(3599.9), "59 min 59 s");
    EXPECT_EQ(durationText(7380), "2 h 3 min");
}

TEST(AutoPlan, ProvesFewDiesAndAnnealsMany) {
    RunOptions options;
    EXPECT_EQ(planFor(5, options).whole, std::nullopt);  // until proved
    EXPECT_TRUE(planFor(10, options).whole.has_value());
    EXPECT_EQ(planFor(50, options).annealedUntil, planFor(50, options).whole);
    options.iterations = 100;  // which no clock may cut short
    EXPECT_EQ(planFor(50, options).whole, std::nullopt);
    options.iterations.reset();
    options.timeLimit = 2;
    double before = 0;
    for (const unsigned dies : {2U, 8U, 10U, 40U}) {
        const AutoPlan plan = planFor(dies, options);
        EXPECT_EQ(plan.whole, 2);
        const double annealing =
            plan.annealedUntil + (plan.provedUntil ? *plan.whole - *plan.provedUntil : 0.0);
        EXPECT_GE(annealing, before);
        before = annealing;
    }
    options.prove = true;
    EXPECT_LT(planFor(10, options).annealedUntil, 0.5);
    EXPECT_EQ(planFor(10, options).provedUntil, std::nullopt);
}

// --- Designs ---------------------------------------------------------------------------------

// Room for all dies in some arrangement, found or not.
Region roomyRegion(const Design& design) {
    double area = 0.0;
    double longest = 0.0;
    for (const Design::Die& die : design.dies) {
        area += die.size.width * die.size.height;
        longest = std::max({longest, die.size.width, die.size.height});
    }
    const double side = std::sqrt(3.0 * area) + longest;
    return {side, side};
}

Design chain(unsigned dies) {
    Design design;
    for (unsigned die = 0; die < dies; ++die) {
        design.dies.push_back({"d" + std::to_string(die), {1.0 + die % 3, 2.0 + die % 2}});
        if (die > 0) {
            design.nets.push_back({{{die - 1, {0.5, 0.5}}, {die, {0.5, 0.0}}}});
        }
    }
    return design;
}

// How much longer everything takes under a sanitizer, at the most.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr double kSlowness = 5.0;
#else
constexpr double kSlowness = 1.0;
#endif

RunOptions optionsOf(Engine engine) {
    RunOptions options;
    options.engine = engine;
    options.threads = 2;
    return options;
}

void expectLegal(const Design& design, Region region, const RunResult& result) {
    ASSERT_TRUE(result.best);
    const Judgement judgement = judge(design, region, result.best->placement);
    EXPECT_TRUE(judgement.isLegal());
    EXPECT_EQ(judgement.wirelength, result.best->wirelength());
    EXPECT_LE(result.best->after, result.seconds);
}

// --- A pass of the classic engine ------------------------------------------------------------

// Workers tell of their nodes without a lock, so a shorter one may overtake a longer one.
TEST(PassTally, DropsALateLongerNode) {
    PassTally tally("main pass", 4);
    EXPECT_FALSE(tally.figures(false).length);
    EXPECT_TRUE(tally.improved(7));
    EXPECT_TRUE(tally.improved(3));
    EXPECT_FALSE(tally.improved(5));
    EXPECT_FALSE(tally.improved(3));
    EXPECT_TRUE(tally.improved(2));
    const PassFigures pass = tally.figures(false);
    EXPECT_EQ(pass.improvements, 3U);
    EXPECT_EQ(pass.length, 2);
}

TEST(PassTally, AddsUpWhatWorkersTell) {
    PassTally tally("main pass", 4);
    std::atomic<unsigned> improvements{0};
    {
        std::vector<std::jthread> workers;
        for (int worker = 0; worker < 4; ++worker) {
            workers.emplace_back([&, worker] {
                for (int i = 0; i < 256; ++i) {
                    tally.worked(3, 0x1p-11);
                    improvements +=
                        tally.improved(static_cast<float>(1000 - 4 * i - worker)) ? 1 : 0;
                }
            });
        }
    }
    EXPECT_EQ(tally.gauge().count, 3072U);
    EXPECT_EQ(tally.gauge().share, 0.5);
    const PassFigures pass = tally.figures(false);
    EXPECT_EQ(pass.nodes, 3072U);
    EXPECT_EQ(pass.share, 0.5);
    EXPECT_EQ(pass.improvements, improvements);
    EXPECT_EQ(pass.length, 1000 - 4 * 255 - 3);
    EXPECT_EQ(tally.figures(true).share, 1.0);
}

// --- The classic engine ----------------------------------------------------------------------

TEST(ClassicRun, PlacesDesignsOfAllKindsLegally) {
    RandomDesigns random(7);
    for (unsigned round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        // Sizes such as 0.3 are none of single precision, and overlap where they are cut to whole
        // units; so few nets often leave dies unconnected.
        const double grid = round % 2 == 0 ? 0.3 : 1.0;
        const Design design = random.make({.dies = 1 + round % 5,
                                           .terminals = round % 3,
                                           .nets = round % 7,
                                           .largestSide = 6,
                                           .grid = grid});
        const Region region = roomyRegion(design);
        const RunResult result = PlaceRun(design, region, optionsOf(Engine::Classic)).execute();
        expectLegal(design, region, result);
        EXPECT_EQ(result.ending, Ending::Done);
        ASSERT_EQ(result.passes.size(), 2U);
        for (const PassFigures& pass : result.passes) {
            EXPECT_TRUE(pass.exhausted);
            EXPECT_GT(pass.nodes, 0U);
        }
    }
}

// Each piece is placed as well as if it were alone: nothing is dropped from the order.
TEST(ClassicRun, PlacesSeparatePiecesEachAtItsBest) {
    Design design;
    for (unsigned die = 0; die < 5; ++die) {
        design.dies.push_back({"d" + std::to_string(die), {4, 4}});
    }
    for (const unsigned die : {0U, 2U}) {
        design.nets.push_back({{{die, {4, 2}}, {die + 1, {0, 2}}}});
    }
    const Region region{12, 12};
    const RunResult result = PlaceRun(design, region, optionsOf(Engine::Classic)).execute();
    expectLegal(design, region, result);
    EXPECT_EQ(result.best->wirelength(), 0.0);
}

TEST(ClassicRun, SaysWhenItFindsNothing) {
    const Design design = chain(3);
    const RunResult result = PlaceRun(design, {3.5, 3.5}, optionsOf(Engine::Classic)).execute();
    EXPECT_FALSE(result.best);
    EXPECT_EQ(result.ending, Ending::Done);
}

TEST(ClassicRun, KeepsAStartThatNothingBeats) {
    RandomDesigns random(3);
    const Design design = random.make({.dies = 4, .terminals = 3, .nets = 9});
    const Region region = roomyRegion(design);
    const RunResult proved = PlaceRun(design, region, optionsOf(Engine::Auto)).execute();
    ASSERT_EQ(proved.ending, Ending::Proved);
    RunOptions options = optionsOf(Engine::Classic);
    options.start = proved.best->placement;
    const RunResult result = PlaceRun(design, region, options).execute();
    expectLegal(design, region, result);
    EXPECT_EQ(result.best->finder, "the start placement");
    EXPECT_EQ(result.best->wirelength(), proved.best->wirelength());
    // It was a bound for both passes, that only itself could be found below.
    EXPECT_LE(result.passes.at(0).improvements + result.passes.at(1).improvements, 1U);
}

TEST(ClassicRun, BeatsAStartThatCanBeBeaten) {
    const Design design = chain(4);
    const Region region{30, 30};
    RunOptions options = optionsOf(Engine::Classic);
    options.start = Placement{{{0, 0}}, {{27, 0}}, {{0, 26}}, {{27, 26}}};
    const RunResult result = PlaceRun(design, region, options).execute();
    expectLegal(design, region, result);
    EXPECT_NE(result.best->finder, "the start placement");
    EXPECT_LT(result.best->wirelength(), 20.0);
}

TEST(ClassicRun, SharesTheTimeOverTheStages) {
    Design design = chain(102);
    design.nets.resize(6);
    const Region region{300, 300};
    RunOptions options = optionsOf(Engine::Classic);
    options.timeLimit = 2.0 * kSlowness;
    const RunResult result = PlaceRun(design, region, options).execute();
    EXPECT_EQ(result.ending, Ending::TimeLimit);
    EXPECT_LT(result.seconds, 3.0 * kSlowness);
    // How far it comes is for the machine to say; but no stage takes the time of the others.
    EXPECT_GT(result.passes.size(), 10U);
    for (unsigned stage = 0; stage < result.passes.size(); ++stage) {
        EXPECT_EQ(result.passes[stage].dies, 7 + stage);
        EXPECT_LT(result.passes[stage].seconds, 1.0 * kSlowness);
    }
}

// --- Ends ------------------------------------------------------------------------------------

class EndedRun : public testing::TestWithParam<Engine> {};

TEST_P(EndedRun, EndsInTimeWithTheBestSoFar) {
    const Design design = chain(30);
    const Region region{30, 30};
    RunOptions options = optionsOf(GetParam());
    options.timeLimit = 0.4;
    const RunResult result = PlaceRun(design, region, options).execute();
    EXPECT_EQ(result.ending, Ending::TimeLimit);
    EXPECT_GE(result.seconds, 0.3);
    EXPECT_LT(result.seconds, 0.4 + kSlowness);
    expectLegal(design, region, result);
}

TEST_P(EndedRun, IsInterruptedFromAnotherThread) {
    const Design design = chain(30);
    const Region region{30, 30};
    std::promise<void> found;
    std::once_flag once;
    PlaceRun run(design, region, optionsOf(GetParam()),
                 [&](const Found&) { std::call_once(once, [&] { found.set_value(); }); });
    RunClock::time_point asked;
    std::thread stopper([&] {
        found.get_future().wait();
        asked = RunClock::now();
        run.interrupt();
    });
    const RunResult result = run.execute();
    stopper.join();
    EXPECT_LT(RunClock::now() - asked, std::chrono::seconds(1));
    EXPECT_EQ(result.ending, Ending::Interrupted);
    expectLegal(design, region, result);
}

TEST_P(EndedRun, IsOverAtOnceIfItWasInterruptedBefore) {
    const Design design = chain(30);
    PlaceRun run(design, {30, 30}, optionsOf(GetParam()));
    run.interrupt();
    const RunResult result = run.execute();
    EXPECT_EQ(result.ending, Ending::Interrupted);
    EXPECT_LT(result.seconds, 1.0);
}

std::string nameOfEngine(const testing::TestParamInfo<Engine>& info) {
    return info.param == Engine::Classic ? "Classic" : "Auto";
}
INSTANTIATE_TEST_SUITE_P(Engines, EndedRun, testing::Values(Engine::Classic, Engine::Auto),
                         nameOfEngine);

// --- The automatic engine --------------------------------------------------------------------

TEST(AutoRun, ProvesFewDiesAndIsNeverWorseThanTheClassicEngine) {
    RandomDesigns random(11);
    for (unsigned round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        const Design design = random.make({.dies = 3 + round % 2, .nets = 8});
        const Region region = roomyRegion(design);
        const RunResult result = PlaceRun(design, region, optionsOf(Engine::Auto)).execute();
        const RunResult classic = PlaceRun(design, region, optionsOf(Engine::Classic)).execute();
        expectLegal(design, region, result);
        EXPECT_EQ(result.ending, Ending::Proved);
        EXPECT_LE(*result.lowerBound, result.best->wirelength());
        EXPECT_LE(result.best->wirelength(), classic.best->wirelength() * (1.0 + 1e-5));
    }
}

TEST(AutoRun, ProvesThatNoPlacementExists) {
    const Design design = chain(3);
    const RunResult result = PlaceRun(design, {3.5, 3.5}, optionsOf(Engine::Auto)).execute();
    EXPECT_FALSE(result.best);
    EXPECT_EQ(result.ending, Ending::NoPlacement);
}

TEST(AutoRun, RepeatsItsResultForTheSameSeedAndIterations) {
    const Design design = chain(20);
    const Region region{20, 20};
    RunOptions options = optionsOf(Engine::Auto);
    options.iterations = 4000;
    options.seed = 5;
    const RunResult first = PlaceRun(design, region, options).execute();
    const RunResult second = PlaceRun(design, region, options).execute();
    expectLegal(design, region, first);
    EXPECT_EQ(first.ending, Ending::Done);
    EXPECT_EQ(first.best->wirelength(), second.best->wirelength());
    EXPECT_EQ(first.best->placement[7].at.x, second.best->placement[7].at.x);
}

}  // namespace
}  // namespace korvel::test
