#include "AxisAdvice.h"

#include <cmath>

namespace korvel {

namespace {

// An other pin beyond the group's end takes the end from it only by more than this.
constexpr float kClearlyApart = floatBelow(0.1);

AxisAdvice adviceFromMarks(const AxisEnds& own, const AxisEnds& other, bool lowEnd, bool highEnd) {
    AxisAdvice advice;
    const float toMin = other.min - own.min;
    const float toMax = other.max - own.max;
    if (lowEnd == highEnd) {
        // Between the net's ends, or around all of its other pins.
        advice.inside = true;
        advice.freeForward = lowEnd ? toMin : toMax;
        advice.freeBackward = lowEnd ? own.max - other.max : own.min - other.min;
    } else {
        advice.forward = lowEnd;
        advice.backward = highEnd;
        const bool otherIsWider = other.max - other.min > own.max - own.min;
        advice.offset = otherIsWider == lowEnd ? toMin : toMax;
    }
    advice.stay = std::fabs(toMax) <= kSamePosition && std::fabs(toMin) <= kSamePosition;
    return advice;
}

}  // namespace

void AxisScan::addOwn(float position) {
    if (position < own.min) {
        own.min = position;
        lowEnd = lowEnd || other.min >= position;
    }
    if (position > own.max) {
        own.max = position;
        highEnd = highEnd || position >= other.max;
    }
}

void AxisScan::addOther(float position) {
    hasOther = true;
    if (position < other.min) {
        other.min = position;
        if (position < own.min && own.min - position > kClearlyApart) {
            lowEnd = false;
        }
    }
    if (position > other.max) {
        other.max = position;
        if (position > own.max && position - own.max > kClearlyApart) {
            highEnd = false;
        }
    }
}

AxisAdvice AxisScan::advice() const {
    return hasOther ? adviceFromMarks(own, other, lowEnd, highEnd) : AxisAdvice{};
}

bool adviceFromEnds(const AxisEnds& own, const AxisEnds& other, AxisAdvice& advice) {
    const bool lowEnd = own.min <= other.min;
    const bool highEnd = own.max >= other.max;
    const bool orderMatters = own.max <= 0.0F ||
                              (!lowEnd && !(own.min - other.min > kClearlyApart)) ||
                              (!highEnd && !(other.max - own.max > kClearlyApart));
    if (orderMatters) {
        return false;
    }
    advice = adviceFromMarks(own, other, lowEnd, highEnd);
    return true;
}

}  // namespace korvel
