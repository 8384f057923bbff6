#include "anneal/Restart.h"

#include <utility>

namespace korvel {

namespace {

// Of a restart, for the coarse level.
constexpr double kCoarsePhase = 0.2;

// After a stop on the coarse level: some ten milliseconds, from the best start, warm enough for
// dies to find their way past one another.
constexpr unsigned kMendingMoves = 10000;
constexpr double kMendingProgress = 0.1;

// The coarse level has streams of its own, numbered from here.
constexpr std::uint64_t kCoarseStreams = std::uint64_t{1} << 32;

}  // namespace

std::unique_ptr<const CoarseLevel> CoarseLevel::of(const PreparedDesign& whole) {
    Coarsening coarsening(whole.design, whole.nets());
    if (!coarsening.isWorthwhile()) {
        return nullptr;
    }
    return std::make_unique<const CoarseLevel>(std::move(coarsening), whole.region);
}

Restart::Restart(const PreparedDesign& whole, const CoarseLevel* coarse, Numbers numbers,
                 CoolingSchedule::Kind kind, LevelAnnealer::Notice notice)
    : whole(whole), coarse(coarse), numbers(numbers), kind(kind), notice(std::move(notice)) {
    if (coarse == nullptr) {
        annealer.emplace(whole, RandomStream(numbers.seed, numbers.restart), kind, this->notice);
    } else {
        coarseAnnealer.emplace(coarse->prepared,
                               RandomStream(numbers.seed, kCoarseStreams + numbers.restart),
                               CoolingSchedule::Kind::CoarseLevel, [](const Placement&) {});
    }
}

void Restart::advance(unsigned moves, double progress) {
    if (coarse == nullptr) {
        annealer->advance(moves, progress);
    } else if (progress < kCoarsePhase) {
        coarseAnnealer->advance(moves, progress / kCoarsePhase);
    } else {
        if (!annealer) {
            expand();
        }
        annealer->advance(moves, (progress - kCoarsePhase) / (1.0 - kCoarsePhase));
    }
}

void Restart::expand() {
    std::vector<StartLayout> starts;
    for (const StartLayout& outcome : coarseAnnealer->outcomes()) {
        starts.push_back(coarse->coarsening.expand(outcome));
    }
    annealer.emplace(whole, RandomStream(numbers.seed, numbers.restart),
                     starts.empty() ? kind : CoolingSchedule::Kind::ExpandedStarts, notice,
                     std::move(starts));
    coarseAnnealer.reset();
}

// A stop on the coarse level mostly leaves starts whose dies need more room than the region has;
// some moves mend that.
void Restart::finish() {
    if (!annealer) {
        expand();
        annealer->advance(kMendingMoves, kMendingProgress);
    }
    annealer->reportBest();
}

}  // namespace korvel
