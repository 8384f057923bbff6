#include "proof/BundleCost.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace korvel {

void PinRange::cover(double at) {
    low = std::min(low, at);
    high = std::max(high, at);
}

// A net costs max(high of a, d + high of b) - min(low of a, d + low of b): slope -1 far left, +1
// more where the upper ends meet, +1 more where the lower ends do.
void BundleCost::add(const PinRange& a, const PinRange& b) {
    kinks.push_back({a.high - b.high, 0.0, 1});
    kinks.push_back({a.low - b.low, 0.0, 1});
    atZero += std::max(a.high, b.high) - std::min(a.low, b.low);
    ++netNum;
}

void BundleCost::finish() {
    std::sort(kinks.begin(), kinks.end(), [](const Kink& a, const Kink& b) { return a.at < b.at; });
    int slope = slopeAtLeft();
    std::size_t kept = 0;
    for (const Kink& kink : kinks) {
        slope += kink.slopeAfter;
        if (kept == 0 || kinks[kept - 1].at < kink.at) {
            kinks[kept++] = {kink.at, 0.0, slope};
        } else {
            kinks[kept - 1].slopeAfter = slope;
        }
    }
    kinks.resize(kept);
    settleCosts();
}

// From the cost of displacement 0, which is a plain sum, outwards.
void BundleCost::settleCosts() {
    const std::size_t middle = kinksBelow(0.0);
    double cost = atZero;
    double at = 0.0;
    for (std::size_t k = middle; k < kinks.size(); ++k) {
        cost += slopeBefore(k) * (kinks[k].at - at);
        at = kinks[k].at;
        kinks[k].cost = cost;
    }
    cost = atZero;
    at = 0.0;
    for (std::size_t k = middle; k-- > 0;) {
        cost -= kinks[k].slopeAfter * (at - kinks[k].at);
        at = kinks[k].at;
        kinks[k].cost = cost;
    }
}

std::size_t BundleCost::kinksBelow(double displacement) const {
    const auto found =
        std::lower_bound(kinks.begin(), kinks.end(), displacement,
                         [](const Kink& kink, double value) { return kink.at < value; });
    return static_cast<std::size_t>(found - kinks.begin());
}

double BundleCost::at(double displacement) const {
    const std::size_t next = kinksBelow(displacement);
    if (next == 0) {
        return kinks[0].cost + slopeAtLeft() * (displacement - kinks[0].at);
    }
    const Kink& before = kinks[next - 1];
    return before.cost + before.slopeAfter * (displacement - before.at);
}

bool BundleCost::isLike(const BundleCost& other, bool opposite, double nearness) const {
    if (netNum != other.netNum || kinks.size() != other.kinks.size() ||
        std::abs(atZero - other.atZero) > nearness * netNum) {
        return false;
    }
    for (std::size_t k = 0; k < kinks.size(); ++k) {
        const std::size_t at = opposite ? kinks.size() - 1 - k : k;
        const double place = opposite ? -other.kinks[at].at : other.kinks[at].at;
        const int slope = opposite ? -other.slopeBefore(at) : other.kinks[at].slopeAfter;
        if (std::abs(kinks[k].at - place) > nearness || kinks[k].slopeAfter != slope) {
            return false;
        }
    }
    return true;
}

double BundleCost::leastWithin(double from, double to) const {
    if (from > to) {
        return std::numeric_limits<double>::infinity();
    }
    const auto lowest = std::find_if(kinks.begin(), kinks.end(),
                                     [](const Kink& kink) { return kink.slopeAfter >= 0; });
    return at(std::clamp(lowest->at, from, to));
}

}  // namespace korvel
