#include "proof/NodeBounder.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr unsigned axisOf(Topology where) {
    return where == Topology::L || where == Topology::R ? 0 : 1;
}

// Whether the first of two dies is then the one with the lower coordinates.
constexpr bool isLower(Topology where) {
    return where == Topology::L || where == Topology::B;
}

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
    if (model.room(die, 0, turn) < 0.0 || model.room(die, 1, turn) < 0.0) {
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
    for (unsigned axis = 0; axis < kAxisNum; ++axis) {
        child.at[axis][die] = model.room(die, axis, turn) / 2.0;
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
    for (unsigned axis = 0; axis < kAxisNum; ++axis) {
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
    std::array<bool, kAxisNum> changed{};
    changed[axisOf(where)] = true;
    return settle(child, changed, limit) ? std::optional(child) : std::nullopt;
}

// The lengths that were worked out for the part that the node is from hold for it too. Often they
// and what is known of the rest suffice, and no more is worked out than is needed for the limit.
bool NodeBounder::settle(ProofNode& node, std::array<bool, kAxisNum> changed, double limit) {
    node.bound = std::max(node.bound, total(node));
    if (node.bound >= limit) {
        return node.bound < kInfinity;
    }
    numberBodies(node);
    if (!propagate(node, changed)) {
        return false;
    }
    if (countPairs(node, false)) {
        changed = {true, true};
    }
    for (unsigned axis = 0; axis < kAxisNum && node.bound < limit; ++axis) {
        if (changed[axis]) {
            workOut(node, axis);
            node.bound = std::max(node.bound, total(node));
        }
    }
    return node.bound < kInfinity;
}

void NodeBounder::numberBodies(const ProofNode& node) {
    bodies.clear();
    for (unsigned die = 0; die < model.getDieNum(); ++die) {
        if (node.isTurned(die)) {
            numberOf[die] = static_cast<unsigned>(bodies.size());
            bodies.push_back(die);
        }
    }
    numberOf[model.ground()] = static_cast<unsigned>(bodies.size());
    bodies.push_back(model.ground());
}

// Relations that the decided ones rule out, or imply, until nothing changes.
bool NodeBounder::propagate(ProofNode& node, std::array<bool, kAxisNum>& changed) {
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

bool NodeBounder::longestPaths(const ProofNode& node) {
    const std::size_t num = bodies.size();
    for (unsigned axis = 0; axis < kAxisNum; ++axis) {
        Paths& path = paths[axis];
        for (std::size_t i = 0; i < num; ++i) {
            for (std::size_t j = 0; j < num; ++j) {
                path[i][j] = i == j ? 0.0 : -kInfinity;
            }
        }
        for (std::size_t j = 0; j + 1 < num; ++j) {
            path[num - 1][j] = 0.0;
            path[j][num - 1] = -model.room(bodies[j], axis, node.turn[bodies[j]]);
            for (std::size_t i = 0; i < j; ++i) {
                const Whereabouts where = node.where[pairIndex(bodies[i], bodies[j])];
                if (!isDecided(where) || axisOf(onlyOf(where)) != axis) {
                    continue;
                }
                if (isLower(onlyOf(where))) {
                    path[i][j] = extent(node, bodies[i], axis);
                } else {
                    path[j][i] = extent(node, bodies[j], axis);
                }
            }
        }
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
                         std::array<bool, kAxisNum>& changed) {
    Whereabouts& where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kRelations; ++bit) {
        const auto relation = static_cast<Topology>(bit);
        const unsigned axis = axisOf(relation);
        const unsigned first = isLower(relation) ? low : high;
        const unsigned second = isLower(relation) ? high : low;
        const Paths& path = paths[axis];
        if (path[numberOf[first]][numberOf[second]] >= extent(node, first, axis)) {
            where = bitOf(relation);  // the others would only bind more
            return true;
        }
        if (path[numberOf[second]][numberOf[first]] + extent(node, first, axis) > 0.0) {
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
            if (!node.counted[pair] && model.bundleOf(bodies[i], bodies[j]) != nullptr &&
                (evenUndecided || isDecided(node.where[pair]))) {
                node.counted[pair] = true;
                any = true;
            }
        }
    }
    return any;
}

void NodeBounder::workOut(ProofNode& node, unsigned axis) {
    optimum.begin(static_cast<unsigned>(bodies.size()),
                  kNearness * std::max(model.side(0), model.side(1)));
    addNets(node, axis);
    addWideNets(node, axis);
    addGaps(node, axis);
    std::array<double, kMaxProofDies> at{};
    for (std::size_t i = 0; i + 1 < bodies.size(); ++i) {
        at[i] = node.at[axis][bodies[i]];
    }
    node.length[axis] = optimum.minimise(at.data());
    for (std::size_t i = 0; i + 1 < bodies.size(); ++i) {
        node.at[axis][bodies[i]] = at[i];
    }
}

void NodeBounder::addNets(const ProofNode& node, unsigned axis) {
    for (const ProofModel::Bundle& bundle : model.getBundles()) {
        if (!node.isTurned(bundle.a)) {
            continue;
        }
        const bool toGround = bundle.b == model.ground();
        if (toGround || (node.isTurned(bundle.b) && node.counted[pairIndex(bundle.a, bundle.b)])) {
            const unsigned turnB = toGround ? 0 : node.turn[bundle.b];
            optimum.addBundle(numberOf[bundle.a], numberOf[bundle.b],
                              bundle.along(axis, node.turn[bundle.a], turnB));
        }
    }
}

void NodeBounder::addWideNets(const ProofNode& node, unsigned axis) {
    for (const ProofModel::WideNet& net : model.getWideNets()) {
        const bool takesPart =
            std::any_of(net.parts.begin(), net.parts.end(), [&](const auto& part) {
                return part.body != model.ground() && node.isTurned(part.body);
            });
        if (!takesPart) {
            continue;
        }
        optimum.beginWideNet();
        for (const ProofModel::WideNet::Part& part : net.parts) {
            if (part.body == model.ground()) {
                optimum.addPart(numberOf[part.body], part.ranges[turnAlong(axis, 0)]);
            } else if (node.isTurned(part.body)) {
                optimum.addPart(numberOf[part.body],
                                part.ranges[turnAlong(axis, node.turn[part.body])]);
            }
        }
    }
}

void NodeBounder::addGaps(const ProofNode& node, unsigned axis) {
    const auto ground = static_cast<unsigned>(bodies.size() - 1);
    for (unsigned j = 0; j < ground; ++j) {
        optimum.addGap(ground, j, 0.0);
        optimum.addGap(j, ground, -model.room(bodies[j], axis, node.turn[bodies[j]]));
        for (unsigned i = 0; i < j; ++i) {
            const Whereabouts where = node.where[pairIndex(bodies[i], bodies[j])];
            if (!isDecided(where) || axisOf(onlyOf(where)) != axis) {
                continue;
            }
            if (isLower(onlyOf(where))) {
                optimum.addGap(i, j, extent(node, bodies[i], axis));
            } else {
                optimum.addGap(j, i, extent(node, bodies[j], axis));
            }
        }
    }
}

double NodeBounder::total(const ProofNode& node) const {
    return model.getFixedLength() + node.length[0] + node.length[1] + outstanding(node);
}

// What the nets that are not part of the lengths cost at least: those between turned dies pair by
// pair, all others die by die.
double NodeBounder::outstanding(const ProofNode& node) const {
    double sum = 0.0;
    for (unsigned high = 0; high < model.getDieNum(); ++high) {
        if (!node.isTurned(high)) {
            sum += leastOfDie(node, high);
            continue;
        }
        for (unsigned low = 0; low < high; ++low) {
            const unsigned pair = pairIndex(low, high);
            if (node.isTurned(low) && !node.counted[pair] && model.bundleOf(low, high) != nullptr) {
                sum += leastOfPair(node, low, high);
            }
        }
    }
    return sum * (1.0 - kNearness);
}

double NodeBounder::leastOfPair(const ProofNode& node, unsigned low, unsigned high) const {
    double least = kInfinity;
    const Whereabouts where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kRelations; ++bit) {
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
    std::array<double, kTurns> sums{};
    for (unsigned turn = 0; turn < kTurns; ++turn) {
        sums[turn] = model.groundLeast(die, turn);
    }
    for (unsigned other = 0; other < model.getDieNum(); ++other) {
        if (other != die && (node.isTurned(other) || other < die)) {
            const auto& leasts = model.pairLeasts(die, other, node.turn[other]);
            for (unsigned turn = 0; turn < kTurns; ++turn) {
                sums[turn] += leasts[turn];
            }
        }
    }
    return *std::min_element(sums.begin(), sums.end());
}

double NodeBounder::overlap(const ProofNode& node, unsigned a, unsigned b) const {
    double depth = kInfinity;
    for (unsigned axis = 0; axis < kAxisNum; ++axis) {
        const double apart = node.at[axis][b] - node.at[axis][a];
        depth = std::min({depth, extent(node, a, axis) - apart, extent(node, b, axis) + apart});
    }
    return depth;
}

}  // namespace korvel
