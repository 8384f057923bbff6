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

}  // namespace

Symmetry::Symmetry(const ProofModel& model, const std::vector<unsigned>& order)
    : model(model), order(order), nearness(kNearness * std::max(model.side(0), model.side(1))) {
    findTurns();
    Image image{};
    image.keepsPlaces = true;
    findImages(image, 0);
    addWholeTurns();
}

bool Symmetry::looksAlike(unsigned die, unsigned turn, unsigned other, unsigned otherTurn) const {
    return std::abs(model.extent(die, 0, turn) - model.extent(other, 0, otherTurn)) <= nearness &&
           std::abs(model.extent(die, 1, turn) - model.extent(other, 1, otherTurn)) <= nearness;
}

// A turn is the same as another one if changing one for the other is a symmetry by itself.
void Symmetry::findTurns() {
    Image image{};
    std::iota(image.from.begin(), image.from.end(), std::uint8_t{0});
    turns.resize(model.getDieNum());
    standsFor.resize(model.getDieNum());
    for (unsigned die = 0; die < model.getDieNum(); ++die) {
        unsigned period = 1;
        for (; period < kTurns; period *= 2) {
            image.turned[die] = static_cast<std::uint8_t>(period);
            if (agrees(image, model.getDieNum()) && keepsWideNets(image)) {
                break;
            }
        }
        image.turned[die] = 0;
        for (unsigned turn = 0; turn < kTurns; ++turn) {
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
        for (unsigned turn = 0; turn < kTurns && isConcerned; ++turn) {
            if (!looksAlike(image.from[die], turn, die, (turn + image.turned[die]) % kTurns)) {
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
    const ProofModel::Bundle* bundle = model.bundleOf(a, b);
    const ProofModel::Bundle* from = model.bundleOf(fromA, fromB);
    if (bundle == nullptr || from == nullptr) {
        return bundle == from;
    }
    const bool isReversed = (a < b) != (fromA < fromB);
    for (unsigned turnA = 0; turnA < kTurns; ++turnA) {
        for (unsigned turnB = 0; turnB < kTurns; ++turnB) {
            const unsigned nowA = (turnA + image.turned[a]) % kTurns;
            const unsigned nowB = (turnB + turnedB) % kTurns;
            const BundleCost& before =
                fromA < fromB ? from->costs[turnA][turnB] : from->costs[turnB][turnA];
            const BundleCost& after = a < b ? bundle->costs[nowA][nowB] : bundle->costs[nowB][nowA];
            if (!before.isLike(after, isReversed, nearness)) {
                return false;
            }
        }
    }
    return true;
}

bool Symmetry::keepsWideNets(const Image& image) const {
    std::vector<unsigned> to(model.getDieNum() + 1, model.ground());
    for (unsigned die = 0; die < model.getDieNum(); ++die) {
        to[image.from[die]] = die;
    }
    std::vector<bool> isMet(model.getWideNets().size(), false);
    const auto becomes = [&](const ProofModel::WideNet& net, const ProofModel::WideNet& other) {
        return net.parts.size() == other.parts.size() &&
               std::all_of(net.parts.begin(), net.parts.end(), [&](const auto& part) {
                   const unsigned body = to[part.body];
                   const unsigned turned = body == model.ground() ? 0 : image.turned[body];
                   return std::any_of(
                       other.parts.begin(), other.parts.end(), [&](const auto& target) {
                           bool isLike = target.body == body;
                           const unsigned seen = body == model.ground() ? kAxisNum : kTurns;
                           for (unsigned turn = 0; turn < seen && isLike; ++turn) {
                               isLike = isNear(part.ranges[turn],
                                               target.ranges[(turn + turned) % kTurns], nearness);
                           }
                           return isLike;
                       });
               });
    };
    for (const ProofModel::WideNet& net : model.getWideNets()) {
        bool isKept = false;
        for (std::size_t other = 0; other < isMet.size() && !isKept; ++other) {
            if (!isMet[other] && becomes(net, model.getWideNets()[other])) {
                isMet[other] = true;
                isKept = true;
            }
        }
        if (!isKept) {
            return false;
        }
    }
    return true;
}

// The identity, found first, becomes the plain turns of the whole.
void Symmetry::addWholeTurns() {
    const std::vector<Image> found = images;
    const unsigned step = model.side(0) == model.side(1) ? 1 : 2;
    for (unsigned turn = step; turn < kTurns && !model.hasTerminalNets(); turn += step) {
        for (Image image : found) {
            image.keepsPlaces = false;
            for (std::uint8_t& turned : image.turned) {
                turned = static_cast<std::uint8_t>((turned + turn) % kTurns);
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
        const unsigned turn = standsFor[die][(node.turn[from] + image.turned[die]) % kTurns];
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
