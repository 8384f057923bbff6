// Dies that belong together: groups that many nets join inside and few to the outside, nested in
// one another, from pairs to half of all dies. A die alone cannot leave its group at a price that
// annealing pays, so groups are moved as a whole. Systems of chiplets often hold the same group
// more than once; such groups are of one kind, and can take over one another's places.
// Filled once and never changed; any thread may read.
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
    // By kind, of which there are two groups or more: dies of equal sizes, merged in the same steps
    // and joined by as many nets in each. The dies at one place of their lists correspond; single
    // dies are groups here.
    const std::vector<std::vector<Group>>& alike() const { return kinds; }

private:
    std::vector<Group> all;
    std::vector<std::vector<Group>> kinds;
};

}  // namespace korvel
