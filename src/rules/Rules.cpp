#include "rules/Rules.h"

#include <algorithm>

namespace korvel {

namespace {

double sizeAlong(Extent size, Axis axis) {
    return axis == kX ? size.width : size.height;
}

}  // namespace

const Rules::Die Rules::kFreeDie{};
const Rules::Net Rules::kPlainNet{};

Extent shared(const Rectangle& a, const Rectangle& b) {
    return {std::min(a.high.x, b.high.x) - std::max(a.low.x, b.low.x),
            std::min(a.high.y, b.high.y) - std::max(a.low.y, b.low.y)};
}

bool Rules::isEmpty() const {
    return spacing == 0.0 && std::max({edge.left, edge.bottom, edge.right, edge.top}) == 0.0 &&
           keepouts.empty() && dies.empty() && nets.empty();
}

const Rules::Pair* Rules::pair(unsigned a, unsigned b) const {
    if (pairs.empty()) {
        return nullptr;
    }
    const auto found = pairs.find(std::minmax(dies[a].group, dies[b].group));
    return found == pairs.end() ? nullptr : &found->second;
}

bool Rules::hasWeights() const {
    return std::any_of(nets.begin(), nets.end(), [](const Net& net) { return net.weight != 1.0; });
}

double Rules::leastGap(unsigned a, unsigned b) const {
    if (dies.empty()) {
        return spacing;
    }
    const Pair* const stated = pair(a, b);
    if (stated != nullptr && stated->spacing) {
        return *stated->spacing;
    }
    // An empty optional is below every value.
    return std::max(dies[a].spacing, dies[b].spacing).value_or(spacing);
}

double Rules::largestGap() const {
    double largest = spacing;
    for (const Die& die : dies) {
        largest = std::max(largest, die.spacing.value_or(0.0));
    }
    for (const auto& [groups, stated] : pairs) {
        largest = std::max(largest, stated.spacing.value_or(0.0));
    }
    return largest;
}

bool Rules::hasOneGap() const {
    return std::none_of(dies.begin(), dies.end(), [](const Die& die) { return die.spacing; }) &&
           std::none_of(pairs.begin(), pairs.end(),
                        [](const auto& stated) { return stated.second.spacing; });
}

Rectangle Rules::room(Region region, unsigned index) const {
    const Die& ruled = die(index);
    Rectangle room{{0.0, 0.0}, {region.width, region.height}};
    if (!ruled.at) {
        room = {{edge.left, edge.bottom}, {region.width - edge.right, region.height - edge.top}};
    }
    if (ruled.within) {
        const auto& [low, high] = *ruled.within;
        room.low = {std::max(room.low.x, low.x), std::max(room.low.y, low.y)};
        room.high = {std::min(room.high.x, high.x), std::min(room.high.y, high.y)};
    }
    return room;
}

CornerRange Rules::cornerRange(const Design& design, Region region, unsigned index, Axis axis,
                               Orient orient) const {
    const double slack = kRuleSlack * std::max(region.width, region.height);
    const Rectangle in = room(region, index);
    const double size = sizeAlong(turned(design.dies[index].size, orient), axis);
    CornerRange range{in.from(axis), in.to(axis) - size};
    if (range.low > range.high && range.low <= range.high + slack) {
        range.high = range.low;
    }
    const std::optional<Spot>& fixed = die(index).at;
    if (fixed && !range.isEmpty()) {
        const double at = axis == kX ? fixed->x : fixed->y;
        const bool isIn = at >= range.low - slack && at <= range.high + slack;
        return isIn ? CornerRange{at, at} : CornerRange{1.0, -1.0};
    }
    return range;
}

bool Rules::hasPlace(const Design& design, Region region, unsigned index, Orient orient) const {
    return !cornerRange(design, region, index, kX, orient).isEmpty() &&
           !cornerRange(design, region, index, kY, orient).isEmpty();
}

}  // namespace korvel
