#include "anneal/LevelAnnealer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Infinity.h"

namespace korvel {

namespace {

// Random moves that are tried to see how much they change.
constexpr int kTrialMoves = 500;

// Moves per die between two exact programs, which then take a third of the time at most.
constexpr std::uint64_t kMovesPerDieAndProgram = 25;
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
                             CoolingSchedule::Kind kind, Notice notice, Starts starts)
    : prepared(prepared),
      random(stream),
      notice(std::move(notice)),
      starts(std::move(starts)),
      layout(prepared.nets(), prepared.limits),
      moves(layout, prepared),
      acceptance(prepared.region),
      schedule(kind),
      movesPerProgram(kMovesPerDieAndProgram * layout.dieNum()),
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
        beginCooling();
    }
    schedule.note(now, layout.length());
    acceptance.setTemperature(typicalChange * schedule.temperature(now));
    for (unsigned left = moves; left > 0; --left) {
        tryMove();
        ++moveNum;
        if (moveNum % kMovesPerPenalty == 0) {
            acceptance.adaptPenalty(now.cooled);
        }
        if (moveNum % (kProgramsPerRoutine * movesPerProgram) == 0) {
            refine();
        }
    }
}

void LevelAnnealer::beginCooling() {
    reportBest();
    noteOutcome();
    if (++cooling == 1) {
        schedule.learn();
    }
    if (!schedule.isFromStart(cooling) && shortest < kInfiniteLength) {
        layout.place(best);
        acceptance.reheat(layout);
    } else if (schedule.isFromStart(cooling) && !starts.empty()) {
        startFrom(starts[(cooling - 1) % starts.size()]);
    } else {
        startAnywhere();
    }
}

// From a random layout; measures how much random moves change it.
void LevelAnnealer::startAnywhere() {
    layout.editOrders().shuffle(random);
    for (unsigned die = 0; die < layout.dieNum(); ++die) {
        layout.turn(die, orientOf(random.below(kUnmirroredOrients)));
    }
    moves.restart();
    arrangeAndKeep();
    double changes = 0.0;
    for (int trial = 0; trial < kTrialMoves; ++trial) {
        const double before = layout.length();
        moves.change(random);
        arrangeAndKeep();
        changes += std::abs(layout.length() - before);
    }
    typicalChange = changes / kTrialMoves;
    acceptance.restart(layout);
    noteBest();
}

void LevelAnnealer::startFrom(const Layout::Snapshot& start) {
    layout.place(start);
    moves.restart();
    arrangeAndKeep();
    acceptance.restart(layout);
    noteBest();
}

void LevelAnnealer::arrangeAndKeep() {
    layout.arrange(random, {kInfiniteLength, kInfiniteLength});
    layout.keep();
}

void LevelAnnealer::noteOutcome() {
    if (acceptance.isLegal()) {
        ended.emplace(acceptance.length(), layout.snapshot());
    }
}

LevelAnnealer::Starts LevelAnnealer::outcomes() {
    noteOutcome();
    if (ended.empty() && shortest < kInfiniteLength) {
        return {best};
    }
    Starts layouts;
    for (const auto& [length, snapshot] : ended) {
        layouts.push_back(snapshot);
    }
    return layouts;
}

// --- Moves -----------------------------------------------------------------------------------

void LevelAnnealer::tryMove() {
    const double threshold = acceptance.drawThreshold(random);
    const bool slidesAnyway = random.below(kSlidesAnyway) == 0;
    moves.change(random);
    const bool isArranged = layout.arrange(random, acceptance.limits(threshold, slidesAnyway));
    const double cost = isArranged ? acceptance.costOf(layout) : kInfiniteLength;
    if (cost > threshold) {
        layout.undo();
    } else {
        acceptance.accept(layout);
        moves.wasKept(cost);
        layout.keep();
        noteBest();
        refineNearBest();
    }
    acceptance.fade();
}

void LevelAnnealer::noteBest() {
    if (acceptance.isLegal() && acceptance.length() < shortest) {
        shortest = acceptance.length();
        best = layout.snapshot();
        isReported = false;
    }
}

// --- Exact coordinates -----------------------------------------------------------------------

void LevelAnnealer::refineNearBest() {
    if (acceptance.isLegal() && acceptance.length() < kNearBest * shortest &&
        moveNum >= nextProgram && refined.note(layout)) {
        const std::uint64_t saved = std::min(moveNum, kSavedPrograms * movesPerProgram);
        nextProgram = std::max(nextProgram, moveNum - saved) + movesPerProgram;
        refine();
    }
}

// Sliding one die at a time gets stuck where several would have to move together.
void LevelAnnealer::refine() {
    if (acceptance.isLegal()) {
        Layout::Snapshot exact = layout.snapshot();
        if (makeExact(exact)) {
            layout.place(exact);
            acceptance.replace(layout);
            noteBest();
        }
    }
    reportBest();
}

// False if there is no legal placement with these relations; nothing is changed then.
bool LevelAnnealer::makeExact(Layout::Snapshot& snapshot) const {
    std::vector<Orient> orients;
    for (const PlacedDie& die : snapshot.placement) {
        orients.push_back(die.orient);
    }
    auto exact = prepared.solver.solve(snapshot.orders.relations(), orients);
    if (!exact) {
        return false;
    }
    snapshot.placement = *std::move(exact);
    return true;
}

void LevelAnnealer::reportBest() {
    if (std::exchange(isReported, true) || !makeExact(best)) {
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
