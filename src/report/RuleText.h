// Reports on rules and on what breaks them for people: lines of text.
#pragma once

#include <string>

#include "judge/RuleJudge.h"
#include "report/Text.h"

namespace korvel {

// The rules in force in one line, such as "spacing 100, edge 200, 1 die fixed"; without any it says
// what that means.
std::string rulesText(const Rules& rules);

// A row of two columns about the weighted wirelength, if there are weights; else none.
Rows weightedRows(const Rules& rules, const RuleJudgement& judgement);

// "left", "bottom", "right", "top".
std::string sideText(RuleJudgement::Side side);

// The names of the dies that a net has pins on, in the order of the net.
std::vector<std::string> diesOf(const Design& design, const Design::Net& net);

// Such as "2 gaps too small, 1 die moved"; empty if all rules are kept.
std::string ruleFaultCounts(const RuleJudgement& judgement);

// What breaks the rules, a line each and the worst first, at most 20 of a kind. Empty if nothing
// does.
std::string ruleFaultsText(const Design& design, const Rules& rules, const Placement& placement,
                           const RuleJudgement& judgement);

}  // namespace korvel
