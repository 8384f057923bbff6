// The judge of rules: a violation of each kind, made by hand, its amount, and how much is granted;
// and against a plain count on random placements.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <tuple>

#include "judge/RuleJudge.h"

namespace korvel::test {
namespace {

using Side = RuleJudgement::Side;

constexpr Region kRegion{100, 80};

Design twoDies() {
    Design design;
    design.dies = {{"a", {10, 20}}, {"b", {10, 10}}};
    design.nets = {{{{0, {10, 0}}, {1, {0, 0}}}}, {{{0, {}}, {0, {1, 1}}}}};
    return design;
}

Rules withDie(const Rules::Die& die) {
    Rules rules;
    rules.dies = {{}, die};
    return rules;
}

// Everything that was found, in words.
std::string said(const RuleJudgement& judgement) {
    const std::array sides{"left", "bottom", "right", "top"};
    const auto side = [&](Side one) { return sides[static_cast<std::size_t>(one)]; };
    std::ostringstream out;
    for (const auto& [first, second, found, needed] : judgement.gaps) {
        out << "gap " << first << " " << second << ": " << found << " of " << needed << "\n";
    }
    for (const auto& [die, at, found, needed] : judgement.edges) {
        out << "edge " << die << " " << side(at) << ": " << found << " of " << needed << "\n";
    }
    for (const auto& [die, keepout, size] : judgement.keepouts) {
        out << "keepout " << die << " " << keepout << ": " << size.width << " x " << size.height
            << "\n";
    }
    for (const auto& [die, by] : judgement.moved) {
        out << "moved " << die << ": " << by.x << ", " << by.y << "\n";
    }
    for (const unsigned die : judgement.turned) {
        out << "turned " << die << "\n";
    }
    for (const auto& [die, at, beyond] : judgement.within) {
        out << "within " << die << " " << side(at) << ": " << beyond << "\n";
    }
    for (const auto& [net, length, allowed] : judgement.reaches) {
        out << "reach " << net << ": " << length << " of " << allowed << "\n";
    }
    EXPECT_EQ(judgement.areRulesKept(), out.str().empty());
    return out.str();
}

TEST(RuleJudge, FindsEachKindOfViolation) {
    Rules spacing;
    spacing.spacing = 5;
    Rules pair;
    pair.spacing = 5;
    pair.dies.resize(2);
    pair.dies[1].group = 1;
    pair.pairs[{0, 1}].spacing = 1;
    Rules edge;
    edge.edge = {1, 2, 3, 4};
    Rules keepout;
    keepout.keepouts = {{{0, 0}, {5, 5}}, {{50, 0}, {60, 30}}};
    Rules::Die still;
    still.at = Spot{40, 30};
    const Rules fixed = withDie(still);
    Rules fixedNearEdge = fixed;
    fixedNearEdge.edge = {60, 60, 60, 60};
    Rules::Die lying;
    lying.orients = {};
    lying.orients.add(Orient::E);
    Rules::Die boxed;
    boxed.within = Rectangle{{40, 10}, {60, 30}};
    Rules reach;
    reach.nets = {{1, 30}, {1, 1}};

    struct Case {
        const char* what;
        const Rules& rules;
        PlacedDie second;  // 10 x 10, beside one of 10 x 20 at 20, 20
        double tolerance;
        const char* found;
    };
    const Rules none;
    const Rules turned = withDie(lying);
    const Rules within = withDie(boxed);
    const Case cases[] = {
        {"no rule", none, {{30, 20}}, 0, ""},
        {"far enough along x", spacing, {{35, 20}}, 0, ""},
        {"far enough along y", spacing, {{20, 45}}, 0, ""},
        {"across a corner", spacing, {{34, 43}}, 0, "gap 0 1: 4 of 5\n"},
        {"too near on the left", spacing, {{8, 20}}, 0, "gap 0 1: 2 of 5\n"},
        {"touching", spacing, {{30, 20}}, 0, "gap 0 1: 0 of 5\n"},
        {"touching within what is granted", spacing, {{29.5, 20}}, 1, "gap 0 1: 0 of 5\n"},
        {"overlapping, which is another fault", spacing, {{29, 20}}, 0, ""},
        {"as near as granted", spacing, {{34, 20}}, 1, ""},
        {"nearer than granted", spacing, {{33, 20}}, 1, "gap 0 1: 3 of 5\n"},
        {"a pair may be nearer", pair, {{31, 20}}, 0, ""},
        {"but not touch", pair, {{30, 20}}, 0, "gap 0 1: 0 of 1\n"},
        {"off the edge", edge, {{1, 2}}, 0, ""},
        {"near two sides", edge, {{0.5, 0}}, 0, "edge 1 bottom: 0 of 2\nedge 1 left: 0.5 of 1\n"},
        {"near the others", edge, {{89, 67}}, 0, "edge 1 right: 1 of 3\nedge 1 top: 3 of 4\n"},
        {"outside, which is another fault", edge, {{-1, 30}}, 0, ""},
        {"outside within what is granted", edge, {{-0.5, 30}}, 0.6, "edge 1 left: 0 of 1\n"},
        {"fixed near the edge",
         fixedNearEdge,
         {{40, 30}},
         0,
         "edge 0 left: 20 of 60\nedge 0 bottom: 20 of 60\nedge 0 top: 40 of 60\n"},
        {"beside a keep-out", keepout, {{40, 0}}, 0, ""},
        {"in a keep-out", keepout, {{41, 22}}, 0, "keepout 1 1: 1 x 8\n"},
        {"deeper than granted", keepout, {{3, 3}}, 1, "keepout 1 0: 2 x 2\n"},
        {"fixed", fixed, {{40, 30}, Orient::W}, 0, ""},
        {"moved", fixed, {{37, 34}}, 0, "moved 1: -3, 4\n"},
        {"moved as far as granted", fixed, {{39, 31}}, 1, ""},
        {"not turned", turned, {{50, 50}}, 0, "turned 1\n"},
        {"turned as allowed", turned, {{50, 50}, Orient::E}, 0, ""},
        {"mirrored, which is another fault", turned, {{50, 50}, Orient::FN}, 0, ""},
        {"within", within, {{40, 20}}, 0, ""},
        {"beyond", within, {{51, 5}}, 0, "within 1 bottom: 5\nwithin 1 right: 1\n"},
        {"near", reach, {{50, 30}}, 0, "reach 1: 2 of 1\n"},
        {"out of reach", reach, {{60, 21}}, 0, "reach 0: 31 of 30\nreach 1: 2 of 1\n"},
        {"out of reach, as granted", reach, {{60, 21}}, 1, ""},
        {"nowhere", spacing, {{std::nan(""), 20}}, 0, ""},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.what);
        EXPECT_EQ(said(judgeRules(twoDies(), kRegion, expected.rules, {{{20, 20}}, expected.second},
                                  expected.tolerance)),
                  expected.found);
    }
}

TEST(RuleJudge, WeighsNets) {
    Rules rules;
    const Placement placement{{{20, 20}}, {{50, 30}}};  // lengths 30 and 2
    EXPECT_DOUBLE_EQ(judgeRules(twoDies(), kRegion, rules, placement, 0).weightedWirelength, 32);
    rules.nets = {{0.5}, {4}};
    EXPECT_DOUBLE_EQ(judgeRules(twoDies(), kRegion, rules, placement, 0).weightedWirelength, 23);
}

// Dies of three groups with gaps of their own and by pairs: each pair looked at by itself.
TEST(RuleJudge, FindsTheGapsThatALookAtAllPairsFinds) {
    std::mt19937 random(11);
    const auto below = [&random](unsigned n) { return static_cast<double>(random() % n); };
    for (int round = 0; round < 200; ++round) {
        Design design;
        Placement placement;
        Rules rules;
        rules.spacing = below(3);
        rules.pairs[{0, 2}].spacing = below(6);
        rules.pairs[{1, 1}].spacing = below(6);
        for (unsigned die = 0; die < 12; ++die) {
            design.dies.push_back({"d", {1 + below(9), 1 + below(9)}});
            placement.push_back({{below(60), below(60)}, static_cast<Orient>(random() % 4)});
            rules.dies.emplace_back();
            rules.dies.back().group = static_cast<unsigned>(random() % 3);
            if (random() % 4 == 0) {
                rules.dies.back().spacing = below(8);
            }
        }
        std::vector<std::tuple<unsigned, unsigned, double>> expected;
        for (unsigned a = 0; a < 12; ++a) {
            for (unsigned b = a + 1; b < 12; ++b) {
                const Extent sizeA = turned(design.dies[a].size, placement[a].orient);
                const Extent sizeB = turned(design.dies[b].size, placement[b].orient);
                const Spot atA = placement[a].at;
                const Spot atB = placement[b].at;
                const double gap =
                    std::max({atB.x - atA.x - sizeA.width, atA.x - atB.x - sizeB.width,
                              atB.y - atA.y - sizeA.height, atA.y - atB.y - sizeB.height});
                if (gap >= 0 && gap < rules.leastGap(a, b)) {
                    expected.emplace_back(a, b, gap);
                }
            }
        }
        std::vector<std::tuple<unsigned, unsigned, double>> found;
        for (const auto& gap : judgeRules(design, {80, 80}, rules, placement, 0).gaps) {
            found.emplace_back(gap.first, gap.second, gap.found);
            EXPECT_EQ(gap.needed, rules.leastGap(gap.first, gap.second));
        }
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, expected);
    }
}

}  // namespace
}  // namespace korvel::test
