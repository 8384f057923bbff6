#include "nets/DieLimits.h"

#include "base/Tolerances.h"

namespace korvel {

DieLimits::DieLimits(const Design& design, Region region) : region(region) {
    for (const Design::Die& die : design.dies) {
        sizes.push_back(die.size);
    }
}

DieLimits DieLimits::generous(const Design& design, Region region) {
    return {design, {region.width * (1.0 + kFitting), region.height * (1.0 + kFitting)}};
}

}  // namespace korvel
