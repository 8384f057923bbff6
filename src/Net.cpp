#include "Net.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Invariant.h"

namespace korvel {

namespace {

// Bounding box of pins. Coordinates are assumed not to be negative: the upper ends start at the
// smallest positive normal number, yes, on purpose.
class BoundingBox {
public:
    void add(Point p) {
        minX = std::min(minX, p.x);
        maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y);
        maxY = std::max(maxY, p.y);
    }

    float halfPerimeter() const { return (maxX - minX) + maxY - minY; }
    // Differs from the above in rounding only.
    float widthPlusHeight() const { return (maxX - minX) + (maxY - minY); }

private:
    float minX = std::numeric_limits<float>::max();
    float minY = std::numeric_limits<float>::max();
    float maxX = std::numeric_limits<float>::min();
    float maxY = std::numeric_limits<float>::min();
};

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

void Net::checkCounts() const {
    KORVEL_INVARIANT(netDegree >= placedPinsNum, "netDegree >= placedPinsNum");
    KORVEL_INVARIANT(placedPinsNum >= termNum, "placedPinsNum >= termNum");
}

float Net::pairLength() const {
    const Point a = pins[0]->getCoord();
    const Point b = pins[1]->getCoord();
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
}

float Net::calcPartialHPWL() {
    checkCounts();
    if (placedPinsNum <= 1) {
        unplacePinsUnlessUntouched();
        return 0.0F;
    }
    if (isPlacedPair()) {
        const bool onOneBlock = pins[0]->getBlockIndex() == pins[1]->getBlockIndex();
        const float length = onOneBlock ? 0.0F : pairLength();
        unplacePins();
        return length;
    }
    BoundingBox box;
    const Pin* first = nullptr;
    bool spread = false;
    for (Pin* pin : pins) {
        if (!pin->isPlaced()) {
            continue;
        }
        if (first == nullptr) {
            first = pin;
        } else if (pin->isTerminal() || pin->getBlockIndex() != first->getBlockIndex()) {
            spread = true;
        }
        box.add(pin->getCoord());
    }
    unplacePins();
    return spread ? box.halfPerimeter() : 0.0F;
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
    KORVEL_INVARIANT(netDegree >= placedPinsNum, "netDegree >= placedPinsNum");
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
    KORVEL_INVARIANT(netDegree >= placedPinsNum, "netDegree >= placedPinsNum");
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

offsetCalcReturn Net::combinedOffsetsCalc(unsigned block) const {
    if (isPlacedPair()) {
        if (pins[0]->getBlockIndex() == block) {
            return checked(adviceForPair(getPinCoord(0), getPinCoord(1)));
        }
        if (pins[1]->getBlockIndex() == block) {
            return checked(adviceForPair(getPinCoord(1), getPinCoord(0)));
        }
        return adviceToStay();
    }
    return checked(
        adviceFromPins(pins, [block](const Pin& pin) { return pin.getBlockIndex() == block; }));
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
