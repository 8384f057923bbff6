// Layouts under random changes: costs, packing and sliding against what the placement itself says,
// and which changes are accepted.
#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

#include "anneal/Acceptance.h"
#include "anneal/MoveGenerator.h"
#include "support/hosts.h"

namespace korvel::test {
namespace {

constexpr double kRounding = 1e-9;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Layout::Limits kNoLimits{kInfinity, kInfinity};
constexpr Region kRegion{30, 30};

double& along(Spot& spot, Axis axis) {
    return axis == kX ? spot.x : spot.y;
}

double sizeAlong(const Design& design, const PlacedDie& placed, unsigned die, Axis axis) {
    const Extent size = turned(design.dies[die].size, placed.orient);
    return axis == kX ? size.width : size.height;
}

// By how much the longest chain of dies exceeds the region, found by repeating until nothing grows.
double overflowOf(const Design& design, Region region, const Relations& relations,
                  const Placement& placement, Axis axis) {
    const Topology before = axis == kX ? Topology::L : Topology::B;
    std::vector<double> ends(design.dies.size(), 0.0);
    for (bool grows = true; grows;) {
        grows = false;
        for (unsigned die = 0; die < ends.size(); ++die) {
            double end = 0.0;
            for (unsigned other = 0; other < ends.size(); ++other) {
                if (other != die && relations.get(other, die) == before) {
                    end = std::max(end, ends[other]);
                }
            }
            end += sizeAlong(design, placement[die], die, axis);
            grows |= end > ends[die];
            ends[die] = end;
        }
    }
    const double side = axis == kX ? region.width : region.height;
    return std::max(0.0, *std::max_element(ends.begin(), ends.end()) / side - 1.0);
}

// A random design of eight dies in a region that most layouts fit into, and random changes.
class RandomChanges : public testing::TestWithParam<unsigned> {
protected:
    RandomChanges()
        : design(RandomDesigns(GetParam()).make({8, 4, 40, 5, 9, 30, 1.0})),
          prepared(design, kRegion),
          layout(prepared.nets(), prepared.limits),
          moves(layout, prepared),
          random(1, GetParam()) {
        layout.editOrders().shuffle(random);
        layout.arrange(random, kNoLimits);
        layout.keep();
    }

