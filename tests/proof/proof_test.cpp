// Proofs of optimality, against plain enumeration.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <thread>

#include "exact/ExactCoordinates.h"
#include "proof/ProofModel.h"
#include "proof/Prover.h"
#include "proof/Symmetry.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::isLegal;
using test::RandomDesigns;
using test::RandomShape;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kRounding = 1e-9;
constexpr double kTolerance = 1e-6;

struct Outcome {
    ProofResult result;
    std::optional<Found> best;
    double lowerBoundSeen;
    double shareDone;
};

Outcome proveAlone(const Design& design, Region region, const ProofOptions& options = {}) {
    Incumbent incumbent(design, region);
    ProofProgress progress;
    const ProofResult result = prove(design, region, options, incumbent, {}, progress);
    return {result, incumbent.best(), progress.lowerBound, progress.shareDone};
}

// --- Proofs ----------------------------------------------------------------------------------

// With sizes and offsets on a grid some best placement lies on it too, so all grid positions in all
// orientations are all there is to try.
class GridSearch {
public:
    GridSearch(const Design& design, Region region, double grid)
        : design(design), region(region), grid(grid), placement(design.dies.size()) {}

    // Infinity if nothing fits.
    double shortest() {
        tryFrom(0);
        return best;
    }

private:
    void tryFrom(unsigned die) {
        if (die == placement.size()) {
            best = std::min(best, wirelength(design, placement));
            return;
        }
        for (const Orient orient : test::kNotMirrored) {
            const Extent size = turned(design.dies[die].size, orient);
            for (double x = 0.0; x + size.width <= region.width + kRounding; x += grid) {
                for (double y = 0.0; y + size.height <= region.height + kRounding; y += grid) {
                    placement[die] = {{x, y}, orient};
                    if (isApartFromEarlier(die, size)) {
                        tryFrom(die + 1);
                    }
                }
            }
        }
    }

    bool isApartFromEarlier(unsigned die, Extent size) const {
        const Spot at = placement[die].at;
        for (unsigned other = 0; other < die; ++other) {
            const Spot from = placement[other].at;
            const Extent extent = turned(design.dies[other].size, placement[other].orient);
            if (at.x + size.width > from.x + kRounding &&
                from.x + extent.width > at.x + kRounding &&
                at.y + size.height > from.y + kRounding &&
                from.y + extent.height > at.y + kRounding) {
                return false;
            }
        }
        return true;
    }

    const Design& design;
    Region region;
    double grid;
    Placement placement;
    double best = kInfinity;
};

// A proof's claim: as short as enumeration says, with a placement to show for it.
void expectProof(const Design& design, Region region, const Outcome& run, double shortest) {
    if (std::isinf(shortest)) {
        EXPECT_EQ(run.result.end, ProofEnd::NoPlacement);
        EXPECT_FALSE(run.best);
        return;
    }
    ASSERT_EQ(run.result.end, ProofEnd::Proved);
    ASSERT_TRUE(run.best && isLegal(design, region, run.best->placement, kRounding));
    EXPECT_NEAR(wirelength(design, run.best->placement), shortest, shortest * kTolerance + 1e-9);
    EXPECT_NEAR(run.best->wirelength(), shortest, shortest * kTolerance + 1e-9);
    EXPECT_LE(run.result.lowerBound, shortest + 1e-9);
    EXPECT_NEAR(run.result.lowerBound, shortest, shortest * kTolerance + 1e-6);
    EXPECT_LE(run.lowerBoundSeen, shortest + 1e-9);
    EXPECT_NEAR(run.shareDone, 1.0, 1e-9);
}

struct ProofCase {
    const char* name;
    RandomShape shape;
    double width, height;
    int rounds;
};

class ProofAgainstEnumeration : public testing::TestWithParam<ProofCase> {};

