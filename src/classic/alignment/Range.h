// Parts of the arrays that the alignment tables are made of.
#pragma once

#include <span>
#include <vector>

namespace korvel {

// Half-open.
struct Range {
    unsigned begin = 0;
    unsigned end = 0;

    unsigned size() const { return end - begin; }
};

template <typename Item>
std::span<const Item> part(const std::vector<Item>& items, Range range) {
    return {items.data() + range.begin, range.size()};
}

// Where the next item will be added.
template <typename Item>
unsigned endOf(const std::vector<Item>& items) {
    return static_cast<unsigned>(items.size());
}

}  // namespace korvel
