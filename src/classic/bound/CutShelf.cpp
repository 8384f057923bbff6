#include "classic/bound/CutShelf.h"

#include <algorithm>
#include <utility>

namespace korvel {

CutShelf::CutShelf(const LengthNets& nets, Axis axis, unsigned placed, double slack)
    : nets(nets), slack(slack) {
    view.axis = axis;
    orients.reserve(placed);
}

void CutShelf::turn(const BBNode& node) {
    if (family == node.family) {
        return;
    }
    family = node.family;
    if (orients != node.blocksOrients) {
        orients = node.blocksOrients;
        view.turn(nets, orients);
        ++currentTurn;
    }
}

void CutShelf::promote(unsigned rank) {
    if (rank != 0) {
        std::rotate(order.begin(), order.begin() + rank, order.begin() + rank + 1);
    }
}

void CutShelf::copyTo(LengthCut& cut, unsigned rank) const {
    cut = order.empty() ? LengthCut(nets, view.axis, static_cast<unsigned>(orients.size()))
                        : kept[order[rank]].cut;
}

void CutShelf::keep(LengthCut& cut) {
    if (kept.size() < kMostCuts) {
        order.push_back(static_cast<unsigned>(kept.size()));
        kept.emplace_back();
    }
    promote(size() - 1);
    Kept& first = kept[order.front()];
    std::swap(first.cut, cut);
    first.turn = 0;
}

}  // namespace korvel
