#include "classic/netlist/PairGroups.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace korvel {

bool isPair(const Net& net) {
    return net.getDeclaredDegree() == 2 && net.getNetDegree() == 2;
}

std::vector<PairGroup> groupPairs(const Netlist& netlist, const Bodies& bodies) {
    std::vector<PairGroup> groups;
    std::map<std::array<unsigned, 4>, std::size_t> numberOf;
    const auto indexOf = [mostIndex = bodies.size() - 1](const Pin& pin) {
        return std::min(pin.getBlockIndex(), mostIndex);
    };
    for (const Net& net : netlist.nets) {
        if (!isPair(net)) {
            continue;
        }
        const Pin* first = net.getPins()[0];
        const Pin* second = net.getPins()[1];
        if (indexOf(*first) != indexOf(*second) && bodies.of(*second) < bodies.of(*first)) {
            std::swap(first, second);
        }
        const std::array key = {bodies.of(*first), bodies.of(*second), indexOf(*first),
                                indexOf(*second)};
        if (key[0] == bodies.neverPlaced() || key[1] == bodies.neverPlaced()) {
            continue;
        }
        const auto [found, isNew] = numberOf.emplace(key, groups.size());
        if (isNew) {
            groups.push_back({key[0], key[1], key[2], key[3], {}});
        }
        groups[found->second].joints.push_back({first, second});
    }
    return groups;
}

}  // namespace korvel
