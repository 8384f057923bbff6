#include "classic/bound/CutPool.h"

#include <algorithm>
#include <utility>

namespace korvel {

CutPool::CutPool(const LengthNets& nets, Axis axis, unsigned placed, double slack)
    : nets(nets), slack(slack) {
    oriented.axis = axis;
    orients.reserve(placed);
}

void CutPool::startNode(const BBNode& node) {
    if (orients != node.blocksOrients) {
        orients = node.blocksOrients;
        oriented.orient(nets, orients);
        ++orientsNumber;
    }
}

void CutPool::moveToFront(unsigned rank) {
    if (rank != 0) {
        std::rotate(order.begin(), order.begin() + rank, order.begin() + rank + 1);
    }
}

void CutPool::copyTo(LengthCut& cut, unsigned rank) const {
    cut = order.empty() ? LengthCut(nets, oriented.axis, static_cast<unsigned>(orients.size()))
                        : entries[order[rank]].cut;
}

void CutPool::add(LengthCut& cut) {
    if (entries.size() < kMostCuts) {
        order.push_back(static_cast<unsigned>(entries.size()));
        entries.emplace_back();
    }
    moveToFront(size() - 1);
    Entry& first = entries[order.front()];
    std::swap(first.cut, cut);
    first.orientsNumber = 0;
}

}  // namespace korvel
