// Finds the dies that names and patterns of a rules file mean.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "design/Design.h"

namespace korvel {

class DieNames {
public:
    // The design must outlive it.
    explicit DieNames(const Design& design);

    // In the order of the design. A name without * and ? is that of one die at most.
    std::vector<unsigned> matching(const std::string& name) const;
    // What to say of a name or pattern that matches none.
    std::string noMatch(const std::string& name) const;

private:
    const Design& design;
    std::unordered_map<std::string, unsigned> byName;
};

}  // namespace korvel
