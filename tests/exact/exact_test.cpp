// Best coordinates for given relations, against plain enumeration and against random moves.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "exact/ExactCoordinates.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::isLegal;
using test::RandomDesigns;
using test::RandomShape;

constexpr double kSlack = 1e-9;  // what rounding may cost

Relations randomRelations(RandomDesigns& random, unsigned dieNum) {
    Relations relations(dieNum);
    for (unsigned a = 0; a < dieNum; ++a) {
        for (unsigned b = a + 1; b < dieNum; ++b) {
            relations.set(a, b, static_cast<Topology>(random.number(0, 3)));
        }
    }
    return relations;
}

bool keepsRelations(const Design& design, const Relations& relations, const Placement& placement) {
    const auto end = [&](unsigned die) {
        const Extent size = turned(design.dies[die].size, placement[die].orient);
        return Spot{placement[die].at.x + size.width, placement[die].at.y + size.height};
    };
    for (unsigned a = 0; a < placement.size(); ++a) {
        for (unsigned b = 0; b < placement.size(); ++b) {
            const bool isApart =
                a == b || relations.get(a, b) == Topology::R ||
                relations.get(a, b) == Topology::A ||
                (relations.get(a, b) == Topology::L ? end(a).x <= placement[b].at.x + kSlack
                                                    : end(a).y <= placement[b].at.y + kSlack);
            if (!isApart) {
                return false;
            }
        }
    }
    return true;
}

// With sizes and offsets on a grid some best placement lies on it too, and x and y are apart. So
// all positions along one axis are tried while the other stays where it is, then the other's.
class Enumeration {
public:
    Enumeration(const Design& design, Region region, const Relations& relations,
                const std::vector<Orient>& orients, double grid)
        : design(design), region(region), relations(relations), grid(grid) {
        for (const Orient orient : orients) {
            placement.push_back({{0.0, 0.0}, orient});
        }
    }

    // Infinity if nothing fits.
    double shortest() {
        const double start = wirelength(design, placement);
        return bestAlong(&Spot::x, 0) + bestAlong(&Spot::y, 0) - start;
    }

private:
    double bestAlong(double Spot::*axis, unsigned die) {
        if (die == placement.size()) {
            return wirelength(design, placement);
        }
        double best = std::numeric_limits<double>::infinity();
        const Extent size = turned(design.dies[die].size, placement[die].orient);
        const bool isX = axis == &Spot::x;
        const double room = isX ? region.width - size.width : region.height - size.height;
        for (int step = 0; step * grid <= room + kSlack; ++step) {
            placement[die].at.*axis = step * grid;
            if (isApartFromEarlier(axis, die)) {
                best = std::min(best, bestAlong(axis, die + 1));
            }
        }
        placement[die].at.*axis = 0.0;
        return best;
    }

    bool isApartFromEarlier(double Spot::*axis, unsigned die) const {
        const Topology before = axis == &Spot::x ? Topology::L : Topology::B;
        const auto precedes = [&](unsigned a, unsigned b) {
            const Extent size = turned(design.dies[a].size, placement[a].orient);
            const double length = axis == &Spot::x ? size.width : size.height;
            return relations.get(a, b) != before ||
                   placement[a].at.*axis + length <= placement[b].at.*axis + kSlack;
        };
        for (unsigned other = 0; other < die; ++other) {
            if (!precedes(die, other) || !precedes(other, die)) {
                return false;
            }
        }
        return true;
    }

    const Design& design;
    Region region;
    const Relations& relations;
    double grid;
    Placement placement;
};

struct EnumerationCase {
    const char* name;
    RandomShape shape;
    double width, height;
    int rounds;
};

class ExactAgainstEnumeration : public testing::TestWithParam<EnumerationCase> {};

