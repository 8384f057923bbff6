// Merges the entries of `pairs`: which groups of dies they tell apart, what holds between two
// groups, and what follows for the nets.
#pragma once

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "design/Diagnostics.h"
#include "rules/DieNames.h"
#include "rules/RulesDraft.h"

namespace korvel {

class PairMerger {
public:
    // Errors: names that match no die, and entries for a die and itself. All references must
    // outlive it.
    PairMerger(const RulesDraft& draft, const Design& design, const DieNames& names,
               Diagnostics& diagnostics);

    unsigned groupOf(unsigned die) const { return groups[die]; }
    const std::map<std::pair<unsigned, unsigned>, Rules::Pair>& getPairs() const { return pairs; }
    // By net; empty if nothing is said of any.
    std::vector<Rules::Net> netRules() const;

private:
    // The sides of entries that match a die, as 2 * entry + side.
    using Sides = std::vector<std::size_t>;

    void findSides(const DieNames& names);
    std::vector<unsigned> diesOn(const RulesDraft::PairEntry& entry, std::size_t side,
                                 const DieNames& names);
    void formGroups();
    void merge();
    // The groups of a net's dies, each with the number of these dies.
    std::map<unsigned, unsigned> groupsOn(const Design::Net& net) const;
    Rules::Net rulesOf(const Design::Net& net) const;

    const RulesDraft& draft;
    const Design& design;
    Diagnostics& diagnostics;
    std::vector<Sides> sides;                    // by die
    std::vector<unsigned> groups;                // by die
    std::vector<std::set<unsigned>> sideGroups;  // by 2 * entry + side
    std::map<std::pair<unsigned, unsigned>, Rules::Pair> pairs;
};

}  // namespace korvel
