// The reader of rules files: what it takes, how entries merge, and the exact words for every
// mistake.

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "rules/RulesReader.h"

namespace korvel::test {
namespace {

constexpr Region kRegion{100, 80};

// Two upright dies, a memory pair and a square whose only pin is in its middle.
Design sample() {
    Design design;
    design.dies = {{"cpu", {40, 20}},
                   {"io", {10, 10}},
                   {"mem0", {20, 10}},
                   {"mem1", {20, 10}},
                   {"sq", {10, 10}}};
    design.terminals = {{"pad", {0, 0}}};
    design.nets = {
        {{{0, {40, 10}}, {1, {0, 2}}}},              // cpu - io
        {{{0, {20, 20}}, {2, {10, 0}}}},             // cpu - mem0
        {{{2, {0, 5}}, {3, {20, 5}}}},               // mem0 - mem1
        {{{0, {}}, {2, {}}, {3, {}}, {4, {5, 5}}}},  // wide
        {{{1, {}}, {5, {}}}},                        // io - pad
        {{{0, {}}, {0, {5, 5}}}},                    // on one die
    };
    return design;
}

struct Reading {
    explicit Reading(const std::string& text, const RuleOverrides& overrides = {},
                     const Design& design = sample()) {
        std::istringstream in(text);
        Diagnostics diagnostics;
        rules = readRules(in, "r.yaml", overrides, design, kRegion, diagnostics);
        std::ostringstream out;
        diagnostics.print(out);
        messages = out.str();
    }
    std::optional<Rules> rules;
    std::string messages;
};

OrientSet orients(std::initializer_list<Orient> list) {
    OrientSet set;
    for (const Orient orient : list) {
        set.add(orient);
    }
    return set;
}

// --- What is taken ---------------------------------------------------------------------------

TEST(RulesReader, TakesEveryKey) {
    const Reading reading(
        "spacing: 2  # all round\n"
        "edge: [1, 2, 3, 4]\n"
        "keepouts:\n"
        "  - [50, 0, 10, 5]\n"
        "  - [-5, 70, 1e1, 2.5]\n"
        "dies:\n"
        "  io: { at: [0, 30], turn: E }\n"
        "  'mem?': { turns: [N, S], spacing: 0.5 }\n"
        "  cpu:\n"
        "    within: [0, 0, 50, 60]\n"
        "pairs:\n"
        "  - { dies: [cpu, \"mem*\"], spacing: 3, weight: 4, reach: 30 }\n");
    EXPECT_EQ(reading.messages, "");
    ASSERT_TRUE(reading.rules);
    const Rules& rules = *reading.rules;
    EXPECT_FALSE(rules.isEmpty());
    EXPECT_EQ(rules.spacing, 2);
    EXPECT_EQ(rules.edge.left, 1);
    EXPECT_EQ(rules.edge.bottom, 2);
    EXPECT_EQ(rules.edge.right, 3);
    EXPECT_EQ(rules.edge.top, 4);
    ASSERT_EQ(rules.keepouts.size(), 2U);
    EXPECT_EQ(rules.keepouts[1].low.x, -5);
    EXPECT_EQ(rules.keepouts[1].high.x, 5);
    EXPECT_EQ(rules.keepouts[1].high.y, 72.5);
    ASSERT_TRUE(rules.die(1).at);
    EXPECT_EQ(rules.die(1).at->y, 30);
    EXPECT_EQ(rules.die(1).orients, orients({Orient::E}));
    EXPECT_EQ(rules.die(3).orients, orients({Orient::N, Orient::S}));
    EXPECT_EQ(rules.die(3).spacing, 0.5);
    EXPECT_EQ(rules.die(0).orients, OrientSet::all());
    EXPECT_EQ(rules.die(0).within->high.y, 60);
    EXPECT_EQ(rules.leastGap(0, 2), 3);    // the pair's
    EXPECT_EQ(rules.leastGap(2, 3), 0.5);  // their own
    EXPECT_EQ(rules.leastGap(0, 4), 2);    // the global one
    EXPECT_EQ(rules.net(1).weight, 4);
    EXPECT_EQ(rules.net(1).reach, 30);
}

TEST(RulesReader, TakesFilesThatSayNothing) {
    for (const char* text :
         {"", "# nothing\n", "---\n...\n", "dies:\nkeepouts:\npairs:\n", "{}",
          "spacing: 0\nedge: 0", "\xEF\xBB\xBF# from a Windows editor\r\n\r\nspacing:\t0\r\n"}) {
        SCOPED_TRACE(text);
        const Reading reading(text);
        EXPECT_EQ(reading.messages, "");
        ASSERT_TRUE(reading.rules);
        EXPECT_TRUE(reading.rules->isEmpty());
    }
}

TEST(RulesReader, AddsLaterEntriesOfDies) {
    const Reading reading(
        "dies:\n"
        "  '*': { spacing: 1, turns: [N, S] }\n"
        "  'mem*': { spacing: 3 }\n"
        "  mem1: { turn: E, within: [0, 0, 50, 50] }\n");
    ASSERT_TRUE(reading.rules) << reading.messages;
    const Rules& rules = *reading.rules;
    EXPECT_EQ(rules.die(0).spacing, 1);
    EXPECT_EQ(rules.die(2).spacing, 3);
    EXPECT_EQ(rules.die(2).orients, orients({Orient::N, Orient::S}));
    EXPECT_EQ(rules.die(3).spacing, 3);
    EXPECT_EQ(rules.die(3).orients, orients({Orient::E}));
    EXPECT_TRUE(rules.die(3).within);
    EXPECT_EQ(rules.leastGap(0, 2), 3);
    EXPECT_EQ(rules.leastGap(0, 1), 1);
    EXPECT_EQ(rules.largestGap(), 3);
}

TEST(RulesReader, AddsLaterEntriesOfPairsKeyByKey) {
    const Reading reading(
        "spacing: 7\n"
        "pairs:\n"
        "  - { dies: ['*', '*'], spacing: 1, reach: 90 }\n"
        "  - { dies: ['mem*', cpu], spacing: 5, weight: 2 }\n"
        "  - { dies: [cpu, mem0], weight: 3, reach: 40 }\n"
        "  - { dies: [mem1, mem0], weight: 0, reach: 50 }\n");
    ASSERT_TRUE(reading.rules) << reading.messages;
    const Rules& rules = *reading.rules;
    const Rules::Pair& nearly = *rules.pair(2, 0);
    EXPECT_EQ(nearly.spacing, 5);
    EXPECT_EQ(nearly.weight, 3);
    EXPECT_EQ(nearly.reach, 40);
    EXPECT_EQ(rules.pair(0, 3)->weight, 2);
    EXPECT_EQ(rules.pair(0, 3)->reach, 90);
    EXPECT_EQ(rules.leastGap(3, 0), 5);
    EXPECT_EQ(rules.leastGap(2, 3), 1);
    EXPECT_EQ(rules.leastGap(1, 4), 1);
    EXPECT_EQ(rules.pair(1, 4)->weight, std::nullopt);
    // Of the wide net's pairs the largest weight and the smallest reach; a pair without a weight
    // has no say.
    const std::pair<double, double> expected[] = {{1, 90}, {3, 40},       {0, 50},
                                                  {3, 40}, {1, HUGE_VAL}, {1, HUGE_VAL}};
    for (unsigned net = 0; net < std::size(expected); ++net) {
        SCOPED_TRACE(net);
        EXPECT_EQ(rules.net(net).weight, expected[net].first);
        EXPECT_EQ(rules.net(net).reach, expected[net].second);
    }
}

// Dies that no entry tells apart are a pair all the same, but none is a pair with itself.
TEST(RulesReader, TakesPairsOfOnePattern) {
    const Reading reading(
        "pairs:\n  - { dies: ['mem?', 'mem?'], spacing: 2, weight: 5, reach: 9 }\n");
    ASSERT_TRUE(reading.rules) << reading.messages;
    EXPECT_EQ(reading.rules->leastGap(2, 3), 2);
    EXPECT_EQ(reading.rules->leastGap(0, 3), 0);
    const double weights[] = {1, 1, 5, 5, 1, 1};  // on mem0 and mem1 are the third and the fourth
    for (unsigned net = 0; net < std::size(weights); ++net) {
        EXPECT_EQ(reading.rules->net(net).weight, weights[net]) << net;
        EXPECT_EQ(reading.rules->net(net).reach, weights[net] == 5 ? 9 : HUGE_VAL) << net;
    }
}

TEST(RulesReader, TakesASmallerSpacingOfDiesAndPairs) {
    const Reading reading(
        "spacing: 9\n"
        "dies: { cpu: { spacing: 4 }, io: { spacing: 6 } }\n"
        "pairs: [ { dies: [io, sq], spacing: 1 } ]\n");
    ASSERT_TRUE(reading.rules) << reading.messages;
    const Rules& rules = *reading.rules;
    EXPECT_EQ(rules.leastGap(0, 1), 6);
    EXPECT_EQ(rules.leastGap(0, 2), 4);
    EXPECT_EQ(rules.leastGap(4, 1), 1);
    EXPECT_EQ(rules.leastGap(2, 3), 9);
}

TEST(RulesReader, LetsTheCommandLineOverride) {
    const Reading reading("spacing: 2\nedge: [1, 1, 1, 1]\ndies: { cpu: { spacing: 8 } }\n",
                          {5, 6});
    ASSERT_TRUE(reading.rules) << reading.messages;
    EXPECT_EQ(reading.rules->leastGap(2, 3), 5);
    EXPECT_EQ(reading.rules->leastGap(0, 3), 8);
    EXPECT_EQ(reading.rules->edge.top, 6);
    EXPECT_TRUE(Reading("edge: 45\n", {{}, 0}).rules);
}

TEST(RulesReader, NeedsNoFile) {
    Diagnostics diagnostics;
    const auto rules = readRules({}, {5, {}}, sample(), kRegion, diagnostics);
    ASSERT_TRUE(rules);
    EXPECT_EQ(rules->leastGap(0, 1), 5);
    EXPECT_TRUE(rules->dies.empty());
    EXPECT_FALSE(readRules("none.yaml", RuleOverrides{}, sample(), kRegion, diagnostics));
    EXPECT_FALSE(readRules({}, {{}, 40}, sample(), kRegion, diagnostics));
    std::ostringstream out;
    diagnostics.print(out);
    EXPECT_EQ(out.str(),
              "none.yaml: error: found no file that can be read: No such file or directory\n"
              "error: edge: found [40, 40, 40, 40], expected some of the area of 100 x 80 to be "
              "left\n");
}

TEST(RulesReader, KnowsWhenATurnDoesNotMatter) {
    const char* const fixed = "dies: { sq: { at: [0, 0] } }\n";
    EXPECT_TRUE(Reading(fixed).rules);
    Design design = sample();
    design.nets.push_back({{{4, {1, 5}}, {4, {9, 5}}}});
    EXPECT_FALSE(Reading(fixed, {}, design).rules);  // a net that lies along it
    design.nets.back().pins.push_back({4, {5, 1}});
    design.nets.back().pins.push_back({4, {5, 9}});
    EXPECT_TRUE(Reading(fixed, {}, design).rules);  // and across it as well
    EXPECT_TRUE(Reading("dies: { cpu: { at: [0, 0], turns: [N, E, S, W] } }\n").rules);
}

// --- What is wrong ---------------------------------------------------------------------------

struct Mistake {
    const char* text;
    const char* messages;  // without the file's name and "error: "
};

void expectMessages(const Mistake& mistake) {
    SCOPED_TRACE(mistake.text);
    const Reading reading(mistake.text);
    EXPECT_FALSE(reading.rules);
    std::string expected;
    std::istringstream lines(mistake.messages);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        expected += "r.yaml:" + line.substr(0, blank) + ": error:" + line.substr(blank) + "\n";
    }
    EXPECT_EQ(reading.messages, expected);
}

TEST(RulesReader, SaysWhatIsWrongWithKeysAndValues) {
    const Mistake mistakes[] = {
        {"spaceing: 3",
         "1 found the key 'spaceing', expected spacing, edge, keepouts, dies or pairs; the nearest "
         "is spacing"},
        {"dies:\n  io: { att: [0, 0] }",
         "2 die 'io': found the key 'att', expected at, turn, turns, within or spacing; the "
         "nearest is at"},
        {"pairs:\n- dies: [cpu, io]\n  reech: 4\n  weight: 1",
         "3 pairs: found the key 'reech', expected dies, spacing, weight or reach; the nearest is "
         "reach"},
        {"spacing: -1", "1 spacing: found '-1', expected a length of 0 or more"},
        {"spacing: nan", "1 spacing: found 'nan', expected a length of 0 or more"},
        {"spacing: .inf", "1 spacing: found '.inf', expected a length of 0 or more"},
        {"spacing: 1e999", "1 spacing: found '1e999', expected a length of 0 or more"},
        {"spacing: 5um", "1 spacing: found '5um', expected a length of 0 or more"},
        {"spacing:\nedge: 3", "1 spacing: found nothing, expected a length of 0 or more"},
        {"spacing: [1, 2]", "1 spacing: found '[1, 2]', expected a length of 0 or more"},
        {"edge: [1, 2, 3]",
         "1 edge: found '[1, 2, 3]', expected a length of 0 or more, or [left, bottom, right, "
         "top]"},
        {"edge: [1, 2, 3, -4]",
         "1 edge: found '[1, 2, 3, -4]', expected a length of 0 or more, or [left, bottom, right, "
         "top]"},
        {"keepouts: 5", "1 keepouts: found '5', expected a list of [x, y, width, height]"},
        {"keepouts:\n  - [0, 0, 5, 5]\n  - [0, 0, 5]\n  - [0, 0, 0, 5]",
         "3 keepouts: found '[0, 0, 5]', expected [x, y, width, height], the last two above 0\n"
         "4 keepouts: found '[0, 0, 0, 5]', expected [x, y, width, height], the last two above 0"},
        {"dies: [io]", "1 dies: found '[io]', expected keys with their values"},
        {"dies: { io: fixed }", "1 die 'io': found 'fixed', expected keys with their values"},
        {"dies: { [io]: { spacing: 1 } }", "1 dies: found '[io]', expected a key that is a word"},
        {"dies: { io: { at: [1, x], turn: N } }",
         "1 die 'io': at: found '[1, x]', expected [x, y]"},
        {"dies: { io: { at: [1, 1], turn: FN } }",
         "1 die 'io': turn: found 'FN', expected N, E, S or W"},
        {"dies: { io: { turns: [] } }",
         "1 die 'io': turns: found '[]', expected a list of one or more of N, E, S, W"},
        {"dies: { io: { turns: N } }",
         "1 die 'io': turns: found 'N', expected a list of one or more of N, E, S, W"},
        {"dies: { io: { turns: [N, Q] } }",
         "1 die 'io': turns: found '[N, Q]', expected a list of one or more of N, E, S, W"},
        {"dies:\n  io:\n    turns: [N]\n    turn: E",
         "4 die 'io': found both turn and turns, expected one of them"},
        {"dies: { cpu: { within: [0, 0, 50, -5] } }",
         "1 die 'cpu': within: found '[0, 0, 50, -5]', expected [x, y, width, height], the last "
         "two above 0"},
        {"pairs:\n  - { dies: cpu, spacing: 3 }",
         "2 pairs: dies: found 'cpu', expected the names or patterns of two dies as [name, name]"},
        {"pairs:\n  - { spacing: 3 }",
         "2 pairs: found no dies, expected the names or patterns of two dies as [name, name]"},
        {"pairs:\n  - { dies: [cpu, io] }",
         "2 pairs: found dies alone, expected spacing, weight or reach as well"},
        {"pairs:\n  - { dies: [cpu, io], weight: -2 }",
         "2 pairs: weight: found '-2', expected a number of 0 or more"},
        {"spacing: 3\nedge: 2\nspacing: 4",
         "3 found 'spacing' again, expected it once (first on line 1)"},
        {"dies:\n  io: { spacing: 1 }\n  cpu: { spacing: 2 }\n  io: { spacing: 3 }",
         "4 dies: found 'io' again, expected it once (first on line 2)"},
        {"dies:\n  io: { spacing: 1, spacing: 2 }",
         "2 die 'io': found 'spacing' again, expected it once (first on line 2)"},
        {"- spacing", "1 found '[spacing]', expected keys with their values"},
    };
    for (const Mistake& mistake : mistakes) {
        expectMessages(mistake);
    }
}

TEST(RulesReader, SaysWhatIsNoYaml) {
    const Mistake mistakes[] = {
        {"spacing: 3\nedge: [1, 2\ndies: 4",
         "3 found what is no YAML: end of sequence flow not found"},
        {"dies:\n  *mem: { spacing: 1 }",
         "2 found what is no YAML: the referenced anchor is not defined; names with * have to "
         "stand "
         "in quotes"},
        {"spacing: &s 3\nedge: *s",
         "2 found an alias, expected the value itself; names with * have to stand in quotes"},
        {"spacing: 3\nedge: \xF0\x80\n# \x01",
         "2 found 'edge: \\xF0\\x80', expected text in UTF-8\n"
         "3 found '# \\x01', expected text in UTF-8"},
        {",", "1 found a second document, expected one"},
        {"spacing: 3\n---\nspacing: 4", "2 found a second document, expected one"},
    };
    for (const Mistake& mistake : mistakes) {
        expectMessages(mistake);
    }
}

TEST(RulesReader, SaysWhichDiesAreUnknown) {
    const Mistake mistakes[] = {
        {"dies:\n  men1: { spacing: 1 }\n  'x*': { spacing: 1 }\n  pad: { spacing: 1 }",
         "2 dies: found the name 'men1', expected that of a die; the nearest is 'mem1'\n"
         "3 dies: found the pattern 'x*', expected one that matches a die\n"
         "4 dies: found the name 'pad', expected that of a die; the nearest is 'cpu'"},
        {"pairs:\n  - { dies: [cpu, 'mem'], spacing: 1 }\n  - { dies: ['?', io], spacing: 1 }",
         "2 pairs: found the name 'mem', expected that of a die; the nearest is 'mem0'\n"
         "3 pairs: found the pattern '?', expected one that matches a die"},
        {"pairs:\n  - { dies: [cpu, 'c*'], spacing: 1 }",
         "2 pairs: found 'cpu' and 'c*', expected two different dies"},
    };
    for (const Mistake& mistake : mistakes) {
        expectMessages(mistake);
    }
}

TEST(RulesReader, SaysWhatCannotBeKept) {
    const Mistake mistakes[] = {
        {"edge: [60, 0, 40, 0]",
         "1 edge: found [60, 0, 40, 0], expected some of the area of 100 x 80 to be left"},
        {"spacing: 1\nedge: 31",
         "2 die 'cpu': found room of 38 x 18 in the area, expected 40 x 20 or 20 x 40 for an "
         "allowed orientation"},
        {"dies:\n  cpu: { turns: [E, W] }\n  mem0: { turn: N }\nedge: [0, 21, 0, 20]",
         "2 die 'cpu': found room of 100 x 39 in the area, expected 20 x 40 for an allowed "
         "orientation"},
        {"dies:\n  cpu:\n    within: [0, 0, 30, 30]\n  io:\n    within: [95, 0, 30, 30]",
         "3 die 'cpu': found room of 30 x 30 in its rectangle, expected 40 x 20 or 20 x 40 for an "
         "allowed orientation\n"
         "5 die 'io': found room of 5 x 30 in its rectangle, expected 10 x 10 for an allowed "
         "orientation"},
        {"dies: { cpu: { at: [0, 0] } }",
         "1 die 'cpu': at: found no turn beside it, expected one, or turns, as its pins do not lie "
         "the same in each"},
        {"dies:\n  io: { at: [91, 0], turn: N }\n  cpu: { at: [0, 41], turns: [E, W] }",
         "2 die 'io': at: found [91, 0], expected a place in the area of 100 x 80\n"
         "3 die 'cpu': at: found [0, 41], expected a place in the area of 100 x 80"},
        {"dies: { io: { at: [10, 10], turn: N, within: [0, 0, 19, 90] } }",
         "1 die 'io': at: found [10, 10], expected a place in its rectangle"},
        {"keepouts:\n- [50, 0, 10, 10]\n- [0, 70, 5, 5]\n"
         "dies: { io: { at: [41, 0], turn: N } }",
         "4 die 'io': at: found [41, 0], expected a place outside the keep-out of line 2"},
        {"spacing: 3\ndies:\n  io: { at: [0, 0], turn: N }\n  sq: { at: [12, 1] }",
         "4 die 'sq': at: found [12, 1] with a gap of 2 to 'io', which is fixed too, expected 3 or "
         "more"},
        {"dies:\n  io: { at: [0, 0], turn: N }\n  sq: { at: [9, 1] }",
         "3 die 'sq': at: found [9, 1], where it overlaps 'io', which is fixed too, expected a gap "
         "of 0"},
    };
    for (const Mistake& mistake : mistakes) {
        expectMessages(mistake);
    }
}

// Places at the very limit, in fractions that add up to a little more than they should.
TEST(RulesReader, TakesWhatJustFits) {
    for (const char* text :
         {"dies: { io: { at: [90.0, 70.0], turn: N } }",
          "dies: { cpu: { within: [0.1, 0.2, 40, 20], turn: N } }",
          "keepouts: [[0, 0, 0.3, 80]]\ndies: { io: { at: [0.3, 0], turn: N } }",
          "spacing: 0.1\ndies: { io: { at: [0, 0], turn: N }, sq: { at: [10.1, 0] } }",
          "edge: 5\ndies: { io: { at: [0, 0], turn: N } }",  // the edge is not for fixed dies
          "dies: { cpu: { at: [60, 0], turns: [N, E] }, mem0: { at: [80, 20], turn: N } }"}) {
        EXPECT_EQ(Reading(text).messages, "") << text;
    }
}

TEST(RulesReader, StopsAtFilesThatAreTooLarge) {
    EXPECT_EQ(Reading("# " + std::string(std::size_t{4} << 20, 'x')).messages,
              "r.yaml: error: found a file of more than 4 MiB, expected a smaller one\n");
}

}  // namespace
}  // namespace korvel::test
