#include "anneal/CoolingSchedule.h"

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

constexpr double kHottest = 0.3;

// In final lengths of the first cooling. Where layouts are nearly as short as in the end, nothing
// happens any more.
constexpr double kSettledLength = 1.01;
// Where random layouts are no longer than that, arrangements differ little, and few slow starts are
// worth more than many.
constexpr double kSmoothLength = 2.0;

// Of the range of temperatures, what a cooling goes through at least.
constexpr double kLeastSpan = 0.2;

}  // namespace

// Found by trials on public circuits and made systems.
CoolingSchedule::Shape CoolingSchedule::shapeOf(Kind kind) {
    switch (kind) {
        case Kind::SingleStart:
            return {};
        case Kind::FewDies:
            return {.starts = 2,
                    .reheats = 3,
                    .startsPhase = 0.4,
                    .coldest = 1e-2,
                    .span = {0.0, 0.2, 1.0}};
        case Kind::CoarseLevel:
            return {.starts = 24};
        case Kind::ExpandedStarts:
            return {.starts = 5,
                    .reheats = 3,
                    .firstPhase = 0.05,
                    .startsPhase = 0.5,
                    .startLength = 1.15,
                    .reheatedLength = 1.15,
                    .span = {0.4, 0.5, 1.0}};
        case Kind::Usual:
            break;
    }
    return {
        .starts = 9, .reheats = 6, .firstPhase = 0.05, .startsPhase = 0.5, .span = {0.0, 0.4, 1.0}};
}

CoolingSchedule::CoolingSchedule(Kind kind) : shape(shapeOf(kind)) {}

CoolingSchedule::Point CoolingSchedule::at(double progress) const {
    if (progress < shape.firstPhase) {
        return {0, progress / shape.firstPhase};
    }
    const bool isStarting = progress < shape.startsPhase;
    const double begin = isStarting ? shape.firstPhase : shape.startsPhase;
    const double end = isStarting ? shape.startsPhase : 1.0;
    const unsigned first = !isStarting ? shape.starts : teaches(0) ? 1 : 0;
    const unsigned coolings = isStarting ? shape.starts - first : shape.reheats;
    const double at = (progress - begin) / (end - begin) * coolings;
    return {first + static_cast<unsigned>(at), at - std::floor(at)};
}

double CoolingSchedule::temperature(Point point) const {
    const double begin = teaches(point.cooling)       ? 0.0
                         : isFromStart(point.cooling) ? shape.span.begin
                                                      : shape.span.reheated;
    const double end = teaches(point.cooling) ? 1.0 : shape.span.end;
    return kHottest * std::pow(shape.coldest / kHottest, begin + (end - begin) * point.cooled);
}

void CoolingSchedule::note(Point point, double length) {
    if (teaches(point.cooling)) {
        const auto step = static_cast<unsigned>(point.cooled * kSteps);
        lengths[step] += length;
        notes[step] += 1.0;
    }
}

void CoolingSchedule::learn() {
    // A cooling that is paced by the clock may have skipped its last step.
    if (!teaches(0) || notes.front() == 0.0 || notes.back() == 0.0) {
        return;
    }
    if (!isLonger(0, kSmoothLength)) {
        shape.starts = 3;
        shape.reheats = 2;
        shape.startsPhase = 0.6;
    }
    unsigned end = kSteps;
    while (end > 1 && !isLonger(end - 1, kSettledLength)) {
        --end;
    }
    Span& span = shape.span;
    span.begin = std::min(lastBefore(shape.startLength), 1.0 - kLeastSpan);
    span.reheated = std::min(lastBefore(shape.reheatedLength), 1.0 - kLeastSpan);
    span.end = std::max(static_cast<double>(end) / kSteps, span.reheated + kLeastSpan);
}

// Whether layouts were so many times as long in a step of the first cooling as in the last one.
bool CoolingSchedule::isLonger(unsigned step, double times) const {
    const double settled = lengths.back() / notes.back();
    return lengths[step] > times * settled * notes[step];
}

// From the second step on, steps are passed as long as they are longer; where the last of these
// begins, or 0 if there is none.
double CoolingSchedule::lastBefore(double times) const {
    unsigned step = 0;
    while (step + 1 < kSteps && isLonger(step + 1, times)) {
        ++step;
    }
    return static_cast<double>(step) / kSteps;
}

}  // namespace korvel
