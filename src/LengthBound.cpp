#include "LengthBound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace korvel {

namespace {

// A block that is not limited along one axis may still drift along it by less than 0.001 each time
// that it moves along the other; three rounds move the two blocks of a relation six times.
constexpr double kDriftPerRelation = 0.007;
// Some hundred units in the last place of the largest positions: each pin is moved a few times.
constexpr double kRounding = 1e-5;
constexpr double kUnitRoundoff = 1.0 / (1 << 24);

// Every block's index is its place, and no terminal is taken for a block.
bool inOrder(const Netlist& netlist, unsigned numBlocks) {
    for (const Block& terminal : netlist.terminals) {
        if (terminal.getIndex() < static_cast<int>(netlist.blocks.size())) {
            return false;
        }
    }
    for (unsigned i = 0; i < numBlocks; ++i) {
        const Block& block = netlist.blocks[i];
        if (block.getIndex() != static_cast<int>(i) || !(block.getWidth() > 0) ||
            !(block.getHeight() > 0)) {
            return false;
        }
    }
    return true;
}

Point placeOf(const Pin& pin, unsigned orient) {
    return pin.placeInBlock(static_cast<Orient>(orient));
}

float along(Point p, Axis axis) {
    return axis == kX ? p.x : p.y;
}

// Pins may lie far outside of their blocks.
double farthestPin(const Netlist& netlist) {
    double farthest = 0.0;
    for (const Pin& pin : netlist.pins) {
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            const Point place = placeOf(pin, o);
            farthest = std::max({farthest, std::fabs(double{place.x}), std::fabs(double{place.y})});
        }
    }
    return farthest;
}

}  // namespace

LengthBound::LengthBound(const Netlist& netlist, unsigned numBlocks, Area area)
    : numBlocks(numBlocks),
      area(area),
      slack(numBlocks * kDriftPerRelation +
            kRounding * (area.width + area.height + farthestPin(netlist))),
      sumKept(1.0 - (static_cast<double>(netlist.nets.size()) + 16.0) * kUnitRoundoff),
      usable(inOrder(netlist, numBlocks)) {
    if (!usable) {
        return;
    }
    std::map<std::pair<unsigned, unsigned>, PairGroup> groups;
    for (const Net& net : netlist.nets) {
        if (net.getDeclaredDegree() != 2 || net.getNetDegree() != 2) {
            addBox(net);
            continue;
        }
        const Pin* first = net.getPins()[0];
        const Pin* second = net.getPins()[1];
        if (bodyOf(*second) < bodyOf(*first)) {
            std::swap(first, second);
        }
        // A net on one body has no length, or always the same.
        if (bodyOf(*first) == bodyOf(*second) || bodyOf(*second) > numBlocks) {
            continue;
        }
        PairGroup& group = groups[{bodyOf(*first), bodyOf(*second)}];
        group.lengths.resize(kAxes * kUnmirroredOrients * kUnmirroredOrients);
        for (unsigned f = 0; f < kUnmirroredOrients; ++f) {
            for (unsigned s = 0; s < kUnmirroredOrients; ++s) {
                for (const Axis axis : {kX, kY}) {
                    group.lengths[lengthIndex(axis, static_cast<Orient>(f), static_cast<Orient>(s))]
                        .add(double{along(placeOf(*first, f), axis)} -
                             double{along(placeOf(*second, s), axis)});
                }
            }
        }
    }
    for (auto& [bodies, group] : groups) {
        group.first = bodies.first;
        group.second = bodies.second;
        for (Distances& length : group.lengths) {
            length.finish();
        }
        group.placed = 1 + (group.second == numBlocks ? group.first : group.second);
        pairGroups.push_back(std::move(group));
    }
    const auto countsEarlier = [](const auto& a, const auto& b) { return a.placed < b.placed; };
    std::stable_sort(pairGroups.begin(), pairGroups.end(), countsEarlier);
    std::stable_sort(boxNets.begin(), boxNets.end(), countsEarlier);
}

