#include "AxisAdvice.h"

#include <cmath>

namespace korvel {

namespace {

constexpr double kSamePosition = 0.01;
constexpr double kClearlyApart = 0.1;

}  // namespace

AxisAdvice adviceForPair(float offset) {
    AxisAdvice advice;
    advice.offset = offset;
    advice.forward = offset > kSamePosition;
    advice.backward = offset < -kSamePosition;
    advice.stay = !advice.forward && !advice.backward;
    return advice;
}

void AxisScan::addOwn(float position) {
    if (position < ownMin) {
        ownMin = position;
        lowEnd = lowEnd || otherMin >= position;
    }
    if (position > ownMax) {
        ownMax = position;
        highEnd = highEnd || position >= otherMax;
    }
}

void AxisScan::addOther(float position) {
    hasOther = true;
    if (position < otherMin) {
        otherMin = position;
        if (position < ownMin && ownMin - position > kClearlyApart) {
            lowEnd = false;
        }
    }
    if (position > otherMax) {
        otherMax = position;
        if (position > ownMax && position - ownMax > kClearlyApart) {
            highEnd = false;
        }
    }
}

AxisAdvice AxisScan::advice() const {
    AxisAdvice advice;
    if (!hasOther) {
        return advice;
    }
    const float toMin = otherMin - ownMin;
    const float toMax = otherMax - ownMax;
    if (lowEnd == highEnd) {
        // Between the net's ends, or around all of its other pins.
        advice.inside = true;
        advice.freeForward = lowEnd ? toMin : toMax;
        advice.freeBackward = lowEnd ? ownMax - otherMax : ownMin - otherMin;
    } else {
        advice.forward = lowEnd;
        advice.backward = highEnd;
        const bool otherIsWider = otherMax - otherMin > ownMax - ownMin;
        advice.offset = otherIsWider == lowEnd ? toMin : toMax;
    }
    advice.stay = std::fabs(toMax) < kSamePosition && std::fabs(toMin) < kSamePosition;
    return advice;
}

}  // namespace korvel
