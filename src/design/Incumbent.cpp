#include "design/Incumbent.h"

namespace korvel {

bool Incumbent::offer(const Placement& placement, double length, const std::string& finder) {
    if (!(length < wirelength())) {
        return false;
    }
    const std::lock_guard lock(mutex);
    if (!(length < wirelength())) {
        return false;
    }
    found = Found{placement, length, finder};
    shortest.store(length, std::memory_order_relaxed);
    if (notice) {
        notice(*found);
    }
    return true;
}

std::optional<Found> Incumbent::best() const {
    const std::lock_guard lock(mutex);
    return found;
}

}  // namespace korvel
