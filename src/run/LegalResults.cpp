#include "run/LegalResults.h"

#include <vector>

#include "exact/ExactCoordinates.h"
#include "judge/Judge.h"

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

LegalResults::LegalResults(const Design& design, Region region, Incumbent& incumbent)
    : design(design),
      region(region),
      incumbent(incumbent),
      solver(std::make_unique<CoordinateSolver>(design, region)) {}

LegalResults::~LegalResults() = default;

bool LegalResults::offer(const Relations& relations, const Placement& draft,
                         const std::string& finder) {
    const auto best = solver->solve(relations, orientsOf(draft));
    return (best && offerLegal(*best, finder)) || offerLegal(draft, finder);
}

bool LegalResults::offer(const Placement& placement, const std::string& finder) {
    const bool asItIs = offerLegal(placement, finder);
    return offer(Relations::of(design, placement), placement, finder) || asItIs;
}

bool LegalResults::offerLegal(const Placement& placement, const std::string& finder) {
    const Judgement judgement = judge(design, region, placement);
    if (!judgement.isLegal()) {
        return false;
    }
    incumbent.offer(placement, judgement.wirelength, finder);
    return true;
}

}  // namespace korvel
