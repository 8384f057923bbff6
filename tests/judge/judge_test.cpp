// The judge of placements, on small cases and against a count on a grid.

#include "judge/Judge.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace korvel::test {
namespace {

Design withDies(const std::vector<Extent>& sizes) {
    Design design;
    for (const Extent& size : sizes) {
        design.dies.push_back({"d" + std::to_string(design.dies.size()), size});
    }
    return design;
}

constexpr Region kTenByTen{10.0, 10.0};

struct Case {
    const char* what;
    PlacedDie second;  // 4 x 2, beside one of 4 x 2 at the origin
    double tolerance;
    double overlap;                // area
    std::array<double, 4> beyond;  // left, right, below, above, all 0 if it is inside
    bool isLegal;
};

const std::vector<Case> kCases{
    {"beside", {{4, 0}}, 0, 0, {}, true},
    {"in the far corner", {{6, 8}}, 0, 0, {}, true},
    {"a corner shared", {{3, 1}}, 0, 1, {}, false},
    {"on top, turned", {{1, 0}, Orient::E}, 0, 4, {}, false},
    {"turned clear of it", {{0, 2}, Orient::W}, 0, 0, {}, true},
    {"turned out of the top", {{8, 7}, Orient::E}, 0, 0, {0, 0, 0, 1}, false},
    {"out at the right", {{7, 5}}, 0, 0, {0, 1, 0, 0}, false},
    {"out at two sides", {{-2, -3}}, 0, 0, {2, 0, 3, 0}, false},
    {"as deep as granted", {{3.5, 0}}, 0.5, 0, {}, true},
    {"as deep as granted from above", {{0, 1.5}}, 0.5, 0, {}, true},
    {"deeper than granted", {{3.25, 0}}, 0.5, 1.5, {}, false},
    {"as far out as granted", {{6.5, 5}}, 0.5, 0, {}, true},
    {"mirrored", {{5, 5}, Orient::FS}, 0, 0, {}, false},
    {"without orientation", {{5, 5}, Orient::Undefined}, 0, 0, {}, false},
};

void expectFaults(Extent size, const Case& expected) {
    const Judgement found =
        judge(withDies({size, size}), kTenByTen, {{}, expected.second}, expected.tolerance);
    EXPECT_EQ(found.isLegal(), expected.isLegal);
    EXPECT_DOUBLE_EQ(found.overlapArea, expected.overlap);
    EXPECT_EQ(found.overlapNum, expected.overlap > 0 ? 1U : 0U);
    std::array<double, 4> beyond{};
    if (!found.outside.empty()) {
        const auto& [die, left, right, below, above] = found.outside.front();
        EXPECT_EQ(die, 1U);
        beyond = {left, right, below, above};
    }
    EXPECT_EQ(beyond, expected.beyond);
}

// Both axes are judged alike, so each case is tried with x and y exchanged as well.
TEST(Judge, FindsWhatIsWrong) {
    for (const Case& expected : kCases) {
        SCOPED_TRACE(expected.what);
        expectFaults({4, 2}, expected);
        Case exchanged = expected;
        std::swap(exchanged.second.at.x, exchanged.second.at.y);
        const auto [left, right, below, above] = expected.beyond;
        exchanged.beyond = {below, above, left, right};
        SCOPED_TRACE("with x and y exchanged");
        expectFaults({2, 4}, exchanged);
    }
}

TEST(Judge, TakesNoNumberForAPlaceInside) {
    const Design design = withDies({{4, 2}, {4, 2}});
    for (const double nowhere : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        const Judgement found = judge(design, kTenByTen, {{{nowhere, 0}}, {{5, 5}}});
        ASSERT_EQ(found.outside.size(), 1U);
        EXPECT_EQ(found.outside[0].die, 0U);
    }
}

TEST(Judge, MeasuresDiesAndNets) {
    Design design = withDies({{4, 2}, {2, 2}});
    design.terminals = {{"t", {10, 0}}};
    design.nets = {
        {{{0, {4, 2}}, {1, {0, 0}}}},  // (2, 5) after the turn, (5, 7): 5
        {{{0, {0, 0}}, {0, {4, 0}}}},  // on one die: 4
        {{{1, {1, 1}}, {2, {}}}},      // (6, 8), (10, 0): 12
        {},
    };
    const Judgement found = judge(design, kTenByTen, {{{0, 5}, Orient::E}, {{5, 7}}});
    EXPECT_DOUBLE_EQ(found.wirelength, 21);
    EXPECT_DOUBLE_EQ(found.wirelengthBetweenDies, 17);
    EXPECT_DOUBLE_EQ(found.low.x, 0);
    EXPECT_DOUBLE_EQ(found.low.y, 5);
    EXPECT_DOUBLE_EQ(found.extent.width, 7);
    EXPECT_DOUBLE_EQ(found.extent.height, 4);
    EXPECT_DOUBLE_EQ(found.utilization, 0.12);
}

// Whole-unit dies, many of the same size, anywhere: what they share is counted cell by cell.
TEST(Judge, AgreesWithACountOfCells) {
    std::mt19937 random(7);
    const auto below = [&random](unsigned n) { return static_cast<double>(random() % n); };
    for (int round = 0; round < 200; ++round) {
        Design design;
        Placement placement;
        std::map<std::pair<int, int>, std::vector<unsigned>> cells;
        for (unsigned die = 0; die < 8; ++die) {
            const Extent size{1 + below(6), 1 + below(6)};
            const auto orient = static_cast<Orient>(random() % 4);
            design.dies.push_back({"d", size});
            placement.push_back({{below(20), below(20)}, orient});
            const bool lies = orient == Orient::E || orient == Orient::W;
            for (int x = 0; x < (lies ? size.height : size.width); ++x) {
                for (int y = 0; y < (lies ? size.width : size.height); ++y) {
                    cells[{placement[die].at.x + x, placement[die].at.y + y}].push_back(die);
                }
            }
        }
        std::map<std::pair<unsigned, unsigned>, double> expected;
        for (const auto& [cell, dies] : cells) {
            for (std::size_t a = 0; a < dies.size(); ++a) {
                for (std::size_t b = a + 1; b < dies.size(); ++b) {
                    ++expected[{dies[a], dies[b]}];
                }
            }
        }
        std::map<std::pair<unsigned, unsigned>, double> found;
        const Judgement judgement = judge(design, {30, 30}, placement);
        for (const Judgement::Overlap& overlap : judgement.overlaps) {
            found[{overlap.first, overlap.second}] = overlap.area();
        }
        EXPECT_EQ(found, expected);
        EXPECT_EQ(judgement.overlapNum, expected.size());
    }
}

TEST(Judge, KeepsToItsLimitOnAHeapOfDies) {
    const unsigned dieNum = 2'000;
    const Design design = withDies(std::vector<Extent>(dieNum, {1, 1}));
    const Judgement found = judge(design, kTenByTen, Placement(dieNum));
    EXPECT_EQ(found.overlapNum, std::size_t{dieNum} * (dieNum - 1) / 2);
    EXPECT_EQ(found.overlaps.size(), kMostOverlaps);
}

}  // namespace
}  // namespace korvel::test
