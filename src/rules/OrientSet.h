// A set of the orientations N, E, S and W. A plain value.
#pragma once

#include <cstdint>

#include "base/BasicStructs.h"

namespace korvel {

class OrientSet {
public:
    constexpr OrientSet() = default;  // empty
    static constexpr OrientSet all() {
        OrientSet set;
        set.bits = (1U << kUnmirroredOrients) - 1U;
        return set;
    }

    // Of a mirrored or undefined orientation: never.
    constexpr bool has(Orient orient) const {
        return orientIndex(orient) < kUnmirroredOrients && (bits >> orientIndex(orient) & 1U) != 0;
    }
    // Orientation: N, E, S or W.
    constexpr void add(Orient orient) { bits |= 1U << orientIndex(orient); }
    constexpr void remove(Orient orient) { bits &= ~(1U << orientIndex(orient)); }
    constexpr bool isEmpty() const { return bits == 0; }

    friend constexpr OrientSet operator|(OrientSet a, OrientSet b) {
        a.bits |= b.bits;
        return a;
    }
    friend constexpr bool operator==(OrientSet, OrientSet) = default;

private:
    std::uint32_t bits = 0;  // by orientIndex
};

// To go through N, E, S, W in this order.
inline constexpr Orient kEveryTurn[] = {Orient::N, Orient::E, Orient::S, Orient::W};

}  // namespace korvel
