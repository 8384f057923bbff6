// The sorted lists of the large pair groups (thousands of bumps between two dies, say), in which
// hardly two nets join the same sites, but many join the same tracks: nets that join the same two
// tracks along an axis vote once about it. SortedVotes finds a group's step in its list.
//
// Read-only once it is filled.
#pragma once

#include <array>
#include <utility>
#include <vector>

#include "classic/alignment/PinTable.h"
#include "classic/alignment/SortedList.h"

namespace korvel {

class SortedGroups {
public:
    // Finding a step in a list takes longer than asking a few nets. No lists are made of pins that
    // lie where they cannot be put in order.
    static bool isWorthSorting(const PairGroup& group);

    // Makes the lists of the groups that `nets` has as sorted.
    SortedGroups(const AlignmentNets& nets, const PinTable& pins);

    // By the group's number; there are lists of sorted groups only.
    unsigned first(unsigned group) const { return groups[group].first; }
    unsigned second(unsigned group) const { return groups[group].second; }
    std::span<const SortedPair> list(unsigned group, AxisOrient first, AxisOrient second) const {
        return part(pairs, groups[group].lists[listIndex(first, second)]);
    }
    // Entries of the longest of its lists.
    unsigned mostEntries(unsigned group) const;

private:
    struct Group {
        unsigned first;   // body
        unsigned second;  // body
        std::array<Range, AxisOrient::kNumber * AxisOrient::kNumber> lists;
    };
    static unsigned listIndex(AxisOrient first, AxisOrient second) {
        return AxisOrient::kNumber * first.index() + second.index();
    }
    using TrackPairs = std::vector<std::pair<unsigned, unsigned>>;

    void addLists(Group& group, BodyAxis first, BodyAxis second, const TrackPairs& joined,
                  const PinTable& pins);
    Range append(const std::vector<SortedPair>& list, bool isBackward);

    std::vector<Group> groups;
    std::vector<SortedPair> pairs;
};

}  // namespace korvel
