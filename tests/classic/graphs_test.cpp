// Constraint graphs against plain computations, and the order in which blocks are placed.

#include "classic/node/Graphs.h"

#include "support/helpers.h"

namespace korvel::test {
namespace {

using Edges = std::vector<std::pair<unsigned, unsigned>>;

// Longest paths by relaxing every edge until nothing moves.
std::vector<float> relaxed(const Edges& edges, const std::vector<float>& weights) {
    std::vector<float> coords(weights.size(), 0.0F);
    for (bool moved = true; moved;) {
        moved = false;
        for (const auto& [from, to] : edges) {
            if (coords[from] + weights[from] > coords[to]) {
                coords[to] = coords[from] + weights[from];
                moved = true;
            }
        }
    }
    return coords;
}

Edges reversed(Edges edges) {
    for (auto& [from, to] : edges) {
        std::swap(from, to);
    }
    return edges;
}

bool closesCycle(const Edges& edges, unsigned v, std::vector<bool>& done, std::vector<bool>& open) {
    if (done[v] || open[v]) {
        return open[v];
    }
    open[v] = true;
    for (const auto& [from, to] : edges) {
        if (from == v && closesCycle(edges, to, done, open)) {
            return true;
        }
    }
    open[v] = false;
    done[v] = true;
    return false;
}

// Edges come in pieces, as in the search; sizes cross the borders of the machine words.
TEST(ConstraintGraph, CoordinatesAreLongestPathsAfterEveryPiece) {
    for (const unsigned n : {2U, 7U, 64U, 65U, 140U}) {
        SCOPED_TRACE(n);
        std::mt19937 random(n);
        std::vector<unsigned> rank;
        std::vector<float> weights;
        ConsraintGraphList graph;
        for (unsigned v = 0; v < n; ++v) {
            rank.push_back(v);
            weights.push_back(static_cast<float>(random() % 1000) * 0.37F);
            graph.addVert();
            graph.addWeight(v, weights[v]);
        }
        std::shuffle(rank.begin(), rank.end(), random);
        Edges edges;
        for (unsigned piece = 0; piece < 12; ++piece) {
            for (unsigned i = 0; i < n; ++i) {
                const auto a = static_cast<unsigned>(random() % n);
                const auto b = static_cast<unsigned>(random() % n);
                if (rank[a] < rank[b]) {
                    edges.emplace_back(a, b);
                    graph.addEdge(a, b);
                }
            }
            ASSERT_TRUE(graph.topologicalSort());
            graph.findCoord();
            const std::vector<float> coords = relaxed(edges, weights);
            float longest = 0.0F;
            for (unsigned v = 0; v < n; ++v) {
                ASSERT_EQ(graph.returnCoord(v), coords[v]) << "vertex " << v;
                longest = std::max(longest, coords[v] + weights[v]);
            }
            ASSERT_EQ(graph.getLength(), edges.empty() ? 0 : longest);
            // Seen from the other end, coordinates are the paths that follow a vertex.
            const std::vector<float> behind = relaxed(reversed(edges), weights);
            for (unsigned i = 0; i < n; ++i) {
                const auto from = static_cast<unsigned>(random() % n);
                const auto to = static_cast<unsigned>(random() % n);
                const float path = coords[from] + weights[from] + (weights[to] + behind[to]);
                ASSERT_NEAR(graph.lengthThrough(from, to), path, 1e-5F * path);
            }
        }
        std::set<std::pair<unsigned, unsigned>> out, in;
        for (unsigned v = 0; v < n; ++v) {
            for (const unsigned to : graph.getOutcomingEdges(v)) {
                out.emplace(v, to);
            }
            for (const unsigned from : graph.getIncomingEdges(v)) {
                in.emplace(from, v);
            }
        }
        EXPECT_EQ(out, decltype(out)(edges.begin(), edges.end()));
        EXPECT_EQ(in, out);
    }
}

TEST(ConstraintGraph, CyclesAreNoticedWithTheEdgeThatClosesThem) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const unsigned n = seed % 3 == 0 ? 140 : 2 + seed % 9;
        ConsraintGraphList graph;
        graph.addVert(n);
        Edges edges;
        for (bool cyclic = false; !cyclic;) {
            const auto& [from, to] = edges.emplace_back(random() % n, random() % n);
            const bool foreseen = graph.closesCycle(from, to);
            graph.addEdge(from, to);
            std::vector<bool> done(n, false), open(n, false);
            for (unsigned v = 0; v < n && !cyclic; ++v) {
                cyclic = closesCycle(edges, v, done, open);
            }
            ASSERT_EQ(foreseen, cyclic) << edges.size() << " edges";
            ASSERT_EQ(graph.topologicalSort(), !cyclic) << edges.size() << " edges";
        }
        EXPECT_FALSE(graph.topologicalSort());  // and stays so
    }
}

