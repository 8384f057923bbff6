// Groups of dies: which are found, and that moving one leaves it as it is in itself.
#include <algorithm>
#include <limits>
#include <optional>
#include <set>

#include "anneal/DieGroups.h"
#include "anneal/GroupMoves.h"
#include "support/hosts.h"

namespace korvel::test {
namespace {

TEST(DieGroups, AreHostsWithTheirMemories) {
    const Design design = hostsWithMemories(4, 3);
    const DieGroups groups{NetModel(design)};
    std::set<std::set<unsigned>> found;
    for (const DieGroups::Group& group : groups.groups()) {
        EXPECT_LE(group.size(), 8U);
        found.emplace(group.begin(), group.end());
    }
    for (unsigned host = 0; host < 16; host += 4) {
        EXPECT_TRUE(found.contains({host, host + 1, host + 2, host + 3})) << "host " << host;
    }
    const bool areAlike = std::any_of(groups.alike().begin(), groups.alike().end(),
                                      [](const std::vector<DieGroups::Group>& kind) {
                                          return kind.size() == 4 && kind.front().size() == 4;
                                      });
    EXPECT_TRUE(areAlike);
    for (const auto& kind : groups.alike()) {
        for (const DieGroups::Group& group : kind) {
            for (std::size_t place = 0; place < group.size(); ++place) {
                EXPECT_EQ(design.dies[group[place]].size.width,
                          design.dies[kind.front()[place]].size.width);
            }
        }
    }
}

TEST(DieGroups, WithoutNetsOnlySingleDiesAreAlike) {
    Design design;
    design.dies = {{"a", {1, 2}}, {"b", {2, 1}}, {"c", {1, 2}}};
    const DieGroups groups{NetModel(design)};
    EXPECT_TRUE(groups.groups().empty());
    ASSERT_EQ(groups.alike().size(), 1U);
    EXPECT_EQ(groups.alike().front(), (std::vector<DieGroups::Group>{{0}, {2}}));
}

// Two groups far apart in a roomy region: a host each, and right of it memories, one above the
// other.
class MovedGroups : public testing::Test {
protected:
    MovedGroups()
        : design(hostsWithMemories(2, 3)), nets(design), layout(nets, {design, {400, 400}}) {
        SequencePair orders(8);
        Placement start(8);
        for (const unsigned host : kHosts) {
            const double corner = 100.0 + 50.0 * host;
            start[host] = {{corner, corner}, Orient::N};
            for (unsigned memory = 1; memory <= 3; ++memory) {
                start[host + memory] = {{corner + 6.5, corner - 3.0 + 3.5 * memory}, Orient::N};
                orders.put(SequencePair::Upper, host + memory, host + 4 - memory);
            }
        }
        layout.place({orders, start});
        moves.emplace(layout);
    }

    double lengthInside(GroupMoves::Dies group) const {
        Design inside = design;
        std::erase_if(inside.nets, [group](const Design::Net& net) {
            return std::any_of(net.pins.begin(), net.pins.end(), [group](const Design::Pin& pin) {
                return std::find(group.begin(), group.end(), pin.body) == group.end();
            });
        });
        return wirelength(inside, layout.placement());
    }

    static constexpr std::array kHosts{0U, 4U};
    static constexpr std::array kOne{0U, 1U, 2U, 3U};
    static constexpr std::array kOther{4U, 5U, 6U, 7U};

    const Design design;
    const NetModel nets;
    Layout layout;
    std::optional<GroupMoves> moves;
};

TEST_F(MovedGroups, TurnAsAWhole) {
    ordersHold(layout, design);
    const double inside = lengthInside(kOne);
    const Placement before = layout.placement();
    for (int quarter = 1; quarter <= 4; ++quarter) {
        moves->turn(kOne, 1);
        ordersHold(layout, design);
        EXPECT_NEAR(lengthInside(kOne), inside, 1e-9);
        EXPECT_EQ(layout.orientation(1) == Orient::N, quarter == 4);
    }
    for (const unsigned die : kOne) {
        EXPECT_NEAR(layout.placement()[die].at.x, before[die].at.x, 1e-9);
        EXPECT_NEAR(layout.placement()[die].at.y, before[die].at.y, 1e-9);
    }
}

TEST_F(MovedGroups, TurnedOnesAreExchangedDieByDie) {
    moves->turn(kOne, 1);
    const Placement before = layout.placement();
    moves->exchangeDieByDie(kOne, kOther);
    ordersHold(layout, design);
    for (unsigned die = 0; die < 8; ++die) {
        const PlacedDie now = layout.placement()[die];
        const PlacedDie was = before[(die + 4) % 8];
        EXPECT_EQ(now.orient, was.orient);
        EXPECT_NEAR(now.at.x, was.at.x, 1e-9);
        EXPECT_NEAR(now.at.y, was.at.y, 1e-9);
    }
}

TEST_F(MovedGroups, ExchangePlacesInTheirOwnOrder) {
    moves->turn(kOne, 1);
    const std::array inside{lengthInside(kOne), lengthInside(kOther)};
    const Spot before = layout.centre(0);
    moves->exchange(kOne, kOther);
    ordersHold(layout, design);
    EXPECT_NEAR(lengthInside(kOne), inside[0], 1e-9);
    EXPECT_NEAR(lengthInside(kOther), inside[1], 1e-9);
    EXPECT_GT(layout.centre(0).x, before.x + 100.0);
}

// Whatever is asked for, the orders stay orders: each die has a rank of its own.
TEST_F(MovedGroups, GoBesideAndForOthersOfOtherSizes) {
    constexpr double kAnything = std::numeric_limits<double>::infinity();
    RandomStream random(1, 1);
    moves->putBeside(kOne, 6, {true, false});
    moves->exchange(std::array{2U}, kOther);
    moves->putBeside(std::array{5U, 2U}, 0, {false, false});
    ASSERT_TRUE(layout.arrange(random, {kAnything, kAnything}));
    ordersHold(layout, design);
    for (const auto which : SequencePair::kBoth) {
        for (unsigned die = 0; die < 8; ++die) {
            EXPECT_EQ(layout.sequences().order(which)[layout.sequences().rank(which, die)], die);
        }
    }
}

}  // namespace
}  // namespace korvel::test
