// The bound on the length and the gaps that it rests on. That it never exceeds what the alignment
// ends with is tested together with the alignment (alignment_test.cpp).
#include <cmath>

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

// The example of LengthCut.h.
TEST(LengthBound, FindsTheDiesThatABoxNetIsReadOffBest) {
    Design design;
    design.dies = {{"A", 10, 10}, {"B", 10, 10}};
    design.terminals = {{"t", 50, 5}};
    design.nets = {{{"A", -50, 0}, {"B", 50, 0}}, {{"A", -50, 0}, {"B", 50, 0}, {"t"}}};
    design.area = {100, 100};
    Engine engine(design);
    const LengthBound bound(engine.netlist, 2, design.area);
    LengthBound::Workspace space = bound.makeWorkspace();
    const BBNode node = related(
        grown(grown({}, engine.netlist, Orient::N), engine.netlist, Orient::N), {Topology::R});
    EXPECT_NEAR(bound.leastLength(node, space, 1e30), 40, 0.2);
}

// Dies, pins and terminals on a coarse grid, so that a least length is found on grid points.
class OnGrid {
public:
    static constexpr unsigned kDies = 4;

    explicit OnGrid(std::mt19937& random) : random(random) {
        for (unsigned i = 0; i < kDies; ++i) {
            design.dies.push_back({"d" + std::to_string(i), size(), size()});
        }
        design.terminals = {{"t", position(), 0}, {"u", kStep * kSteps, position()}};
        for (unsigned i = 0; i < 8; ++i) {
            design.nets.emplace_back();
            for (unsigned pins = 2 + below(3); pins > 0; --pins) {
                design.nets.back().push_back(pin());
            }
        }
        design.area = {kStep * kSteps, kStep * kSteps};
        engine = std::make_unique<Engine>(design);
    }

    // All dies in random relations, and in random orientations or as they are; without dies where
    // these do not fit.
    BBNode randomNode(bool isTurned) {
        BBNode node;
        for (unsigned i = 0; i < kDies; ++i) {
            std::vector<Topology> relations(i);
            for (Topology& relation : relations) {
                relation = static_cast<Topology>(below(4));
            }
            const Orient orient = isTurned ? kTurned[below(4)] : Orient::N;
            node = related(grown(node, engine->netlist, orient), relations);
            if (node.numBlocks == 0 || node.width > design.area.width ||
                node.height > design.area.height) {
                return {};
            }
        }
        return node;
    }

    // The least sum of all nets' lengths along the axis, by trying all grid points.
    float leastLength(const BBNode& node, Axis axis) const {
        const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
        float least = kInfinity;
        const unsigned trials = static_cast<unsigned>(std::pow(kSteps + 1, kDies));
        for (unsigned trial = 0; trial < trials; ++trial) {
            float at[kDies];
            for (unsigned i = 0, rest = trial; i < kDies; ++i, rest /= kSteps + 1) {
                at[i] = kStep * static_cast<float>(rest % (kSteps + 1));
            }
            if (isAllowed(graph, at)) {
                least = std::min(least, length(node, axis, at));
            }
        }
        return least;
    }

    Design design;
    std::unique_ptr<Engine> engine;

private:
    static constexpr float kStep = 100;
    static constexpr unsigned kSteps = 8;

    unsigned below(unsigned n) { return static_cast<unsigned>(random() % n); }
    float size() { return 2 * kStep * static_cast<float>(1 + below(2)); }
    float position() { return kStep * static_cast<float>(below(kSteps + 1)); }
    PinAt pin() {
        const unsigned owner = below(kDies + 2);
        const auto percent = [&] { return 50 * (static_cast<float>(below(3)) - 1); };
        return owner < kDies ? PinAt{design.dies[owner].name, percent(), percent()}
                             : PinAt{design.terminals[owner - kDies].name};
    }

    bool isAllowed(const ConsraintGraphList& graph, const float* at) const {
        for (unsigned a = 0; a < kDies; ++a) {
            const float extent = graph.getWeight(a);
            const float beyond = graph.returnCoord(a) + extent - graph.getLength();
            if (at[a] + extent > kStep * kSteps + std::max(0.0F, beyond)) {
                return false;
            }
            for (const unsigned b : graph.getOutcomingEdges(a)) {
                if (at[a] + extent > at[b]) {
                    return false;
                }
            }
        }
        return true;
    }

    float length(const BBNode& node, Axis axis, const float* at) const {
        float sum = 0;
        for (const Net& net : engine->netlist.nets) {
            float low = kInfinity;
            float high = -kInfinity;
            std::set<unsigned> dies;
            for (const Pin* pin : net.getPins()) {
                const unsigned die = pin->isTerminal() ? kDies : pin->getBlockIndex();
                const Point place = pin->isTerminal() ? pin->getCoord()
                                                      : pin->placeInBlock(node.blocksOrients[die]);
                const float here =
                    (axis == kX ? place.x : place.y) + (pin->isTerminal() ? 0 : at[die]);
                low = std::min(low, here);
                high = std::max(high, here);
                dies.insert(die);
            }
            sum += dies.size() > 1 || dies.count(kDies) != 0 ? high - low : 0;
        }
        return sum;
    }

