#include "anneal/AnnealRun.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Infinity.h"

namespace korvel {

namespace {

constexpr SlidLayout::Most kAnything{kInfiniteLength, kInfiniteLength};

constexpr int kTrials = 500;  // to see how much random changes weigh

// Moves per die that exact coordinates for a layout are worth; they cost a third of that time at
// most.
constexpr unsigned kWorkOutEvery = 25;
// Layouts so much longer than the best one may be shorter than it with exact coordinates.
constexpr double kPromising = 1.03;
// So many programs can be saved up for later.
constexpr std::uint64_t kSaved = 100;
constexpr unsigned kAdaptEvery = 256;

// The penalty of what lies outside, in parts of the scale.
constexpr double kLeastPenalty = 0.05;
constexpr double kMostPenalty = 100.0;

constexpr double kHopeFades = 1e-3;  // by move
// One in so many moves slides whatever was hoped for, so that hope can rise again.
constexpr unsigned kSlidesAnyway = 16;

}  // namespace

AnnealRun::AnnealRun(const AnnealLevel& level, RandomStream stream, Cooling::Plan plan,
                     Notice notice, std::vector<Start> starts)
    : level(level),
      random(stream),
      notice(std::move(notice)),
      starts(std::move(starts)),
      layout(level.solver.nets(), level.region),
      moves(layout, level.solver.nets(), level.groups, level.region),
      cooling(plan),
      onOneDie(wirelength(level.design, layout.placement()) - layout.length()),
      shortest(kInfiniteLength),
      toldShortest(shortest),
      bestOrders(layout.dieNum()) {
    scramble();
    if (!this->starts.empty()) {
        startFrom(this->starts.front());
    }
}

// A random start, and how much random changes of it weigh.
void AnnealRun::scramble() {
    moves.restart();
    layout.editOrders().shuffle(random);
    for (unsigned die = 0; die < layout.dieNum(); ++die) {
        layout.turn(die, static_cast<Orient>(random.below(kUnmirroredOrients)));
    }
    layout.arrange(random, kAnything);
    layout.keep();
    double changes = 0.0;
    for (int trial = 0; trial < kTrials; ++trial) {
        length = layout.length();
        moves.change(random);
        layout.arrange(random, kAnything);
        layout.keep();
        changes += std::abs(layout.length() - length);
    }
    typicalChange = changes / kTrials;
    judgeAnew();
}

void AnnealRun::startFrom(const Start& start) {
    moves.restart();
    layout.place(start.orders, start.placement);
    layout.arrange(random, kAnything);
    layout.keep();
    judgeAnew();
}

void AnnealRun::judgeAnew() {
    length = layout.length();
    excess = layout.excess();
    penalty = scale();
    hope = slidingHope = length;
    noteBest();
}

void AnnealRun::advance(unsigned moves, double share) {
    const Cooling::Stage now = cooling.stageAt(share);
    for (; stage < now.number; ++stage) {
        begin(stage + 1);
    }
    cooling.note(now, length);
    heat = typicalChange * cooling.heat(now);
    for (unsigned left = moves; left > 0; --left) {
        move();
        ++moveNum;
        if (moveNum % kAdaptEvery == 0) {
            adaptPenalty(now.part);
        }
        if (moveNum % (4 * perWorkOut()) == 0) {
            workOut();
        }
    }
}

void AnnealRun::begin(unsigned number) {
    finish();
    if (number == 1) {
        cooling.learn();
    }
    noteOutcome();
    if (cooling.isStart(number) && !starts.empty()) {
        startFrom(starts[(number - 1) % starts.size()]);
        return;
    }
    if (cooling.isStart(number) || shortest == kInfiniteLength) {
        scramble();
        return;
    }
    layout.place(bestOrders, best);
    length = layout.length();
    excess = 0.0;
    penalty = std::min(penalty, scale());
}

void AnnealRun::noteOutcome() {
    if (excess <= 0.0) {
        ended.push_back({length, {layout.sequences(), layout.placement()}});
    }
}

std::vector<Start> AnnealRun::outcomes() {
    noteOutcome();
    if (ended.empty() && shortest != kInfiniteLength) {
        ended.push_back({shortest, {bestOrders, best}});
    }
    std::stable_sort(ended.begin(), ended.end(),
                     [](const Outcome& a, const Outcome& b) { return a.length < b.length; });
    std::vector<Start> layouts;
    for (const Outcome& outcome : ended) {
        layouts.push_back(outcome.layout);
    }
    return layouts;
}

// The threshold is drawn first: a change that overflows by more than the savings to be hoped for
// is turned down before anything is placed or measured, which is most of them in a full region;
// one that is longer by more than sliding may save, before dies slide.
void AnnealRun::move() {
    const double allowance = -heat * std::log(1.0 - random.fraction());
    const bool slidesAnyway = random.below(kSlidesAnyway) == 0;
    moves.change(random);
    if (layout.arrange(random,
                       {excess + (allowance + hope) / penalty,
                        slidesAnyway ? kInfiniteLength
                                     : length + allowance + penalty * excess + slidingHope})) {
        judge(allowance);
    } else {
        layout.undo();
    }
    hope *= 1.0 - kHopeFades;
    slidingHope *= 1.0 - kHopeFades;
}

void AnnealRun::judge(double allowance) {
    const double newLength = layout.length();
    const double newExcess = layout.excess();
    if (newExcess > excess) {
        hope = std::max(hope, length - newLength);
    }
    const double difference = newLength - length + penalty * (newExcess - excess);
    if (difference > allowance) {
        layout.undo();
        return;
    }
    slidingHope = std::max(slidingHope, layout.savedBySliding());
    moves.wasKept(difference);
    layout.keep();
    length = newLength;
    excess = newExcess;
    noteBest();
    if (excess <= 0.0 && length < kPromising * shortest && moveNum >= nextWorkOut && isNew()) {
        nextWorkOut = std::max(nextWorkOut, moveNum - std::min(moveNum, kSaved * perWorkOut())) +
                      perWorkOut();
        workOut();
    }
}

std::uint64_t AnnealRun::perWorkOut() const {
    return std::uint64_t{kWorkOutEvery} * layout.dieNum();
}

// Whether the layout was not worked out lately: the same ones come again and again.
bool AnnealRun::isNew() {
    std::uint64_t hash = 0;
    for (unsigned rank = 0; rank < layout.dieNum(); ++rank) {
        const unsigned die = layout.sequences().order(SequencePair::Upper)[rank];
        for (const unsigned word : {die, layout.sequences().rank(SequencePair::Lower, die),
                                    orientIndex(layout.orientation(die))}) {
            hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 29;
        }
    }
    return std::exchange(workedOut[hash % workedOut.size()], hash) != hash;
}

void AnnealRun::noteBest() {
    if (excess <= 0.0 && length < shortest) {
        shortest = length;
        bestOrders = layout.sequences();
        best = layout.placement();
        isTold = false;
    }
}

// Some of the time outside, all of the way: illegal layouts are short cuts between legal ones.
void AnnealRun::adaptPenalty(double part) {
    const double easing = part < 0.8 ? 0.98 : 0.9995;
    penalty = std::clamp(penalty * (excess > 0.0 ? 1.02 : easing), kLeastPenalty * scale(),
                         kMostPenalty * scale());
}

// Sliding one die at a time gets stuck where several would have to move together.
void AnnealRun::workOut() {
    if (excess <= 0.0) {
        if (const auto exact = exactly(layout.sequences(), layout.placement())) {
            layout.place(layout.sequences(), *exact);
            length = layout.length();
            noteBest();
        }
    }
    finish();
}

std::optional<Placement> AnnealRun::exactly(const SequencePair& orders,
                                            const Placement& placement) const {
    std::vector<Orient> orients;
    for (const PlacedDie& die : placement) {
        orients.push_back(die.orient);
    }
    return level.solver.solve(orders.relations(), orients);
}

void AnnealRun::finish() {
    if (isTold) {
        return;
    }
    isTold = true;
    const auto exact = exactly(bestOrders, best);
    if (!exact) {
        return;
    }
    best = *exact;
    const double all = wirelength(level.design, best);
    shortest = std::min(shortest, all - onOneDie);
    if (all < toldShortest) {
        toldShortest = all;
        notice(best, all);
    }
}

}  // namespace korvel