    const Design design;
    const PreparedDesign prepared;
    Layout layout;
    MoveGenerator moves;
    RandomStream random;
};

INSTANTIATE_TEST_SUITE_P(Designs, RandomChanges, testing::Range(1U, 6U));

// Kept or undone: the length is that of the placement measured from scratch, and what the layout
// says of legality is true.
TEST_P(RandomChanges, LengthAndOverflowAreThoseOfThePlacement) {
    const double onOneDie = wirelength(design, layout.placement()) - layout.length();
    int legal = 0;
    for (int change = 0; change < 300; ++change) {
        const double before = layout.length();
        moves.change(random);
        const Layout::Limits limits{change % 7 == 0 ? 0.0 : 1.0,
                                    change % 5 == 0 ? before : kInfinity};
        const bool isArranged = layout.arrange(random, limits);
        if (isArranged && layout.overflow() <= 0.0) {
            ASSERT_GE(layout.savedBySliding(), -kRounding);
            ASSERT_LE(layout.length() + layout.savedBySliding(), limits.pushedLength + 1e-7);
        }
        if (isArranged && random.coin()) {
            layout.keep();
        } else {
            layout.undo();
        }
        const Placement placement = layout.placement();
        ASSERT_NEAR(layout.length() + onOneDie, wirelength(design, placement), 1e-7);
        const Relations relations = layout.sequences().relations();
        ASSERT_NEAR(layout.overflow(),
                    overflowOf(design, kRegion, relations, placement, kX) +
                        overflowOf(design, kRegion, relations, placement, kY),
                    1e-8);
        if (layout.overflow() <= 0.0) {
            ++legal;
            ASSERT_TRUE(isLegal(design, kRegion, placement, kRounding));
            ASSERT_GE(leastGap(design, relations, placement), -kRounding);
        }
    }
    EXPECT_GT(legal, 0);
}

TEST_P(RandomChanges, UndoRestoresAllBits) {
    for (int change = 0; change < 200; ++change) {
        const Layout::Snapshot before = layout.snapshot();
        const double length = layout.length();
        const double overflow = layout.overflow();
        const double preferred = layout.preferredCorner(change % 8).x;
        moves.change(random);
        if (change % 3 == 0) {
            moves.change(random);
        }
        layout.arrange(random, {change % 7 == 0 ? 0.0 : 1.0, change % 5 == 0 ? length : kInfinity});
        layout.undo();
        ASSERT_EQ(layout.length(), length);
        ASSERT_EQ(layout.overflow(), overflow);
        ASSERT_EQ(layout.preferredCorner(change % 8).x, preferred);
        const Placement placement = layout.placement();
        for (unsigned die = 0; die < 8; ++die) {
            ASSERT_EQ(placement[die].at.x, before.placement[die].at.x);
            ASSERT_EQ(placement[die].at.y, before.placement[die].at.y);
            ASSERT_EQ(placement[die].orient, before.placement[die].orient);
            for (const auto which : SequencePair::kBoth) {
                ASSERT_EQ(layout.sequences().rank(which, die), before.orders.rank(which, die));
            }
        }
        if (change % 4 == 0) {
            moves.change(random);
            layout.arrange(random, kNoLimits);
            layout.keep();
        }
    }
}

// Eight dies are few enough for all that moved to slide, in the order of their numbers. So the last
// one of them has no better place that keeps the relations.
TEST_P(RandomChanges, SlideToTheBestPlaceBetweenNeighbours) {
    constexpr double kStep = 0.01;
    int tried = 0;
    int shorter = 0;
    for (int change = 0; change < 300; ++change) {
        const Placement before = layout.placement();
        moves.change(random);
        layout.arrange(random, kNoLimits);
        Placement after = layout.placement();
        const double length = wirelength(design, after);
        for (const Axis axis : {kX, kY}) {
            unsigned last = 8;
            for (unsigned die = 0; die < 8; ++die) {
                Spot was = before[die].at;
                last = along(was, axis) != along(after[die].at, axis) ? die : last;
            }
            if (last == 8 || layout.overflow() > 0.0) {
                continue;
            }
            const double at = along(after[last].at, axis);
            for (const double shifted : {at - kStep, at + kStep}) {
                along(after[last].at, axis) = shifted;
                if (isLegal(design, kRegion, after) &&
                    leastGap(design, layout.sequences().relations(), after) >= 0.0) {
                    ++tried;
                    shorter += wirelength(design, after) < length - 0.2 * kStep ? 1 : 0;
                }
            }
            along(after[last].at, axis) = at;
        }
        layout.keep();
    }
    EXPECT_GT(tried, 100);
    // When a die with a higher number slides back to where it was, another one is taken for the
    // last.
    EXPECT_LE(shorter, 2);
}

// Everything lies on a grid, so wirelengths a quarter of a step away give the slopes.
TEST_P(RandomChanges, CostsOfADieAreWirelengthsAndSlopes) {
    constexpr double kStep = 0.25;
    const NetsOfDies netsOfDies = findNetsOfDies(prepared.nets());
    for (const Axis axis : {kX, kY}) {
        std::vector<double> corners(9, 0.0);
        std::vector<Orient> orients(9, Orient::N);
        Placement placement(8);
        NetCosts costs(prepared.nets(), netsOfDies, axis, orients, corners);
        for (int round = 0; round < 50; ++round) {
            const unsigned die = random.below(8);
            orients[die] = placement[die].orient = static_cast<Orient>(random.below(4));
            along(placement[die].at, axis) = corners[die] = random.below(30);
            costs.turned(die);
            costs.beginMeasuring();
            costs.measureNetsOf(die);
            const double length = wirelength(design, placement);
            const auto costAt = [&](double corner) {
                Placement moved = placement;
                along(moved[die].at, axis) = corner;
                return wirelength(design, moved) - length;
            };
            const double here = costs.costAt(die, corners[die]).value;
            for (int place = -40; place < 40; ++place) {
                const NetCosts::Local local = costs.costAt(die, place);
                ASSERT_NEAR(local.value - here, costAt(place), kRounding);
                ASSERT_NEAR(local.right, (costAt(place + kStep) - costAt(place)) / kStep, 1e-8);
                ASSERT_NEAR(local.left, (costAt(place) - costAt(place - kStep)) / kStep, 1e-8);
            }
        }
    }
}

// The die in the middle is wanted far to the right, but goes no further than the next one.
TEST(Layout, ReleasedDiesPushNobodyWhereThereIsRoom) {
    Design design;
    design.dies = {{"left", {4, 4}}, {"middle", {2, 4}}, {"right", {4, 4}}, {"idle", {2, 2}}};
    design.terminals = {{"t", {30, 2}}};
    design.nets = {{{{1, {1, 2}}, {4, {0, 0}}}}};
    const NetModel nets(design);
    Layout layout(nets, {design, {40, 40}});
    SequencePair orders(4);
    layout.place({orders, {{{2, 0}}, {{8, 0}}, {{12, 0}}, {{20, 5}}}});
    for (const unsigned die : {1U, 3U}) {
        layout.release(die);
    }
    RandomStream random(1, 1);
    ASSERT_TRUE(layout.arrange(random, kNoLimits));
    const Placement placement = layout.placement();
    EXPECT_EQ(placement[0].at.x, 2.0);
    EXPECT_EQ(placement[1].at.x, 10.0);
    EXPECT_EQ(placement[2].at.x, 12.0);
    EXPECT_EQ(placement[3].at.x, 20.0) << "without nets it stays";
}

// --- Orders ----------------------------------------------------------------------------------

// Whatever the dies taken out, those left keep their order, and each die has one rank.
TEST(SequencePair, MovedDiesLeaveTheOthersInOrder) {
    constexpr unsigned kDies = 7;
    RandomStream random(2, 1);
    SequencePair pair(kDies);
    pair.shuffle(random);
    for (int round = 0; round < 200; ++round) {
        const auto which = static_cast<SequencePair::Which>(random.below(2));
        const unsigned die = random.below(kDies);
        const unsigned other = (die + 1 + random.below(kDies - 1)) % kDies;
        const bool isBefore = random.coin();
        std::vector<unsigned> expected = pair.order(which);
        std::erase(expected, die);
        const auto at = std::find(expected.begin(), expected.end(), other);
        expected.insert(isBefore ? at : at + 1, die);
        pair.moveBeside(which, die, other, isBefore);
        ASSERT_EQ(pair.order(which), expected);
        for (unsigned rank = 0; rank < kDies; ++rank) {
            ASSERT_EQ(pair.rank(which, expected[rank]), rank);
        }
    }
}

// --- Acceptance ------------------------------------------------------------------------------

// The rule of Metropolis: a change that costs the temperature more is accepted one time in e.
TEST(Acceptance, ThresholdsFollowTheTemperature) {
    RandomStream random(3, 1);
    Acceptance acceptance({10, 10});
    EXPECT_EQ(acceptance.drawThreshold(random), 0.0);
    acceptance.setTemperature(50.0);
    constexpr int kDraws = 20000;
    int above = 0;
    double sum = 0.0;
    for (int draw = 0; draw < kDraws; ++draw) {
        const double threshold = acceptance.drawThreshold(random);
        EXPECT_GE(threshold, 0.0);
        sum += threshold;
        above += threshold > 50.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / kDraws, 50.0, 1.5);
    EXPECT_NEAR(above / static_cast<double>(kDraws), 1.0 / std::exp(1.0), 0.015);
}

// Three dies of 6 in a row of 12 do not fit; one above the other two does.
class OverflowingLayout : public testing::Test {
protected:
    OverflowingLayout() : layout(nets, {design, kSquare}) {
        RandomStream random(4, 1);
        layout.arrange(random, kNoLimits);
        layout.keep();
        acceptance.restart(layout);
    }

