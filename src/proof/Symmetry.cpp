#include "proof/Symmetry.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace korvel {

namespace {

// More are not worth the time that looking for them takes.
constexpr std::size_t kMostImages = 512;
constexpr unsigned kMostTrials = 20000;

bool isNear(const PinRange& a, const PinRange& b, double nearness) {
    return std::abs(a.low - b.low) <= nearness && std::abs(a.high - b.high) <= nearness;
}

// Whether pins of one body lie as those of another body do that is turned by so much.
bool areAlike(const BodyPins& pins, const BodyPins& others, unsigned turned, double nearness) {
    for (const Axis axis : {kX, kY}) {
        for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
            if (!isNear(pins.ranges[axis][turn],
                        others.ranges[axis][(turn + turned) % kUnmirroredOrients], nearness)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

Symmetry::Symmetry(const ProofModel& model, const std::vector<unsigned>& order)
    : model(model), order(order), nearness(model.nearness()) {
    findTurns();
    Image image{};
    image.keepsPlaces = true;
    findImages(image, 0);
    addWholeTurns();
}

bool Symmetry::looksAlike(unsigned die, unsigned turn, unsigned other, unsigned otherTurn) const {
    const auto isSame = [&](Axis axis) {
        return std::abs(model.limits().size(die, axis, orientOf(turn)) -
                        model.limits().size(other, axis, orientOf(otherTurn))) <= nearness;
    };
    return isSame(kX) && isSame(kY);
}

// A turn is the same as another one if changing one for the other is a symmetry by itself.
void Symmetry::findTurns() {
    Image image{};
    std::iota(image.from.begin(), image.from.end(), std::uint8_t{0});
    turns.resize(model.dieNum());
    standsFor.resize(model.dieNum());
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        unsigned period = 1;
        for (; period < kUnmirroredOrients; period *= 2) {
            image.turned[die] = static_cast<std::uint8_t>(period);
            if (agrees(image, model.dieNum()) && keepsWideNets(image)) {
                break;
            }
        }
        image.turned[die] = 0;
        for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
            standsFor[die][turn] = static_cast<std::uint8_t>(turn % period);
            if (turn < period) {
                turns[die].push_back(turn);
            }
        }
    }
}

// Images of the dies in the order, one after the other; those that do not agree with the earlier
// ones are left out.
void Symmetry::findImages(Image& image, std::size_t placed) {
    if (placed == order.size()) {
        if (keepsWideNets(image)) {
            images.push_back(image);
        }
        return;
    }
    const unsigned to = order[placed];
    for (const unsigned from : order) {
        const bool isTaken =
            std::any_of(order.begin(), order.begin() + placed,
                        [&](unsigned earlier) { return image.from[earlier] == from; });
        for (std::size_t i = 0; !isTaken && i < turns[to].size(); ++i) {
            if (images.size() >= kMostImages || ++trials > kMostTrials) {
                return;
            }
            image.from[to] = static_cast<std::uint8_t>(from);
            image.turned[to] = static_cast<std::uint8_t>(turns[to][i]);
            if (agrees(image, placed + 1)) {
                findImages(image, placed + 1);
            }
        }
    }
}

// Whether the first dies of the order, or with all of them placed every one, look like what comes
// to lie there, with one another and with the ground.
bool Symmetry::agrees(const Image& image, std::size_t placed) const {
    const unsigned newest = order[placed - 1];
    for (std::size_t i = 0; i < placed; ++i) {
        const unsigned die = order[i];
        const bool isConcerned = die == newest || placed == order.size();
        for (unsigned turn = 0; turn < kUnmirroredOrients && isConcerned; ++turn) {
            if (!looksAlike(image.from[die], turn, die,
                            (turn + image.turned[die]) % kUnmirroredOrients)) {
                return false;
            }
        }
        if (isConcerned && !keepsBundle(image, die, model.ground())) {
            return false;
        }
        for (std::size_t j = 0; j < i; ++j) {
            if (isConcerned && !keepsBundle(image, order[j], die)) {
                return false;
            }
        }
    }
    return true;
}

bool Symmetry::keepsBundle(const Image& image, unsigned a, unsigned b) const {
    const bool toGround = b == model.ground();
    const unsigned fromA = image.from[a];
    const unsigned fromB = toGround ? b : image.from[b];
    const unsigned turnedB = toGround ? 0 : image.turned[b];
    const auto bundle = model.bundleOf(a, b);
    const auto from = model.bundleOf(fromA, fromB);
    if (!bundle || !from) {
        return bundle == from;
    }
    const bool isReversed = (a < b) != (fromA < fromB);
    const auto isKept = [&](Axis axis, unsigned turnA, unsigned turnB) {
        const unsigned nowA = (turnA + image.turned[a]) % kUnmirroredOrients;
        const unsigned nowB = (turnB + turnedB) % kUnmirroredOrients;
        // The costs go by the lower body first.
        const PiecewiseLinear& before =
            model.cost(*from, axis, fromA < fromB ? turnA : turnB, fromA < fromB ? turnB : turnA);
        const PiecewiseLinear& after =
            model.cost(*bundle, axis, a < b ? nowA : nowB, a < b ? nowB : nowA);
        return before.isLike(after, isReversed, nearness);
    };
    for (unsigned turnA = 0; turnA < kUnmirroredOrients; ++turnA) {
        for (unsigned turnB = 0; turnB < kUnmirroredOrients; ++turnB) {
            if (!isKept(kX, turnA, turnB) || !isKept(kY, turnA, turnB)) {
                return false;
            }
        }
    }
    return true;
}

// Whether every wide net becomes another one, or itself, and no two become the same.
bool Symmetry::keepsWideNets(const Image& image) const {
    const auto& nets = model.nets().wideNets();
    std::vector<unsigned> to(model.dieNum() + 1, model.ground());
    for (unsigned die = 0; die < model.dieNum(); ++die) {
        to[image.from[die]] = die;
    }
    const auto becomes = [&](const NetModel::WideNet& net, const NetModel::WideNet& other) {
        return net.members.size() == other.members.size() &&
               std::all_of(net.members.begin(), net.members.end(), [&](const BodyPins& pins) {
                   const unsigned body = to[pins.body];
                   const unsigned turned = body == model.ground() ? 0 : image.turned[body];
                   return std::any_of(
                       other.members.begin(), other.members.end(), [&](const BodyPins& target) {
                           return target.body == body && areAlike(pins, target, turned, nearness);
                       });
               });
    };
    std::vector<double> unmet;  // by net: the weight of it that nothing has become yet
    unmet.reserve(nets.size());
    for (const NetModel::WideNet& net : nets) {
        unmet.push_back(net.weight);
    }
    for (const NetModel::WideNet& net : nets) {
        double left = net.weight;
        for (std::size_t other = 0; other < nets.size() && left > 0.0; ++other) {
            if (unmet[other] > 0.0 && becomes(net, nets[other])) {
                const double met = std::min(left, unmet[other]);
                unmet[other] -= met;
                left -= met;
            }
        }
        if (left > 0.0) {
            return false;
        }
    }
    return true;
}

// The identity, found first, becomes the plain turns of the whole.
void Symmetry::addWholeTurns() {
    const std::vector<Image> found = images;
    const unsigned step = model.limits().side(kX) == model.limits().side(kY) ? 1 : 2;
    for (unsigned turn = step; turn < kUnmirroredOrients && !model.hasTerminalNets();
         turn += step) {
        for (Image image : found) {
            image.keepsPlaces = false;
            for (std::uint8_t& turned : image.turned) {
                turned = static_cast<std::uint8_t>((turned + turn) % kUnmirroredOrients);
            }
            images.push_back(image);
        }
    }
}

Symmetry::Rank Symmetry::rank(const Image& image, const ProofNode& node) const {
    for (const unsigned die : order) {
        const unsigned from = image.from[die];
        if (from == die && standsFor[die][image.turned[die]] == 0) {
            continue;
        }
        if (!node.isTurned(die) || !node.isTurned(from)) {
            return Rank::Open;
        }
        const unsigned turn =
            standsFor[die][(node.turn[from] + image.turned[die]) % kUnmirroredOrients];
        if (turn != node.turn[die]) {
            return turn < node.turn[die] ? Rank::Earlier : Rank::Later;
        }
    }
    return Rank::Same;
}

bool Symmetry::mayBeFirst(const ProofNode& node) const {
    return std::none_of(images.begin(), images.end(),
                        [&](const Image& image) { return rank(image, node) == Rank::Earlier; });
}

// With the same turns, the first die of the order that moves comes from one that is not left of it.
void Symmetry::narrow(ProofNode& node) const {
    for (const Image& image : images) {
        if (!image.keepsPlaces || rank(image, node) != Rank::Same) {
            continue;
        }
        const auto moved = std::find_if(order.begin(), order.end(),
                                        [&](unsigned die) { return image.from[die] != die; });
        if (moved != order.end()) {
            const unsigned from = image.from[*moved];
            const Topology ruledOut = *moved < from ? Topology::R : Topology::L;
            Whereabouts& where =
                node.where[pairIndex(std::min(*moved, from), std::max(*moved, from))];
            where = static_cast<Whereabouts>(where & ~bitOf(ruledOut));
        }
    }
}

}  // namespace korvel
