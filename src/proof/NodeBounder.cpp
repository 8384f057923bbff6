#include "proof/NodeBounder.h"

#include <algorithm>
#include <bit>

namespace korvel {

namespace {

Topology onlyOf(Whereabouts where) {
    return static_cast<Topology>(std::countr_zero(where));
}

}  // namespace

NodeBounder::NodeBounder(const ProofModel& model, const Symmetry* symmetry)
    : model(model), symmetry(symmetry) {}

ProofNode NodeBounder::root() {
    ProofNode node;
    node.turn.fill(ProofNode::kOpen);
    node.where.fill(kAnywhere);
    node.bound = total(node);
    return node;
}

std::optional<ProofNode> NodeBounder::withTurn(const ProofNode& node, unsigned die, unsigned turn,
                                               double limit) {
    if (model.cornerRange(die, kX, turn).isEmpty() || model.cornerRange(die, kY, turn).isEmpty()) {
        return std::nullopt;
    }
    ProofNode child = node;
    child.turn[die] = static_cast<std::uint8_t>(turn);
    if (symmetry != nullptr) {
        if (!symmetry->mayBeFirst(child)) {
            return std::nullopt;
        }
        symmetry->narrow(child);
    }
    for (const Axis axis : {kX, kY}) {
        child.at[axis][die] = model.cornerRange(die, axis, turn).middle();
    }
    if (!settle(child, {true, true}, limit)) {
        return std::nullopt;
    }
    return child.bound < limit ? betterCounted(child) : child;
}

// The nets of a pair that is not related yet can take part exactly, but then as if the dies could
// overlap, or stay at the least that any relation costs. Whatever bounds more is kept.
ProofNode NodeBounder::betterCounted(const ProofNode& node) {
    ProofNode other = node;
    if (!countPairs(other, true)) {
        return node;
    }
    for (const Axis axis : {kX, kY}) {
        workOut(other, axis);
    }
    const double length = total(other);
    other.bound = std::max(node.bound, length);
    return length >= total(node) ? other : node;
}

std::optional<ProofNode> NodeBounder::withRelation(const ProofNode& node, unsigned low,
                                                   unsigned high, Topology where, double limit) {
    ProofNode child = node;
    child.where[pairIndex(low, high)] = bitOf(where);
    std::array<bool, kAxes> changed{};
    changed[axisOf(where)] = true;
    return settle(child, changed, limit) ? std::optional(child) : std::nullopt;
}

// The lengths that were worked out for the part that the node is from hold for it too. Often they
// and what is known of the rest suffice, and no more is worked out than is needed for the limit.
bool NodeBounder::settle(ProofNode& node, std::array<bool, kAxes> changed, double limit) {
    node.bound = std::max(node.bound, total(node));
    if (node.bound >= limit) {
        return node.bound < kInfiniteLength;
    }
    numberBodies(node);
    if (!propagate(node, changed)) {
        return false;
    }
    if (countPairs(node, false)) {
        changed = {true, true};
    }
    for (const Axis axis : {kX, kY}) {
        if (changed[axis] && node.bound < limit) {
            workOut(node, axis);
            node.bound = std::max(node.bound, total(node));
        }
    }
    return node.bound < kInfiniteLength;
}

void NodeBounder::numberBodies(const ProofNode& node) {
    bodies.clear();
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        if (node.isTurned(die)) {
            numberOf[die] = static_cast<unsigned>(bodies.size());
            bodies.push_back(die);
        }
    }
    numberOf[model.ground()] = static_cast<unsigned>(bodies.size());
    bodies.push_back(model.ground());
}

// Relations that the decided ones rule out, or imply, until nothing changes.
bool NodeBounder::propagate(ProofNode& node, std::array<bool, kAxes>& changed) {
    bool again = true;
    while (again) {
        again = false;
        if (!longestPaths(node)) {
            return false;
        }
        for (std::size_t j = 0; j + 1 < bodies.size(); ++j) {
            for (std::size_t i = 0; i < j; ++i) {
                const Whereabouts before = node.where[pairIndex(bodies[i], bodies[j])];
                if (isDecided(before)) {
                    continue;
                }
                if (!narrow(node, bodies[i], bodies[j], changed)) {
                    return false;
                }
                const Whereabouts now = node.where[pairIndex(bodies[i], bodies[j])];
                again = again || (now != before && isDecided(now));
            }
        }
    }
    return true;
}