// Blocks that this pass does not place come after the terminals.
unsigned LengthBound::bodyOf(const Pin& pin) const {
    if (pin.isTerminal()) {
        return numBlocks;
    }
    return pin.getBlockIndex() < numBlocks ? pin.getBlockIndex() : numBlocks + 1;
}

void LengthBound::addBox(const Net& net) {
    std::map<unsigned, Member> members;
    for (const Pin* pin : net.getPins()) {
        const unsigned body = bodyOf(*pin);
        if (body > numBlocks) {
            continue;
        }
        const auto [found, isNew] = members.emplace(body, Member{});
        Member& member = found->second;
        member.body = body;
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            for (const Axis axis : {kX, kY}) {
                const float place = along(placeOf(*pin, o), axis);
                member.low[o][axis] = isNew ? place : std::min(member.low[o][axis], place);
                member.high[o][axis] = isNew ? place : std::max(member.high[o][axis], place);
            }
        }
    }
    if (members.size() >= 2) {
        BoxNet box;
        for (const auto& [body, member] : members) {
            box.members.push_back(member);
        }
        const bool hasTerminal = box.members.back().body == numBlocks;
        box.placed = 1 + box.members[hasTerminal ? 0 : 1].body;
        boxNets.push_back(std::move(box));
    }
}

void LengthBound::Distances::finish() {
    std::sort(points.begin(), points.end(),
              [](const Point& a, const Point& b) { return a.at < b.at; });
    for (Point& point : points) {
        point.weightBefore = weight;
        point.momentBefore = moment;
        weight += 1.0;
        moment += point.at;
    }
    median = points[points.size() / 2].at;
}

double LengthBound::Distances::leastWithin(double low, double high) const {
    return valueAt(std::clamp(median, low, high));
}

double LengthBound::Distances::valueAt(double position) const {
    const auto after =
        std::lower_bound(points.begin(), points.end(), position,
                         [](const Point& point, double value) { return point.at < value; });
    const double weightBefore = after == points.end() ? weight : after->weightBefore;
    const double momentBefore = after == points.end() ? moment : after->momentBefore;
    return position * (2 * weightBefore - weight) - (2 * momentBefore - moment);
}

LengthBound::Workspace LengthBound::makeWorkspace() const {
    const std::size_t bodies = numBlocks + 1;
    Workspace space;
    for (const Axis axis : {kX, kY}) {
        space.leastGaps[axis].resize(bodies * bodies);
        space.least[axis].resize(bodies);
        space.most[axis].resize(bodies);
    }
    space.paths.resize(bodies);
    space.extents.resize(bodies);
    space.order.resize(bodies);
    return space;
}

double LengthBound::leastLength(const BBNode& node, Workspace& space, double enough) const {
    if (!usable || !findGaps(node, kX, space) || !findGaps(node, kY, space)) {
        return 0.0;
    }
    double sum = 0.0;
    for (const PairGroup& group : pairGroups) {
        if (group.placed > node.numBlocks) {
            break;
        }
        sum += pairLength(group, node, kX, space) + pairLength(group, node, kY, space);
    }
    for (const BoxNet& net : boxNets) {
        if (net.placed > node.numBlocks || sum * sumKept >= enough) {
            break;
        }
        sum += boxLength(net, node, kX, space) + boxLength(net, node, kY, space);
    }
    return sum * sumKept;
}

