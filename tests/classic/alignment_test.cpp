// The fast way of aligning and measuring a node against the plain one, to the bit; and the bound
// that spares it.

#include "classic/bound/LengthBound.h"
#include "support/plain_alignment.h"

namespace korvel::test {
namespace {

// A node of the first dies in random orientations and relations that fits the area, and the same
// before its last relation; empty if the draw does not fit.
struct RandomNodes {
    BBNode whole;
    BBNode unfinished;
};
RandomNodes randomNode(std::mt19937& random, const Netlist& netlist, unsigned dies, Area area) {
    BBNode node;
    BBNode unfinished;
    for (unsigned a = 0; a < dies; ++a) {
        node.addBlock(static_cast<Orient>(random() % 4), netlist);
        node.definedNodes = 0;
        for (unsigned b = 0; b < a; ++b) {
            unfinished = node;
            node.relate(a, b, static_cast<Topology>(random() % 4));
            ++node.definedNodes;
            if (!node.sortGraphs()) {
                return {};
            }
            node.findCoords();
        }
    }
    node.updateSizes();
    const bool fits = area.width == 0 || (node.width <= area.width && node.height <= area.height);
    return fits ? RandomNodes{node, unfinished} : RandomNodes{};
}

// Many pins in few columns and rows between two dies, as bumps are.
Design bumpDesign(unsigned seed) {
    Design design = randomDesign(seed, {4, seed % 2 * 3, seed % 3 * 3, seed % 4 > 1});
    std::mt19937 random(seed);
    const auto place = [&] { return 7.3F * static_cast<float>(random() % 9) - 29.0F; };
    for (unsigned i = 0; i < 200; ++i) {
        const unsigned a = i < 100 ? 0 : 1 + i % 2;
        design.nets.push_back(
            {{design.dies[a].name, 44.1F - 3.7F * static_cast<float>(i % 3), place()},
             {design.dies[a + 1].name, -41.9F, place() + 1.1F}});
    }
    return design;
}

// Pins nearly in line, where the pins' order decides; sizes and places with long fractions.
Design unevenDesign(unsigned seed) {
    Design design = randomDesign(seed, {5, seed % 3 * 3, 25, true});
    std::mt19937 random(seed);
    const auto jitter = [&] { return static_cast<float>(random() % 100) * 0.0037F; };
    for (Die& die : design.dies) {
        die.width += jitter();
        die.height += jitter();
    }
    for (auto& net : design.nets) {
        for (PinAt& pin : net) {
            pin.x = std::max(-50.0, std::min(50.0, pin.x + jitter()));
        }
    }
    return design;
}

Design designOf(unsigned kind, unsigned seed) {
    switch (kind) {
        case 0:
            return randomDesign(seed, {3 + seed % 5, seed % 4 * 2, 10 + seed % 30, seed % 2 == 0});
        case 1:
            return unevenDesign(seed);
        default:
            return bumpDesign(seed);
    }
}

struct Tally {
    unsigned nodes = 0;  // that were compared
    double lengths = 0;  // of those with an area, and the bounds on them
    double bounds = 0;
};

// Files may list terminals before dies. Their indices are then such as dies have too, and bounds
// are low.
void listTerminalsFirst(Netlist& netlist) {
    for (unsigned terminal = 0; terminal < netlist.terminals.size(); ++terminal) {
        netlist.terminals[terminal].updateOrderIndex(terminal);
    }
}

void expectSame(Design design, std::mt19937& random, Tally& tally) {
    if (random() % 4 == 0) {
        design.area = {};
    }
    Engine fast(design);
    Engine plain(design);
    const bool terminalsFirst = design.nets.size() % 4 == 0;
    if (terminalsFirst) {
        listTerminalsFirst(fast.netlist);
        listTerminalsFirst(plain.netlist);
    }
    fast.placer.ordering();
    plain.placer.ordering();
    const auto dies = static_cast<unsigned>(design.dies.size());
    const AlignmentTables tables(fast.netlist, dies);
    const LengthBound bound(fast.netlist, dies, design.area);
    LengthBound::Workspace space = bound.makeWorkspace();
    WorkingPlacement placement(tables);
    for (unsigned draw = 0; draw < 60; ++draw) {
        const unsigned placed = 2 + static_cast<unsigned>(random()) % (dies - 1);
        const auto [node, unfinished] = randomNode(random, fast.netlist, placed, design.area);
        if (node.numBlocks == 0) {
            continue;
        }
        SCOPED_TRACE(draw);
        PlainAlignment alignment(node, plain.netlist, design.area);
        alignment.run();
        node.placeAndAlign(placement, design.area.width > 0, design.area);
        placement.applyTo(fast.netlist);
        for (std::size_t i = 0; i < fast.netlist.pins.size(); ++i) {
            const Point a = fast.netlist.pins[i].getCoord();
            const Point b = plain.netlist.pins[i].getCoord();
            if (fast.netlist.pins[i].isPlaced()) {
                EXPECT_TRUE(a.x == b.x && a.y == b.y) << "pin " << i;
            }
        }
        const float length = placement.partialHPWL([](float) { return false; });
        EXPECT_EQ(length, alignment.partialLength());
        // What is remembered of it, is it.
        node.placeAndAlign(placement, design.area.width > 0, design.area);
        EXPECT_EQ(placement.partialHPWL([](float) { return false; }), length);
        // A sum is not taken for useless before it is.
        EXPECT_EQ(placement.partialHPWL([length](float sum) { return sum > length; }), length);
        if (design.area.width > 0) {
            constexpr double kAll = 1e30;
            EXPECT_LE(bound.leastLength(unfinished, space, kAll), length);
            const double least = bound.leastLength(node, space, kAll);
            EXPECT_LE(least, length);
            tally.lengths += terminalsFirst ? 0.0 : length;
            tally.bounds += terminalsFirst ? 0.0 : least;
            // Where less is enough, less work still reaches it.
            EXPECT_GE(bound.leastLength(node, space, 0.8 * least), 0.8 * least);
        }
        fast.netlist.unplaceAllNets();
        ++tally.nodes;
    }
}

class Alignment : public testing::TestWithParam<unsigned> {};

TEST_P(Alignment, FastAndPlainAgreeToTheBit) {
    std::mt19937 random(GetParam());
    Tally tally;
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        expectSame(designOf(GetParam(), seed), random, tally);
    }
    EXPECT_GT(tally.nodes, 400U);
    // A bound that is never too high is worth nothing unless it is high.
    EXPECT_GT(tally.bounds, (GetParam() == 2 ? 0.885 : 0.95) * tally.lengths);
}

INSTANTIATE_TEST_SUITE_P(Designs, Alignment, testing::Values(0U, 1U, 2U));

}  // namespace
}  // namespace korvel::test
