#include "anneal/Restart.h"

#include <utility>

namespace korvel {

namespace {

// Of the schedule, for the coarse level.
constexpr double kCoarseShare = 0.2;

// After a stop on the coarse level: some ten milliseconds, from the best start, half cooled down.
constexpr unsigned kMendingMoves = 10000;
constexpr double kMendingShare = 0.1;

// Streams of random numbers for the coarse level are numbered from here.
constexpr std::uint64_t kCoarseStreams = std::uint64_t{1} << 32;

}  // namespace

std::unique_ptr<const CoarseLevel> CoarseLevel::of(const AnnealLevel& whole) {
    Coarsening coarsening(whole.design, whole.solver.nets());
    if (!coarsening.isWorthwhile()) {
        return nullptr;
    }
    return std::make_unique<const CoarseLevel>(std::move(coarsening), whole.region);
}

Restart::Restart(const AnnealLevel& whole, const CoarseLevel* coarse, Numbers numbers,
                 Cooling::Plan plan, AnnealRun::Notice notice)
    : whole(whole), coarse(coarse), numbers(numbers), plan(plan), notice(std::move(notice)) {
    if (coarse == nullptr) {
        run.emplace(whole, RandomStream(numbers.seed, numbers.restart), plan, this->notice);
    } else {
        coarseRun.emplace(coarse->level,
                          RandomStream(numbers.seed, kCoarseStreams + numbers.restart),
                          Cooling::Plan::Coarse, [](const Placement&, double) {});
    }
}

void Restart::advance(unsigned moves, double share) {
    if (coarse == nullptr) {
        run->advance(moves, share);
    } else if (share < kCoarseShare) {
        coarseRun->advance(moves, share / kCoarseShare);
    } else {
        if (!run) {
            expand();
        }
        run->advance(moves, (share - kCoarseShare) / (1.0 - kCoarseShare));
    }
}

void Restart::expand() {
    std::vector<Start> starts;
    for (const Start& start : coarseRun->outcomes()) {
        starts.push_back(coarse->coarsening.expand(start));
    }
    run.emplace(whole, RandomStream(numbers.seed, numbers.restart),
                starts.empty() ? plan : Cooling::Plan::Expanded, notice, std::move(starts));
    coarseRun.reset();
}

// A stop on the coarse level leaves starts whose dies need more than the region, mostly; some moves
// mend that.
void Restart::finish() {
    if (!run) {
        expand();
        run->advance(kMendingMoves, kMendingShare);
    }
    run->finish();
}

}  // namespace korvel
