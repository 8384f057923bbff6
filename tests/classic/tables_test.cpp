// The lower bounds that are computed before a search.

#include "support/helpers.h"

namespace korvel::test {
namespace {

constexpr Topology kTopologies[] = {Topology::L, Topology::R, Topology::A, Topology::B};

// Two dies that touch, joined by net 0: how far their pins are apart across the touching edges.
double apart(const Design& design, Orient oa, Orient ob, Topology sideOfA) {
    const Die& a = design.dies[0];
    const Die& b = design.dies[1];
    const bool horizontal = sideOfA == Topology::L || sideOfA == Topology::R;
    const bool aFirst = sideOfA == Topology::L || sideOfA == Topology::B;
    Spot atA{OrientConverter::OrientToString(oa), 0, 0};
    Spot atB{OrientConverter::OrientToString(ob), 0, 0};
    Spot& second = aFirst ? atB : atA;
    const auto [w, h] = aFirst ? extent(a, atA.orient) : extent(b, atB.orient);
    (horizontal ? second.x : second.y) = horizontal ? w : h;
    const auto [ax, ay] = pinPlace(a, design.nets[0][0], atA);
    const auto [bx, by] = pinPlace(b, design.nets[0][1], atB);
    return std::abs(horizontal ? ax - bx : ay - by);
}

// One die slides along the other until the pins are level, so that a pair costs what is left
// between them, in all four relative positions and whatever way the whole is turned.
TEST(PairTable, OneNetCostsWhatSlidingCannotClose) {
    for (unsigned seed = 0; seed < 8; ++seed) {
        SCOPED_TRACE(seed);
        Design design = randomDesign(seed, {2, 0, 1, true});
        design.nets[0] = {design.nets[0][1], design.nets[0][0]};  // d0, d1
        Engine engine(design);
        engine.placer.calcMinDistancesCombined();
        engine.placer.minimalOrintationalPairsCalc();
        const BoundTables& tables = engine.placer.getTables();
        for (const Orient oa : kTurned) {
            for (const Orient ob : kTurned) {
                double least = 1e9;
                for (const Topology side : kTopologies) {
                    const double want = apart(design, oa, ob, side);
                    EXPECT_NEAR(tables.getMinDistances(0, 1, oa, ob, side), want, 1e-4);
                    least = std::min(least, want);
                }
                EXPECT_NEAR(tables.minOrientPairDist(0, 1, oa, ob), least, 1e-4);
                EXPECT_NEAR(tables.minOrientPairDist(1, 0, ob, oa), least, 1e-4);
            }
        }
    }
}

float leftDistance(const Design& design, unsigned i, unsigned j) {
    Engine engine(design);
    engine.placer.calcMinDistancesCombined();
    return engine.placer.getTables().getMinDistances(i, j, Orient::N, Orient::N, Topology::L);
}

// Of three nets that want die b up by 1, 3 and 8, the middle one decides, which leaves 2 + 5; the
// pins meet on the touching edges.
TEST(PairTable, SeveralNetsMeetInTheMiddle) {
    Design design{{{"b", 10, 10}, {"a", 10, 20}}, {}, {}, {}};
    for (const float up : {8.0F, 1.0F, 3.0F}) {
        design.nets.push_back({{"b", -50, -50}, {"a", 50, up * 5 - 50}});
    }
    EXPECT_EQ(leftDistance(design, 1, 0), 7);
}

// A net that goes on to a third die counts in part: its length times 0.75 (0.7 with a terminal) to
// the power of its dies plus the first die's index, halved, times 2.4. Up to eight dies scale the
// power.
TEST(PairTable, OpenNetsAreDiscounted) {
    Design design{{{"a", 8, 8}, {"b", 8, 8}, {"c", 8, 8}}, {{"t", 0, 0}}, {}, {}};
    for (const auto& [dies, power] : {std::pair{3U, 20.0 / 3}, {8U, 20.0 / 8}, {9U, 2.0}}) {
        SCOPED_TRACE(dies);
        while (design.dies.size() < dies) {
            design.dies.push_back({"d" + std::to_string(design.dies.size()), 8, 8});
        }
        design.nets = {{{"a"}, {"b"}, {"c"}}};
        EXPECT_FLOAT_EQ(leftDistance(design, 1, 0), float(8 * std::pow(0.75, power) * 2.4));
        design.nets = {{{"a"}, {"b"}, {"c"}, {"t"}}};
        EXPECT_FLOAT_EQ(leftDistance(design, 1, 0), float(8 * std::pow(0.7, power) * 2.4));
    }
    design.dies.resize(3);
    design.nets = {{{"a"}, {"b"}, {"t"}}};  // complete: the terminal takes its share
    EXPECT_EQ(leftDistance(design, 1, 0), 4);
    EXPECT_EQ(leftDistance(design, 2, 0), 0);
}

// A die of 10 x 4 with its pin at the centre, in an area of 100 x 60.
TEST(TerminalTable, ADieComesAsCloseAsTheAreaAllows) {
    struct Case {
        float x, y;
        float lying, standing;
    };
    const Case cases[] = {
        {50, 30, 0, 0},          {0, 0, 5 + 2, 2 + 5},   // left and down: stays at the origin
        {100, 30, 5, 2},                                 // the die's side stops at the right border
        {100, 60, 5 + 2, 2 + 5}, {0, 60, 5 + 2, 2 + 5},  // no step left, but up to the border
        {3, 30, 2, 0},  // no step left when lying, a step right when standing
        {50, 0, 2, 5},  // a step right only
    };
    for (const auto& [x, y, lying, standing] : cases) {
        SCOPED_TRACE(testing::Message() << x << ", " << y);
        Engine engine(Design{{{"d", 10, 4}}, {{"t", x, y}}, {{{"d"}, {"t"}}}, {100, 60}});
        engine.placer.calcMinDistancesCombined();
        engine.placer.calcMinTermDistCombined();
        const BoundTables& tables = engine.placer.getTables();
        EXPECT_EQ(tables.minTermDist, (std::vector<float>{lying, standing, lying, standing}));
        EXPECT_EQ(tables.minTermDistBlock, std::vector<float>{std::min(lying, standing)});
    }
}

TEST(LevelLists, HoldEveryRowsTerminalAndPairMinimaAndTheirSumsToTheEnd) {
    constexpr unsigned kDies = 5;
    Engine engine(randomDesign(3, {kDies, 6, 20}));
    const BoundTables& tables = engine.placer.getTables();
    engine.placer.calcMinDistancesCombined();
    EXPECT_EQ(tables.levelMinDistance[BoundTables::rowStart(3)], 0);
    engine.placer.calcMinTermDistCombined();
    engine.placer.updateRemainingDistances();
    std::vector<float> rows;
    for (unsigned i = 1; i < kDies; ++i) {
        EXPECT_GT(tables.minTermDistBlock[i - 1], 0);
        rows.push_back(tables.minTermDistBlock[i]);
        for (unsigned j = 0; j < i; ++j) {
            rows.push_back(std::numeric_limits<float>::max());
            for (const Orient oi : kTurned) {
                for (const Orient oj : kTurned) {
                    rows.back() =
                        std::min(rows.back(), tables.getMinDistances(i, j, oi, oj, Topology::L));
                }
            }
        }
    }
    rows.push_back(0);
    EXPECT_EQ(tables.levelMinDistance, rows);
    double rest = 0;
    for (std::size_t k = rows.size(); k-- > 0;) {
        rest += rows[k];
        EXPECT_NEAR(tables.minLevelRemainingDist[k], rest, 1e-3) << k;
    }
}

}  // namespace
}  // namespace korvel::test
