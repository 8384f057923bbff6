#include "rules/PairMerger.h"

#include <algorithm>

namespace korvel {

namespace {

void override(std::optional<double>& value, const RulesDraft::Maybe<double>& by) {
    if (by) {
        value = by->value;
    }
}

}  // namespace

PairMerger::PairMerger(const RulesDraft& draft, const Design& design, const DieNames& names,
                       Diagnostics& diagnostics)
    : draft(draft),
      design(design),
      diagnostics(diagnostics),
      sides(design.dies.size()),
      groups(design.dies.size()),
      sideGroups(2 * draft.pairs.size()) {
    findSides(names);
    formGroups();
    merge();
}

void PairMerger::findSides(const DieNames& names) {
    for (std::size_t at = 0; at < draft.pairs.size(); ++at) {
        const RulesDraft::PairEntry& entry = draft.pairs[at];
        const std::vector<unsigned> first = diesOn(entry, 0, names);
        const std::vector<unsigned> second = diesOn(entry, 1, names);
        for (const unsigned die : first) {
            sides[die].push_back(2 * at);
        }
        for (const unsigned die : second) {
            sides[die].push_back(2 * at + 1);
        }
        if (first.size() == 1 && first == second) {
            diagnostics.error(draft.file, entry.line,
                              "pairs: found " + shown(entry.names[0]) + " and " +
                                  shown(entry.names[1]) + ", expected two different dies");
        }
    }
}

std::vector<unsigned> PairMerger::diesOn(const RulesDraft::PairEntry& entry, std::size_t side,
                                         const DieNames& names) {
    std::vector<unsigned> dies = names.matching(entry.names[side]);
    if (dies.empty()) {
        diagnostics.error(draft.file, entry.line, "pairs: " + names.noMatch(entry.names[side]));
    }
    return dies;
}

void PairMerger::formGroups() {
    std::map<Sides, unsigned> numbers;
    for (std::size_t die = 0; die < sides.size(); ++die) {
        const auto next = static_cast<unsigned>(numbers.size());
        groups[die] = numbers.try_emplace(sides[die], next).first->second;
        for (const std::size_t side : sides[die]) {
            sideGroups[side].insert(groups[die]);
        }
    }
}

// Key by key, so that of each key the last entry to state it counts.
void PairMerger::merge() {
    for (std::size_t at = 0; at < draft.pairs.size(); ++at) {
        const RulesDraft::PairEntry& entry = draft.pairs[at];
        for (const unsigned a : sideGroups[2 * at]) {
            for (const unsigned b : sideGroups[2 * at + 1]) {
                Rules::Pair& pair = pairs[std::minmax(a, b)];
                override(pair.spacing, entry.spacing);
                override(pair.weight, entry.weight);
                override(pair.reach, entry.reach);
            }
        }
    }
}

std::vector<Rules::Net> PairMerger::netRules() const {
    const bool hasAny = std::any_of(pairs.begin(), pairs.end(), [](const auto& pair) {
        return pair.second.weight || pair.second.reach;
    });
    std::vector<Rules::Net> rules;
    if (hasAny) {
        for (const Design::Net& net : design.nets) {
            rules.push_back(rulesOf(net));
        }
    }
    return rules;
}

std::map<unsigned, unsigned> PairMerger::groupsOn(const Design::Net& net) const {
    std::set<unsigned> dies;
    for (const Design::Pin& pin : net.pins) {
        if (design.isDie(pin.body)) {
            dies.insert(pin.body);
        }
    }
    std::map<unsigned, unsigned> found;
    for (const unsigned die : dies) {
        ++found[groups[die]];
    }
    return found;
}

// Of the pairs that say something the largest weight and the smallest reach.
Rules::Net PairMerger::rulesOf(const Design::Net& net) const {
    Rules::Net rules;
    std::optional<double> weight;
    const std::map<unsigned, unsigned> present = groupsOn(net);
    for (auto a = present.begin(); a != present.end(); ++a) {
        // Two dies of one group are a pair too.
        for (auto b = a->second > 1 ? a : std::next(a); b != present.end(); ++b) {
            const auto pair = pairs.find({a->first, b->first});
            if (pair != pairs.end()) {
                weight = std::max(weight, pair->second.weight);
                rules.reach = std::min(rules.reach, pair->second.reach.value_or(rules.reach));
            }
        }
    }
    rules.weight = weight.value_or(rules.weight);
    return rules;
}

}  // namespace korvel
