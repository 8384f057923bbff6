// Groups of dies: which are found, and that moving one leaves it as it is in itself.
#include <algorithm>
#include <limits>
#include <set>

#include "anneal/DieGroups.h"
#include "anneal/GroupMoves.h"
#include "random_designs.h"

namespace korvel {
namespace {

constexpr double kAnything = std::numeric_limits<double>::infinity();

// Systems of hosts in a ring, each with memories of its own.
Design hostsWithMemories(unsigned hosts, unsigned memories) {
    Design design;
    const auto join = [&design](unsigned a, unsigned b, int times) {
        for (int time = 0; time < times; ++time) {
            design.nets.push_back({{{a, {time * 0.1, 1.0}}, {b, {0.0, time * 0.2}}}});
        }
    };
    for (unsigned host = 0; host < hosts; ++host) {
        const auto first = static_cast<unsigned>(design.dies.size());
        design.dies.push_back({"host" + std::to_string(host), {6.0, 5.0}});
        for (unsigned memory = 1; memory <= memories; ++memory) {
            design.dies.push_back({"memory" + std::to_string(first + memory), {2.0, 3.0}});
            join(first, first + memory, 4);
        }
    }
    for (unsigned host = 0; host < hosts; ++host) {
        join(host * (memories + 1), (host + 1) % hosts * (memories + 1), 6);
    }
    return design;
}

// By the relations of the orders, without regard to the region.
void expectOrdersToHold(const SlidLayout& layout, const Design& design) {
    const Relations relations = layout.sequences().relations();
    const Placement placement = layout.placement();
    for (unsigned a = 0; a < layout.dieNum(); ++a) {
        for (unsigned b = a + 1; b < layout.dieNum(); ++b) {
            const Extent ofA = turned(design.dies[a].size, placement[a].orient);
            const Extent ofB = turned(design.dies[b].size, placement[b].orient);
            const Spot atA = placement[a].at;
            const Spot atB = placement[b].at;
            const Topology relation = relations.get(a, b);
            const double gap = relation == Topology::L   ? atB.x - atA.x - ofA.width
                               : relation == Topology::R ? atA.x - atB.x - ofB.width
                               : relation == Topology::B ? atB.y - atA.y - ofA.height
                                                         : atA.y - atB.y - ofB.height;
            EXPECT_GE(gap, -1e-9) << "dies " << a << " and " << b;
        }
    }
}

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
    const bool areAlike = std::any_of(
        groups.alike().begin(), groups.alike().end(), [](const std::vector<DieGroups::Group>& kind) {
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

// A roomy region, two groups far apart.
class MovedGroups : public testing::Test {
protected:
    MovedGroups() : design(hostsWithMemories(2, 3)), nets(design), layout(nets, {400, 400}) {
        RandomStream random(3, 1);
        SequencePair orders(8);
        Placement start(8);
        for (unsigned die = 0; die < 8; ++die) {
            // Of each group: the host, and memories right of it, one above the other.
            const double left = die < 4 ? 100 : 300;
            const unsigned memory = die % 4;
            start[die] = {{left + (memory == 0 ? 0 : 7), left + 4.0 * memory - 3}, Orient::N};
        }
        // Memories from the top in one order, from the bottom in the other; hosts first.
        for (const unsigned group : {0U, 4U}) {
            for (unsigned die = 0; die < 4; ++die) {
                orders.put(SequencePair::Upper, group + die, group + (die == 0 ? 0 : 4 - die));
                orders.put(SequencePair::Lower, group + die, group + die);
            }
        }
        layout.place(orders, start);
        expectOrdersToHold(layout, design);
        length = layout.length();
    }

    double lengthNow() const { return wirelength(design, layout.placement()); }
    double lengthInside(const std::array<unsigned, 4>& group) const {
        Design inside = design;
        std::erase_if(inside.nets, [&group](const Design::Net& net) {
            return std::any_of(net.pins.begin(), net.pins.end(), [&group](const Design::Pin& pin) {
                return std::find(group.begin(), group.end(), pin.body) == group.end();
            });
        });
        return wirelength(inside, layout.placement());
    }

    const Design design;
    const NetModel nets;
    SlidLayout layout;
    double length = 0.0;
    const std::array<unsigned, 4> one{0, 1, 2, 3};
    const std::array<unsigned, 4> other{4, 5, 6, 7};
};

TEST_F(MovedGroups, TurnAsAWhole) {
    GroupMoves moves(layout);
    const double inside = lengthInside(one);
    const Placement before = layout.placement();
    for (int quarter = 0; quarter < 3; ++quarter) {
        moves.turn(one, 1);
        expectOrdersToHold(layout, design);
        EXPECT_NEAR(lengthInside(one), inside, 1e-9);
        EXPECT_NE(layout.placement()[1].orient, before[1].orient);
    }
    moves.turn(one, 1);
    for (const unsigned die : one) {
        EXPECT_NEAR(layout.placement()[die].at.x, before[die].at.x, 1e-9);
        EXPECT_NEAR(layout.placement()[die].at.y, before[die].at.y, 1e-9);
    }
}

TEST_F(MovedGroups, ExchangePlaces) {
    const Spot before = layout.centre(0);
    const double inside = lengthInside(other);
    GroupMoves moves(layout);
    moves.exchange(one, other);
    expectOrdersToHold(layout, design);
    EXPECT_NEAR(lengthInside(other), inside, 1e-9);
    EXPECT_NEAR(layout.centre(4).x, before.x, 1e-9);
    const std::array single{3U};
    moves.exchange(single, other);  // of other sizes
    layout.arrange(random, {kAnything, kAnything});
    expectOrdersToHold(layout, design);
}

}  // namespace
}  // namespace korvel
