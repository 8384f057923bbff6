// The two axes of the plane, and how relations and orientations of dies show along them.
#pragma once

#include "base/BasicStructs.h"

namespace korvel {

// Also indexes; kAxes counts them.
enum Axis : unsigned { kX, kY, kAxes };

// The axis along which a die is apart from another one that it lies so to.
constexpr Axis axisOf(Topology where) {
    return where == Topology::L || where == Topology::R ? kX : kY;
}

// Whether a die that lies so to another one has the lower coordinates of the two.
constexpr bool comesFirst(Topology where) {
    return where == Topology::L || where == Topology::B;
}

// The relation, along an axis, of the die with the lower coordinate to the other one.
constexpr Topology firstAlong(Axis axis) {
    return axis == kX ? Topology::L : Topology::B;
}

// Where the other one lies to the die.
constexpr Topology converse(Topology where) {
    return static_cast<Topology>(static_cast<unsigned>(where) ^ 1U);
}

inline constexpr unsigned kTopologyNum = static_cast<unsigned>(Topology::LAST);

// The orientation of a die that is turned clockwise by up to three quarters; see orientIndex.
constexpr Orient orientOf(unsigned quarterTurns) {
    return static_cast<Orient>(quarterTurns);
}

}  // namespace korvel
