#include "anneal/LevelAnnealer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Infinity.h"

namespace korvel {

namespace {

constexpr Layout::Limits kNoLimits{kInfiniteLength, kInfiniteLength};

// Random moves that are tried to see how much they change.
constexpr int kTrialMoves = 500;

// Moves per die between two exact programs, which then take a third of the time at most.
constexpr unsigned kMovesPerDieAndProgram = 25;
// The layout at hand is refined once in so many times that, however long it is.
constexpr unsigned kProgramsPerRoutine = 4;
// Layouts so much longer than the best one may be shorter than it with exact coordinates.
constexpr double kNearBest = 1.03;
// Programs that were not needed can be saved up for later, so many of them.
constexpr std::uint64_t kSavedPrograms = 100;

constexpr unsigned kMovesPerPenalty = 256;

// One in so many moves slides whatever it costs before, so that what sliding saves stays known.
constexpr unsigned kSlidesAnyway = 16;

}  // namespace

LevelAnnealer::LevelAnnealer(const PreparedDesign& prepared, RandomStream stream,
                             CoolingSchedule::Kind kind, Notice notice,
                             std::vector<StartLayout> starts)
    : prepared(prepared),
      random(stream),
      notice(std::move(notice)),
      starts(std::move(starts)),
      layout(prepared.nets(), prepared.region),
      moves(layout, prepared),
      acceptance(prepared.region),
      schedule(kind),
      best(layout.snapshot()),
      shortest(kInfiniteLength),
      reportedShortest(kInfiniteLength),
      lengthOnOneDie(wirelength(prepared.design, layout.placement()) - layout.length()) {
    startAnywhere();
    if (!this->starts.empty()) {
        startFrom(this->starts.front());
    }
}

// --- Coolings --------------------------------------------------------------------------------

void LevelAnnealer::advance(unsigned moves, double progress) {
    const CoolingSchedule::Point now = schedule.at(progress);
    while (cooling < now.cooling) {
        beginCooling(++cooling);
    }
    schedule.note(now, layout.length());
    acceptance.setTemperature(typicalChange * schedule.temperature(now));
    for (unsigned left = moves; left > 0; --left) {
        tryMove();
        ++moveNum;
        if (moveNum % kMovesPerPenalty == 0) {
            acceptance.adaptPenalty(now.cooled);
        }
        if (moveNum % (kProgramsPerRoutine * movesPerProgram()) == 0) {
            refine();
        }
    }
}

void LevelAnnealer::beginCooling(unsigned number) {
    reportBest();
    if (number == 1) {
        schedule.learn();
    }
    noteOutcome();
    if (!schedule.isFromStart(number) && shortest < kInfiniteLength) {
        layout.place(best.orders, best.placement);
        acceptance.replace(layout);
        acceptance.limitPenalty();
    } else if (schedule.isFromStart(number) && !starts.empty()) {
        startFrom(starts[(number - 1) % starts.size()]);
    } else {
        startAnywhere();
    }
}

// From a random layout; measures how much random moves change it.
void LevelAnnealer::startAnywhere() {
    moves.restart();
    layout.editOrders().shuffle(random);
    for (unsigned die = 0; die < layout.dieNum(); ++die) {
        layout.turn(die, static_cast<Orient>(random.below(kUnmirroredOrients)));
    }
    arrangeAndKeep();
    double changes = 0.0;
    for (int trial = 0; trial < kTrialMoves; ++trial) {
        const double before = layout.length();
        moves.change(random);
        arrangeAndKeep();
        changes += std::abs(layout.length() - before);
    }
    typicalChange = changes / kTrialMoves;
    restartAcceptance();
}

void LevelAnnealer::startFrom(const StartLayout& start) {
    moves.restart();
    layout.place(start.orders, start.placement);
    arrangeAndKeep();
    restartAcceptance();
}

void LevelAnnealer::arrangeAndKeep() {
    layout.arrange(random, kNoLimits);
    layout.keep();
}

void LevelAnnealer::restartAcceptance() {
    acceptance.restart(layout);
    noteBest();
}

void LevelAnnealer::noteOutcome() {
    if (acceptance.isLegal()) {
        ended.push_back({acceptance.length(), layout.snapshot()});
    }
}

std::vector<StartLayout> LevelAnnealer::outcomes() {
    noteOutcome();
    if (ended.empty() && shortest < kInfiniteLength) {
        ended.push_back({shortest, best});
    }
    std::stable_sort(ended.begin(), ended.end(),
                     [](const Outcome& a, const Outcome& b) { return a.length < b.length; });
    std::vector<StartLayout> layouts;
    for (const Outcome& outcome : ended) {
        layouts.push_back(outcome.layout);
    }
    return layouts;
}

// --- Moves -----------------------------------------------------------------------------------

void LevelAnnealer::tryMove() {
    const double threshold = acceptance.drawThreshold(random);
    const bool slidesAnyway = random.below(kSlidesAnyway) == 0;
    moves.change(random);
    if (layout.arrange(random, acceptance.limits(threshold, slidesAnyway))) {
        acceptOrUndo(threshold);
    } else {
        layout.undo();
    }
    acceptance.fade();
}

void LevelAnnealer::acceptOrUndo(double threshold) {
    const double cost = acceptance.costOf(layout);
    if (cost > threshold) {
        layout.undo();
        return;
    }
    acceptance.accept(layout);
    moves.wasKept(cost);
    layout.keep();
    noteBest();
    if (isWorthRefining()) {
        nextProgram =
            std::max(nextProgram, moveNum - std::min(moveNum, kSavedPrograms * movesPerProgram())) +
            movesPerProgram();
        refine();
    }
}

void LevelAnnealer::noteBest() {
    if (acceptance.isLegal() && acceptance.length() < shortest) {
        shortest = acceptance.length();
        best = layout.snapshot();
        isReported = false;
    }
}

// --- Exact coordinates -----------------------------------------------------------------------

bool LevelAnnealer::isWorthRefining() {
    return acceptance.isLegal() && acceptance.length() < kNearBest * shortest &&
           moveNum >= nextProgram && refined.note(layout);
}

std::uint64_t LevelAnnealer::movesPerProgram() const {
    return std::uint64_t{kMovesPerDieAndProgram} * layout.dieNum();
}

// Sliding one die at a time gets stuck where several would have to move together.
void LevelAnnealer::refine() {
    if (acceptance.isLegal()) {
        StartLayout exact = layout.snapshot();
        if (makeExact(exact.orders, exact.placement)) {
            layout.place(exact.orders, exact.placement);
            acceptance.replace(layout);
            noteBest();
        }
    }
    reportBest();
}

// False if there is no legal placement with these relations; nothing is changed then.
bool LevelAnnealer::makeExact(const SequencePair& orders, Placement& placement) const {
    std::vector<Orient> orients;
    for (const PlacedDie& die : placement) {
        orients.push_back(die.orient);
    }
    auto exact = prepared.solver.solve(orders.relations(), orients);
    if (!exact) {
        return false;
    }
    placement = *std::move(exact);
    return true;
}

void LevelAnnealer::reportBest() {
    if (std::exchange(isReported, true) || !makeExact(best.orders, best.placement)) {
        return;
    }
    const double length = wirelength(prepared.design, best.placement);
    shortest = std::min(shortest, length - lengthOnOneDie);
    if (length < reportedShortest) {
        reportedShortest = length;
        notice(best.placement);
    }
}

}  // namespace korvel
