// Proofs of optimality, against plain enumeration; bounds, against placements that they must not
// exceed.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <thread>

#include "exact/ExactCoordinates.h"
#include "proof/NodeBounder.h"
#include "proof/Prover.h"
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

// --- Bounds ----------------------------------------------------------------------------------

Relations randomRelations(RandomDesigns& random, unsigned dieNum) {
    Relations relations(dieNum);
    for (unsigned a = 0; a < dieNum; ++a) {
        for (unsigned b = a + 1; b < dieNum; ++b) {
            relations.set(a, b, static_cast<Topology>(random.number(0, 3)));
        }
    }
    return relations;
}

// Decides the turns and relations of a placement one by one, in any order in which dies come before
// their relations.
class Descent {
public:
    Descent(const Design& design, Region region, const Relations& relations,
            const Placement& placement)
        : nets(design),
          model(design, nets, region),
          bounder(model),
          relations(relations),
          placement(placement),
          node(bounder.root()) {}

    const ProofNode& getNode() const { return node; }

    // To be asked at the end.
    Relations keptRelations() const {
        Relations kept(placement.size());
        for (unsigned high = 1; high < placement.size(); ++high) {
            for (unsigned low = 0; low < high; ++low) {
                const Whereabouts where = node.where[pairIndex(low, high)];
                EXPECT_TRUE(std::has_single_bit(where));
                kept.set(low, high, static_cast<Topology>(std::countr_zero(where)));
            }
        }
        return kept;
    }

    // False when there is nothing left to decide.
    bool decideOne(RandomDesigns& random) {
        std::vector<std::function<std::optional<ProofNode>()>> choices;
        for (unsigned high = 0; high < placement.size(); ++high) {
            if (!node.isTurned(high)) {
                choices.push_back([this, high] {
                    return bounder.withTurn(
                        node, high, static_cast<unsigned>(placement[high].orient), kInfinity);
                });
                continue;
            }
            for (unsigned low = 0; low < high; ++low) {
                if (node.isTurned(low) && !decided[low][high]) {
                    choices.push_back([this, low, high] { return relate(low, high); });
                }
            }
        }
        if (choices.empty()) {
            return false;
        }
        const auto next = choices[random.number(0, static_cast<int>(choices.size()) - 1)]();
        EXPECT_TRUE(next.has_value()) << "a legal placement was ruled out";
        if (next) {
            node = *next;
        }
        return next.has_value();
    }

private:
    std::optional<ProofNode> relate(unsigned low, unsigned high) {
        decided[low][high] = true;
        const Whereabouts where = node.where[pairIndex(low, high)];
        const Topology topology = relations.get(low, high);
        // What is implied already may be implied differently.
        if ((where & bitOf(topology)) == 0) {
            return node;
        }
        return bounder.withRelation(node, low, high, topology, kInfinity);
    }

    NetModel nets;
    ProofModel model;
    NodeBounder bounder;
    const Relations& relations;
    const Placement& placement;
    ProofNode node;
    bool decided[8][8]{};
};

struct BoundCase {
    const char* name;
    RandomShape shape;
    double width, height;
    int rounds;
};

class ProofBounds : public testing::TestWithParam<BoundCase> {};

// The way down to a placement never passes a bound above its length; at the end the bound is the
// length of the best placement with the same relations (of which some may imply others).
TEST_P(ProofBounds, NeverExceedAPlacementBelowThem) {
    const auto& [name, shape, width, height, rounds] = GetParam();
    const Region region{width, height};
    RandomDesigns random(11);
    int placed = 0;
    for (int round = 0; round < rounds; ++round) {
        const Design design = random.make(shape);
        const Relations relations = randomRelations(random, shape.dies);
        std::vector<Orient> orients(shape.dies);
        std::generate(orients.begin(), orients.end(), [&] { return random.orient(); });
        const auto placement = exactCoordinates(design, region, relations, orients);
        if (!placement) {
            continue;
        }
        ++placed;
        const double length = wirelength(design, *placement);
        Descent descent(design, region, relations, *placement);
        double before = 0.0;
        do {
            ASSERT_LE(descent.getNode().bound, length) << "round " << round;
            ASSERT_GE(descent.getNode().bound, before) << "round " << round;
            before = descent.getNode().bound;
        } while (descent.decideOne(random));
        const auto shortest = exactCoordinates(design, region, descent.keptRelations(), orients);
        ASSERT_TRUE(shortest);
        const double least = wirelength(design, *shortest);
        ASSERT_NEAR(descent.getNode().bound, least, 1e-6 + 2e-12 * least) << "round " << round;
    }
    EXPECT_GT(placed, rounds / 20);
}

