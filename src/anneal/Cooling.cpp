#include "anneal/Cooling.h"

#include <algorithm>
#include <cmath>

namespace korvel {

namespace {

constexpr double kStartHeat = 0.3;

// In lengths that the first start ends with. Starts that are good on the whole are to stay so, and
// where layouts are nearly as short as in the end, nothing happens any more.
constexpr double kExpanded = 1.15;
constexpr double kSettled = 1.01;
constexpr double kLeastReheating = 0.2;
// Where random layouts are no longer than that, arrangements differ little, and few slow starts are
// worth more than many.
constexpr double kSmooth = 2.0;

}  // namespace

Cooling::Shape Cooling::shapeOf(Plan plan) {
    switch (plan) {
        case Plan::Single:
            return {};
        case Plan::FewDies:
            return {.starts = 2,
                    .reheats = 3,
                    .startsPart = 0.4,
                    .endHeat = 1e-2,
                    .way = {0.0, 0.2, 1.0}};
        case Plan::Coarse:
            return {.starts = 24};
        case Plan::Expanded:
            return {.starts = 5,
                    .reheats = 3,
                    .firstPart = 0.05,
                    .startsPart = 0.5,
                    .startLength = kExpanded,
                    .reheatedLength = kExpanded,
                    .way = {0.4, 0.5, 1.0}};
        case Plan::Usual:
            break;
    }
    return {
        .starts = 9, .reheats = 6, .firstPart = 0.05, .startsPart = 0.5, .way = {0.0, 0.4, 1.0}};
}

Cooling::Cooling(Plan plan) : shape(shapeOf(plan)) {}

Cooling::Stage Cooling::stageAt(double share) const {
    if (share < shape.firstPart) {
        return {0, share / shape.firstPart};
    }
    const bool isStarting = share < shape.startsPart;
    const double begin = isStarting ? shape.firstPart : shape.startsPart;
    const double end = isStarting ? shape.startsPart : 1.0;
    const unsigned first = !isStarting ? shape.starts : isToTeach(0) ? 1 : 0;
    const unsigned stages = isStarting ? shape.starts - first : shape.reheats;
    const double at = (share - begin) / (end - begin) * stages;
    return {first + static_cast<unsigned>(at), at - std::floor(at)};
}

double Cooling::heat(Stage stage) const {
    const double begin = isToTeach(stage.number) ? 0.0
                         : isStart(stage.number) ? shape.way.begin
                                                 : shape.way.reheated;
    const double end = isToTeach(stage.number) ? 1.0 : shape.way.end;
    return kStartHeat * std::pow(shape.endHeat / kStartHeat, begin + (end - begin) * stage.part);
}

void Cooling::note(Stage stage, double length) {
    if (isToTeach(stage.number)) {
        const auto step = static_cast<unsigned>(stage.part * kSteps);
        lengths[step] += length;
        notes[step] += 1.0;
    }
}

void Cooling::learn() {
    // A run that is paced by the clock may have skipped the last step.
    if (!isToTeach(0) || notes.front() == 0.0 || notes.back() == 0.0) {
        return;
    }
    const double settled = lengths.back() / notes.back();
    const auto isLonger = [&](unsigned step, double times) {
        return lengths[step] > times * settled * notes[step];
    };
    // The last step before which all are longer.
    const auto lastBefore = [&](double times) {
        unsigned step = 0;
        while (step + 1 < kSteps && isLonger(step + 1, times)) {
            ++step;
        }
        return static_cast<double>(step) / kSteps;
    };
    if (!isLonger(0, kSmooth)) {
        shape.starts = 3;
        shape.reheats = 2;
        shape.startsPart = 0.6;
    }
    unsigned end = kSteps;
    while (end > 1 && !isLonger(end - 1, kSettled)) {
        --end;
    }
    shape.way.begin = std::min(lastBefore(shape.startLength), 1.0 - kLeastReheating);
    shape.way.reheated = std::min(lastBefore(shape.reheatedLength), 1.0 - kLeastReheating);
    shape.way.end =
        std::max(static_cast<double>(end) / kSteps, shape.way.reheated + kLeastReheating);
}

}  // namespace korvel