TEST_P(ProofAgainstEnumeration, SameOptimum) {
    const auto& [name, shape, width, height, rounds] = GetParam();
    const Region region{width, height};
    RandomDesigns random(5);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        const Design design = random.make(shape);
        const double shortest = GridSearch(design, region, shape.grid).shortest();
        expectProof(design, region, proveAlone(design, region), shortest);
        expectProof(design, region, proveAlone(design, region, {.threads = 2}), shortest);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Designs, ProofAgainstEnumeration,
    testing::Values(ProofCase{"plain", {3, 2, 6, 2, 3, 6, 1.0}, 5, 4, 12},
                    ProofCase{"wideNets", {3, 3, 6, 6, 3, 6, 1.0}, 4, 5, 10},
                    ProofCase{"squareWithoutTerminals", {3, 0, 6, 3, 3, 6, 1.0}, 5, 5, 8},
                    ProofCase{"oblongWithoutTerminals", {3, 0, 6, 3, 3, 6, 1.0}, 6, 4, 8},
                    ProofCase{"fractions", {3, 2, 7, 4, 7, 8, 0.3}, 2.4, 2.1, 8},
                    ProofCase{"tight", {3, 1, 5, 4, 4, 6, 1.0}, 4, 4, 30},
                    ProofCase{"fourDies", {4, 2, 8, 4, 2, 5, 1.0}, 3, 4, 4},
                    ProofCase{"fourDiesWithoutTerminals", {4, 0, 8, 3, 2, 5, 1.0}, 4, 3, 3},
                    ProofCase{"twoDies", {2, 3, 6, 4, 5, 9, 1.0}, 8, 7, 20},
                    ProofCase{"oneDie", {1, 3, 6, 4, 5, 9, 1.0}, 6, 5, 20}),
    [](const auto& one) { return one.param.name; });

// The best of all turns and all relations, with the exact coordinates for each.
double shortestOfAllRelations(const Design& design, Region region) {
    const CoordinateSolver solver(design, region);
    const auto dieNum = static_cast<unsigned>(design.dies.size());
    const unsigned pairNum = dieNum * (dieNum - 1) / 2;
    double best = kInfinity;
    for (unsigned turns = 0; turns < 1U << 2 * dieNum; ++turns) {
        std::vector<Orient> orients;
        for (unsigned die = 0; die < dieNum; ++die) {
            orients.push_back(static_cast<Orient>(turns >> 2 * die & 3));
        }
        for (unsigned code = 0; code < 1U << 2 * pairNum; ++code) {
            Relations relations(dieNum);
            for (unsigned high = 1, pair = 0; high < dieNum; ++high) {
                for (unsigned low = 0; low < high; ++low, ++pair) {
                    relations.set(low, high, static_cast<Topology>(code >> 2 * pair & 3));
                }
            }
            if (const auto placement = solver.solve(relations, orients)) {
                best = std::min(best, wirelength(design, *placement));
            }
        }
    }
    return best;
}

// Here sizes and pins are on so fine a grid that hardly any two are alike.
TEST(Proof, NoTurnsAndRelationsAreBetter) {
    RandomDesigns random(41);
    for (const unsigned terminals : {0U, 4U, 4U}) {
        const Design design = random.make({3, terminals, 20, 4, 4000, 8000, 0.001});
        const Region region{8.0 - terminals, 7.5 - terminals / 2};
        expectProof(design, region, proveAlone(design, region, {.threads = 2}),
                    shortestOfAllRelations(design, region));
    }
}

// --- Symmetry --------------------------------------------------------------------------------

// Adds a die that looks like another one after `quarters` turns, with the same nets to the others.
void addTwin(Design& design, unsigned die, unsigned quarters) {
    const auto twin = static_cast<unsigned>(design.dies.size());
    const auto orient = static_cast<Orient>(quarters);
    const Extent size = design.dies[die].size;
    for (Design::Net& net : design.nets) {
        for (Design::Pin& pin : net.pins) {
            pin.body += pin.body >= twin ? 1 : 0;  // terminals make room
        }
    }
    design.dies.push_back({"twin", turned(size, orient)});
    const std::vector<Design::Net> nets = design.nets;
    for (Design::Net net : nets) {
        bool isItsOwn = false;
        for (Design::Pin& pin : net.pins) {
            if (pin.body == die) {
                isItsOwn = true;
                pin = {twin, turned(pin.offset, size, orient)};
            }
        }
        if (isItsOwn) {
            design.nets.push_back(net);
        }
    }
}

struct TwinCase {
    const char* name;
    RandomShape shape;  // of the others
    unsigned twins;
    double width, height;
    int rounds;
};

class ProofWithTwins : public testing::TestWithParam<TwinCase> {};

