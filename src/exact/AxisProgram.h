// The best positions of all dies along one axis: a linear program, solved as its dual, a flow of
// minimal cost. Its nodes are the dies, the ground and two per wide net, the box's ends; its arcs
// are the order of the dies and the bends of the nets' costs.
#pragma once

#include <vector>

#include "exact/AxisOrder.h"
#include "exact/NetModel.h"

namespace korvel {

// Positions that give the shortest wirelength along the axis, by die, with all dies in their order
// and between 0 and `side`. The order must fit there, up to rounding. The sum is the least possible
// one up to about 1e-11 of the side per net; positions are sums of sizes and pin offsets, and the
// order holds to the last bit but for what it exceeds `side`. Any thread.
std::vector<double> bestPositions(const NetModel& nets, Axis axis, double side,
                                  const AxisOrder& order, const std::vector<Orient>& orients);

}  // namespace korvel
