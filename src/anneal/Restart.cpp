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
    : whole(whole),
      coarse(coarse),
      stream(numbers.seed, numbers.restart),
      kind(kind),
      notice(std::move(notice)) {
    if (coarse == nullptr) {
        beginWhole();
    } else {
        coarseAnnealer.emplace(coarse->prepared,
                               RandomStream(numbers.seed, kCoarseStreams + numbers.restart),
                               CoolingSchedule::Kind::CoarseLevel, [](const Placement&) {});
    }
}

void Restart::advance(unsigned moves, double progress) {
    const double coarsePhase = coarse == nullptr ? 0.0 : kCoarsePhase;
    if (progress < coarsePhase) {
        coarseAnnealer->advance(moves, progress / coarsePhase);
        return;
    }
    if (!annealer) {
        beginWhole();
    }
    annealer->advance(moves, (progress - coarsePhase) / (1.0 - coarsePhase));
}

void Restart::beginWhole() {
    LevelAnnealer::Starts starts;
    if (coarseAnnealer) {
        for (const Layout::Snapshot& outcome : coarseAnnealer->outcomes()) {
            starts.push_back(coarse->coarsening.expand(outcome));
        }
        coarseAnnealer.reset();
    }
    annealer.emplace(whole, stream, starts.empty() ? kind : CoolingSchedule::Kind::ExpandedStarts,
                     notice, std::move(starts));
}

// A stop on the coarse level mostly leaves starts whose dies need more room than the region has;
// some moves mend that.
void Restart::finish() {
    if (!annealer) {
        beginWhole();
        annealer->advance(kMendingMoves, kMendingProgress);
    }
    annealer->reportBest();
}

}  // namespace korvel
