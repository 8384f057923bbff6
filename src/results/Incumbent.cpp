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
    found = Found{placement, std::move(judgement), finder};
    shortest.store(found->wirelength());
    if (notice) {
        notice(*found);
    }
    return Offer::Kept;
}

std::optional<Found> Incumbent::best() const {
    const std::lock_guard lock(mutex);
    return found;
}

}  // namespace korvel
