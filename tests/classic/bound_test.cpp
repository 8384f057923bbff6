// The bound on the length and the gaps that it rests on. That it never exceeds what the alignment
// ends with is tested together with the alignment.
#include "classic/bound/LengthBound.h"
#include "classic/bound/LengthGaps.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

BBNode grown(BBNode node, const Netlist& netlist, Orient orient) {
    node.addBlock(orient, netlist);
    node.definedNodes = 0;
    return node;
}

// The newest block's relations to the earlier ones, in their order.
BBNode related(BBNode node, const std::vector<Topology>& relations) {
    for (unsigned b = 0; b < relations.size(); ++b) {
        node.relate(node.numBlocks - 1, b, relations[b]);
        ++node.definedNodes;
    }
    if (node.sortGraphs()) {
        node.findCoords();
        node.updateSizes();
    } else {
        node.numBlocks = 0;
    }
    return node;
}

TEST(LengthBound, CountsWhatRelationsKeepApart) {
    Design design;
    design.dies = {{"a", 10, 10}, {"b", 10, 10}, {"c", 10, 10}};
    design.nets = {{{"a", -50, 0}, {"b", 50, 0}}, {{"a", -50, 0}, {"b", 50, 0}, {"c", 0, 0}}};
    design.area = {100, 100};
    Engine engine(design);
    const LengthBound bound(engine.netlist, 3, design.area);
    LengthBound::Workspace space = bound.makeWorkspace();
    BBNode node = grown({}, engine.netlist, Orient::N);
    node = related(grown(node, engine.netlist, Orient::N), {Topology::R});
    EXPECT_NEAR(bound.leastLength(node, space, 1e30), 20 + 20, 0.2);
    node = related(grown(node, engine.netlist, Orient::N), {Topology::R, Topology::A});
    EXPECT_NEAR(bound.leastLength(node, space, 1e30), 20 + (20 + 10), 0.2);
}

// Without an edge along y, the common step takes the dies up to the area's edge and beyond.
TEST(LengthBound, LetsDiesWithoutARelationAlongAnAxisLeaveTheArea) {
    Design design;
    design.dies = {{"a", 10, 10}, {"b", 10, 10}};
    design.terminals = {{"p", 5, 105}};
    design.nets = {{{"a", 0, 0}, {"p"}}};
    design.area = {100, 100};
    Engine engine(design);
    const BBNode node = related(
        grown(grown({}, engine.netlist, Orient::N), engine.netlist, Orient::N), {Topology::R});
    const AlignmentTables tables(engine.netlist, 2);
    WorkingPlacement placement(tables);
    node.placeAndAlign(placement, true, design.area);
    const float length = placement.partialHPWL([](float) { return false; });
    ASSERT_EQ(length, 0);
    const LengthBound bound(engine.netlist, 2, design.area);
    LengthBound::Workspace space = bound.makeWorkspace();
    EXPECT_LE(bound.leastLength(node, space, 1e30), length);
}

class Gaps : public testing::TestWithParam<Axis> {
protected:
    static constexpr unsigned kDies = 5;
    static constexpr unsigned kSlots = kDies + 1;
    static constexpr float kSide = 30;

    Gaps() {
        Design design;
        for (unsigned i = 0; i < kDies; ++i) {
            const auto more = static_cast<float>(i);
            design.dies.push_back({"d" + std::to_string(i), 3 + more, 9 - more});
        }
        engine = std::make_unique<Engine>(design);
    }

    // Longest ways over all slots.
    void expectLongestWays(const LengthGaps& gaps, const BBNode& node) const {
        const ConsraintGraphList& graph =
            GetParam() == kX ? node.horizontalGraph : node.verticalGraph;
        float ways[kSlots][kSlots];
        std::fill_n(&ways[0][0], kSlots * kSlots, -kInfinity);
        for (unsigned a = 0; a < node.numBlocks; ++a) {
            const float extent = graph.getWeight(a);
            const float beyond = graph.returnCoord(a) + extent - graph.getLength();
            ways[0][a + 1] = 0;
            ways[a + 1][0] = extent - kSide - std::max(0.0F, beyond);
            for (const unsigned b : graph.getOutcomingEdges(a)) {
                ways[a + 1][b + 1] = extent;
            }
        }
        for (unsigned via = 0; via <= node.numBlocks; ++via) {
            for (auto& from : ways) {
                for (unsigned to = 0; to <= node.numBlocks; ++to) {
                    from[to] = std::max(from[to], from[via] + ways[via][to]);
                }
            }
        }
        for (unsigned from = 0; from <= node.numBlocks; ++from) {
            for (unsigned to = 0; to <= node.numBlocks; ++to) {
                if (from != to) {
                    EXPECT_NEAR(gaps.get().at(from, to), ways[from][to], 1e-3) << from << " " << to;
                }
            }
        }
    }

    std::unique_ptr<Engine> engine;
};

// Children of random nodes on the way down, as a search in depth has them: siblings, which differ
// in the newest die's relations only, and others.
TEST_P(Gaps, AreTheLongestWaysWhateverNodeCameBefore) {
    std::mt19937 random(7);
    LengthGaps gaps(GetParam(), kDies, {kSide, kSide});
    std::vector<BBNode> path{BBNode()};
    unsigned followed = 0;
    for (unsigned step = 0; step < 600; ++step) {
        path.resize(std::min<std::size_t>(path.size() - random() % 2, kDies));
        path.resize(std::max<std::size_t>(path.size(), 1));
        const BBNode family =
            grown(path.back(), engine->netlist, static_cast<Orient>(random() % 4));
        for (unsigned sibling = 0; sibling < 3; ++sibling) {
            std::vector<Topology> relations(family.numBlocks - 1);
            for (Topology& relation : relations) {
                relation = static_cast<Topology>(random() % 4);
            }
            const BBNode node = related(family, relations);
            if (node.numBlocks == 0 || node.width > kSide || node.height > kSide) {
                continue;
            }
            SCOPED_TRACE(step);
            ASSERT_TRUE(gaps.follow(node));
            expectLongestWays(gaps, node);
            ++followed;
            if (sibling == 1) {
                path.push_back(node);
                break;
            }
        }
    }
    EXPECT_GT(followed, 500U);
}

INSTANTIATE_TEST_SUITE_P(Axes, Gaps, testing::Values(kX, kY));

}  // namespace
}  // namespace korvel::test
