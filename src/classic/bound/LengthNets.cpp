#include "classic/bound/LengthNets.h"

#include <algorithm>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

namespace korvel {

namespace {

Point placeOf(const Pin& pin, unsigned orient) {
    return pin.placeInBlock(static_cast<Orient>(orient));
}

float along(Point p, unsigned axis) {
    return axis == kX ? p.x : p.y;
}

// Items whose last body is placed come first; returns how many those are, by number of placed
// blocks.
template <typename Items, typename LastBody>
std::vector<unsigned> sortByPlaced(Items& items, unsigned numBlocks, const LastBody& lastBody) {
    std::stable_sort(items.begin(), items.end(),
                     [&](const auto& a, const auto& b) { return lastBody(a) < lastBody(b); });
    std::vector<unsigned> counts;
    for (unsigned placed = 0; placed <= numBlocks; ++placed) {
        counts.push_back(
            static_cast<unsigned>(std::count_if(items.begin(), items.end(), [&](const auto& item) {
                return lastBody(item) <= placed;
            })));
    }
    return counts;
}

}  // namespace

// Outermost pins of a net on one body.
struct LengthNets::Member {
    float low[kAxes][kUnmirroredOrients];
    float high[kAxes][kUnmirroredOrients];
};

// By body, ascending.
struct LengthNets::BoxNet {
    std::map<unsigned, Member> members;
};

LengthNets::LengthNets(const Netlist& netlist, unsigned numBlocks)
    : bodyNum(numBlocks + 1), netNum(netlist.nets.size()), terminalLengths(numBlocks + 1, 0.0) {
    const Bodies bodies(netlist, numBlocks);
    std::vector<BoxNet> boxes;
    for (const Net& net : netlist.nets) {
        addTerminals(net, bodies);
        if (isPair(net)) {
            continue;
        }
        if (BoxNet box = boxOf(net, bodies); box.members.size() > 1) {
            boxes.push_back(std::move(box));
        }
    }
    for (const korvel::PairGroup& pairs : groupPairs(netlist, bodies)) {
        if (pairs.first != pairs.second) {
            addPairs(pairs);
        }
    }
    finishPairs();
    boxNums = sortByPlaced(boxes, numBlocks,
                           [](const BoxNet& box) { return std::next(box.members.begin())->first; });
    spreadBoxes(boxes);
}

void LengthNets::addPairs(const korvel::PairGroup& pairs) {
    PairGroup& group = groupOf(pairs.first, pairs.second);
    for (const auto& [first, second] : pairs.joints) {
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
}

LengthNets::PairGroup& LengthNets::groupOf(unsigned first, unsigned second) {
    const auto known = std::find_if(
        pairGroups.begin(), pairGroups.end(),
        [&](const PairGroup& group) { return group.first == first && group.second == second; });
    if (known != pairGroups.end()) {
        return *known;
    }
    PairGroup& group = pairGroups.emplace_back();
    group.first = first;
    group.second = second;
    group.pointsByOrients.resize(std::size_t{kAxes} * kUnmirroredOrients * kUnmirroredOrients);
    return group;
}

void LengthNets::finishPairs() {
    for (PairGroup& group : pairGroups) {
        for (PairGroup::Points& points : group.pointsByOrients) {
            std::sort(points.at.begin(), points.at.end());
            points.values.push_back(std::accumulate(points.at.begin(), points.at.end(), 0.0));
            for (const double at : points.at) {
                points.values.push_back(points.values.back() - at);
                points.values.push_back(points.values.back() - at);
            }
        }
    }
    groupNums =
        sortByPlaced(pairGroups, bodyNum - 1, [](const PairGroup& group) { return group.second; });
    groupsBetween.assign(std::size_t{bodyNum} * bodyNum, kNoGroup);
    for (unsigned g = 0; g < pairGroups.size(); ++g) {
        const PairGroup& group = pairGroups[g];
        groupsBetween[group.first * bodyNum + group.second] = g;
        groupsBetween[group.second * bodyNum + group.first] = g;
    }
}

LengthNets::BoxNet LengthNets::boxOf(const Net& net, const Bodies& bodies) {
    BoxNet box;
    for (const Pin* pin : net.getPins()) {
        const unsigned body = bodies.of(*pin);
        if (body == bodies.neverPlaced()) {
            continue;
        }
        const auto [found, isNew] = box.members.emplace(body, Member{});
        Member& member = found->second;
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
    return box;
}

void LengthNets::spreadBoxes(std::vector<BoxNet>& boxes) {
    for (const BoxNet& box : boxes) {
        firstBodies.push_back(box.members.begin()->first);
    }
    const std::size_t rows = std::size_t{kAxes} * bodyNum * kUnmirroredOrients;
    lows.assign(rows * boxes.size(), 0.0F);
    highs.assign(rows * boxes.size(), 0.0F);
    wordNum = static_cast<unsigned>(boxes.size() / VertexSet::kWordBits + 1);
    membership.assign(std::size_t{bodyNum} * wordNum, 0);
    for (unsigned n = 0; n < boxes.size(); ++n) {
        for (const auto& [body, member] : boxes[n].members) {
            membership[body * wordNum + n / VertexSet::kWordBits] |= std::uint64_t{1}
                                                                     << (n % VertexSet::kWordBits);
            for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
                for (const Axis axis : {kX, kY}) {
                    lows[rowOf(axis, body, o) + n] = member.low[axis][o];
                    highs[rowOf(axis, body, o) + n] = member.high[axis][o];
                }
            }
        }
    }
}

// The net counts with its terminals alone until the first of its blocks is placed.
void LengthNets::addTerminals(const Net& net, const Bodies& bodies) {
    constexpr float kMost = std::numeric_limits<float>::max();
    Point low{kMost, kMost};
    Point high{-kMost, -kMost};
    unsigned firstBlock = bodyNum;
    bool hasTerminal = false;
    for (const Pin* pin : net.getPins()) {
        if (!pin->isTerminal()) {
            firstBlock = std::min(firstBlock, bodies.of(*pin));
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
    for (unsigned placed = 0; placed < firstBlock; ++placed) {
        terminalLengths[placed] += length;
    }
}

}  // namespace korvel
