// Dies that belong together: groups that many nets join inside and few to the outside, nested in
// one another, from pairs to half of all dies. A die alone cannot leave its group at a price that
// annealing pays, so groups are moved as a whole. Systems of chiplets often hold the same group
// more than once; such groups are of one kind, and can take over one another's places.
// Filled once and never changed.
#pragma once

#include <vector>

#include "nets/NetModel.h"

namespace korvel {

class DieGroups {
public:
    // Takes time of the cube of the number of dies at worst.
    explicit DieGroups(const NetModel& nets);

    using Group = std::vector<unsigned>;  // dies
    const std::vector<Group>& groups() const { return all; }
    // The groups that look the same: dies of equal sizes, joined by equally many nets in the same
    // steps. The dies at one place of their lists correspond. Each kind has two groups or more.
    const std::vector<std::vector<Group>>& alike() const { return kinds; }

private:
    std::vector<Group> all;
    std::vector<std::vector<Group>> kinds;
};

}  // namespace korvel
