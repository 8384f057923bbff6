#include "classic/netlist/Net.h"

#include <cmath>

#include "base/Invariant.h"

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
    placedPinsNum = termNum;
}

void Net::checkPlacedNum(unsigned netDegree, unsigned placedPinsNum) {
    KORVEL_INVARIANT(netDegree >= placedPinsNum, "netDegree >= placedPinsNum");
}

float Net::pairLength() const {
    const Point a = pins[0]->getCoord();
    const Point b = pins[1]->getCoord();
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
}

BoundingBox Net::placedBox() const {
    BoundingBox box;
    for (const Pin* pin : pins) {
        if (pin->isPlaced()) {
            box.add(pin->getCoord());
        }
    }
    return box;
}

float Net::calcCompleteHPWL() {
    checkPlacedNum(declaredDegree, placedPinsNum);
    KORVEL_INVARIANT(placedPinsNum >= termNum, "placedPinsNum >= termNum");
    float length = 0.0F;
    if (isPlacedPair()) {
        length = pairLength();
    } else if (placedPinsNum >= 2) {
        length = placedBox().halfPerimeter();
    }
    unplacePins();
    return length;
}

float Net::calcTermFCHPWL(float factor) {
    checkPlacedNum(declaredDegree, placedPinsNum);
    float length = 0.0F;
    if (isPlacedPair()) {
        length = pairLength();
    } else if (placedPinsNum >= 2) {
        length = placedBox().widthPlusHeight();
        if (declaredDegree > placedPinsNum) {
            length = std::fabs(factor) < 0.001 ? 0.0F : length * factor;
        }
    }
    unplacePins();
    return length;
}

offsetCalcReturn Net::combinedOffsetsToTerms() const {
    if (isPlacedPair()) {
        const Quad offset = positionOf(*pins[1]) - positionOf(*pins[0]);
        if (pins[0]->isTerminal()) {
            return checked(adviceForPair(-offset));
        }
        return pins[1]->isTerminal() ? checked(adviceForPair(offset)) : adviceToStay();
    }
    NetScan scan;
    bool hasTerminal = false;
    for (const Pin* pin : pins) {
        if (pin->isTerminal()) {
            scan.addOther(positionOf(*pin));
            hasTerminal = true;
        } else if (pin->isPlaced()) {
            scan.addOwn(positionOf(*pin));
        }
    }
    return hasTerminal ? checked(scan.advice()) : offsetCalcReturn{};
}

}  // namespace korvel
