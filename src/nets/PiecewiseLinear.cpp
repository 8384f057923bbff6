#include "nets/PiecewiseLinear.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Infinity.h"

namespace korvel {

PiecewiseLinear::PiecewiseLinear(double offset, double leftSlope, std::vector<Jump> jumps)
    : leftSlope(leftSlope) {
    std::sort(jumps.begin(), jumps.end(), [](const Jump& a, const Jump& b) { return a.at < b.at; });
    double slope = leftSlope;
    for (const Jump& jump : jumps) {
        if (points.empty()) {
            points.push_back({jump.at, offset + slope * jump.at, slope});
        } else if (jump.at > points.back().at) {
            const Breakpoint& before = points.back();
            points.push_back({jump.at, before.value + slope * (jump.at - before.at), slope});
        }
        slope += jump.by;
        points.back().slope = slope;
    }
    points.shrink_to_fit();
}

std::size_t PiecewiseLinear::numBelow(double distance) const {
    const auto found =
        std::lower_bound(points.begin(), points.end(), distance,
                         [](const Breakpoint& point, double at) { return point.at < at; });
    return static_cast<std::size_t>(found - points.begin());
}

double PiecewiseLinear::value(double distance) const {
    const std::size_t next = numBelow(distance);
    const Breakpoint& from = points[std::min(next, points.size() - 1)];
    return from.value + slopeBefore(next) * (distance - from.at);
}

double PiecewiseLinear::leastWithin(double from, double to) const {
    if (from > to) {
        return kInfiniteLength;
    }
    std::size_t lowest = points.size() - 1;
    while (slopeBefore(lowest) > 0.0) {
        --lowest;
    }
    return value(std::clamp(points[lowest].at, from, to));
}

bool PiecewiseLinear::isLike(const PiecewiseLinear& other, bool mirrored, double nearness) const {
    const std::size_t num = points.size();
    if (num != other.points.size() ||
        leftSlope != (mirrored ? -other.slopeBefore(num) : other.leftSlope)) {
        return false;
    }
    for (std::size_t point = 0; point < num; ++point) {
        const std::size_t target = mirrored ? num - 1 - point : point;
        const double at = mirrored ? -other.points[target].at : other.points[target].at;
        const double slope = mirrored ? -other.slopeBefore(target) : other.points[target].slope;
        if (std::abs(points[point].at - at) > nearness || points[point].slope != slope) {
            return false;
        }
    }
    return std::abs(value(0.0) - other.value(0.0)) <= nearness * std::abs(leftSlope);
}

}  // namespace korvel