TEST_P(ExactAgainstEnumeration, SameWirelengthAndSameVerdict) {
    const auto& [name, shape, width, height, rounds] = GetParam();
    const Region region{width, height};
    RandomDesigns random(7);
    int placed = 0;
    for (int round = 0; round < rounds; ++round) {
        const Design design = random.make(shape);
        const Relations relations = randomRelations(random, shape.dies);
        std::vector<Orient> orients(shape.dies);
        std::generate(orients.begin(), orients.end(), [&] { return random.orient(); });

        const auto found = exactCoordinates(design, region, relations, orients);
        const double best = Enumeration(design, region, relations, orients, shape.grid).shortest();
        ASSERT_EQ(found.has_value(), std::isfinite(best)) << "round " << round;
        if (found) {
            ++placed;
            ASSERT_TRUE(isLegal(design, region, *found, kSlack)) << "round " << round;
            ASSERT_TRUE(keepsRelations(design, relations, *found)) << "round " << round;
            ASSERT_NEAR(wirelength(design, *found), best, 1e-8) << "round " << round;
        }
    }
    EXPECT_GT(placed, rounds / 10) << "the case should have legal relations";
    EXPECT_LT(placed, rounds) << "and others";
}

INSTANTIATE_TEST_SUITE_P(
    Designs, ExactAgainstEnumeration,
    testing::Values(EnumerationCase{"plain", {3, 2, 6, 2, 4, 8, 1.0}, 9, 8, 300},
                    EnumerationCase{"wideNets", {3, 3, 6, 6, 4, 8, 1.0}, 9, 8, 300},
                    EnumerationCase{"fourDies", {4, 2, 6, 4, 3, 8, 1.0}, 7, 6, 60},
                    EnumerationCase{"noTerminals", {3, 0, 6, 3, 4, 8, 1.0}, 8, 9, 100},
                    EnumerationCase{"farTerminals", {3, 4, 8, 4, 3, 40, 1.0}, 7, 8, 200},
                    EnumerationCase{"fractions", {3, 2, 6, 4, 7, 12, 0.3}, 3.6, 3.3, 100},
                    EnumerationCase{"diesWiderThanTheRegion", {3, 2, 5, 4, 6, 8, 1.0}, 12, 5, 300},
                    EnumerationCase{"manyNets", {2, 1, 300, 2, 64, 80, 1.0 / 16}, 7, 6, 20}),
    [](const auto& one) { return one.param.name; });

// Dies side by side in rows, with gaps.
Placement inRows(const Design& design, double width, RandomDesigns& random) {
    Placement placement;
    Spot at{0.0, 0.0};
    double top = 0.0;
    for (const Design::Die& die : design.dies) {
        const Orient orient = random.orient();
        const Extent size = turned(die.size, orient);
        if (at.x + size.width > width) {
            at = {0.0, top + random.number(0, 3)};
        }
        placement.push_back({at, orient});
        at.x += size.width + random.number(0, 4);
        top = std::max(top, at.y + size.height);
    }
    return placement;
}

TEST(ExactCoordinates, NoLegalMoveOfSomeDiesShortensThem) {
    RandomDesigns random(3);
    for (int round = 0; round < 10; ++round) {
        const Design design = random.make({25, 10, 120, 5, 12, 60, 1.0});
        const Region region{60, 80};
        const Placement start = inRows(design, region.width, random);
        if (!isLegal(design, region, start)) {
            continue;
        }
        std::vector<Orient> orients;
        for (const PlacedDie& die : start) {
            orients.push_back(die.orient);
        }
        const Relations relations = Relations::of(design, start);
        const auto best = exactCoordinates(design, region, relations, orients);
        ASSERT_TRUE(best && isLegal(design, region, *best, kSlack));
        const double shortest = wirelength(design, *best);
        ASSERT_LE(shortest, wirelength(design, start));
        int legal = 0;
        for (int move = 0; move < 3000; ++move) {
            Placement moved = *best;
            const Spot step{random.number(-3, 3) / 2.0, random.number(-3, 3) / 2.0};
            for (int die = random.number(1, 6); die > 0; --die) {
                Spot& at = moved[static_cast<unsigned>(random.number(0, 24))].at;
                at = {at.x + step.x, at.y + step.y};
            }
            if (isLegal(design, region, moved, kSlack) &&
                keepsRelations(design, relations, moved)) {
                ++legal;
                ASSERT_GE(wirelength(design, moved), shortest - 1e-7);
            }
        }
        EXPECT_GT(legal, 20);
    }
}

