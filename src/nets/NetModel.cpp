#include "nets/NetModel.h"

#include <algorithm>
#include <map>
#include <utility>

namespace korvel {

namespace {

// A net costs max(d + highA, highB) - min(d + lowA, lowB) at distance d: far left it falls by one
// per unit, and its slope grows by one where the high ends meet and where the low ends do.
PiecewiseLinear sumOf(const std::vector<std::array<BodyPins, 2>>& nets, Axis axis, Orient ofA,
                      Orient ofB) {
    std::vector<PiecewiseLinear::Jump> jumps;
    jumps.reserve(2 * nets.size());
    double offset = 0.0;
    for (const auto& [a, b] : nets) {
        const PinRange& ofThisA = a.range(axis, ofA);
        const PinRange& ofThisB = b.range(axis, ofB);
        jumps.push_back({ofThisB.high - ofThisA.high, 1.0});
        jumps.push_back({ofThisB.low - ofThisA.low, 1.0});
        offset += ofThisB.high - ofThisA.low;
    }
    return {offset, -static_cast<double>(nets.size()), std::move(jumps)};
}

}  // namespace

NetModel::NetModel(const Design& design) {
    for (const Design::Die& die : design.dies) {
        sizes.push_back(die.size);
    }
    std::map<std::pair<unsigned, unsigned>, std::vector<TwoBodies>> byBodies;
    std::vector<std::pair<unsigned, unsigned>> named;
    for (const Design::Net& net : design.nets) {
        std::vector<BodyPins> pins = pinsByBody(design, net);
        if (pins.size() == 1) {
            onOneBody +=
                pins[0].range(kX, Orient::N).length() + pins[0].range(kY, Orient::N).length();
        } else if (pins.size() == 2) {
            auto& nets = byBodies[{pins[0].body, pins[1].body}];
            if (nets.empty()) {
                named.emplace_back(pins[0].body, pins[1].body);
            }
            nets.push_back({pins[0], pins[1]});
        } else if (pins.size() > 2) {
            addWide(std::move(pins));
        }
    }
    costs.reserve(costIndex(byBodies.size(), kX, Orient::N, Orient::N));
    for (const auto& [bodies, nets] : byBodies) {
        addBundle(nets);
    }
    inNetOrder.reserve(named.size());
    for (const auto& bodies : named) {
        const auto found = std::lower_bound(joined.begin(), joined.end(), bodies,
                                            [](const Bundle& bundle, const auto& key) {
                                                return std::pair(bundle.a, bundle.b) < key;
                                            });
        inNetOrder.push_back(static_cast<std::size_t>(found - joined.begin()));
    }
}

std::vector<BodyPins> NetModel::pinsByBody(const Design& design, const Design::Net& net) const {
    std::map<unsigned, BodyPins> byBody;
    for (const Design::Pin& pin : net.pins) {
        const bool onDie = design.isDie(pin.body);
        const unsigned body = onDie ? pin.body : ground();
        BodyPins& pins = byBody.try_emplace(body, BodyPins{body, {}}).first->second;
        for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
            const Spot at = onDie ? turned(pin.offset, sizes[body], orientOf(turn))
                                  : design.terminalOf(pin.body).at;
            pins.ranges[kX][turn].cover(at.x);
            pins.ranges[kY][turn].cover(at.y);
        }
    }
    std::vector<BodyPins> inOrder;
    inOrder.reserve(byBody.size());
    for (const auto& [body, pins] : byBody) {
        inOrder.push_back(pins);
    }
    return inOrder;
}

// Equal nets of one design mostly follow one another.
void NetModel::addWide(std::vector<BodyPins> members) {
    if (!wide.empty() && wide.back().members == members) {
        wide.back().weight += 1.0;
    } else {
        wide.push_back({std::move(members), 1.0});
    }
}

void NetModel::addBundle(const std::vector<TwoBodies>& nets) {
    const auto& [a, b] = nets.front();
    joined.push_back({a.body, b.body, static_cast<double>(nets.size())});
    for (const Axis axis : {kX, kY}) {
        for (unsigned turnA = 0; turnA < kUnmirroredOrients; ++turnA) {
            for (unsigned turnB = 0; turnB < kUnmirroredOrients; ++turnB) {
                costs.push_back(sumOf(nets, axis, orientOf(turnA), orientOf(turnB)));
            }
        }
    }
}

}  // namespace korvel
