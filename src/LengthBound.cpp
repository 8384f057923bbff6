#include "LengthBound.h"

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

// A block that is not limited along one axis may still drift along it by less than 0.001 each time
// that it moves along the other; three rounds move the two blocks of a relation six times.
constexpr double kDriftPerRelation = 0.007;
// Some hundred units in the last place of the largest positions: each pin is moved a few times.
constexpr double kRounding = 1e-5;
constexpr double kUnitRoundoff = 1.0 / (1 << 24);
// Cuts kept for each axis and number of placed blocks.
constexpr std::size_t kMostCuts = 16;
// A cut that is better than this node needs is good for more of those that come.
constexpr double kBeyond = 1.1;

// Every block's index is its place, and no terminal is taken for a block.
bool inOrder(const Netlist& netlist, unsigned numBlocks) {
    for (const Block& terminal : netlist.terminals) {
        if (terminal.getIndex() < static_cast<int>(netlist.blocks.size())) {
            return false;
        }
    }
    for (unsigned i = 0; i < numBlocks; ++i) {
        const Block& block = netlist.blocks[i];
        if (block.getIndex() != static_cast<int>(i) || !(block.getWidth() > 0) ||
            !(block.getHeight() > 0)) {
            return false;
        }
    }
    return true;
}

// Pins may lie far outside of their blocks.
double farthestPin(const Netlist& netlist) {
    double farthest = 0.0;
    for (const Pin& pin : netlist.pins) {
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            const Point place = pin.placeInBlock(static_cast<Orient>(o));
            farthest = std::max({farthest, std::fabs(double{place.x}), std::fabs(double{place.y})});
        }
    }
    return farthest;
}

}  // namespace

LengthBound::LengthBound(const Netlist& netlist, unsigned numBlocks, Area area)
    : nets(netlist, numBlocks),
      numBlocks(numBlocks),
      area(area),
      rounding(kRounding * (area.width + area.height + farthestPin(netlist))),
      slack(numBlocks * kDriftPerRelation + rounding),
      sumKept(1.0 - (static_cast<double>(netlist.nets.size()) + 16.0) * kUnitRoundoff),
      usable(inOrder(netlist, numBlocks)) {}

LengthBound::Workspace::Workspace(const LengthBound& bound)
    : byCoordinate(bound.numBlocks), extents(bound.numBlocks), ascent(bound.nets, bound.rounding) {
    for (std::vector<Shelf>& shelvesOfAxis : shelves) {
        shelvesOfAxis.resize(bound.numBlocks + 1);
    }
}

double LengthBound::leastLength(const BBNode& node, Workspace& space, double enough) const {
    if (!usable || !findGaps(node, kX, space) || !findGaps(node, kY, space)) {
        return 0.0;
    }
    const double base =
        nets.terminalLength(node.numBlocks) - 2 * rounding * static_cast<double>(nets.getNetNum());
    const double target = enough / sumKept - base;
    // First what was good for other nodes, then something better for this one.
    Workspace::Best best[kAxes];
    if (!tryCuts(space, best, target)) {
        best[kX].value = raise(kX, best[kX], target - best[kY].value, space);
        if (best[kX].value + best[kY].value < target) {
            best[kY].value = raise(kY, best[kY], target - best[kX].value, space);
        }
    }
    return (base + best[kX].value + best[kY].value) * sumKept;
}

// True when the cuts known so far reach the target; those that did are the first to be tried on
// the next node.
bool LengthBound::tryCuts(Workspace& space, Workspace::Best (&best)[kAxes], double target) const {
    const std::size_t mostCuts = std::max(space.shelf(kX).cuts.size(), space.shelf(kY).cuts.size());
    for (unsigned rank = 0; rank < mostCuts; ++rank) {
        for (const Axis axis : {kX, kY}) {
            const Workspace::Shelf& shelf = space.shelf(axis);
            if (rank < shelf.cuts.size()) {
                const LengthCut& cut = shelf.cuts[shelf.order[rank]];
                const double value = cut.value(space.views[axis]);
                if (value > best[axis].value) {
                    best[axis] = {value, rank};
                }
            }
        }
        if (best[kX].value + best[kY].value >= target) {
            for (const Axis axis : {kX, kY}) {
                const auto first = space.shelf(axis).order.begin();
                const auto used = first + best[axis].rank;
                std::rotate(first, used, used + (best[axis].rank != 0 ? 1 : 0));
            }
            return true;
        }
    }
    return false;
}

