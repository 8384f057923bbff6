// Wirelength of single nets, and their advice.

#include "classic/alignment/StepVotes.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

enum PinKind { kOpen, kPlaced, kTerminal };

struct PinOf {
    unsigned block;
    float x;
    float y;
    PinKind kind = kPlaced;
};

// A net of pins that lie where they are said to; the degree may be declared differently.
struct TestNet {
    explicit TestNet(const std::vector<PinOf>& list, unsigned degree = 0)
        : net(0, degree == 0 ? static_cast<unsigned>(list.size()) : degree) {
        pins.reserve(list.size());
        for (const auto& [block, x, y, kind] : list) {
            pins.emplace_back(0, 'B', Point{x, y}, Point{}, kind == kTerminal, 0.0F, 0.0F, block,
                              &net);
            net.addPin(&pins.back());
            if (kind != kOpen) {
                pins.back().setPlaced();
            }
            if (kind == kPlaced) {
                net.incrementPlacedPins();
            }
        }
    }
    // All that a wirelength operation leaves placed are the terminals.
    bool isReset() const {
        return net.getPlacedPinsNum() == net.getTermNum() &&
               std::all_of(pins.begin(), pins.end(),
                           [](const Pin& pin) { return pin.isPlaced() == pin.isTerminal(); });
    }
    std::vector<Pin> pins;
    Net net;
};

