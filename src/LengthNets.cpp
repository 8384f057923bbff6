#include "LengthNets.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace korvel {

namespace {

Point placeOf(const Pin& pin, unsigned orient) {
    return pin.placeInBlock(static_cast<Orient>(orient));
}

float along(Point p, Axis axis) {
    return axis == kX ? p.x : p.y;
}

}  // namespace

LengthNets::LengthNets(const Netlist& netlist, unsigned numBlocks)
    : numBlocks(numBlocks), netNum(netlist.nets.size()), terminalLengths(numBlocks + 1, 0.0) {
    for (const Net& net : netlist.nets) {
        addTerminals(net);
        if (net.getDeclaredDegree() == 2 && net.getNetDegree() == 2) {
            addPair(net.getPins()[0], net.getPins()[1]);
        } else {
            addBox(net);
        }
    }
    for (PairGroup& group : pairGroups) {
        for (PairGroup::Points& points : group.pointsByOrients) {
            std::sort(points.at.begin(), points.at.end());
            points.sums.push_back(0.0);
            for (const double at : points.at) {
                points.sums.push_back(points.sums.back() + at);
            }
        }
    }
    sortByPlaced();
}

void LengthNets::sortByPlaced() {
    const auto sortAndCount = [this](auto& items, std::vector<unsigned>& counts) {
        std::stable_sort(items.begin(), items.end(),
                         [](const auto& a, const auto& b) { return a.placed < b.placed; });
        for (unsigned placed = 0; placed <= numBlocks; ++placed) {
            counts.push_back(static_cast<unsigned>(
                std::count_if(items.begin(), items.end(),
                              [&](const auto& item) { return item.placed <= placed; })));
        }
    };
    sortAndCount(pairGroups, groupNums);
    sortAndCount(boxNets, boxNums);
}

// Blocks that this pass does not place come after the terminals.
unsigned LengthNets::bodyOf(const Pin& pin) const {
    if (pin.isTerminal()) {
        return numBlocks;
    }
    return pin.getBlockIndex() < numBlocks ? pin.getBlockIndex() : numBlocks + 1;
}

void LengthNets::addPair(const Pin* first, const Pin* second) {
    if (bodyOf(*second) < bodyOf(*first)) {
        std::swap(first, second);
    }
    if (bodyOf(*first) == bodyOf(*second) || bodyOf(*second) > numBlocks) {
        return;
    }
    PairGroup& group = groupOf(bodyOf(*first), bodyOf(*second));
    for (unsigned f = 0; f < kUnmirroredOrients; ++f) {
        for (unsigned s = 0; s < kUnmirroredOrients; ++s) {
            for (const Axis axis : {kX, kY}) {
                group.pointsByOrients[pointsIndex(axis, f, s)].at.push_back(
                    double{along(placeOf(*first, f), axis)} -
                    double{along(placeOf(*second, s), axis)});
            }
        }
    }
}

LengthNets::PairGroup& LengthNets::groupOf(unsigned first, unsigned second) {
    const auto known = std::find_if(
        pairGroups.begin(), pairGroups.end(),
        [&](const PairGroup& group) { return group.first == first && group.second == second; });
    if (known != pairGroups.end()) {
        return *known;
    }
    PairGroup& group = pairGroups.emplace_back();
    group.placed = 1 + (second == numBlocks ? first : second);
    group.first = first;
    group.second = second;
    group.pointsByOrients.resize(std::size_t{kAxes} * kUnmirroredOrients * kUnmirroredOrients);
    return group;
}

void LengthNets::addBox(const Net& net) {
    std::map<unsigned, Member> members;
    for (const Pin* pin : net.getPins()) {
        const unsigned body = bodyOf(*pin);
        if (body > numBlocks) {
            continue;
        }
        const auto [found, isNew] = members.emplace(body, Member{});
        Member& member = found->second;
        member.body = body;
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            for (const Axis axis : {kX, kY}) {
                const float place = along(placeOf(*pin, o), axis);
                float& low = member.low[axis][o];
                float& high = member.high[axis][o];
                low = isNew ? place : std::min(low, place);
                high = isNew ? place : std::max(high, place);
            }
        }
    }
    if (members.size() < 2) {
        return;
    }
    BoxNet& box = boxNets.emplace_back();
    for (const auto& [body, member] : members) {
        box.members.push_back(member);
    }
    if (box.members.back().body == numBlocks) {
        std::rotate(box.members.begin(), box.members.end() - 1, box.members.end());
    }
    box.placed = 1 + box.members[1].body;
}

// The net counts with its terminals alone until the first of its blocks is placed.
void LengthNets::addTerminals(const Net& net) {
    constexpr float kMost = std::numeric_limits<float>::max();
    Point low{kMost, kMost};
    Point high{-kMost, -kMost};
    unsigned firstBlock = numBlocks;
    bool hasTerminal = false;
    for (const Pin* pin : net.getPins()) {
        if (!pin->isTerminal()) {
            firstBlock = std::min(firstBlock, bodyOf(*pin));
            continue;
        }
        hasTerminal = true;
        const Point at = pin->getCoord();
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    if (!hasTerminal) {
        return;
    }
    const double length = (double{high.x} - low.x) + (double{high.y} - low.y);
    for (unsigned placed = 0; placed <= firstBlock; ++placed) {
        terminalLengths[placed] += length;
    }
}

}  // namespace korvel