INSTANTIATE_TEST_SUITE_P(
    Designs, ProofBounds,
    testing::Values(BoundCase{"plain", {3, 2, 8, 2, 4, 8, 1.0}, 11, 10, 800},
                    BoundCase{"wideNets", {4, 3, 10, 6, 4, 8, 1.0}, 14, 13, 800},
                    BoundCase{"noTerminals", {4, 0, 10, 3, 4, 8, 1.0}, 13, 14, 800},
                    BoundCase{"terminalsOnly", {3, 6, 8, 2, 4, 20, 1.0}, 9, 9, 800},
                    BoundCase{"fractions", {4, 2, 9, 4, 7, 12, 0.3}, 6.3, 6.6, 800},
                    BoundCase{"manyNets", {3, 2, 200, 3, 16, 20, 0.25}, 9, 9, 100},
                    BoundCase{"sixDies", {6, 3, 20, 4, 3, 12, 1.0}, 17, 16, 800},
                    // Here bounds are lengths from the beginning, but for rounding.
                    BoundCase{"noRoomToMove", {1, 3, 8, 4, 1, 30, 0.3}, 0.3, 0.3, 800},
                    BoundCase{"farAway", {1, 3, 8, 4, 1, 100'000'000, 0.3}, 0.3, 0.3, 800}),
    [](const auto& one) { return one.param.name; });

// Two dies and the ground, with nets of all kinds and a gap, all in whole numbers, so that trying
// whole positions finds the least length. A coarse nearness ends the descent early; the result
// allows for that.
TEST(AxisOptimum, NoPositionsGoBelowItHoweverCoarse) {
    RandomDesigns random(43);
    AxisOptimum optimum;
    for (int round = 0; round < 100; ++round) {
        const auto anywhere = [&] { return static_cast<double>(random.number(-9, 9)); };
        std::vector<PiecewiseLinear> costs;
        std::vector<PinRange> ranges;
        for (int i = 0; i < 3; ++i) {
            std::vector<PiecewiseLinear::Jump> jumps;
            for (int jump = 0; jump < 6; ++jump) {
                jumps.push_back({anywhere(), 1.0});
            }
            costs.emplace_back(100.0, -3.0, jumps);
            const double low = anywhere();
            ranges.push_back({low, low + random.number(0, 5)});
        }
        const double gap = anywhere();
        double least = kInfinity;
        for (double a = -40; a <= 40; ++a) {
            for (double b = a + gap; b <= 40; ++b) {
                const double low = std::min({ranges[0].low + a, ranges[1].low + b, ranges[2].low});
                const double high =
                    std::max({ranges[0].high + a, ranges[1].high + b, ranges[2].high});
                least = std::min(least, costs[0].value(b - a) + costs[1].value(a) +
                                            costs[2].value(b) + 2.0 * (high - low));
            }
        }
        for (const double nearness : {1e-9, 0.5, 1.5, 4.0}) {
            optimum.begin(3, nearness);
            optimum.addBundle(0, 1, costs[0]);
            optimum.addBundle(2, 0, costs[1]);
            optimum.addBundle(2, 1, costs[2]);
            optimum.addGap(0, 1, gap);
            optimum.beginWideNet(2.0);
            for (unsigned body = 0; body < 3; ++body) {
                optimum.addPins(body, ranges[body]);
            }
            std::array positions{anywhere(), anywhere()};
            const double found = optimum.minimise(positions.data());
            EXPECT_LE(found, least) << nearness << " in round " << round;
            EXPECT_TRUE(nearness > 0.1 || found > least - 1e-6) << "round " << round;
        }
    }
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
