#include "draw/Bundles.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace korvel {

namespace {

// Where a net touches a body: the middle of its pins there.
struct Touch {
    unsigned body;
    Spot at;
};

// One for each body; dies come first.
std::vector<Touch> touchesOf(const Design& design, const Placement& placement,
                             const Design::Net& net) {
    std::map<unsigned, std::pair<Spot, double>> sums;
    for (const Design::Pin& pin : net.pins) {
        const Spot at = placeOf(design, placement, pin);
        auto& [sum, number] = sums[pin.body];
        sum = {sum.x + at.x, sum.y + at.y};
        number += 1.0;
    }
    std::vector<Touch> touches;
    touches.reserve(sums.size());
    for (const auto& [body, sum] : sums) {
        touches.push_back({body, {sum.first.x / sum.second, sum.first.y / sum.second}});
    }
    return touches;
}

double distance(Spot a, Spot b) {
    return std::abs(a.x - b.x) + std::abs(a.y - b.y);
}

// Bundles in the making, whose ends are sums still.
class Gatherer {
public:
    void add(const Touch& first, const Touch& second, double weight, bool goesFarther) {
        Bundle& bundle = bundles[{first.body, second.body}];
        bundle.first = first.body;
        bundle.second = second.body;
        ++bundle.netNum;
        bundle.fartherNetNum += goesFarther ? 1 : 0;
        bundle.weight += weight;
        addTo(bundle.from, first.at, weight);
        addTo(bundle.to, second.at, weight);
    }
    std::vector<Bundle> take() const {
        std::vector<Bundle> taken;
        for (const auto& [bodies, sum] : bundles) {
            taken.push_back(sum);
            Bundle& bundle = taken.back();
            bundle.from = {sum.from.x / sum.weight, sum.from.y / sum.weight};
            bundle.to = {sum.to.x / sum.weight, sum.to.y / sum.weight};
        }
        return taken;
    }

private:
    static void addTo(Spot& sum, Spot at, double weight) {
        sum = {sum.x + weight * at.x, sum.y + weight * at.y};
    }

    std::map<std::pair<unsigned, unsigned>, Bundle> bundles;
};

using Touches = std::vector<Touch>;

void addPairs(const Touches& touches, Touches::const_iterator diesEnd, Gatherer& gatherer) {
    const auto dieNum = static_cast<double>(diesEnd - touches.begin());
    for (auto a = touches.begin(); a != diesEnd; ++a) {
        for (auto b = a + 1; b != diesEnd; ++b) {
            gatherer.add(*a, *b, 2.0 / dieNum, dieNum > 2);
        }
    }
}

// Each terminal is led to where the net is nearest; of terminals alone, to the first.
void addTerminals(const Touches& touches, Touches::const_iterator diesEnd, Gatherer& gatherer) {
    const bool hasDies = diesEnd != touches.begin();
    const auto targetsEnd = hasDies ? diesEnd : touches.begin() + 1;
    for (auto terminal = targetsEnd; terminal != touches.end(); ++terminal) {
        const auto nearest = std::min_element(
            touches.begin(), targetsEnd, [terminal](const Touch& a, const Touch& b) {
                return distance(a.at, terminal->at) < distance(b.at, terminal->at);
            });
        gatherer.add(*nearest, *terminal, 1.0, diesEnd - touches.begin() > 1);
    }
}

}  // namespace

Bundles bundlesOf(const Design& design, const Placement& placement) {
    Gatherer dies;
    Gatherer terminals;
    Bundles bundles;
    for (const Design::Net& net : design.nets) {
        const Touches touches = touchesOf(design, placement, net);
        const auto diesEnd =
            std::find_if(touches.begin(), touches.end(),
                         [&design](const Touch& touch) { return !design.isDie(touch.body); });
        if (static_cast<std::size_t>(diesEnd - touches.begin()) > kMostBundledDies) {
            ++bundles.wideNetNum;
        } else {
            addPairs(touches, diesEnd, dies);
        }
        if (!touches.empty()) {
            addTerminals(touches, diesEnd, terminals);
        }
    }
    bundles.betweenDies = dies.take();
    std::stable_sort(bundles.betweenDies.begin(), bundles.betweenDies.end(),
                     [](const Bundle& a, const Bundle& b) { return a.weight > b.weight; });
    bundles.toTerminals = terminals.take();
    return bundles;
}

}  // namespace korvel
