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

// Sorts items by the body that must be placed for them to count, and returns how many count, by
// number of placed blocks.
template <typename Items, typename NeededBody>
std::vector<unsigned> sortByPlaced(Items& items, unsigned numBlocks, const NeededBody& neededBody) {
    std::stable_sort(items.begin(), items.end(),
                     [&](const auto& a, const auto& b) { return neededBody(a) < neededBody(b); });
    std::vector<unsigned> counts;
    for (unsigned placed = 0; placed <= numBlocks; ++placed) {
        counts.push_back(
            static_cast<unsigned>(std::count_if(items.begin(), items.end(), [&](const auto& item) {
                return neededBody(item) <= placed;
            })));
    }
    return counts;
}

}  // namespace

// The outermost pins of a net on one body, from the body's corner.
struct LengthNets::Member {
    float places[kEnds][kAxes][kUnmirroredOrients];
};

struct LengthNets::BoxNet {
    std::map<unsigned, Member> members;  // by body
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
    for (const PairGroup& pairs : groupPairs(netlist, bodies)) {
        if (pairs.first != pairs.second) {
            addPairs(pairs);
        }
    }
    finishPairs();
    boxNums = sortByPlaced(boxes, numBlocks,
                           [](const BoxNet& box) { return std::next(box.members.begin())->first; });
    spreadBoxes(boxes);
}

void LengthNets::addPairs(const PairGroup& pairs) {
    GroupLength& group = groupOf(pairs.first, pairs.second);
    for (const auto& [first, second] : pairs.joints) {
        for (unsigned f = 0; f < kUnmirroredOrients; ++f) {
            for (unsigned s = 0; s < kUnmirroredOrients; ++s) {
                for (const Axis axis : {kX, kY}) {
                    group.lengths[lengthIndex(axis, f, s)].breakpoints.push_back(
                        double{along(placeOf(*first, f), axis)} -
                        double{along(placeOf(*second, s), axis)});
                }
            }
        }
    }
}

LengthNets::GroupLength& LengthNets::groupOf(unsigned first, unsigned second) {
    const auto known = std::find_if(
        pairGroups.begin(), pairGroups.end(),
        [&](const GroupLength& group) { return group.first == first && group.second == second; });
    if (known != pairGroups.end()) {
        return *known;
    }
    GroupLength& group = pairGroups.emplace_back();
    group.first = first;
    group.second = second;
    group.lengths.resize(std::size_t{kAxes} * kUnmirroredOrients * kUnmirroredOrients);
    return group;
}

void LengthNets::finishPairs() {
    for (GroupLength& group : pairGroups) {
        for (PairLength& length : group.lengths) {
            std::vector<double>& breakpoints = length.breakpoints;
            std::sort(breakpoints.begin(), breakpoints.end());
            double intercept = std::accumulate(breakpoints.begin(), breakpoints.end(), 0.0);
            length.intercepts.push_back(intercept);
            for (const double breakpoint : breakpoints) {
                length.intercepts.push_back(intercept -= breakpoint);
                length.intercepts.push_back(intercept -= breakpoint);
            }
        }
    }
    groupNums = sortByPlaced(pairGroups, bodyNum - 1,
                             [](const GroupLength& group) { return group.second; });
    groupsBetween.assign(std::size_t{bodyNum} * bodyNum, kNoGroup);
    for (unsigned g = 0; g < pairGroups.size(); ++g) {
        const GroupLength& group = pairGroups[g];
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
                float& low = member.places[kLow][axis][o];
                float& high = member.places[kHigh][axis][o];
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
    places[kLow].assign(rows * boxes.size(), 0.0F);
    places[kHigh].assign(rows * boxes.size(), 0.0F);
    wordNum = static_cast<unsigned>(boxes.size() / VertexSet::kWordBits + 1);
    membership.assign(std::size_t{bodyNum} * wordNum, 0);
    for (unsigned n = 0; n < boxes.size(); ++n) {
        for (const auto& [body, member] : boxes[n].members) {
            membership[body * wordNum + n / VertexSet::kWordBits] |= std::uint64_t{1}
                                                                     << (n % VertexSet::kWordBits);
            for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
                for (const Axis axis : {kX, kY}) {
                    for (const End end : {kLow, kHigh}) {
                        places[end][rowOf(axis, body, o) + n] = member.places[end][axis][o];
                    }
                }
            }
        }
    }
}

// Until the first of its blocks is placed, a net is as long as its terminals are apart.
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