// Improves on the best cut for this node and keeps the result.
double LengthBound::raise(Axis axis, Workspace::Best best, double target, Workspace& space) const {
    Workspace::Shelf& shelf = space.shelf(axis);
    const AxisView& view = space.views[axis];
    space.raised = shelf.cuts.empty() ? LengthCut(nets, axis, view.slotNum - 1)
                                      : shelf.cuts[shelf.order[best.rank]];
    const double value = space.ascent.raise(space.raised, view, kBeyond * target);
    if (value <= best.value) {
        return best.value;
    }
    if (shelf.cuts.size() < kMostCuts) {
        shelf.order.push_back(static_cast<unsigned>(shelf.cuts.size()));
        shelf.cuts.emplace_back();
    }
    std::rotate(shelf.order.begin(), shelf.order.end() - 1, shelf.order.end());
    std::swap(shelf.cuts[shelf.order.front()], space.raised);
    return value;
}

// The least displacements between all bodies of the node along one axis. False when a block is not
// known to start inside of the area.
bool LengthBound::findGaps(const BBNode& node, Axis axis, Workspace& space) const {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    for (unsigned b = 0; b < node.numBlocks; ++b) {
        // A graph without new edges has not seen the newest blocks.
        const float coord = graph.returnCoord(b);
        if (coord + graph.getWeight(b) > graph.getLength()) {
            return false;
        }
        unsigned at = b;
        for (; at > 0 && graph.returnCoord(space.byCoordinate[at - 1]) > coord; --at) {
            space.byCoordinate[at] = space.byCoordinate[at - 1];
        }
        space.byCoordinate[at] = b;
        space.extents[b] = std::trunc(graph.getWeight(b));
    }
    AxisView& view = space.views[axis];
    view.start(nets, axis, node.blocksOrients);
    findChains(graph, view, space);
    addArea(axis == kX ? area.width : area.height, view, space);
    return true;
}

// Longest chains of extents between blocks. The lane of the terminals gets the longest chain from
// the beginning of all to each block.
void LengthBound::findChains(const ConsraintGraphList& graph, AxisView& view,
                             Workspace& space) const {
    const unsigned placed = view.slotNum - 1;
    std::fill(view.gaps.begin(), view.gaps.begin() + view.slotNum * view.quadNum,
              allLanes(-kInfinity));
    space.tails.assign(view.quadNum, allLanes(0.0F));
    // Extents are positive, so a block comes after all that it follows.
    for (unsigned i = 0; i < placed; ++i) {
        const unsigned to = space.byCoordinate[i];
        Quad* row = view.rowTo(to);
        row[to / kLanes][to % kLanes] = 0.0F;
        row[placed / kLanes][placed % kLanes] = 0.0F;
        for (const unsigned previous : graph.getIncomingEdges(to)) {
            const Quad extent = allLanes(space.extents[previous]);
            const Quad* before = view.rowTo(previous);
            for (unsigned q = 0; q < view.quadNum; ++q) {
                row[q] = larger(row[q], before[q] + extent);
            }
        }
        const Quad extent = allLanes(space.extents[to]);
        for (unsigned q = 0; q < view.quadNum; ++q) {
            space.tails[q] = larger(space.tails[q], row[q] + extent);
        }
    }
}

// All blocks lie within the area, and terminals are where they are.
void LengthBound::addArea(float areaExtent, AxisView& view, Workspace& space) const {
    const unsigned placed = view.slotNum - 1;
    const Quad taken = allLanes(static_cast<float>(slack));
    // Nothing lies behind the terminals or the padding.
    for (unsigned slot = placed; slot < view.quadNum * kLanes; ++slot) {
        space.tails[slot / kLanes][slot % kLanes] = -kInfinity;
    }
    for (unsigned to = 0; to < placed; ++to) {
        Quad* row = view.rowTo(to);
        const Quad apart = allLanes(row[placed / kLanes][placed % kLanes] - areaExtent);
        for (unsigned q = 0; q < view.quadNum; ++q) {
            row[q] = larger(row[q], apart + space.tails[q]) - taken;
        }
        row[to / kLanes][to % kLanes] = 0.0F;
    }
    Quad* toTerminals = view.rowTo(placed);
    for (unsigned q = 0; q < view.quadNum; ++q) {
        toTerminals[q] = space.tails[q] - allLanes(areaExtent) - taken;
    }
    toTerminals[placed / kLanes][placed % kLanes] = 0.0F;
}

}  // namespace korvel
