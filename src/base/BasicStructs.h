// The smallest shared vocabulary of the placer: coordinates, orientations, relative positions and
// compass directions, with their text forms. Stateless; usable from every thread.
#pragma once

#include <cstdint>
#include <iostream>
#include <map>
#include <string>

namespace korvel {

// An absolute position or a displacement, in the benchmark's length unit.
struct Point {
    float x = 0.0F;
    float y = 0.0F;
};

// N..W: the block turned clockwise by 0, 90, 180, 270 degrees; FN..FW: the mirrored forms, which
// the reader knows and the search never produces.
enum class Orient : std::int32_t { N, E, S, W, FN, FE, FS, FW, Undefined = -1 };

inline constexpr unsigned kUnmirroredOrients = 4;

// Numeric value of an unmirrored orientation, as the tables are indexed.
constexpr unsigned orientIndex(Orient orient) {
    return static_cast<unsigned>(orient);
}

// N and S keep a block's width horizontal.
constexpr bool keepsWidthHorizontal(Orient orient) {
    return (static_cast<std::int32_t>(orient) & ~2) == 0;
}

// E and W swap width and height.
constexpr bool swapsWidthAndHeight(Orient orient) {
    return (static_cast<std::int32_t>(orient) & ~2) == 1;
}

// Position of one block relative to another: left, right, above, below. LAST counts them.
enum class Topology : std::uint32_t { L, R, A, B, LAST };

// Where a block is being moved.
enum class Direction : std::uint32_t { N, E, S, W, NW, NE, SE, SW };

class OrientConverter {
public:
    // The value of an orientation text, matched to the letter; "-1" is the undefined orientation.
    // An unknown text is reported on `out` and gives the undefined orientation too: the caller
    // decides what follows.
    static Orient StringToOrient(const std::string& text, std::ostream& out = std::cout);

    // "N".."FW", or "-1" for anything else.
    static std::string OrientToString(Orient orient);

    // The orientation after `quarterTurns` clockwise quarter turns. A mirrored or undefined one is
    // returned as it is, with one error line on `out` per asked turn.
    static Orient rotation(Orient orient, unsigned quarterTurns, std::ostream& out = std::cout);

private:
    static const std::map<std::string, Orient> mapStringOrient;
};

class TopologyConverter {
public:
    static std::string TopologyToString(Topology topology);
};

class DirectionConverter {
public:
    static std::string DirectionToString(Direction direction);
};

}  // namespace korvel
