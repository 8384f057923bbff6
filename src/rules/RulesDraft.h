// What a rules file says, entry by entry, before it is merged and applied to a design. Every value
// knows its line. Plain values.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "rules/Rules.h"

namespace korvel {

struct RulesDraft {
    template <typename T>
    struct Stated {
        T value;
        unsigned line;  // from 1; 0: on the command line
    };
    template <typename T>
    using Maybe = std::optional<Stated<T>>;

    struct DieEntry {
        std::string name;  // or a pattern with * and ?
        unsigned line;
        Maybe<Spot> at;
        Maybe<OrientSet> orients;  // from `turn` or `turns`
        Maybe<Rectangle> within;
        Maybe<double> spacing;
    };
    struct PairEntry {
        std::array<std::string, 2> names;  // or patterns
        unsigned line;
        Maybe<double> spacing;
        Maybe<double> weight;
        Maybe<double> reach;
    };

    std::string file;  // its name in findings
    Maybe<double> spacing;
    Maybe<Rules::Edge> edge;
    std::vector<Stated<Rectangle>> keepouts;
    std::vector<DieEntry> dies;    // in the order of the file, as later ones add to earlier ones
    std::vector<PairEntry> pairs;  // likewise
};

}  // namespace korvel