TEST(ExactCoordinates, FillsTheRegionDespiteRounding) {
    // Ten dies of a tenth: their sum in doubles is not 1, and there is nowhere else to go.
    Design design;
    Relations relations(10);
    for (unsigned die = 0; die < 10; ++die) {
        design.dies.push_back({"d", {0.1, 1.0}});
        design.nets.push_back({{{die, {0.05, 0.5}}, {(die + 3) % 10, {0.1, 0.5}}}});
        for (unsigned other = 0; other < die; ++other) {
            relations.set(other, die, Topology::L);
        }
    }
    const std::vector<Orient> upright(10, Orient::N);
    const auto found = exactCoordinates(design, {1.0, 1.0}, relations, upright);
    ASSERT_TRUE(found);
    EXPECT_TRUE(isLegal(design, {1.0, 1.0}, *found, kSlack));
    EXPECT_FALSE(exactCoordinates(design, {1.0 - 1e-7, 1.0}, relations, upright));
}

// Lengths that are whole numbers leave nothing to rounding. The first die is wanted beyond its
// place by less than what counts as meant there, the second one at the end of the region.
TEST(ExactCoordinates, WholeLengthsStayInTheRegionExactly) {
    Design design;
    design.dies = {{"a", {2, 1}}, {"b", {3, 1}}};
    design.terminals = {{"near", {5 + 4e-10, 0}}, {"far", {20, 0}}};
    design.nets = {{{{0, {0, 0}}, {2, {}}}}, {{{1, {0, 0}}, {3, {}}}}, {{{1, {1, 0}}, {3, {}}}}};
    Relations relations(2);
    relations.set(0, 1, Topology::L);
    const auto found = exactCoordinates(design, {10, 1}, relations, {Orient::N, Orient::N});
    ASSERT_TRUE(found);
    EXPECT_EQ((*found)[0].at.x, 5.0);
    EXPECT_EQ((*found)[1].at.x, 7.0);
}

// However far outside the region a terminal lies, it pulls as if it were just outside.
TEST(ExactCoordinates, TerminalsPullAlikeFromAnyDistance) {
    Design design;
    design.dies = {{"a", {2, 1}}, {"b", {3, 1}}};
    design.nets = {{{{0, {0, 0}}, {2, {}}}}, {{{1, {0, 0}}, {3, {}}}}, {{{0, {1, 0}}, {1, {}}}}};
    Relations relations(2);
    relations.set(0, 1, Topology::L);
    for (const double distance : {11.0, 1e6, 1e12, 1e18}) {
        for (const double side : {-1.0, 1.0}) {
            design.terminals = {{"t", {side * distance, 0}}, {"u", {2 * side * distance, 0}}};
            const auto found = exactCoordinates(design, {10, 1}, relations, {Orient::N, Orient::N});
            ASSERT_TRUE(found);
            EXPECT_DOUBLE_EQ((*found)[0].at.x, side < 0 ? 0.0 : 5.0) << side * distance;
            EXPECT_DOUBLE_EQ((*found)[1].at.x, side < 0 ? 2.0 : 7.0) << side * distance;
        }
    }
}

TEST(ExactCoordinates, RelationsInACircleAreNone) {
    const Design design = RandomDesigns(1).make({3, 0, 3, 2, 2, 0, 1.0});
    Relations relations(3);
    relations.set(0, 1, Topology::L);
    relations.set(1, 2, Topology::L);
    relations.set(2, 0, Topology::L);
    EXPECT_FALSE(
        exactCoordinates(design, {100, 100}, relations, std::vector<Orient>(3, Orient::N)));
}

}  // namespace
}  // namespace korvel
