// Partial placements: relations, sizes and reports, and the stack that holds them.

#include "classic/node/NodeStack.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

const Design kThreeDies{{{"a", 4, 2}, {"b", 6, 3}, {"c", 5, 1}}, {}, {}, {}};

TEST(Node, RelationsBecomeCoordinatesAndAreFoundAgain) {
    Engine engine(kThreeDies);
    BBNode node;
    node.addBlock(Orient::E, engine.netlist);  // 2 wide, 4 high
    node.addBlock(Orient::N, engine.netlist);
    const BBNode parent = node;
    node.relate(1, 0, Topology::R);
    node.addBlock(Orient::S, engine.netlist);
    node.relate(2, 0, Topology::A);
    node.relate(2, 1, Topology::B);  // so b has to rise above c, and c above a
    ASSERT_TRUE(node.sortGraphs());
    node.findCoords();
    node.updateSizes();
    EXPECT_EQ(node.width, 2 + 6);
    EXPECT_EQ(node.height, 4 + 1 + 3);
    EXPECT_EQ(node.verticalGraph.returnCoord(1), 4 + 1);
    EXPECT_EQ(node.findPrepTopology(1, 0), Topology::R);
    EXPECT_EQ(node.findPrepTopology(0, 1), Topology::L);
    EXPECT_EQ(node.findPrepTopology(2, 0), Topology::A);
    EXPECT_EQ(node.findPrepTopology(0, 2), Topology::B);
    node.relate(2, 0, Topology::L);  // a horizontal relation wins
    EXPECT_EQ(node.findPrepTopology(2, 0), Topology::L);
    node.relate(0, 1, Topology::A);
    EXPECT_FALSE(node.sortGraphs());  // a above b above c above a

    // The node that it was copied from has none of this.
    EXPECT_EQ(parent.horizontalGraph.getVertNum(), 2U);
    EXPECT_TRUE(parent.horizontalGraph.getOutcomingEdges(0).empty());

    engine.netlist.blocks[1].moveBlock({2, 5.25F});
    std::ostringstream out;
    parent.printPlacement(engine.netlist, out);
    EXPECT_EQ(out.str(),
              "\n==    Placement information    ==\nBlocks: \n"
              "Name: a, Orientation: E\n\tCoordinate: (0, 0)\n"
              "Name: b, Orientation: N\n\tCoordinate: (2, 5.25)\n");
}

TEST(NodeDeathTest, MirroredBlocksAndPairsWithoutRelationEndTheProcess) {
    Engine engine(kThreeDies);
    BBNode node;
    EXPECT_EXIT(node.addBlock(Orient::FN, engine.netlist), testing::ExitedWithCode(0), "");
    node.addBlock(Orient::N, engine.netlist);
    node.addBlock(Orient::N, engine.netlist);
    EXPECT_EXIT(node.findPrepTopology(0, 1), testing::ExitedWithCode(0), "");
}

TEST(Node, StacksReturnTheLastNodeFirstAndKeepNodesApart) {
    const auto nodeOf = [](unsigned level) {
        BBNode node;
        node.blockLevel = level;
        node.blocksOrients.assign(level, Orient::E);
        return node;
    };
    NodeStack stack, other;
    for (const unsigned level : {1U, 2U, 3U}) {
        stack.push(nodeOf(level));
    }
    BBNode taken = nodeOf(9);
    stack.popInto(taken);
    EXPECT_EQ(taken.blockLevel, 3U);
    stack.push(nodeOf(4));  // into a used slot
    stack.multiplyTop(3);
    stack.fromTop(1).blockLevel = 5;
    other.swap(stack);
    EXPECT_TRUE(stack.empty());
    for (const unsigned level : {4U, 5U, 4U, 2U, 1U}) {
        other.popInto(taken);
        EXPECT_EQ(taken.blockLevel, level);
    }
    EXPECT_TRUE(other.empty());
    EXPECT_EQ(taken.blocksOrients, std::vector{Orient::E});
}

}  // namespace
}  // namespace korvel::test
