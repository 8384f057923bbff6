// The gate that every placement of a run passes: what it refuses, what it keeps and tells, from
// one thread and from many.

#include "results/Incumbent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>
#include <thread>

namespace korvel::test {
namespace {

constexpr Region kRegion{100, 100};

// Two dies with a net between their corners: the wirelength is how far the corners are apart.
Design pairOfDies() {
    Design design;
    design.dies = {{"a", {10, 10}}, {"b", {10, 10}}};
    design.nets = {{{{0, {0, 0}}, {1, {0, 0}}}}};
    return design;
}

// Legal from a distance of 10 on.
Placement apartBy(double distance) {
    return {{{0, 0}}, {{distance, 0}}};
}

TEST(Incumbent, RefusesWhatIsNotLegalAndWhatIsNotShorter) {
    const Design design = pairOfDies();
    std::vector<double> noticed;
    Incumbent incumbent(design, kRegion,
                        [&](const Found& found) { noticed.push_back(found.wirelength()); });
    EXPECT_EQ(incumbent.wirelength(), std::numeric_limits<double>::infinity());
    EXPECT_FALSE(incumbent.best());

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<Placement, Offer> offers[] = {
        {{{{0, 0}}, {{95, 0}}}, Offer::Illegal},  // outside
        {apartBy(30), Offer::Kept},
        {apartBy(30), Offer::NotShorter},
        {apartBy(40), Offer::NotShorter},
        {apartBy(9), Offer::Illegal},
        // Files may have so much overlap, results of the program may not.
        {apartBy(10 - 1e-6), Offer::Illegal},
        {{{{0, 0}}, {{15, 0}, Orient::FN}}, Offer::Illegal},
        {{{{0, 0}}, {{nan, 0}}}, Offer::Illegal},
        {apartBy(10 - 1e-8), Offer::Kept},  // within the rounding that is granted
    };
    for (const auto& [placement, expected] : offers) {
        SCOPED_TRACE(placement[1].at.x);
        EXPECT_EQ(incumbent.offer(placement, "test"), expected);
    }
    EXPECT_EQ(noticed, (std::vector<double>{30, 10 - 1e-8}));
}

TEST(Incumbent, KeepsTheJudgementWithThePlacement) {
    const Design design = pairOfDies();
    Incumbent incumbent(design, kRegion);
    incumbent.offer(apartBy(30), "first");
    incumbent.offer({{{5, 7}}, {{15, 7}}}, "second");
    incumbent.offer(apartBy(20), "third");
    const auto best = incumbent.best();
    ASSERT_TRUE(best);
    EXPECT_EQ(best->finder, "second");
    EXPECT_EQ(best->placement[0].at.y, 7);
    EXPECT_EQ(best->judgement.wirelength, 10);
    EXPECT_EQ(best->judgement.low.x, 5);
    EXPECT_EQ(best->judgement.extent.width, 20);
    EXPECT_EQ(best->judgement.tolerance, touchingLength(kRegion));
    EXPECT_EQ(incumbent.wirelength(), 10);
}

// Every second offer is an illegal one that would be shorter than all others.
TEST(Incumbent, EndsWithTheShortestOfConcurrentOffers) {
    const Design design = pairOfDies();
    std::vector<double> noticed;  // one call at a time: needs no lock of its own
    Incumbent incumbent(design, kRegion,
                        [&](const Found& found) { noticed.push_back(found.wirelength()); });
    constexpr unsigned kThreads = 4;
    constexpr unsigned kOffers = 400;
    {
        std::vector<std::jthread> threads;
        for (unsigned thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&, thread] {
                std::mt19937 random(thread);
                for (unsigned i = 0; i < kOffers; ++i) {
                    const double part = static_cast<double>(random()) / 0x1p32;
                    incumbent.offer(apartBy(11 + 70 * part), "legal");
                    incumbent.offer(apartBy(9 * part), "illegal");
                    EXPECT_LE(incumbent.wirelength(), 11 + 70 * part);
                }
                incumbent.offer(apartBy(10 + thread * 0.1), std::to_string(thread));
            });
        }
    }
    const auto best = incumbent.best();
    ASSERT_TRUE(best);
    EXPECT_EQ(best->finder, "0");
    EXPECT_EQ(best->wirelength(), 10);
    EXPECT_EQ(incumbent.wirelength(), 10);
    EXPECT_EQ(noticed.back(), 10);
    // No notice is as long as the one before.
    EXPECT_EQ(std::adjacent_find(noticed.begin(), noticed.end(), std::less_equal<>()),
              noticed.end());
}

// A search that knows its coordinates in single precision only offers rough ones.
TEST(ExactOffer, OffersTheBestCoordinatesForTheRelations) {
    const Design design = pairOfDies();
    const CoordinateSolver solver(design, kRegion);
    Relations leftOf(2);
    leftOf.set(0, 1, Topology::L);

    Incumbent incumbent(design, kRegion);
    incumbent.offerExact(solver, leftOf, {{{3, 0}}, {{13 - 1e-4, 9}}}, "rough");
    ASSERT_TRUE(incumbent.best());
    EXPECT_EQ(incumbent.wirelength(), 10);

    // No room for these relations: a draft that is legal in another way stands for itself.
    Design wide = design;
    wide.dies[0].size.width = 95;
    Incumbent other(wide, kRegion);
    const CoordinateSolver wideSolver(wide, kRegion);
    other.offerExact(wideSolver, leftOf, {{{0, 0}}, {{80, 9}}}, "overlapping");
    EXPECT_FALSE(other.best());
    other.offerExact(wideSolver, leftOf, {{{0, 0}}, {{0, 12}}}, "draft");
    ASSERT_TRUE(other.best());
    EXPECT_EQ(other.wirelength(), 12);
}

}  // namespace
}  // namespace korvel::test
