// Rules and what breaks them for programs: fields of the JSON reports, which docs/json.md
// describes.
#pragma once

#include "judge/RuleJudge.h"
#include "report/Report.h"

namespace korvel {

// The rules in force, after merging and overriding.
Json rulesFields(const Design& design, const Rules& rules);

// What breaks them, with amounts; all lists are empty if nothing does.
Json violationFields(const Design& design, const Rules& rules, const Placement& placement,
                     const RuleJudgement& judgement);

}  // namespace korvel