// Calls `take(from, to, least)` for every two bodies, by their numbers, of which the second has to
// stay so much above the first: by the ranges of the dies and by the relations that are decided.
template <typename Take>
void NodeBounder::forGaps(const ProofNode& node, Axis axis, const Take& take) const {
    const auto ground = static_cast<unsigned>(bodies.size() - 1);
    for (unsigned j = 0; j < ground; ++j) {
        const DieLimits::Range range = model.cornerRange(bodies[j], axis, node.turn[bodies[j]]);
        take(ground, j, range.low);
        take(j, ground, -range.high);
        for (unsigned i = 0; i < j; ++i) {
            const Whereabouts where = node.where[pairIndex(bodies[i], bodies[j])];
            if (!isDecided(where) || axisOf(onlyOf(where)) != axis) {
                continue;
            }
            const unsigned first = comesFirst(onlyOf(where)) ? i : j;
            const unsigned second = comesFirst(onlyOf(where)) ? j : i;
            take(first, second, leastDistance(node, bodies[first], bodies[second], axis));
        }
    }
}

bool NodeBounder::longestPaths(const ProofNode& node) {
    const std::size_t num = bodies.size();
    for (const Axis axis : {kX, kY}) {
        Paths& path = paths[axis];
        for (std::size_t i = 0; i < num; ++i) {
            for (std::size_t j = 0; j < num; ++j) {
                path[i][j] = i == j ? 0.0 : -kInfiniteLength;
            }
        }
        forGaps(node, axis,
                [&path](unsigned from, unsigned to, double least) { path[from][to] = least; });
        for (std::size_t via = 0; via < num; ++via) {
            for (std::size_t i = 0; i < num; ++i) {
                for (std::size_t j = 0; j < num; ++j) {
                    path[i][j] = std::max(path[i][j], path[i][via] + path[via][j]);
                }
            }
        }
        for (std::size_t i = 0; i < num; ++i) {
            if (path[i][i] > 0.0) {
                return false;
            }
        }
    }
    return true;
}

bool NodeBounder::narrow(ProofNode& node, unsigned low, unsigned high,
                         std::array<bool, kAxes>& changed) {
    Whereabouts& where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kTopologyNum; ++bit) {
        const auto relation = static_cast<Topology>(bit);
        const Axis axis = axisOf(relation);
        const unsigned first = comesFirst(relation) ? low : high;
        const unsigned second = comesFirst(relation) ? high : low;
        const Paths& path = paths[axis];
        const double distance = leastDistance(node, first, second, axis);
        if (path[numberOf[first]][numberOf[second]] >= distance) {
            where = bitOf(relation);  // the others would only bind more
            return true;
        }
        if (path[numberOf[second]][numberOf[first]] + distance > 0.0) {
            where = static_cast<Whereabouts>(where & ~bitOf(relation));
        }
    }
    if (isDecided(where)) {
        changed[axisOf(onlyOf(where))] = true;
    }
    return where != 0;
}

// Says whether there were any to count.
bool NodeBounder::countPairs(ProofNode& node, bool evenUndecided) const {
    bool any = false;
    for (std::size_t j = 0; j + 1 < bodies.size(); ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            const unsigned pair = pairIndex(bodies[i], bodies[j]);
            if (!node.counted[pair] && model.bundleOf(bodies[i], bodies[j]) &&
                (evenUndecided || isDecided(node.where[pair]))) {
                node.counted[pair] = true;
                any = true;
            }
        }
    }
    return any;
}

