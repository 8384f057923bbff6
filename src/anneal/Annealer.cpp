#include "anneal/Annealer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "anneal/Restart.h"

namespace korvel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kFinder = "annealing";

// Moves between looks at the clock and at the stop.
constexpr unsigned kStride = 64;

// A run makes so many moves by the square of the number of dies, if the time or the moves are not
// shared out otherwise; from longer ones less is gained than from further restarts. Few dies
// are best cooled down slowly.
constexpr std::uint64_t kMovesPerDieAndDie = 4000;
constexpr std::uint64_t kMovesIfFewDies = 10000;
constexpr std::size_t kFewDies = 12;

// With less than this part of its usual moves a run is for one start only.
constexpr double kSinglePart = 0.4;

// With less than this part there is no time for a coarse level.
constexpr double kCoarsePart = 0.05;

// Of the time, or of the usual moves, for the first restart of a thread.
constexpr double kFirstShare = 0.06;
// Without a deadline, how much longer than the one before a restart is.
constexpr double kStretch = 1.5;

// One call of anneal: what its threads share, and what each of them does.
class Annealing {
public:
    Annealing(const Design& design, Region region, const AnnealOptions& options,
              Incumbent& incumbent, std::stop_token stop, AnnealProgress& progress)
        : design(design),
          options(options),
          incumbent(incumbent),
          stop(std::move(stop)),
          progress(progress),
          level(design, region),
          coarse(hasFewDies() ? nullptr : CoarseLevel::of(level)),
          threads(std::max(1U, options.threads)) {}

    void run();

private:
    // The share of a restart's schedule that is over after some moves; 1 or more is its end.
    using Pace = std::function<double(std::uint64_t moves)>;

    void work(unsigned thread);
    void workThrough(unsigned thread);
    void workUntilDeadline(unsigned thread);
    void workUntilStopped(unsigned thread);
    std::uint64_t restart(std::uint64_t number, double expectedMoves, const Pace& pace,
                          const AnnealRun::Notice& notice);
    AnnealRun::Notice offering() {
        return [this](const Placement& placement, double) { incumbent.offer(placement, kFinder); };
    }
    void end(std::uint64_t number, const std::optional<Placement>& result);

    bool isOver() const {
        return stop.stop_requested() || (options.deadline && Clock::now() >= *options.deadline);
    }
    Cooling::Plan planFor(double partOfUsual) const {
        return partOfUsual < kSinglePart ? Cooling::Plan::Single
               : hasFewDies()            ? Cooling::Plan::FewDies
                                         : Cooling::Plan::Usual;
    }
    bool hasFewDies() const { return design.dies.size() <= kFewDies; }
    std::uint64_t usualMoves() const {
        return (hasFewDies() ? kMovesIfFewDies : kMovesPerDieAndDie) * design.dies.size() *
               design.dies.size();
    }

    const Design& design;
    const AnnealOptions& options;
    Incumbent& incumbent;
    const std::stop_token stop;
    AnnealProgress& progress;
    const AnnealLevel level;
    const std::unique_ptr<const CoarseLevel> coarse;
    const unsigned threads;

    std::mutex mutex;
    std::map<std::uint64_t, std::optional<Placement>> ended;  // mutex; restarts after one that runs
    std::uint64_t nextToOffer = 0;                            // mutex
};

void Annealing::run() {
    {
        std::vector<std::jthread> others;
        for (unsigned thread = 1; thread < threads; ++thread) {
            others.emplace_back([this, thread] { work(thread); });
        }
        work(0);
    }
    // After a stop some restarts before these have not begun.
    for (const auto& [number, result] : ended) {
        if (result) {
            incumbent.offer(*result, kFinder);
        }
    }
}

void Annealing::work(unsigned thread) {
    if (options.iterations > 0) {
        workThrough(thread);
    } else if (options.deadline) {
        workUntilDeadline(thread);
    } else {
        workUntilStopped(thread);
    }
}

// Equal restarts, as many on every thread.
void Annealing::workThrough(unsigned thread) {
    const std::uint64_t rounds =
        std::max<std::uint64_t>(1, options.iterations / (usualMoves() * threads));
    const std::uint64_t length = options.iterations / (rounds * threads) + 1;
    for (std::uint64_t round = 0; round < rounds && !isOver(); ++round) {
        const std::uint64_t number = round * threads + thread;
        std::optional<Placement> result;
        restart(
            number, static_cast<double>(length),
            [length](std::uint64_t moves) {
                return static_cast<double>(moves) / static_cast<double>(length);
            },
            [&result](const Placement& placement, double) { result = placement; });
        end(number, result);
    }
}

// A short restart, so that there is something early; its speed tells how many more are worth it.
void Annealing::workUntilDeadline(unsigned thread) {
    double share = kFirstShare;
    double expected = 0.0;
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        const auto begin = Clock::now();
        const std::chrono::duration<double> length = (*options.deadline - begin) * share;
        const std::uint64_t moves = restart(
            number, expected,
            [begin, length](std::uint64_t) { return (Clock::now() - begin) / length; }, offering());
        const std::chrono::duration<double> took = Clock::now() - begin;
        const std::chrono::duration<double> left = *options.deadline - Clock::now();
        const auto usual =
            took * (static_cast<double>(usualMoves()) / static_cast<double>(moves + 1));
        share = 1.0 / std::max(1.0, std::round(left / usual));
        expected = left / usual * share * static_cast<double>(usualMoves());
    }
}

// The longer it lasts, the longer are the restarts.
void Annealing::workUntilStopped(unsigned thread) {
    double length = kFirstShare * static_cast<double>(usualMoves());
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        restart(
            number, number < threads ? 0.0 : length,
            [length](std::uint64_t moves) { return static_cast<double>(moves) / length; },
            offering());
        length *= kStretch;
    }
}

// Without an expected number of moves the restart is to find something soon. Returns the number of
// moves.
std::uint64_t Annealing::restart(std::uint64_t number, double expectedMoves, const Pace& pace,
                                 const AnnealRun::Notice& notice) {
    progress.restarts.fetch_add(1, std::memory_order_relaxed);
    const double part = expectedMoves / static_cast<double>(usualMoves());
    const Cooling::Plan plan = planFor(part);
    Restart run(level, part < kCoarsePart ? nullptr : coarse.get(), {options.seed, number}, plan,
                notice);
    std::uint64_t moves = 0;
    while (!isOver()) {
        const double share = pace(moves);
        if (share >= 1.0) {
            break;
        }
        run.advance(kStride, share);
        moves += kStride;
        progress.iterations.fetch_add(kStride, std::memory_order_relaxed);
    }
    run.finish();
    return moves;
}

void Annealing::end(std::uint64_t number, const std::optional<Placement>& result) {
    const std::lock_guard lock(mutex);
    ended.emplace(number, result);
    for (; !ended.empty() && ended.begin()->first == nextToOffer; ++nextToOffer) {
        if (const auto& first = ended.begin()->second) {
            incumbent.offer(*first, kFinder);
        }
        ended.erase(ended.begin());
    }
}

}  // namespace

void anneal(const Design& design, Region region, const AnnealOptions& options, Incumbent& incumbent,
            std::stop_token stop, AnnealProgress& progress) {
    Annealing(design, region, options, incumbent, std::move(stop), progress).run();
}

}  // namespace korvel