// The least displacements between all bodies of the node along one axis. False when a block is not
// known to start inside of the area.
bool LengthBound::findGaps(const BBNode& node, Axis axis, Workspace& space) const {
    const ConsraintGraphList& graph = axis == kX ? node.horizontalGraph : node.verticalGraph;
    const double areaExtent = axis == kX ? area.width : area.height;
    const unsigned placed = node.numBlocks;
    const std::size_t bodies = numBlocks + 1;

    std::vector<double>& gaps = space.leastGaps[axis];
    std::vector<double>& least = space.least[axis];
    std::vector<double>& most = space.most[axis];
    for (unsigned b = 0; b < placed; ++b) {
        // A graph without new edges has not seen the newest blocks.
        if (graph.returnCoord(b) + graph.getWeight(b) > graph.getLength()) {
            return false;
        }
        space.extents[b] = std::trunc(graph.getWeight(b));
        least[b] = 0.0;
        unsigned at = b;
        for (; at > 0 && graph.returnCoord(space.order[at - 1]) > graph.returnCoord(b); --at) {
            space.order[at] = space.order[at - 1];
        }
        space.order[at] = b;
    }
    // Extents are positive, so blocks in the order of their coordinates come after those that they
    // follow. Longest chains from each block:
    for (unsigned i = 0; i < placed; ++i) {
        const unsigned from = space.order[i];
        std::fill_n(space.paths.begin(), placed, -1.0);
        space.paths[from] = 0.0;
        double tail = 0.0;
        for (unsigned j = i; j < placed; ++j) {
            const unsigned b = space.order[j];
            if (space.paths[b] < 0) {
                continue;
            }
            const double end = space.paths[b] + space.extents[b];
            tail = std::max(tail, end);
            for (const unsigned next : graph.getOutcomingEdges(b)) {
                space.paths[next] = std::max(space.paths[next], end);
            }
        }
        most[from] = areaExtent - tail;
        for (unsigned b = 0; b < placed; ++b) {
            gaps[from * bodies + b] = space.paths[b];
            least[b] = std::max(least[b], space.paths[b]);
        }
    }
    for (unsigned a = 0; a < placed; ++a) {
        for (unsigned b = 0; b < placed; ++b) {
            double& gap = gaps[a * bodies + b];
            const double byArea = least[b] - most[a];
            gap = (gap >= 0 ? std::max(gap, byArea) : byArea) - slack;
        }
        gaps[a * bodies + numBlocks] = -most[a] - slack;
        gaps[numBlocks * bodies + a] = least[a] - slack;
        gaps[a * bodies + a] = 0.0;
    }
    gaps[numBlocks * bodies + numBlocks] = 0.0;
    least[numBlocks] = 0.0;
    most[numBlocks] = 0.0;
    return true;
}

double LengthBound::pairLength(const PairGroup& group, const BBNode& node, Axis axis,
                               const Workspace& space) const {
    const std::size_t bodies = numBlocks + 1;
    const double low = space.leastGaps[axis][group.first * bodies + group.second];
    const double high = -space.leastGaps[axis][group.second * bodies + group.first];
    if (low > high) {
        return 0.0;
    }
    const std::size_t index =
        lengthIndex(axis, orientOf(group.first, node), orientOf(group.second, node));
    return group.lengths[index].leastWithin(low, high);
}

// Of a net with many bodies only where they may be is looked at, not how they lie to each other.
double LengthBound::boxLength(const BoxNet& net, const BBNode& node, Axis axis,
                              const Workspace& space) const {
    constexpr unsigned kFew = 3;
    const std::size_t bodies = numBlocks + 1;
    struct Placed {
        unsigned body;
        double low;
        double high;
    };
    std::array<Placed, kFew> first;
    unsigned number = 0;
    double leastHigh = std::numeric_limits<double>::lowest();
    double mostLow = std::numeric_limits<double>::max();
    for (const Member& member : net.members) {
        if (!isPlaced(member.body, node)) {
            continue;
        }
        const unsigned orient = orientIndex(orientOf(member.body, node));
        const double low = member.low[orient][axis];
        const double high = member.high[orient][axis];
        if (number < kFew) {
            first[number] = {member.body, low, high};
        }
        ++number;
        leastHigh = std::max(leastHigh, space.least[axis][member.body] + high);
        mostLow = std::min(mostLow, space.most[axis][member.body] + low);
    }
    double length = leastHigh - mostLow - 2 * slack;
    for (unsigned a = 0; a < std::min(number, kFew); ++a) {
        for (unsigned b = 0; b < std::min(number, kFew); ++b) {
            const double gap = space.leastGaps[axis][first[a].body * bodies + first[b].body];
            length = std::max(length, gap + first[b].high - first[a].low);
        }
    }
    return length;
}

}  // namespace korvel
