// The coarse level of the annealer: which dies it leaves out, and that its layouts are starts for
// the whole design.
#include <algorithm>
#include <limits>
#include <set>

#include "anneal/Restart.h"
#include "support/hosts.h"

namespace korvel::test {
namespace {

constexpr double kAnything = std::numeric_limits<double>::infinity();

double areaOf(const Design& design) {
    double area = 0.0;
    for (const Design::Die& die : design.dies) {
        area += die.size.width * die.size.height;
    }
    return area;
}

SequencePair shuffled(unsigned dieNum, RandomStream& random) {
    SequencePair orders(dieNum);
    orders.shuffle(random);
    return orders;
}

TEST(Coarsening, LeavesOutTheMemoriesOfHosts) {
    Design design = hostsWithMemories(6, 3);
    design.terminals = {{"t", {50, 40}}};
    design.nets.push_back({{{0, {1, 2}}, {24, {0, 0}}}});
    const Coarsening coarsening(design, NetModel(design));
    EXPECT_TRUE(coarsening.isWorthwhile());
    ASSERT_EQ(coarsening.coarse().dies.size(), 6U);
    EXPECT_NEAR(areaOf(coarsening.coarse()), areaOf(design), 1e-9);

    // Hosts lie in the middle of their coarse dies, whichever way they are turned. Their numbers
    // are multiples of 4, as is the terminal's.
    Design hostsOnly = design;
    std::erase_if(hostsOnly.nets, [](const Design::Net& net) {
        return net.pins[0].body % 4 != 0 || net.pins[1].body % 4 != 0;
    });
    RandomStream random(1, 1);
    for (int round = 0; round < 20; ++round) {
        Layout::Snapshot start{shuffled(6, random), Placement(6)};
        for (PlacedDie& die : start.placement) {
            die = {{100.0 * random.uniform(), 100.0 * random.uniform()},
                   static_cast<Orient>(random.below(kUnmirroredOrients))};
        }
        EXPECT_NEAR(wirelength(coarsening.coarse(), start.placement),
                    wirelength(hostsOnly, coarsening.expand(start).placement), 1e-9);
    }
}

// Die 1 is the one in question; dies 0 and 2 are joined, so that neither is anyone's satellite.
TEST(Coarsening, KeepsDiesThatDoNotHangOnALargerOne) {
    const auto join = [](std::initializer_list<unsigned> bodies) {
        Design::Net net;
        for (const unsigned body : bodies) {
            net.pins.push_back({body, {0, 0}});
        }
        return net;
    };
    struct Case {
        const char* what;
        Extent size;
        std::vector<Design::Net> nets;
        bool isLeftOut;
    };
    const Case cases[] = {
        {"a satellite", {1, 2}, {join({0, 1}), join({0, 1})}, true},
        {"with a net on itself", {1, 2}, {join({0, 1}), join({1, 1})}, true},
        {"as large as its host", {6, 6}, {join({0, 1})}, false},
        {"on two hosts", {1, 2}, {join({0, 1}), join({1, 2})}, false},
        {"on a terminal", {1, 2}, {join({1, 4})}, false},
        {"on a host and a terminal", {1, 2}, {join({0, 1}), join({1, 4})}, false},
        {"in a net of three", {1, 2}, {join({0, 1}), join({0, 1, 2})}, false},
        {"without nets", {1, 2}, {}, false},
    };
    for (const Case& one : cases) {
        Design design;
        design.dies = {{"a", {6, 6}}, {"b", one.size}, {"c", {6, 6}}, {"d", {6, 6}}};
        design.terminals = {{"t", {3, 4}}};
        design.nets = one.nets;
        for (const unsigned die : {2U, 3U}) {
            design.nets.push_back(join({0, die}));
        }
        design.nets.push_back(join({2, 3, 4}));
        const Coarsening coarsening(design, NetModel(design));
        EXPECT_EQ(coarsening.coarse().dies.size(), one.isLeftOut ? 3U : 4U) << one.what;
        // Terminals come after the dies, however many these are.
        EXPECT_TRUE(std::any_of(coarsening.coarse().nets.begin(), coarsening.coarse().nets.end(),
                                [&](const Design::Net& kept) {
                                    return kept.pins.back().body == coarsening.coarse().dies.size();
                                }))
            << one.what;
    }
}

TEST(Coarsening, PutsSatellitesOnAllSidesOfTheirHost) {
    const Design design = hostsWithMemories(5, 4);
    const NetModel nets(design);
    const Coarsening coarsening(design, nets);
    RandomStream random(1, 2);
    Layout::Snapshot start{shuffled(5, random), Placement(5)};
    for (PlacedDie& die : start.placement) {
        die = {{60.0 * random.uniform(), 60.0 * random.uniform()}, Orient::W};
    }
    const Layout::Snapshot whole = coarsening.expand(start);
    const Relations relations = whole.orders.relations();
    for (unsigned host = 0; host < 25; host += 5) {
        std::set<Topology> sides;
        for (unsigned memory = 1; memory <= 4; ++memory) {
            sides.insert(relations.get(host, host + memory));
        }
        EXPECT_EQ(sides.size(), 4U) << "host " << host;
        for (unsigned other = 0; other < 25; other += 5) {
            if (other != host) {
                EXPECT_EQ(relations.get(host, other),
                          start.orders.relations().get(host / 5, other / 5));
            }
        }
    }
    Layout layout(nets, {design, {100, 100}});
    layout.place(whole);
    ASSERT_TRUE(layout.arrange(random, {kAnything, kAnything}));
    ordersHold(layout, design);
}

class Restarts : public testing::Test {
protected:
    Restarts()
        : design(hostsWithMemories(6, 3)),
          prepared(design, region),
          coarse(CoarseLevel::of(prepared)),
          restart(prepared, coarse.get(), {1, 0}, CoolingSchedule::Kind::Usual,
                  [this](const Placement& found) {
                      told.push_back(wirelength(design, found));
                      EXPECT_TRUE(isLegal(design, region, found, 1e-6));
                  }) {}

    const Region region{60, 60};
    const Design design;
    const PreparedDesign prepared;
    const std::unique_ptr<const CoarseLevel> coarse;
    std::vector<double> told;
    Restart restart;
};

TEST_F(Restarts, EndedOnTheCoarseLevelStillHaveAPlacement) {
    restart.advance(500, 0.0);
    EXPECT_TRUE(told.empty());
    restart.finish();
    EXPECT_FALSE(told.empty());
}

TEST_F(Restarts, GoOnFromWhatTheCoarseLevelFound) {
    constexpr int kSteps = 400;
    for (int step = 0; step < kSteps; ++step) {
        restart.advance(64, static_cast<double>(step) / kSteps);
    }
    restart.finish();
    ASSERT_GT(told.size(), 1U);
    EXPECT_LT(told.back(), 0.9 * told.front());
    EXPECT_TRUE(std::is_sorted(told.rbegin(), told.rend()));
}

}  // namespace
}  // namespace korvel::test
