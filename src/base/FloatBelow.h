// The tolerances of the alignment are double constants, and comparing a float with one converts it.
// This gives the float that answers the same comparison without: for a constant c that is no float
// itself, x > c is x > floatBelow(c), and x < c is x <= floatBelow(c), for every float x.
#pragma once

#include <bit>
#include <cstdint>

namespace korvel {

// The largest float that is not greater than `value`, which must be positive.
constexpr float floatBelow(double value) {
    const auto nearest = static_cast<float>(value);
    return static_cast<double>(nearest) <= value
               ? nearest
               : std::bit_cast<float>(std::bit_cast<std::uint32_t>(nearest) - 1);
}

}  // namespace korvel
