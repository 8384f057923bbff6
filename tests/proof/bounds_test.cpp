// Bounds of a proof, against placements and positions that they must not exceed.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>

#include "exact/ExactCoordinates.h"
#include "proof/NodeBounder.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::RandomDesigns;
using test::RandomShape;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

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

}  // namespace
}  // namespace korvel
