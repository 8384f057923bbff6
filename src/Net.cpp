#include "Net.h"

#include <cmath>

#include "BoundingBox.h"
#include "Invariant.h"

namespace korvel {

namespace {

Quad positionOf(const Pin& pin) {
    return quadOf(pin.getCoord());
}

offsetCalcReturn checked(const offsetCalcReturn& advice) {
    KORVEL_INVARIANT(!(advice.moves[kRight] && advice.moves[kLeft]),
                     "!(retData.shouldBeMovedRight&&retData.shouldBeMovedleft)");
    KORVEL_INVARIANT(!(advice.moves[kUp] && advice.moves[kDown]),
                     "!(retData.shouldBeMovedUp&&retData.shouldBeMovedDown)");
    return advice;
}

// Advice of the two pins of a net about moving the one that is the group's.
template <typename IsOwn>
offsetCalcReturn adviceOfPair(const Pin& first, const Pin& second, const IsOwn& isOwn) {
    if (isOwn(first)) {
        return checked(adviceForPair(positionOf(second) - positionOf(first)));
    }
    if (isOwn(second)) {
        return checked(adviceForPair(positionOf(first) - positionOf(second)));
    }
    return adviceToStay();
}

// Advice from the pins that count; `isOwn` tells the group that is to be moved.
template <typename Counts, typename IsOwn>
offsetCalcReturn adviceFromPins(const std::vector<Pin*>& pins, const Counts& counts,
                                const IsOwn& isOwn) {
    NetScan scan;
    bool hasOther = false;
    for (const Pin* pin : pins) {
        if (!counts(*pin)) {
            continue;
        }
        if (isOwn(*pin)) {
            scan.addOwn(positionOf(*pin));
        } else {
            scan.addOther(positionOf(*pin));
            hasOther = true;
        }
    }
    return hasOther ? checked(scan.advice()) : offsetCalcReturn{};
}

}  // namespace

void Net::addPin(Pin* pin) {
    pins.push_back(pin);
    if (pin->isTerminal()) {
        ++termNum;
        ++placedPinsNum;
    }
}

void Net::unplacePins() {
    for (Pin* pin : pins) {
        pin->unplace();
    }
    resetPlacedPinsNum();
}

void Net::unplacePinsUnlessUntouched() {
    if (placedPinsNum != termNum) {
        unplacePins();
    }
}

void Net::checkPlacedNum(unsigned netDegree, unsigned placedPinsNum) {
    KORVEL_INVARIANT(netDegree >= placedPinsNum, "netDegree >= placedPinsNum");
}

void Net::checkCounts() const {
    checkPlacedNum(netDegree, placedPinsNum);
    KORVEL_INVARIANT(placedPinsNum >= termNum, "placedPinsNum >= termNum");
}

float Net::pairLength() const {
    const Point a = pins[0]->getCoord();
    const Point b = pins[1]->getCoord();
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
}

float Net::calcCompleteHPWL() {
    checkCounts();
    if (placedPinsNum < 2) {
        unplacePinsUnlessUntouched();
        return 0.0F;
    }
    if (isPlacedPair()) {
        const float length = pairLength();
        unplacePins();
        return length;
    }
    BoundingBox box;
    for (const Pin* pin : pins) {
        if (pin->isPlaced()) {
            box.add(pin->getCoord());
        }
    }
    unplacePins();
    return box.halfPerimeter();
}

float Net::calcHPWLFwdCheck() {
    checkPlacedNum(netDegree, placedPinsNum);
    if (placedPinsNum - termNum < 2) {
        unplacePins();
        return 0.0F;
    }
    BoundingBox box;
    for (Pin* pin : pins) {
        if (pin->isPlaced() && !pin->isTerminal()) {
            box.add(pin->getCoord());
            pin->unplace();
        }
    }
    return isPlacedPair() ? pairLength() : box.widthPlusHeight();
}

float Net::calcTermFCHPWL(float factor) {
    checkPlacedNum(netDegree, placedPinsNum);
    if (placedPinsNum < 2) {
        unplacePinsUnlessUntouched();
        return 0.0F;
    }
    if (isPlacedPair()) {
        const float length = pairLength();
        unplacePins();
        return length;
    }
    BoundingBox box;
    for (const Pin* pin : pins) {
        if (pin->isPlaced()) {
            box.add(pin->getCoord());
        }
    }
    float length = box.widthPlusHeight();
    if (netDegree > placedPinsNum) {
        length = std::fabs(factor) < 0.001 ? 0.0F : length * factor;
    }
    unplacePins();
    return length;
}

offsetCalcReturn Net::combinedOffsetsToTerms() const {
    if (isPlacedPair()) {
        const bool firstIsTerminal = pins[0]->isTerminal();
        if (!firstIsTerminal && !pins[1]->isTerminal()) {
            return adviceToStay();
        }
        return adviceOfPair(*pins[0], *pins[1],
                            [&](const Pin& pin) { return (&pin == pins[0]) != firstIsTerminal; });
    }
    return adviceFromPins(
        pins, [](const Pin& pin) { return pin.isPlaced(); },
        [](const Pin& pin) { return !pin.isTerminal(); });
}

offsetCalcReturn Net::combinedOffsetsFC(unsigned block) const {
    if (placedPinsNum - termNum < 2) {
        return {};
    }
    const auto isOwn = [block](const Pin& pin) { return pin.getBlockIndex() == block; };
    if (isPlacedPair()) {
        return adviceOfPair(*pins[0], *pins[1], isOwn);
    }
    return adviceFromPins(
        pins, [](const Pin& pin) { return pin.isPlaced() && !pin.isTerminal(); }, isOwn);
}

}  // namespace korvel
