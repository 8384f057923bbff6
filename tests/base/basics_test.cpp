// Orientations, and blocks with their pins.

#include "support/helpers.h"

namespace korvel::test {
namespace {

TEST(Orientations, TurningIsACycleOfFourAndLeavesTheMirroredAlone) {
    std::ostringstream out;
    EXPECT_EQ(OrientConverter::rotation(Orient::N, 1, out), Orient::E);  // clockwise
    for (const Orient o : kTurned) {
        EXPECT_EQ(OrientConverter::rotation(OrientConverter::rotation(o, 1, out), 7, out), o);
    }
    EXPECT_EQ(OrientConverter::rotation(Orient::FE, 0, out), Orient::FE);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(OrientConverter::rotation(Orient::FE, 2, out), Orient::FE);
    const std::string line = "ERROR (OrientConverter::rotation): Undefined orientation!\n";
    EXPECT_EQ(out.str(), line + line);
}

TEST(Orientations, TextsGoThereAndBack) {
    std::ostringstream out;
    for (const char* text : {"N", "E", "S", "W", "FN", "FE", "FS", "FW", "-1"}) {
        const Orient orient = OrientConverter::StringToOrient(text, out);
        EXPECT_EQ(OrientConverter::OrientToString(orient), text);
    }
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(OrientConverter::StringToOrient(" N", out), Orient::Undefined);
    EXPECT_EQ(out.str(),
              "\nERROR: by converting string value to Orient enum value (BasicStructs)\n");
    EXPECT_EQ(OrientConverter::OrientToString(static_cast<Orient>(8)), "-1");
    EXPECT_EQ(TopologyConverter::TopologyToString(Topology::LAST), "LAST");
    EXPECT_EQ(TopologyConverter::TopologyToString(static_cast<Topology>(5)), "-1");
    EXPECT_EQ(DirectionConverter::DirectionToString(Direction::SW), "SW");
}

// A 10 x 4 block with a pin a quarter from its left edge, at three quarters of its height, and one
// in its upper right corner.
struct Fixture {
    Net net{7, 2};
    Pin pin{0, 'B', {}, {0.25F, 0.75F}, false, 10, 4, 0, &net};
    Pin corner{1, 'B', {}, {1, 1}, false, 10, 4, 0, &net};
    Block block{0, "b", 10, 4};
    Fixture() {
        for (Pin* each : {&pin, &corner}) {
            block.addPin(each);
            net.addPin(each);
        }
    }
};

TEST(Blocks, CarryTheirPinsInEveryOrientation) {
    // N: 2.5 from the left, 1 from the top. Every clockwise turn takes these to the next sides; FN
    // mirrors left and right, FS below and above, FE and FW are the mirrored forms of the others.
    const Point places[] = {{2.5F, 3.0F}, {3.0F, 7.5F}, {7.5F, 1.0F}, {1.0F, 2.5F},
                            {7.5F, 3.0F}, {3.0F, 2.5F}, {2.5F, 1.0F}, {1.0F, 7.5F}};
    for (int value = 0; value < 8; ++value) {
        const auto orient = static_cast<Orient>(value);
        Fixture f;
        f.block.updateBlockState({100, 200}, orient, orient >= Orient::FN);
        EXPECT_EQ(f.pin.getCoord().x, 100 + places[value].x) << value;
        EXPECT_EQ(f.pin.getCoord().y, 200 + places[value].y) << value;
    }
}

TEST(Blocks, PlacingCountsPinsInTheirNetsAndMovingDoesNot) {
    Fixture f;
    f.block.updateBlockState({1, 2}, Orient::N, false);
    EXPECT_EQ(f.net.getPlacedPinsNum(), 2U);
    f.block.moveBlock({3, -1});
    EXPECT_EQ(f.net.getPlacedPinsNum(), 2U);
    EXPECT_EQ(f.corner.getCoord().x, 14);
    EXPECT_EQ(f.corner.getCoord().y, 5);
    EXPECT_EQ(f.block.getCoord().x, 4);
}

TEST(BlocksDeathTest, OrientationsThatDoNotFitEndTheProcessWithStatus0) {
    const auto ended = testing::ExitedWithCode(0);
    EXPECT_EXIT(Fixture().block.updateBlockState({}, Orient::FS, false), ended, "");
    EXPECT_EXIT(Fixture().block.updateBlockState({}, Orient::N, true), ended, "");
    EXPECT_EXIT(Fixture().block.updateBlockState({}, Orient::Undefined, false), ended, "");
    EXPECT_EXIT(Block(0, "b", 1, 1, {}, Orient::FN, true).getWidthOriented(), ended, "");
}

}  // namespace
}  // namespace korvel::test