TEST(ConstraintGraph, AVertexAloneIsNoChangeAndCopiesGoTheirOwnWay) {
    ConsraintGraphList parent;
    const auto addVert = [&parent](unsigned vertex, float weight) {
        parent.addVert();
        parent.addWeight(vertex, weight);
        parent.calcConstraintGraph();
    };
    addVert(0, 5);
    EXPECT_EQ(parent.getLength(), 0);  // no edge has ever come
    addVert(1, 3);
    parent.addEdge(0, 1);
    addVert(2, 7);
    EXPECT_EQ(parent.getLength(), 8);
    addVert(3, 100);
    EXPECT_EQ(parent.getLength(), 8);  // the new vertex waits for an edge

    ConsraintGraphList child = parent;
    child.addEdge(1, 2);
    child.addEdge(1, 2);  // twice is once
    child.calcConstraintGraph();
    EXPECT_EQ(child.returnCoord(2), 8);
    EXPECT_EQ(child.getLength(), 100);
    EXPECT_TRUE(parent.getOutcomingEdges(1).empty());
    child = parent;  // into memory that held more
    child.addEdge(2, 0);
    child.calcConstraintGraph();
    EXPECT_EQ(child.returnCoord(1), 12);
    EXPECT_TRUE(child.getOutcomingEdges(1).empty());
}

// A path may go on to where it is shorter, and its length counts at its end only.
TEST(ConstraintGraph, ForeseesNoLengthWithNegativeWeights) {
    ConsraintGraphList graph;
    graph.addVert(3);
    graph.addWeight(0, 5);
    graph.addWeight(1, -3);
    graph.addWeight(2, 1);
    graph.addEdge(0, 1);
    graph.calcConstraintGraph();
    EXPECT_EQ(graph.getLength(), 2);
    EXPECT_LE(graph.lengthThrough(2, 0), 3);
    graph.addEdge(2, 0);
    graph.calcConstraintGraph();
    EXPECT_EQ(graph.getLength(), 3);
}

TEST(ConstraintGraph, LengthNeverFalls) {
    ConsraintGraphList graph;
    graph.addVert(3);
    graph.addWeight(0, 5);
    graph.addEdge(1, 2);
    graph.calcConstraintGraph();
    EXPECT_EQ(graph.getLength(), 5);
    graph.addWeight(0, 1);
    graph.addEdge(0, 2);
    graph.calcConstraintGraph();
    EXPECT_EQ(graph.getLength(), 5);  // although all now ends at 1
}

TEST(ConstraintGraphDeathTest, VerticesOutOfRangeAbort) {
    ConsraintGraphList graph;
    graph.addVert(3);
    EXPECT_DEATH(graph.addEdge(3, 0), "src/Graphs.*\\(from < numVert\\)&&\\(to < numVert\\)");
    EXPECT_DEATH(graph.addEdge(0, 3), "\\(from < numVert\\)&&\\(to < numVert\\)");
    EXPECT_DEATH(graph.addWeight(3, 1), "node < numVert");
}

TEST(Order, FollowsTheHeaviestConnections) {
    struct Edge {
        unsigned from, to;
        float weight;
    };
    struct Case {
        unsigned n;
        std::vector<Edge> edges;
        std::vector<unsigned> order;
    };
    const Case cases[] = {
        {0, {}, {}},
        {1, {}, {0}},
        {2, {{0, 1, 3}}, {0, 1}},  // a tie goes to the lowest
        // The most connected comes first, then what is most connected with those in the order.
        {4, {{0, 1, 5}, {1, 2, 4}, {2, 3, 9}, {0, 3, 1}}, {2, 3, 1, 0}},
        {3, {{0, 1, 2}, {1, 2, 1}, {1, 2, 1.5F}}, {1, 2, 0}},  // parallel edges add up
        // Separate pieces repeat the last choice; without any connection that is vertex 0.
        {4, {{0, 1, 5}, {2, 3, 4}}, {0, 1, 1, 1}},
        {3, {{0, 1, 0}, {1, 2, 0}}, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        UndirectedGraph graph(c.n);
        for (const auto& [from, to, weight] : c.edges) {
            graph.addEdge(from, to, weight);
        }
        EXPECT_EQ(graph.findOrder(), c.order) << &c - cases;
    }
}

// Weights: a-b (6 + 20) / 2, as their net counts once although it has four pins on them, and b-c
// twice (20 + 4) / 2. So the order is b, c, a, and a again for want of a connection to "far".
TEST(Order, RenumbersBlocksAndTheirPins) {
    Design design;
    design.dies = {{"a", 4, 2}, {"b", 12, 8}, {"c", 2, 2}, {"far", 1, 1}};
    design.nets = {{{"a"}, {"b"}, {"a"}, {"b"}}, {{"b"}, {"c"}}, {{"c"}, {"b"}}, {{"far"}}};
    Engine engine(design);
    engine.placer.ordering();
    EXPECT_EQ(engine.report.str(),
              "Perform ordering ...\n\nNew order:\n"
              "b(0)       c(1)       a(3)     far(3)\nPrevious indexes:\n1\t2\t0\t3\t\n");
    std::vector<unsigned> indexes;
    for (const Pin& pin : engine.netlist.pins) {
        indexes.push_back(pin.getBlockIndex());
    }
    EXPECT_EQ(indexes, (std::vector<unsigned>{3, 0, 3, 0, 0, 1, 1, 0, 3}));
}

}  // namespace
}  // namespace korvel::test
