// The nets of a sorted group along one axis, in the order of what they want, and the same list with
// the two bodies where they are. Why: see SortedVotes.h.
#pragma once

#include <span>

namespace korvel {

// Nets that join the same two tracks, in a list in the order of gaps. A list ends with an entry
// that only has the weight of all.
struct SortedPair {
    float gap;              // from the first track to the second while both are counted from the
                            // lower or left edge of their body
    unsigned weightBefore;  // nets of the pairs before it in the list
    unsigned first;         // track
    unsigned second;        // track
};

struct ShiftedList {
    std::span<const SortedPair> entries;
    const float* tracks;  // positions
    float sign;           // 1 if the first body is to be moved, -1 if the second
    double shift;         // gap + shift estimates what a pair wants
    double tolerance;     // of the estimate

    unsigned pairNum() const { return static_cast<unsigned>(entries.size()) - 1; }
    double estimate(unsigned pair) const { return entries[pair].gap + shift; }
    float wish(unsigned pair) const {
        return sign * (tracks[entries[pair].second] - tracks[entries[pair].first]);
    }
    unsigned weight(unsigned begin, unsigned end) const {
        return entries[end].weightBefore - entries[begin].weightBefore;
    }
    // The first pair of a range whose estimate is not below a value, or above it; else the end.
    unsigned firstNotBelow(double value, unsigned begin, unsigned end) const {
        return firstBeyond(begin, end, [x = value - shift](double gap) { return !(gap < x); });
    }
    unsigned firstAbove(double value, unsigned begin, unsigned end) const {
        return firstBeyond(begin, end, [x = value - shift](double gap) { return gap > x; });
    }

private:
    template <typename IsBeyond>
    unsigned firstBeyond(unsigned begin, unsigned end, const IsBeyond& isBeyond) const;
};

template <typename IsBeyond>
unsigned ShiftedList::firstBeyond(unsigned begin, unsigned end, const IsBeyond& isBeyond) const {
    // Often a whole list lies on one side.
    if (begin == end || isBeyond(entries[begin].gap)) {
        return begin;
    }
    if (!isBeyond(entries[end - 1].gap)) {
        return end;
    }
    while (begin < end) {
        const unsigned middle = (begin + end) / 2;
        if (isBeyond(entries[middle].gap)) {
            end = middle;
        } else {
            begin = middle + 1;
        }
    }
    return begin;
}

}  // namespace korvel
