#include "classic/alignment/LengthTable.h"

#include <algorithm>

namespace korvel {

namespace {

// So that a sum that has become useless is not carried much further.
constexpr unsigned kMostPairsOfTerm = 64;

// At least two pins are placed, and not all on one block. Of a terminal that comes first only the
// index counts, on purpose.
bool isSpread(const AlignmentNets& nets, const Net& net, unsigned placed) {
    const Pin* first = nullptr;
    for (const Pin* pin : net.getPins()) {
        if (!Bodies::isPlaced(nets.bodies.of(*pin), placed)) {
            continue;
        }
        if (first == nullptr) {
            first = pin;
        } else if (pin->getBlockIndex() != first->getBlockIndex() ||
                   (pin->isTerminal() && !nets.isPlacedAsPair(net, placed))) {
            return true;
        }
    }
    return false;
}

}  // namespace

LengthTable::LengthTable(const AlignmentNets& nets, const PinTable& pins)
    : netNum(static_cast<unsigned>(nets.netlist.nets.size())) {
    const std::vector<Part> parts = makeParts(nets, pins);
    termsOf.emplace_back();
    fullestNets.push_back({0, 0});
    for (unsigned placed = 1; placed <= nets.numBlocks; ++placed) {
        const unsigned begin = endOf(allTerms);
        for (const Part& part : parts) {
            if (part.other != nullptr) {
                addTerm(nets, pins, *part.other, placed);
            } else if (part.placed <= placed) {
                allTerms.push_back(part.term);
            }
        }
        termsOf.push_back({begin, endOf(allTerms)});
        fullestNets.push_back(fullestNet(nets, placed));
    }
}

std::vector<LengthTable::Part> LengthTable::makeParts(const AlignmentNets& nets,
                                                      const PinTable& pins) {
    std::vector<Part> parts;
    for (const Net& net : nets.netlist.nets) {
        if (isPair(net)) {
            addPair(parts, nets, pins, net);
        } else {
            parts.push_back({0, {}, &net});
        }
    }
    return parts;
}

// Nets between pins of the same index have no length. Goes on with the last term if it can.
void LengthTable::addPair(std::vector<Part>& parts, const AlignmentNets& nets, const PinTable& pins,
                          const Net& net) {
    const auto [lower, upper] = std::minmax(
        net.getPins()[0], net.getPins()[1],
        [&](const Pin* a, const Pin* b) { return nets.bodies.of(*a) < nets.bodies.of(*b); });
    // A placement of m blocks has the first m + 1 bodies.
    const unsigned placed = nets.bodies.of(*upper);
    if (lower->getBlockIndex() == upper->getBlockIndex() || placed == nets.bodies.neverPlaced()) {
        return;
    }
    const Term term = pairTerm(pins.placeOf(nets.bodies.pinNumber(*lower)),
                               pins.placeOf(nets.bodies.pinNumber(*upper)));
    if (!parts.empty()) {
        auto& [lastPlaced, last, other] = parts.back();
        if (other == nullptr && lastPlaced == placed && last.kind == term.kind &&
            last.firstBody == term.firstBody && last.secondBody == term.secondBody &&
            last.items.size() < kMostPairsOfTerm) {
            ++last.items.end;
            return;
        }
    }
    parts.push_back({placed, term, nullptr});
}

LengthTable::Term LengthTable::pairTerm(const PinTable::PinPlace& first,
                                        const PinTable::PinPlace& second) {
    if (first.site != PinTable::kNoSite) {
        const unsigned pair = endOf(allSitePairs);
        allSitePairs.push_back({first.site, second.site});
        return {Term::Kind::Sites, 0, 0, {pair, pair + 1}};
    }
    const unsigned pair = endOf(allTrackPairs);
    allTrackPairs.push_back({std::to_array(first.tracks), std::to_array(second.tracks)});
    return {Term::Kind::Tracks, first.body, second.body, {pair, pair + 1}};
}

void LengthTable::addTerm(const AlignmentNets& nets, const PinTable& pins, const Net& net,
                          unsigned placed) {
    if (!isSpread(nets, net, placed)) {
        return;
    }
    const auto placeOf = [&](const Pin* pin) -> const PinTable::PinPlace& {
        return pins.placeOf(nets.bodies.pinNumber(*pin));
    };
    if (nets.isPlacedAsPair(net, placed)) {
        allTerms.push_back(pairTerm(placeOf(net.getPins()[0]), placeOf(net.getPins()[1])));
        return;
    }
    const unsigned begin = endOf(sites);
    for (const Pin* pin : net.getPins()) {
        if (Bodies::isPlaced(nets.bodies.of(*pin), placed)) {
            sites.push_back(placeOf(pin).site);
        }
    }
    allTerms.push_back({Term::Kind::Box, 0, 0, {begin, endOf(sites)}});
}

LengthTable::Fill LengthTable::fullestNet(const AlignmentNets& nets, unsigned placed) {
    for (const Net* net : nets.others) {
        const Fill fill{net->getDeclaredDegree(), nets.bodies.countPlaced(*net, placed)};
        if (fill.placedPins > fill.degree) {
            return fill;
        }
    }
    return {1, 0};
}

}  // namespace korvel