TEST(Nets, LengthByKindOfPlacement) {
    struct Case {
        const char* what;
        std::vector<PinOf> pins;
        unsigned degree;
        float complete;       // the box of all that is placed
        float terminalTrial;  // the box of all, halved by the factor while pins are open
    };
    const PinOf usb{9, 10, 0, kTerminal};
    const PinOf clock{8, 0, 5, kTerminal};
    const PinOf open{2, 50, 50, kOpen};
    const Case cases[] = {
        {"a pair", {{0, 1, 2}, {1, 4, 6}}, 0, 7, 7},
        {"a pair on one block", {{0, 1, 2}, {0, 4, 6}}, 0, 7, 7},
        {"a pair with a terminal", {{0, 1, 2}, usb}, 0, 11, 11},
        {"one of two", {{0, 1, 2}, open}, 0, 0, 0},
        {"three on one block", {{0, 1, 2}, {0, 4, 6}, {0, 0, 0}}, 0, 10, 10},
        {"two of three", {{0, 1, 2}, {1, 4, 6}, open}, 0, 7, 3.5F},
        {"two of three declared", {{0, 1, 2}, {1, 4, 6}}, 3, 7, 3.5F},
        {"two blocks and a terminal", {{0, 1, 2}, {1, 4, 6}, usb}, 0, 15, 15},
        {"a terminal first", {usb, {0, 1, 2}, open}, 0, 11, 5.5F},
        {"nothing but terminals", {clock, usb, open}, 0, 15, 7.5F},
        {"one terminal alone", {usb, open}, 0, 0, 0},
        {"no pins", {}, 2, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TestNet complete(c.pins, c.degree);
        TestNet terminalTrial(c.pins, c.degree);
        EXPECT_EQ(complete.net.calcCompleteHPWL(), c.complete);
        EXPECT_EQ(terminalTrial.net.calcTermFCHPWL(0.5F), c.terminalTrial);
        for (const TestNet* net : {&complete, &terminalTrial}) {
            EXPECT_TRUE(net->isReset());
        }
    }
}

TEST(Nets, AFactorCloseToZeroMakesOpenNetsFreeAndLeavesCompleteOnes) {
    const std::vector<PinOf> pins = {{0, 1, 2}, {9, 4, 6, kTerminal}, {8, 4, 6, kTerminal}};
    EXPECT_EQ(TestNet(pins).net.calcTermFCHPWL(0.0005F), 7);
    EXPECT_EQ(TestNet(pins, 4).net.calcTermFCHPWL(0.0005F), 0);
    EXPECT_EQ(TestNet(pins, 4).net.calcTermFCHPWL(-0.5F), -3.5F);
}

TEST(NetsDeathTest, MorePinsPlacedThanDeclaredAbort) {
    TestNet net({{0, 1, 2}, {1, 4, 6}}, 1);
    const char* const report = "src/Net.*Assertion `netDegree >= placedPinsNum' failed";
    EXPECT_DEATH(net.net.calcCompleteHPWL(), report);
    EXPECT_DEATH(net.net.calcTermFCHPWL(1), report);
}

// What the net says about one axis; forward is right or up.
std::string text(const offsetCalcReturn& advice, Axis axis) {
    const unsigned backward = backwardLane(axis);
    std::ostringstream out;
    if (advice.moves[axis] != 0) {
        out << "forward " << advice.steps[axis];
    }
    if (advice.moves[backward] != 0) {
        out << "backward " << advice.steps[backward];
    }
    if (advice.inside[axis] != 0) {
        out << "free " << advice.freeDistances[axis] << " " << advice.freeDistances[backward];
    }
    return out.str() + (advice.stays[axis] != 0 ? "stay" : "");
}

// Block 1 is asked how to move along y, with block 0 on the net. The pins come in the net's order.
TEST(Nets, AdviceDependsOnWhoHoldsTheEnds) {
    struct At {
        unsigned block;
        float y;
    };
    const std::pair<std::vector<At>, const char*> cases[] = {
        // Outside a wider rest, its far end goes to the rest's; outside a narrower one, its near.
        {{{1, 1}, {0, 4}, {0, 8}}, "forward 3"},
        {{{1, 0}, {1, 3}, {0, 6}, {0, 7}}, "forward 4"},
        {{{0, 4}, {0, 8}, {1, 9}}, "backward 1"},
        {{{0, 4}, {0, 5}, {1, 8}, {1, 10}}, "backward 4"},
        {{{0, 1}, {1, 4}, {0, 9}}, "free 5 3"},  // between the others
        {{{1, 1}, {0, 4}, {1, 9}}, "free 3 5"},  // around them
        {{{0, 1}, {1, 4}}, "backward 3"},
        // A pin met later takes an end from the block only when it is more than 0.1 beyond it.
        {{{1, 4}, {0, 4.0625F}, {0, 2}}, "backward -0.0625"},
        {{{0, 4.0625F}, {1, 4}, {0, 2}}, "free 0.0625 2"},
    };
    for (const auto& [pins, advice] : cases) {
        NetScan scan;
        for (const auto& [block, y] : pins) {
            block == 1 ? scan.addOwn(quadOf({0, y})) : scan.addOther(quadOf({0, y}));
        }
        EXPECT_EQ(text(scan.advice(), kY), advice) << pins.size();
    }
    // A pair goes onto the other pin; pins within 0.01 are level.
    EXPECT_EQ(text(adviceForPair(quadOf({0, 3})), kY), "forward 3");
    EXPECT_EQ(text(adviceForPair(quadOf({0, -4})), kY), "backward 4");
    EXPECT_EQ(text(adviceForPair(quadOf({0, 0.005F})), kY), "stay");
}

TEST(Nets, AdviceTowardTerminalsMovesAllBlocksTogether) {
    const PinOf pad{9, 5, 1, kTerminal};
    const PinOf far{8, 10, 2, kTerminal};
    struct Case {
        std::vector<PinOf> pins;
        const char* x;
        const char* y;
    };
    const Case cases[] = {
        {{{0, 2, 9}, pad}, "forward 3", "backward 8"},
        {{pad, {0, 2, 1}}, "forward 3", "stay"},
        {{{0, 2, 9}, {1, 5, 1}}, "stay", "stay"},
        {{{0, 2, 9}, {1, 5, 1}, {2, 7, 7}}, "", ""},
        {{{0, 1, 0}, {1, 3, 4}, far}, "forward 7", "free 2 2"},
        {{pad, {0, 6, 0}, far}, "free 4 1", "forward 1"},
    };
    for (const Case& c : cases) {
        const offsetCalcReturn advice = TestNet(c.pins).net.combinedOffsetsToTerms();
        EXPECT_EQ(text(advice, kX), c.x) << &c - cases;
        EXPECT_EQ(text(advice, kY), c.y) << &c - cases;
    }
}

}  // namespace
}  // namespace korvel::test
