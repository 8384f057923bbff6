#include "classic/alignment/SortedGroups.h"

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

bool canBeOrdered(const Pin& pin) {
    constexpr float kFar = 1e30F;
    const auto isNear = [](Point p) { return std::fabs(p.x) < kFar && std::fabs(p.y) < kFar; };
    return isNear(pin.placeInBlock(Orient::N)) && isNear(pin.placeInBlock(Orient::S));
}

// From one body's tracks to the other's; `joined` has them in order, once for each net. In place of
// the weight before a pair its own.
std::vector<SortedPair> sortedPairs(const std::vector<std::pair<unsigned, unsigned>>& joined,
                                    const std::vector<float>& offsets, bool isSecondReversed) {
    std::vector<SortedPair> list;
    for (const auto& [a, b] : joined) {
        if (!list.empty() && list.back().first == a && list.back().second == b) {
            ++list.back().weightBefore;
            continue;
        }
        const float gap = (isSecondReversed ? -offsets[b] : offsets[b]) - offsets[a];
        list.push_back({gap, 1, a, b});
    }
    std::sort(list.begin(), list.end(),
              [](const SortedPair& a, const SortedPair& b) { return a.gap < b.gap; });
    return list;
}

}  // namespace

bool SortedGroups::isWorthSorting(const PairGroup& group) {
    constexpr std::size_t kFew = 16;
    std::vector<std::array<float, 4>> distinct;
    for (const auto& [first, second] : group.joints) {
        const Point a = first->isTerminal() ? first->getCoord() : first->getOffset();
        const Point b = second->isTerminal() ? second->getCoord() : second->getOffset();
        const std::array<float, 4> spots = {a.x, a.y, b.x, b.y};
        if (std::find(distinct.begin(), distinct.end(), spots) != distinct.end()) {
            continue;
        }
        distinct.push_back(spots);
        if (distinct.size() > kFew) {
            return std::all_of(group.joints.begin(), group.joints.end(), [](const auto& joint) {
                return canBeOrdered(*joint.first) && canBeOrdered(*joint.second);
            });
        }
    }
    return false;
}

SortedGroups::SortedGroups(const AlignmentNets& nets, const PinTable& pins) {
    for (unsigned number = 0; number < nets.groups.size(); ++number) {
        const PairGroup& group = nets.groups[number];
        groups.push_back({group.first, group.second, {}});
        if (!nets.sorted[number]) {
            continue;
        }
        for (const BodyAxis first : {kU, kV}) {
            for (const BodyAxis second : {kU, kV}) {
                TrackPairs joined;
                for (const auto& [a, b] : group.joints) {
                    joined.emplace_back(pins.placeOf(nets.bodies.pinNumber(*a)).tracks[first],
                                        pins.placeOf(nets.bodies.pinNumber(*b)).tracks[second]);
                }
                std::sort(joined.begin(), joined.end());
                addLists(groups.back(), first, second, joined, pins);
            }
        }
    }
}

// One list with both bodies as they are and one with the second reversed; when both are turned by
// half, what was the largest gap is the smallest.
void SortedGroups::addLists(Group& group, BodyAxis first, BodyAxis second, const TrackPairs& joined,
                            const PinTable& pins) {
    const AxisOrient firstOrient(first, false);
    for (const bool isReversed : {false, true}) {
        const AxisOrient secondOrient(second, isReversed);
        const std::vector<SortedPair> list =
            sortedPairs(joined, pins.trackOffsets(firstOrient), isReversed);
        group.lists[listIndex(firstOrient, secondOrient)] = append(list, false);
        group.lists[listIndex(firstOrient.opposite(), secondOrient.opposite())] =
            append(list, true);
    }
}

Range SortedGroups::append(const std::vector<SortedPair>& list, bool isBackward) {
    const unsigned begin = endOf(pairs);
    unsigned weight = 0;
    for (std::size_t i = 0; i < list.size(); ++i) {
        SortedPair pair = list[isBackward ? list.size() - 1 - i : i];
        pair.gap = isBackward ? -pair.gap : pair.gap;
        weight += std::exchange(pair.weightBefore, weight);
        pairs.push_back(pair);
    }
    pairs.push_back({0.0F, weight, 0, 0});
    return {begin, endOf(pairs)};
}

unsigned SortedGroups::mostEntries(unsigned group) const {
    unsigned most = 0;
    for (const Range list : groups[group].lists) {
        most = std::max(most, list.size());
    }
    return most;
}

}  // namespace korvel
