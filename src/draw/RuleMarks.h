// What a picture shows of rules: the ground that dies have to keep off, the dies that are fixed,
// and what breaks the rules, in red.
#pragma once

#include <string>
#include <vector>

#include "draw/View.h"
#include "judge/RuleJudge.h"

namespace korvel {

// The rules that a placement has to keep, and how it keeps them. References only.
struct Ruled {
    const Rules& rules;
    const RuleJudgement& judgement;
};

// Of nets beyond their reach so many are drawn, the worst first.
inline constexpr std::size_t kMostReachesDrawn = 500;

// SVG. Keep-outs as far as they are in the region, and the line of the edge; for below the dies.
std::string drawGround(const Rules& rules, Region region, const View& view);
// A pin in a corner of each fixed die, opposite to the mark of its orientation.
std::string drawFixed(const Design& design, const Rules& rules, const Placement& placement,
                      const View& view);
// Gaps that are too small and nets beyond their reach.
std::string drawRuleFaults(const Design& design, const Placement& placement,
                           const RuleJudgement& judgement, const View& view);

// By die, what is wrong with its place or orientation, a line each, each behind a line break.
std::vector<std::string> ruleFaultsOfDies(const Design& design, const RuleJudgement& judgement);

// Signs for the legend, around the origin and so many pixels wide.
std::string keepoutSign(double width);
std::string edgeSign(double width);
std::string fixedSign();
std::string gapSign();
std::string reachSign(double width);

}  // namespace korvel
