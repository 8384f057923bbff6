#include "classic/bound/LengthBound.h"

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
// A cut that is better than this node needs is good for more of those that come.
constexpr double kBeyond = 1.3;
// Cuts tried for a node that stands for several: more cost more to try than they save.
constexpr unsigned kCutsForSeveral = 8;

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
    : axes{{{kX, bound.numBlocks, bound.area}, {}}, {{kY, bound.numBlocks, bound.area}, {}}},
      ascent(bound.nets, bound.slack, bound.rounding) {
    for (const Axis axis : {kX, kY}) {
        for (unsigned placed = 0; placed <= bound.numBlocks; ++placed) {
            axes[axis].shelves.emplace_back(bound.nets, axis, placed, bound.slack);
        }
    }
}

bool LengthBound::Workspace::follow(const BBNode& node) {
    return axes[kX].gaps.follow(node) && axes[kY].gaps.follow(node);
}

LengthBound::Workspace::Trial LengthBound::Workspace::startTrial(Axis axis, const BBNode& node) {
    CutShelf& shelf = axes[axis].shelves[node.numBlocks];
    shelf.turn(node);
    return {shelf, axes[axis].gaps.get()};
}

double LengthBound::leastLength(const BBNode& node, Workspace& space, double enough) const {
    if (!usable || !space.follow(node)) {
        return 0.0;
    }
    const double base =
        nets.terminalLength(node.numBlocks) - 2 * rounding * static_cast<double>(nets.getNetNum());
    const double target = enough / sumKept - base;
    Trial x = space.startTrial(kX, node);
    Trial y = space.startTrial(kY, node);
    if (!node.isBlockComplete()) {
        tryCuts(x, y, target, kCutsForSeveral);
        return (base + x.value + y.value) * sumKept;
    }
    // First what was good for other nodes, then something better for this one.
    if (!tryCuts(x, y, target, CutShelf::kMostCuts)) {
        raiseBoth(x, y, target, space);
    }
    return (base + x.value + y.value) * sumKept;
}

// True when the first cuts known reach the target; those that did are the first to be tried on
// the next node.
bool LengthBound::tryCuts(Trial& x, Trial& y, double target, unsigned most) {
    const unsigned num = std::min(most, std::max(x.shelf.size(), y.shelf.size()));
    for (unsigned rank = 0; rank < num; ++rank) {
        x.take(rank);
        y.take(rank);
        if (x.value + y.value >= target) {
            x.shelf.promote(x.rank);
            y.shelf.promote(y.rank);
            return true;
        }
    }
    return false;
}

void LengthBound::raiseBoth(Trial& x, Trial& y, double target, Workspace& space) {
    raise(x, target - y.value, space);
    if (x.value + y.value < target) {
        raise(y, target - x.value, space);
    }
}

// Improves on the best cut for this node and keeps the result.
void LengthBound::raise(Trial& trial, double target, Workspace& space) {
    trial.shelf.copyTo(space.raised, trial.rank);
    const double value =
        space.ascent.raise(space.raised, trial.shelf.getView(), trial.gaps, kBeyond * target);
    if (value > trial.value) {
        trial.value = value;
        trial.shelf.keep(space.raised);
    }
}

}  // namespace korvel
