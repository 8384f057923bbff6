// The rules as engines ask for them: corner ranges, gaps, names.

#include "rules/Rules.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "rules/NamePattern.h"

namespace korvel::test {
namespace {

constexpr Region kRegion{100, 80};

Design twoDies() {
    Design design;
    design.dies = {{"a", {40, 20}}, {"b", {10, 10}}};
    return design;
}

TEST(Rules, AreFreeByDefault) {
    const Rules rules;
    EXPECT_TRUE(rules.isEmpty());
    EXPECT_EQ(rules.leastGap(0, 1), 0);
    EXPECT_EQ(rules.pair(0, 1), nullptr);
    EXPECT_TRUE(rules.hasOneGap());
    EXPECT_FALSE(rules.hasWeights());
    EXPECT_EQ(rules.die(1).orients, OrientSet::all());
    EXPECT_EQ(rules.net(5).weight, 1);
    const CornerRange range = rules.cornerRange(twoDies(), kRegion, 0, kY, Orient::E);
    EXPECT_EQ(range.low, 0);
    EXPECT_EQ(range.high, 40);
}

TEST(Rules, TellWhereACornerMayLie) {
    struct Case {
        const char* what;
        Rules::Edge edge;
        Rules::Die die;
        Axis axis;
        Orient orient;
        double low, high;  // low above high: nowhere
    };
    const auto within = [](double x, double y, double width, double height) {
        Rules::Die die;
        die.within = Rectangle{{x, y}, {x + width, y + height}};
        return die;
    };
    const auto fixed = [](double x, double y) {
        Rules::Die die;
        die.at = Spot{x, y};
        return die;
    };
    const Rules::Edge edge{1, 2, 3, 4};
    const Case cases[] = {
        {"an edge along x", edge, {}, kX, Orient::N, 1, 57},
        {"an edge along y", edge, {}, kY, Orient::W, 2, 36},
        {"a rectangle that reaches over the edge", edge, within(-5, 5, 60, 90), kX, Orient::S, 1,
         15},
        {"a rectangle inside it", edge, within(10, 5, 60, 30), kY, Orient::S, 5, 15},
        {"a rectangle too low", edge, within(10, 5, 60, 30), kY, Orient::E, 1, 0},
        {"a rectangle just as wide", {}, within(0.1, 0, 40, 80), kX, Orient::N, 0.1, 0.1},
        {"a fixed die, though near the edge", edge, fixed(0, 60), kX, Orient::N, 0, 0},
        {"a fixed die that would leave the area", edge, fixed(0, 60), kY, Orient::E, 1, 0},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.what);
        Rules rules;
        rules.edge = expected.edge;
        rules.dies = {expected.die, {}};
        const CornerRange range =
            rules.cornerRange(twoDies(), kRegion, 0, expected.axis, expected.orient);
        EXPECT_EQ(range.isEmpty(), expected.low > expected.high);
        if (!range.isEmpty()) {
            EXPECT_NEAR(range.low, expected.low, 1e-12);
            EXPECT_NEAR(range.high, expected.high, 1e-12);
        }
    }
}

TEST(NamePattern, AgreesWithRegularExpressions) {
    std::mt19937 random(5);
    const auto word = [&random](const char* letters, unsigned letterNum) {
        std::string text;
        for (auto left = random() % 9; left > 0; --left) {
            text += letters[random() % letterNum];
        }
        return text;
    };
    unsigned matchNum = 0;
    for (int round = 0; round < 3000; ++round) {
        const std::string name = word("ab", 2);
        const std::string pattern = word("ab*?", 4);
        std::string expression;
        for (const char c : pattern) {
            expression += c == '*' ? ".*" : c == '?' ? "." : std::string(1, c);
        }
        const bool expected = std::regex_match(name, std::regex(expression));
        EXPECT_EQ(matches(pattern, name), expected) << pattern << " " << name;
        matchNum += expected ? 1 : 0;
    }
    EXPECT_GT(matchNum, 100U);
    EXPECT_TRUE(matches("caf?", "caf\u00e9"));
    // What takes forever if every star is tried anew.
    EXPECT_FALSE(matches(std::string(200, '*') + "b", std::string(20000, 'a')));
    EXPECT_FALSE(matches("*a*a*a*a*a*a*a*a*a*a*a*a*b", std::string(500, 'a')));
}

TEST(NamePattern, FindsTheNearestWord) {
    const std::vector<std::string_view> words{"spacing", "edge", "dies", "pairs"};
    const std::pair<const char*, const char*> cases[] = {{"spaceing", "spacing"},
                                                         {"Edge", "edge"},
                                                         {"die", "dies"},
                                                         {"pair", "pairs"},
                                                         {"", "edge"}};
    for (const auto& [word, nearest] : cases) {
        EXPECT_EQ(nearestTo(word, words), nearest);
    }
    EXPECT_EQ(nearestTo("x", {}), "");
}

}  // namespace
}  // namespace korvel::test