void NodeBounder::workOut(ProofNode& node, Axis axis) {
    optimum.begin(static_cast<unsigned>(bodies.size()), model.nearness());
    addNets(node, axis);
    addWideNets(node, axis);
    forGaps(node, axis,
            [this](unsigned from, unsigned to, double least) { optimum.addGap(from, to, least); });
    std::array<double, kMaxProofDies> at{};
    for (std::size_t i = 0; i + 1 < bodies.size(); ++i) {
        at[i] = node.at[axis][bodies[i]];
    }
    node.length[axis] = optimum.minimise(at.data());
    for (std::size_t i = 0; i + 1 < bodies.size(); ++i) {
        node.at[axis][bodies[i]] = at[i];
    }
}

void NodeBounder::addNets(const ProofNode& node, Axis axis) {
    for (const std::size_t bundle : model.nets().bundlesInNetOrder()) {
        const auto& [a, b, weight] = model.nets().bundles()[bundle];
        if (!node.isTurned(a)) {
            continue;
        }
        const bool toGround = b == model.ground();
        if (toGround || (node.isTurned(b) && node.counted[pairIndex(a, b)])) {
            const unsigned turnB = toGround ? 0 : node.turn[b];
            optimum.addBundle(numberOf[b], numberOf[a],
                              model.cost(bundle, axis, node.turn[a], turnB));
        }
    }
}

void NodeBounder::addWideNets(const ProofNode& node, Axis axis) {
    for (const auto& [members, weight] : model.nets().wideNets()) {
        const bool takesPart =
            std::any_of(members.begin(), members.end(), [&](const BodyPins& pins) {
                return pins.body != model.ground() && node.isTurned(pins.body);
            });
        if (!takesPart) {
            continue;
        }
        optimum.beginWideNet(weight);
        for (const BodyPins& pins : members) {
            if (pins.body == model.ground()) {
                optimum.addPins(numberOf[pins.body], pins.range(axis, Orient::N));
            } else if (node.isTurned(pins.body)) {
                optimum.addPins(numberOf[pins.body],
                                pins.range(axis, orientOf(node.turn[pins.body])));
            }
        }
    }
}

double NodeBounder::total(const ProofNode& node) const {
    return model.nets().fixedLength() + node.length[0] + node.length[1] + outstanding(node);
}

// What the nets that are not part of the lengths cost at least: those between turned dies pair by
// pair, all others die by die.
double NodeBounder::outstanding(const ProofNode& node) const {
    double sum = 0.0;
    for (unsigned high = 0; high < model.dieNum(); ++high) {
        if (!node.isTurned(high)) {
            sum += leastOfDie(node, high);
            continue;
        }
        for (unsigned low = 0; low < high; ++low) {
            const unsigned pair = pairIndex(low, high);
            if (node.isTurned(low) && !node.counted[pair] && model.bundleOf(low, high)) {
                sum += leastOfPair(node, low, high);
            }
        }
    }
    return sum * (1.0 - kBoundError);
}

double NodeBounder::leastOfPair(const ProofNode& node, unsigned low, unsigned high) const {
    double least = kInfiniteLength;
    const Whereabouts where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kTopologyNum; ++bit) {
        if ((where >> bit & 1) != 0) {
            least =
                std::min(least, model.pairLeast(low, high, node.turn[low], node.turn[high], bit));
        }
    }
    return least;
}

// The nets of a die without a turn to the ground, to turned dies, and to lower ones without a turn.
// It will have one and the same turn to all of them.
double NodeBounder::leastOfDie(const ProofNode& node, unsigned die) const {
    std::array<double, kUnmirroredOrients> sums{};
    for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
        sums[turn] = model.groundLeast(die, turn);
    }
    for (unsigned other = 0; other < model.dieNum(); ++other) {
        if (other != die && (node.isTurned(other) || other < die)) {
            const auto& leasts = model.pairLeasts(die, other, node.turn[other]);
            for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
                sums[turn] += leasts[turn];
            }
        }
    }
    return *std::min_element(sums.begin(), sums.end());
}

double NodeBounder::overlap(const ProofNode& node, unsigned a, unsigned b) const {
    double depth = kInfiniteLength;
    for (const Axis axis : {kX, kY}) {
        const double apart = node.at[axis][b] - node.at[axis][a];
        depth = std::min({depth, leastDistance(node, a, b, axis) - apart,
                          leastDistance(node, b, a, axis) + apart});
    }
    return depth;
}

}  // namespace korvel
