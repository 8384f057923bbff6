// Feeds any bytes to the reader of rules and checks what it promises: no crash, rules or an error
// that can be printed, and rules that every fixed die and every other die has a place under.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string_view>

#include "judge/RuleJudge.h"
#include "rules/RulesReader.h"

namespace korvel {
namespace {

constexpr Region kRegion{100.0, 80.0};
constexpr std::size_t kLongestLine = 600;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "Broken: " << what << std::endl;
        std::abort();
    }
}

Design design() {
    Design design;
    design.dies = {{"cpu", {40, 20}},
                   {"io", {10, 10}},
                   {"mem0", {20, 10}},
                   {"mem1", {20, 10}},
                   {"sq", {10, 10}}};
    design.terminals = {{"pad", {0, 0}}};
    design.nets = {{{{0, {40, 10}}, {1, {0, 2}}}},
                   {{{2, {0, 5}}, {3, {20, 5}}}},
                   {{{0, {}}, {2, {}}, {3, {}}, {4, {5, 5}}}},
                   {{{1, {}}, {5, {}}}}};
    return design;
}

void checkPrinted(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);) {
        expect(isPrintable(line), "findings can be printed");
        expect(line.size() < kLongestLine, "findings are short");
    }
}

bool isLength(double length) {
    return std::isfinite(length) && length >= 0.0;
}

void checkDies(const Design& design, const Rules& rules) {
    for (unsigned die = 0; die < design.dies.size(); ++die) {
        bool hasPlace = false;
        for (const Orient orient : kEveryTurn) {
            hasPlace |=
                rules.die(die).orients.has(orient) && rules.hasPlace(design, kRegion, die, orient);
        }
        expect(hasPlace, "every die has a place");
        for (unsigned other = 0; other < die; ++other) {
            const double gap = rules.leastGap(die, other);
            expect(isLength(gap) && gap == rules.leastGap(other, die), "gaps are symmetrical");
            expect(gap <= rules.largestGap(), "no gap is larger than the largest");
            expect(!rules.hasOneGap() || gap == rules.spacing, "one gap is the only one");
        }
    }
}

// Each die at the lowest place that its rules leave it by itself, in an orientation that is left.
Placement lowest(const Design& design, const Rules& rules) {
    Placement placement;
    for (unsigned die = 0; die < design.dies.size(); ++die) {
        const auto* const orient =
            std::find_if(std::begin(kEveryTurn), std::end(kEveryTurn), [&](Orient one) {
                return rules.die(die).orients.has(one) && rules.hasPlace(design, kRegion, die, one);
            });
        placement.push_back({{rules.cornerRange(design, kRegion, die, kX, *orient).low,
                              rules.cornerRange(design, kRegion, die, kY, *orient).low},
                             *orient});
    }
    return placement;
}

void checkJudged(const Design& design, const Rules& rules) {
    const RuleJudgement judgement =
        judgeRules(design, kRegion, rules, lowest(design, rules), touchingLength(kRegion) * 10);
    expect(judgement.edges.empty() && judgement.within.empty() && judgement.moved.empty() &&
               judgement.turned.empty(),
           "what a corner range says is legal for the judge");
    expect(!std::isnan(judgement.weightedWirelength), "nets have a length");
}

void run(std::string_view input) {
    static const Design fixed = design();
    std::istringstream in{std::string(input)};
    Diagnostics diagnostics;
    const auto rules = readRules(in, "r.yaml", {}, fixed, kRegion, diagnostics);
    expect(rules.has_value() != diagnostics.hasErrors(), "rules or an error");
    if (rules) {
        checkDies(fixed, *rules);
        checkJudged(fixed, *rules);
    }
    checkPrinted(diagnostics);
}

}  // namespace
}  // namespace korvel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    korvel::run({reinterpret_cast<const char*>(data), size});
    return 0;
}