    std::mt19937& random;
};

// Improved as far as possible, the bound is that least length but for its slack. Many nodes of the
// same orientations fill the pool of cuts.
TEST(LengthBound, IsTheLeastLengthThatTheRelationsAllow) {
    std::mt19937 random(3);
    unsigned compared = 0;
    for (unsigned draw = 0; draw < 12; ++draw) {
        OnGrid grid(random);
        const LengthBound bound(grid.engine->netlist, OnGrid::kDies, grid.design.area);
        LengthBound::Workspace space = bound.makeWorkspace();
        for (unsigned attempt = 0; attempt < 200; ++attempt) {
            const BBNode node = grid.randomNode(draw % 2 == 0);
            if (node.numBlocks == 0) {
                continue;
            }
            const float least = grid.leastLength(node, kX) + grid.leastLength(node, kY);
            const double found = bound.leastLength(node, space, 1e30);
            EXPECT_LE(found, least) << draw << " " << attempt;
            EXPECT_GT(found, least - 10) << draw << " " << attempt;
            // It gets as far as it is asked to, if that can be.
            LengthBound::Workspace fresh = bound.makeWorkspace();
            EXPECT_GE(bound.leastLength(node, fresh, least - 10), least - 10.001);
            ++compared;
        }
    }
    EXPECT_GT(compared, 50U);
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

// Net 1 wants die a to move right and up. A step to the right of more than 0.0009 would make net 2
// longer; so short a step is made whatever is in the way, as the die moves up.
TEST(LengthBound, AllowsForDiesThatDriftIntoOneAnother) {
    Design design;
    design.dies = {{"a", 2, 2}, {"b", 2, 2}};
    design.terminals = {{"p", 0, 5}, {"q", 1.0009F, 0}};
    design.nets = {{{"a", -50, -50}, {"b", 50, 50}}, {{"p"}, {"q"}, {"a", 0, 0}}};
    design.area = {5, 5};
    Engine engine(design);
    const BBNode node = related(
        grown(grown({}, engine.netlist, Orient::N), engine.netlist, Orient::N), {Topology::R});
    const AlignmentTables tables(engine.netlist, 2);
    WorkingPlacement placement(tables);
    node.placeAndAlign(placement, true, design.area);
    const float length = placement.partialHPWL([](float) { return false; });
    constexpr double kWithoutDrift = 4 + 1.0009 + 5;
    ASSERT_NEAR(length, kWithoutDrift - 0.0009, 1e-5);
    const LengthBound bound(engine.netlist, 2, design.area);
    LengthBound::Workspace space = bound.makeWorkspace();
    EXPECT_LE(bound.leastLength(node, space, 1e30), length);
}

class Gaps : public testing::TestWithParam<Axis> {
protected:
    static constexpr unsigned kDies = 5;
    static constexpr unsigned kBodies = kDies + 1;
    static constexpr float kSide = 30;

    Gaps() {
        Design design;
        for (unsigned i = 0; i < kDies; ++i) {
            const auto more = static_cast<float>(i);
            design.dies.push_back({"d" + std::to_string(i), 3 + more, 9 - more});
        }
        engine = std::make_unique<Engine>(design);
    }

    // Longest paths by way of every body in turn.
    void expectLongestPaths(const LengthGaps& gaps, const BBNode& node) const {
        const ConsraintGraphList& graph =
            GetParam() == kX ? node.horizontalGraph : node.verticalGraph;
        float paths[kBodies][kBodies];
        std::fill_n(&paths[0][0], kBodies * kBodies, -kInfinity);
        for (unsigned a = 0; a < node.numBlocks; ++a) {
            const float extent = graph.getWeight(a);
            const float beyond = graph.returnCoord(a) + extent - graph.getLength();
            paths[0][a + 1] = 0;
            paths[a + 1][0] = extent - kSide - std::max(0.0F, beyond);
            for (const unsigned b : graph.getOutcomingEdges(a)) {
                paths[a + 1][b + 1] = extent;
            }
        }
        for (unsigned via = 0; via <= node.numBlocks; ++via) {
            for (auto& from : paths) {
                for (unsigned to = 0; to <= node.numBlocks; ++to) {
                    from[to] = std::max(from[to], from[via] + paths[via][to]);
                }
            }
        }
        for (unsigned from = 0; from <= node.numBlocks; ++from) {
            for (unsigned to = 0; to <= node.numBlocks; ++to) {
                if (from != to) {
                    EXPECT_NEAR(gaps.get().at(from, to), paths[from][to], 1e-3)
                        << from << " " << to;
                }
            }
        }
    }

    std::unique_ptr<Engine> engine;
};

// Children of random nodes on the way down, as a search in depth has them: siblings, which differ
// in the newest die's relations only, and others.
TEST_P(Gaps, AreTheLongestPathsWhateverNodeCameBefore) {
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
            expectLongestPaths(gaps, node);
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