    // How much more may overflow without being rejected early.
    double roomForOverflow() const { return acceptance.limits(1.0, true).overflow - 0.5; }

    static constexpr Region kSquare{12, 12};
    const Design design{"", {{"a", {6, 6}}, {"b", {6, 6}}, {"c", {6, 6}}}, {}, {}};
    const NetModel nets{design};
    Layout layout;
    Acceptance acceptance{kSquare};
};

TEST_F(OverflowingLayout, CostsAPenaltyThatRisesUntilItIsLegal) {
    EXPECT_NEAR(layout.overflow(), 0.5, 1e-8);
    EXPECT_FALSE(acceptance.isLegal());
    EXPECT_NEAR(acceptance.costOf(layout), 0.0, kRounding);
    double before = roomForOverflow();
    for (int time = 0; time < 10; ++time) {
        acceptance.adaptPenalty(0.5);
        EXPECT_LT(roomForOverflow(), before);
        before = roomForOverflow();
    }

    RandomStream random(4, 2);
    layout.editOrders().moveTo(SequencePair::Upper, 2, 0);
    ASSERT_TRUE(layout.arrange(random, kNoLimits));
    EXPECT_LT(acceptance.costOf(layout), 0.0);
    acceptance.accept(layout);
    layout.keep();
    EXPECT_TRUE(acceptance.isLegal());
    const double tight = acceptance.limits(1.0, true).overflow;
    acceptance.adaptPenalty(0.9);
    const double later = acceptance.limits(1.0, true).overflow;
    acceptance.adaptPenalty(0.5);
    const double easier = acceptance.limits(1.0, true).overflow;
    EXPECT_GT(later, tight);
    EXPECT_GT(easier / later, later / tight) << "eases less at the end";
}

}  // namespace
}  // namespace korvel::test
