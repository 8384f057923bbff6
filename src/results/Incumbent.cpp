#include "results/Incumbent.h"

#include <utility>

namespace korvel {

Offer Incumbent::offer(const Placement& placement, const std::string& finder) {
    if (!(korvel::wirelength(design, placement) < wirelength())) {
        return Offer::NotShorter;
    }
    Judgement judgement = judge(design, region, placement);
    if (!judgement.isLegal()) {
        return Offer::Illegal;
    }
    const std::lock_guard lock(mutex);
    if (!(judgement.wirelength < wirelength())) {
        return Offer::NotShorter;
    }
    const std::chrono::duration<double> after = std::chrono::steady_clock::now() - began;
    found = Found{placement, std::move(judgement), finder, after.count()};
    shortest.store(found->wirelength());
    if (notice) {
        notice(*found);
    }
    return Offer::Kept;
}

void Incumbent::offerExact(const CoordinateSolver& solver, const Relations& relations,
                           const Placement& draft, const std::string& finder) {
    std::vector<Orient> orients;
    for (const PlacedDie& die : draft) {
        orients.push_back(die.orient);
    }
    const auto exact = solver.solve(relations, orients);
    if (!exact || offer(*exact, finder) == Offer::Illegal) {
        offer(draft, finder);
    }
}

std::optional<Found> Incumbent::best() const {
    const std::lock_guard lock(mutex);
    return found;
}

}  // namespace korvel
