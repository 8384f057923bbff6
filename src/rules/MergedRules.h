// What the checks of rules look at: the rules as resolved, and which line states what of a die.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "rules/RulesDraft.h"

namespace korvel {

struct MergedRules {
    const RulesDraft& draft;
    const Design& design;
    Region region;
    Rules rules;
    std::vector<RulesDraft::DieEntry> entries;  // by die, merged; empty if no die has any

    // In findings; what was stated on the command line is in no file.
    std::string fileOf(unsigned line) const { return line == 0 ? std::string() : draft.file; }
    // What differs by no more is the same.
    double slack() const { return kRuleSlack * std::max(region.width, region.height); }
};

}  // namespace korvel
