// Proofs of optimality, against plain enumeration; bounds, against placements that they must not
// exceed.
#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <thread>

#include "exact/ExactCoordinates.h"
#include "proof/NodeBounder.h"
#include "proof/Prover.h"
#include "random_designs.h"

namespace korvel {
namespace {

using test::isLegal;
using test::RandomDesigns;
using test::RandomShape;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kRounding = 1e-9;
constexpr double kTolerance = 1e-6;

struct Run {
    ProofResult result;
    std::optional<Found> best;
    double lowerBoundSeen;
    double shareDone;
};

Run proveAlone(const Design& design, Region region, const ProofOptions& options = {}) {
    Incumbent incumbent;
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
        : model(design, region),
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
                    return bounder.withTurn(node, high,
                                            static_cast<unsigned>(placement[high].orient));
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
        return bounder.withRelation(node, low, high, topology);
    }

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
        ASSERT_NEAR(descent.getNode().bound, wirelength(design, *shortest), 1e-6)
            << "round " << round;
    }
    EXPECT_GT(placed, rounds / 20);
}

INSTANTIATE_TEST_SUITE_P(
    Designs, ProofBounds,
    testing::Values(BoundCase{"plain", {3, 2, 8, 2, 4, 8, 1.0}, 11, 10, 1500},
                    BoundCase{"wideNets", {4, 3, 10, 6, 4, 8, 1.0}, 14, 13, 1500},
                    BoundCase{"noTerminals", {4, 0, 10, 3, 4, 8, 1.0}, 13, 14, 1500},
                    BoundCase{"terminalsOnly", {3, 6, 8, 2, 4, 20, 1.0}, 9, 9, 1000},
                    BoundCase{"fractions", {4, 2, 9, 4, 7, 12, 0.3}, 6.3, 6.6, 1500},
                    BoundCase{"manyNets", {3, 2, 200, 3, 16, 20, 0.25}, 9, 9, 300},
                    BoundCase{"sixDies", {6, 3, 20, 4, 3, 12, 1.0}, 17, 16, 1000}),
    [](const auto& one) { return one.param.name; });

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
void expectProof(const Design& design, Region region, const Run& run, double shortest) {
    if (std::isinf(shortest)) {
        EXPECT_EQ(run.result.end, ProofEnd::NoPlacement);
        EXPECT_FALSE(run.best);
        return;
    }
    ASSERT_EQ(run.result.end, ProofEnd::Proved);
    ASSERT_TRUE(run.best && isLegal(design, region, run.best->placement, kRounding));
    EXPECT_NEAR(wirelength(design, run.best->placement), shortest, shortest * kTolerance + 1e-9);
    EXPECT_NEAR(run.best->wirelength, shortest, shortest * kTolerance + 1e-9);
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
    testing::Values(ProofCase{"plain", {3, 2, 6, 2, 3, 6, 1.0}, 5, 4, 25},
                    ProofCase{"wideNets", {3, 3, 6, 6, 3, 6, 1.0}, 4, 5, 25},
                    ProofCase{"squareWithoutTerminals", {3, 0, 6, 3, 3, 6, 1.0}, 5, 5, 25},
                    ProofCase{"oblongWithoutTerminals", {3, 0, 6, 3, 3, 6, 1.0}, 6, 4, 25},
                    ProofCase{"fractions", {3, 2, 7, 4, 7, 8, 0.3}, 2.4, 2.1, 15},
                    ProofCase{"tight", {3, 1, 5, 4, 4, 6, 1.0}, 4, 4, 40},
                    ProofCase{"fourDies", {4, 2, 8, 4, 2, 5, 1.0}, 3, 4, 10},
                    ProofCase{"fourDiesWithoutTerminals", {4, 0, 8, 3, 2, 5, 1.0}, 4, 3, 6},
                    ProofCase{"twoDies", {2, 3, 6, 4, 5, 9, 1.0}, 8, 7, 40},
                    ProofCase{"oneDie", {1, 3, 6, 4, 5, 9, 1.0}, 6, 5, 40}),
    [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace korvel