TEST_P(ProofWithTwins, KeepsTheOptimum) {
    const auto& [name, shape, twins, width, height, rounds] = GetParam();
    const Region region{width, height};
    RandomDesigns random(17);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        Design design = random.make(shape);
        for (unsigned twin = 0; twin < twins; ++twin) {
            addTwin(design, 0, static_cast<unsigned>(random.number(0, 3)));
        }
        const NetModel nets(design);
        const ProofModel model(design, nets, region);
        std::vector<unsigned> order(design.dies.size());
        std::iota(order.begin(), order.end(), 0U);
        EXPECT_GE(Symmetry(model, order).getImageNum(), twins == 1 ? 2U : 6U);
        const double shortest = GridSearch(design, region, shape.grid).shortest();
        expectProof(design, region, proveAlone(design, region, {.threads = 2}), shortest);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Designs, ProofWithTwins,
    testing::Values(TwinCase{"square", {2, 0, 4, 3, 3, 0, 1.0}, 1, 5, 5, 6},
                    TwinCase{"oblong", {2, 0, 4, 3, 3, 0, 1.0}, 1, 4, 6, 6},
                    TwinCase{"terminals", {2, 2, 5, 4, 3, 5, 1.0}, 1, 5, 5, 30},
                    TwinCase{"twinsAndTerminals", {1, 3, 5, 3, 4, 6, 1.0}, 1, 7, 6, 30},
                    TwinCase{"triplets", {2, 0, 3, 3, 2, 0, 1.0}, 2, 4, 3, 4}),
    [](const auto& one) { return one.param.name; });

TEST(Symmetry, NeitherTerminalsNorSidesThatDifferAreTurned) {
    Design design;
    design.dies = {{"a", {3, 2}}, {"b", {2, 2}}};
    design.nets = {{{{0, {0, 0}}, {1, {1, 2}}}}};
    const std::vector<unsigned> order{0, 1};
    const auto imageNum = [&](Region region) {
        return Symmetry(ProofModel(design, NetModel(design), region), order).getImageNum();
    };
    EXPECT_EQ(imageNum({9, 9}), 4U);
    EXPECT_EQ(imageNum({9, 8}), 2U);
    design.terminals = {{"t", {4, 0}}};
    design.nets.push_back({{{1, {0, 0}}, {2, {}}}});
    EXPECT_EQ(imageNum({9, 9}), 1U);
}

// Two dies with nets of their own to the same terminals, by pairs or with a third die on each, can
// be exchanged. They cannot when a terminal of one of them is moved, be it the lower or the upper
// end of its net along either axis.
TEST(Symmetry, TwinsAreWantedAtTheSamePlaces) {
    const std::vector<unsigned> order{0, 1, 2};
    const auto imageNum = [&](unsigned pinsOnThird, Spot low, Spot high) {
        Design design;
        design.dies = {{"a", {3, 2}}, {"b", {3, 2}}, {"third", {2, 1}}};
        design.terminals = {{"low", {0, 0}}, {"high", {5, 4}}, {"l", low}, {"h", high}};
        for (const unsigned die : {0U, 1U}) {
            Design::Net net{{{die, {1, 0}}, {3 + 2 * die, {}}, {4 + 2 * die, {}}}};
            net.pins.insert(net.pins.end(), pinsOnThird, {2, {0, 1}});
            design.nets.push_back(net);
        }
        return Symmetry(ProofModel(design, NetModel(design), {9, 9}), order).getImageNum();
    };
    for (const unsigned pinsOnThird : {0U, 1U}) {
        EXPECT_EQ(imageNum(pinsOnThird, {0, 0}, {5, 4}), 2U);
        for (const Spot moved : {Spot{1, 0}, Spot{0, 1}}) {
            EXPECT_EQ(imageNum(pinsOnThird, moved, {5, 4}), 1U);
            EXPECT_EQ(imageNum(pinsOnThird, {0, 0}, {5 + moved.x, 4 + moved.y}), 1U);
        }
    }
}

TEST(Symmetry, TurnsThatLookTheSameAreTriedOnce) {
    Design design;
    design.dies = {{"centred", {3, 2}}, {"square", {2, 2}}, {"plain", {4, 2}}, {"bare", {2, 2}}};
    design.nets = {{{{0, {1.5, 1}}, {1, {1, 1}}, {2, {0, 1}}}}};
    const std::vector<unsigned> order{0, 1, 2, 3};
    const NetModel nets(design);
    const ProofModel model(design, nets, {20, 20});
    const Symmetry symmetry(model, order);
    EXPECT_EQ(symmetry.turnsOf(0).size(), 2U);
    EXPECT_EQ(symmetry.turnsOf(1).size(), 1U);
    EXPECT_EQ(symmetry.turnsOf(2).size(), 4U);
    EXPECT_EQ(symmetry.turnsOf(3).size(), 1U);
}

