// The two axes of the plane, and indexes by them.
#pragma once

namespace korvel {

enum Axis : unsigned { kX, kY, kAxes };

}  // namespace korvel
