// A length beyond all others: of what does not exist, or is not limited.
#pragma once

#include <limits>

namespace korvel {

inline constexpr double kInfiniteLength = std::numeric_limits<double>::infinity();

}  // namespace korvel
