// The best positions of all dies along one axis: a linear program, solved as its dual, a flow of
// minimal cost. Its nodes are the dies, the ground and two per wide net, for the two ends of its
// box; its arcs are the limits and the order of the dies and the breakpoints of the nets' costs.
#pragma once

#include <vector>

#include "exact/AxisOrder.h"
#include "nets/DieLimits.h"
#include "nets/NetModel.h"

namespace korvel {

// Positions that give the shortest wirelength along the axis, by die, with all dies in their order
// and within the limits. The order must fit there, up to rounding. The sum is the least possible
// one up to about 1e-11 of the side per net; positions are sums of sizes and pin offsets, and the
// order holds to the last bit but for what it exceeds the limits. Any thread.
std::vector<double> bestPositions(const NetModel& nets, const AxisLimits& limits,
                                  const AxisOrder& order);

}  // namespace korvel
