#include "anneal/AnnealRun.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

// Temperatures in parts of what a random change makes of a random layout.
constexpr double kStartHeat = 0.1;
constexpr double kEndHeat = 5e-4;
constexpr int kTrials = 500;

// Between exact coordinates for the layout at hand. They cost as much as a few hundred moves.
constexpr unsigned kWorkOutEvery = 10000;
constexpr unsigned kAdaptEvery = 1024;

// The penalty of what lies outside, in parts of the scale.
constexpr double kLeastPenalty = 0.05;
constexpr double kMostPenalty = 100.0;

constexpr double kHopeFades = 1e-3;  // by move

}  // namespace

AnnealRun::AnnealRun(const Design& design, const CoordinateSolver& solver, Region region,
                     RandomStream stream, Notice notice)
    : design(design),
      solver(solver),
      random(stream),
      notice(std::move(notice)),
      region(region),
      layout(solver.nets(), region),
      moves(layout, region),
      onOneDie(wirelength(design, layout.placement()) - layout.length()),
      shortest(std::numeric_limits<double>::infinity()),
      toldShortest(shortest),
      bestOrders(layout.dieNum()) {
    scramble();
}

// A random start, and how much random changes of it weigh.
void AnnealRun::scramble() {
    const double everything = std::numeric_limits<double>::infinity();
    layout.editOrders().shuffle(random);
    for (unsigned die = 0; die < layout.dieNum(); ++die) {
        layout.turn(die, static_cast<Orient>(random.below(kUnmirroredOrients)));
    }
    layout.arrange(random, everything);
    layout.keep();
    double changes = 0.0;
    for (int trial = 0; trial < kTrials; ++trial) {
        length = layout.length();
        moves.change(random);
        layout.arrange(random, everything);
        layout.keep();
        changes += std::abs(layout.length() - length);
    }
    length = layout.length();
    excess = layout.excess();
    startHeat = kStartHeat * changes / kTrials;
    penalty = scale();
    hope = length;
}

void AnnealRun::advance(unsigned moves, double share) {
    heat = startHeat * std::pow(kEndHeat / kStartHeat, share);
    for (unsigned left = moves; left > 0; --left) {
        move();
        ++moveNum;
        if (moveNum % kAdaptEvery == 0) {
            adaptPenalty(share);
        }
        if (moveNum % kWorkOutEvery == 0) {
            workOut();
        }
    }
}

// The threshold is drawn first: a change that overflows by more than the savings to be hoped for
// is turned down before anything is placed or measured, which is most of them in a full region.
void AnnealRun::move() {
    const double allowance = -heat * std::log(1.0 - random.fraction());
    moves.change(random);
    if (!layout.arrange(random, excess + (allowance + hope) / penalty)) {
        layout.undo();
    } else {
        judge(allowance);
    }
    hope *= 1.0 - kHopeFades;
}

void AnnealRun::judge(double allowance) {
    const double newLength = layout.length();
    const double newExcess = layout.excess();
    if (newExcess > excess) {
        hope = std::max(hope, length - newLength);
    }
    if (newLength - length + penalty * (newExcess - excess) > allowance) {
        layout.undo();
        return;
    }
    layout.keep();
    length = newLength;
    excess = newExcess;
    if (excess <= 0.0 && length < shortest) {
        shortest = length;
        bestOrders = layout.sequences();
        best = layout.placement();
        isTold = false;
    }
}

// Some of the time outside, all of the way: illegal layouts are short cuts between legal ones.
void AnnealRun::adaptPenalty(double share) {
    const double easing = share < 0.8 ? 0.995 : 0.9995;
    penalty = std::clamp(penalty * (excess > 0.0 ? 1.01 : easing), kLeastPenalty * scale(),
                         kMostPenalty * scale());
}

void AnnealRun::workOut() {
    finish();
    if (excess > 0.0) {
        return;
    }
    std::vector<Orient> orients;
    for (unsigned die = 0; die < layout.dieNum(); ++die) {
        orients.push_back(layout.orientation(die));
    }
    if (const auto exact = solver.solve(layout.sequences().relations(), orients)) {
        layout.place(*exact);
        length = layout.length();
    }
}

void AnnealRun::finish() {
    if (isTold) {
        return;
    }
    isTold = true;
    std::vector<Orient> orients;
    for (const PlacedDie& die : best) {
        orients.push_back(die.orient);
    }
    const auto exact = solver.solve(bestOrders.relations(), orients);
    if (!exact) {
        return;
    }
    const double all = wirelength(design, *exact);
    shortest = std::min(shortest, all - onOneDie);
    if (all < toldShortest) {
        toldShortest = all;
        notice(*exact, all);
    }
}

}  // namespace korvel
