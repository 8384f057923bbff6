#include "results/ExactOffer.h"

#include <vector>

namespace korvel {

namespace {

std::vector<Orient> orientsOf(const Placement& placement) {
    std::vector<Orient> orients;
    orients.reserve(placement.size());
    for (const PlacedDie& die : placement) {
        orients.push_back(die.orient);
    }
    return orients;
}

}  // namespace

void offerExact(const CoordinateSolver& solver, const Relations& relations, const Placement& draft,
                const std::string& finder, Incumbent& incumbent) {
    const auto exact = solver.solve(relations, orientsOf(draft));
    if (!exact || incumbent.offer(*exact, finder) == Offer::Illegal) {
        incumbent.offer(draft, finder);
    }
}

}  // namespace korvel
