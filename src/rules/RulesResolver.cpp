#include "rules/RulesResolver.h"

#include <utility>

#include "rules/DieNames.h"
#include "rules/FixedDiesCheck.h"
#include "rules/MergedRules.h"
#include "rules/PairMerger.h"
#include "rules/RoomCheck.h"

namespace korvel {

namespace {

using DieEntries = std::vector<RulesDraft::DieEntry>;

template <typename T>
void add(RulesDraft::Maybe<T>& value, const RulesDraft::Maybe<T>& later) {
    value = later ? later : value;
}

template <typename T>
std::optional<T> valueOf(const RulesDraft::Maybe<T>& stated) {
    return stated ? std::optional(stated->value) : std::nullopt;
}

// By die, each key from the last entry that states it.
DieEntries mergeDies(const RulesDraft& draft, const Design& design, const DieNames& names,
                     Diagnostics& diagnostics) {
    DieEntries merged(design.dies.size());
    for (const RulesDraft::DieEntry& entry : draft.dies) {
        const std::vector<unsigned> dies = names.matching(entry.name);
        if (dies.empty()) {
            diagnostics.error(draft.file, entry.line, "dies: " + names.noMatch(entry.name));
        }
        for (const unsigned die : dies) {
            add(merged[die].at, entry.at);
            add(merged[die].orients, entry.orients);
            add(merged[die].within, entry.within);
            add(merged[die].spacing, entry.spacing);
        }
    }
    return merged;
}

Rules::Die ruled(const RulesDraft::DieEntry& entry, unsigned group) {
    Rules::Die die;
    die.at = valueOf(entry.at);
    die.orients = valueOf(entry.orients).value_or(die.orients);
    die.within = valueOf(entry.within);
    die.spacing = valueOf(entry.spacing);
    die.group = group;
    return die;
}

Rules merge(const RulesDraft& draft, const DieEntries& entries, const PairMerger& pairs) {
    Rules rules;
    rules.spacing = valueOf(draft.spacing).value_or(rules.spacing);
    rules.edge = valueOf(draft.edge).value_or(rules.edge);
    for (const auto& keepout : draft.keepouts) {
        rules.keepouts.push_back(keepout.value);
    }
    if (!draft.dies.empty() || !draft.pairs.empty()) {
        for (unsigned die = 0; die < entries.size(); ++die) {
            rules.dies.push_back(ruled(entries[die], pairs.groupOf(die)));
        }
    }
    rules.pairs = pairs.getPairs();
    rules.nets = pairs.netRules();
    return rules;
}

}  // namespace

std::optional<Rules> resolveRules(const RulesDraft& draft, const Design& design, Region region,
                                  Diagnostics& diagnostics) {
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    const DieNames names(design);
    DieEntries entries = mergeDies(draft, design, names, diagnostics);
    const PairMerger pairs(draft, design, names, diagnostics);
    Rules rules = merge(draft, entries, pairs);
    const MergedRules merged{draft, design, region, std::move(rules), std::move(entries)};
    checkRoom(merged, diagnostics);
    checkFixedDies(merged, diagnostics);
    const bool isSound = diagnostics.getErrorNum() == errorsBefore;
    return isSound ? std::optional(merged.rules) : std::nullopt;
}

}  // namespace korvel
