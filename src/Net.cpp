#include "Net.h"

#include <cmath>

#include "BoundingBox.h"
#include "Invariant.h"

namespace korvel {

namespace {

offsetCalcReturn adviceForPair(Point own, Point other) {
    return {korvel::adviceForPair(other.x - own.x), korvel::adviceForPair(other.y - own.y)};
}

offsetCalcReturn checked(const offsetCalcReturn& advice) {
    KORVEL_INVARIANT(!(advice.x.forward && advice.x.backward),
                     "!(retData.shouldBeMovedRight&&retData.shouldBeMovedleft)");
    KORVEL_INVARIANT(!(advice.y.forward && advice.y.backward),
                     "!(retData.shouldBeMovedUp&&retData.shouldBeMovedDown)");
    return advice;
}

// Advice from all placed pins; `isOwn` tells the group that is to be moved.
template <typename IsOwn>
offsetCalcReturn adviceFromPins(const std::vector<Pin*>& pins, const IsOwn& isOwn) {
    AxisScan x;
    AxisScan y;
    for (const Pin* pin : pins) {
        if (!pin->isPlaced()) {
            continue;
        }
        const auto [px, py] = pin->getCoord();
        if (isOwn(*pin)) {
            x.addOwn(px);
            y.addOwn(py);
        } else {
            x.addOther(px);
            y.addOther(py);
        }
    }
    return {x.advice(), y.advice()};
}

offsetCalcReturn adviceToStay() {
    offsetCalcReturn advice;
    advice.x.stay = true;
    advice.y.stay = true;
    return advice;
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
        if (pins[0]->isTerminal()) {
            return checked(adviceForPair(getPinCoord(1), getPinCoord(0)));
        }
        if (pins[1]->isTerminal()) {
            return checked(adviceForPair(getPinCoord(0), getPinCoord(1)));
        }
        return adviceToStay();
    }
    return checked(adviceFromPins(pins, [](const Pin& pin) { return !pin.isTerminal(); }));
}

AxisAdvice Net::combinedOffsetsFC(unsigned block) const {
    if (placedPinsNum - termNum < 2) {
        return {};
    }
    AxisAdvice advice;
    if (isPlacedPair()) {
        if (pins[0]->getBlockIndex() == block) {
            advice = adviceForPair(getPinCoord(1).y - getPinCoord(0).y);
        } else if (pins[1]->getBlockIndex() == block) {
            advice = adviceForPair(getPinCoord(0).y - getPinCoord(1).y);
        } else {
            advice.stay = true;
        }
    } else {
        AxisScan y;
        for (const Pin* pin : pins) {
            if (!pin->isPlaced() || pin->isTerminal()) {
                continue;
            }
            if (pin->getBlockIndex() == block) {
                y.addOwn(pin->getCoord().y);
            } else {
                y.addOther(pin->getCoord().y);
            }
        }
        advice = y.advice();
    }
    KORVEL_INVARIANT(!(advice.forward && advice.backward),
                     "!(retData.shouldBeMovedUp&&retData.shouldBeMovedDown)");
    return advice;
}

}  // namespace korvel