// --- How proofs end --------------------------------------------------------------------------

TEST(Proof, NoPlacementIsProvedThoughTheAreaWouldDo) {
    // Four of 3 x 2 around a hole would need 5 x 5; with a fifth and a sixth one of 2 x 1 there is
    // area left in 5.5 x 5.5, but nowhere in one piece.
    Design design;
    for (const Extent size : {Extent{3, 2}, {3, 2}, {3, 2}, {3, 2}, {2, 1}, {2, 1}}) {
        design.dies.push_back({"d", size});
    }
    design.nets = {{{{0, {0, 0}}, {5, {1, 1}}}}, {{{1, {3, 2}}, {4, {0, 1}}, {2, {1, 1}}}}};
    const Outcome run = proveAlone(design, {5.5, 5.5}, {.threads = 2});
    EXPECT_EQ(run.result.end, ProofEnd::NoPlacement);
    EXPECT_EQ(run.result.lowerBound, kInfinity);
    EXPECT_FALSE(run.best);
    EXPECT_EQ(proveAlone(design, {6, 6}, {.threads = 2}).result.end, ProofEnd::Proved);
}

// As many dies as can be proved in principle, far too many to be proved in time.
Design endless(RandomDesigns& random) {
    return random.make({11, 6, 200, 4, 5, 30, 1.0});
}

TEST(Proof, AStoppedRunProvesNothing) {
    RandomDesigns random(23);
    for (const int milliseconds : {0, 1, 30}) {
        const Design design = endless(random);
        Incumbent incumbent(design, {30, 30});
        ProofProgress progress;
        std::stop_source source;
        const std::jthread stopper([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            source.request_stop();
        });
        const ProofResult result =
            prove(design, {30, 30}, {.threads = 2}, incumbent, source.get_token(), progress);
        EXPECT_EQ(result.end, ProofEnd::Stopped);
        EXPECT_LE(result.lowerBound, incumbent.wirelength());
        EXPECT_LT(progress.shareDone, 1.0);
    }
}

TEST(Proof, AGapIsReachedAndSaidSo) {
    RandomDesigns random(29);
    const Region region{9, 8};
    for (int round = 0; round < 10; ++round) {
        const Design design = random.make({4, 3, 12, 4, 4, 9, 1.0});
        const Outcome exact = proveAlone(design, region);
        const Outcome rough = proveAlone(design, region, {.threads = 2, .gap = 0.2});
        if (!exact.best) {
            continue;
        }
        ASSERT_TRUE(rough.best);
        EXPECT_LE(rough.best->wirelength(), exact.best->wirelength() / 0.8 + 1e-9);
        EXPECT_GE(rough.result.lowerBound, rough.best->wirelength() * 0.8 - 1e-9);
        EXPECT_LE(rough.result.lowerBound, exact.best->wirelength());
        EXPECT_LE(rough.result.nodes, exact.result.nodes);
        const bool isProved =
            rough.result.lowerBound >= rough.best->wirelength() * (1.0 - kTolerance);
        EXPECT_EQ(rough.result.end, isProved ? ProofEnd::Proved : ProofEnd::GapReached);
    }
}

// What others have found bounds the search; what is no better than that is not offered.
TEST(Proof, TheIncumbentOfOthersIsProvedToo) {
    RandomDesigns random(31);
    const Region region{9, 9};
    const Design design = random.make({4, 3, 12, 4, 4, 9, 1.0});
    const Outcome alone = proveAlone(design, region);
    ASSERT_TRUE(alone.best);
    Incumbent incumbent(design, region);
    incumbent.offer(alone.best->placement, "others");
    ProofProgress progress;
    const ProofResult result = prove(design, region, {}, incumbent, {}, progress);
    EXPECT_EQ(result.end, ProofEnd::Proved);
    EXPECT_EQ(incumbent.best()->finder, "others");
    EXPECT_LT(result.nodes, alone.result.nodes);
}

TEST(Proof, TooManyDiesGetALowerBoundOnly) {
    RandomDesigns random(37);
    const Design design = random.make({kMaxProofDies + 3, 6, 60, 2, 5, 30, 1.0});
    const Outcome run = proveAlone(design, {60, 60});
    EXPECT_EQ(run.result.end, ProofEnd::Stopped);
    EXPECT_GT(run.result.lowerBound, 0.0);
}

}  // namespace
}  // namespace korvel
