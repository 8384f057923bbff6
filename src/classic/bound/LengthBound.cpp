#include "classic/bound/LengthBound.h"

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

// Where a block moves along one axis, a step of up to 0.001 along the other one is made as well,
// whatever is in the way. In three rounds the two blocks of a relation make six moves.
constexpr double kDriftPerRelation = 0.007;
// Some hundred units in the last place of the largest positions: each pin is moved a few times.
constexpr double kRounding = 1e-5;
constexpr double kUnitRoundoff = 1.0 / (1 << 24);
// A cut is improved beyond what the node needs: that is good for more of those that come.
constexpr double kBeyondTarget = 1.3;
// Cuts tried for a node that lacks relations: more cost more to try than they save.
constexpr unsigned kCutsForSeveral = 8;

// Every block's index is its place in the order, and no terminal is taken for a block.
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

// From its block's corner, in any orientation: pins may lie far outside of their blocks.
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
    : axes{{{kX, bound.numBlocks, bound.area}, {}}, {{kY, bound.numBlocks, bound.area}, {}}},
      ascent(bound.nets, bound.slack, bound.rounding) {
    for (const Axis axis : {kX, kY}) {
        for (unsigned placed = 0; placed <= bound.numBlocks; ++placed) {
            axes[axis].pools.emplace_back(bound.nets, axis, placed, bound.slack);
        }
    }
}

bool LengthBound::Workspace::follow(const BBNode& node) {
    return axes[kX].gaps.follow(node) && axes[kY].gaps.follow(node);
}

LengthBound::Workspace::Trial LengthBound::Workspace::startTrial(Axis axis, const BBNode& node) {
    CutPool& pool = axes[axis].pools[node.numBlocks];
    pool.startNode(node);
    return {pool, axes[axis].gaps.get()};
}

double LengthBound::leastLength(const BBNode& node, Workspace& space, double enough) const {
    if (!usable || !space.follow(node)) {
        return 0.0;
    }
    // Besides the cuts: nets on terminals only, less the rounding of each net along both axes.
    const double base =
        nets.terminalLength(node.numBlocks) - 2 * rounding * static_cast<double>(nets.getNetNum());
    const double target = enough / sumKept - base;
    Trial x = space.startTrial(kX, node);
    Trial y = space.startTrial(kY, node);
    if (!node.isBlockComplete()) {
        tryCuts(x, y, target, kCutsForSeveral);
    } else if (!tryCuts(x, y, target, CutPool::kMostCuts)) {
        improve(x, target - y.bound, space);
        if (x.bound + y.bound < target) {
            improve(y, target - x.bound, space);
        }
    }
    return (base + x.bound + y.bound) * sumKept;
}

// True when the best of the first cuts reach the target; these are the first to be tried next time.
bool LengthBound::tryCuts(Trial& x, Trial& y, double target, unsigned most) {
    const unsigned num = std::min(most, std::max(x.pool.size(), y.pool.size()));
    for (unsigned rank = 0; rank < num; ++rank) {
        x.tryCut(rank);
        y.tryCut(rank);
        if (x.bound + y.bound >= target) {
            x.pool.moveToFront(x.rank);
            y.pool.moveToFront(y.rank);
            return true;
        }
    }
    return false;
}

// Improves the best cut for this node, and adds the result to the pool.
void LengthBound::improve(Trial& trial, double target, Workspace& space) {
    trial.pool.copyTo(space.improved, trial.rank);
    const double bound = space.ascent.raise(space.improved, trial.pool.getOrientedNets(),
                                            trial.gaps, kBeyondTarget * target);
    if (bound > trial.bound) {
        trial.bound = bound;
        trial.pool.add(space.improved);
    }
}

}  // namespace korvel
