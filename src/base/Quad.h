// Four floats that are worked on at once. A point becomes (x, y, -x, -y): one minimum then finds
// both ends of both axes, and one comparison answers for right, up, left and down. Negation being
// exact, every result has the same bits as if it had been computed one by one.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

#include "base/BasicStructs.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korvel {

using Quad [[gnu::vector_size(16)]] = float;
// What comparing quads gives: all bits of a lane set where it holds. Also four integers.
using QuadMask [[gnu::vector_size(16)]] = std::int32_t;

// The lanes of a quad made from a point, and the directions that they answer for.
enum Lane : unsigned { kRight, kUp, kLeft, kDown, kLanes };

inline Quad quadOf(Point p) {
    return Quad{p.x, p.y, -p.x, -p.y};
}
inline Quad allLanes(float value) {
    return Quad{value, value, value, value};
}
inline QuadMask allLanes(std::int32_t value) {
    return QuadMask{value, value, value, value};
}

// The lanes of the opposite directions.
inline Quad opposite(Quad q) {
    return __builtin_shufflevector(q, q, 2, 3, 0, 1);
}
inline QuadMask opposite(QuadMask q) {
    return __builtin_shufflevector(q, q, 2, 3, 0, 1);
}

// All bits of each of the mask's lanes are the same.
inline Quad choose(QuadMask mask, Quad yes, Quad no) {
    return (Quad)((mask & (QuadMask)yes) | (~mask & (QuadMask)no));
}

// The smaller of each lane; `b` where they are equal.
inline Quad smaller(Quad a, Quad b) {
#if defined(__SSE2__)
    return _mm_min_ps(a, b);
#else
    return choose(a < b, a, b);
#endif
}

// The larger of each lane; `b` where they are equal.
inline Quad larger(Quad a, Quad b) {
#if defined(__SSE2__)
    return _mm_max_ps(a, b);
#else
    return choose(a > b, a, b);
#endif
}

inline Quad loadQuad(const float* from) {
    Quad quad;
    std::memcpy(&quad, from, sizeof(quad));
    return quad;
}
inline QuadMask loadMask(const std::int32_t* from) {
    QuadMask mask;
    std::memcpy(&mask, from, sizeof(mask));
    return mask;
}

inline std::int32_t sumOf(QuadMask q) {
    const QuadMask pairs = q + opposite(q);
    return pairs[0] + pairs[1];
}

inline bool anyLane(QuadMask mask) {
#if defined(__SSE2__)
    // The only way to hand a vector of the compiler to an intrinsic.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    return _mm_movemask_ps(reinterpret_cast<__m128>(mask)) != 0;
#else
    return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#endif
}

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

}  // namespace korvel
