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

// A restart makes so many moves by the square of the number of dies, if time or moves suffice. From
// longer ones less is gained than from further restarts. Few dies are best cooled down slowly.
constexpr std::uint64_t kMovesPerDieAndDie = 4000;
constexpr std::uint64_t kMovesIfFewDies = 10000;
constexpr std::size_t kFewDies = 12;

// With less than this part of its usual moves a restart is for a single start.
constexpr double kSingleStartBelow = 0.4;
// With less than this part there is no time for a coarse level.
constexpr double kCoarseLevelFrom = 0.05;

// Of the time, or of the usual moves, for the first restart of a thread, which is to find something
// soon.
constexpr double kFirstRestart = 0.06;
// Without a deadline, how much longer than the one before a restart is.
constexpr double kStretch = 1.5;

// Offers what restarts found in the order of their numbers, whichever ends first.
class OrderedResults {
public:
    explicit OrderedResults(Incumbent& incumbent) : incumbent(incumbent) {}

    // What the restart found, if anything. Any thread.
    void add(std::uint64_t restart, std::optional<Placement> result) {
        const std::lock_guard lock(mutex);
        waiting.emplace(restart, std::move(result));
        for (; !waiting.empty() && waiting.begin()->first == next; ++next) {
            offerFirst();
        }
    }

    // When no restart runs any more: after a stop, some before the waiting ones never began.
    void offerRest() {
        const std::lock_guard lock(mutex);
        while (!waiting.empty()) {
            offerFirst();
        }
    }

private:
    void offerFirst() {
        if (const auto& first = waiting.begin()->second) {
            incumbent.offer(*first, kFinder);
        }
        waiting.erase(waiting.begin());
    }

    Incumbent& incumbent;
    std::mutex mutex;
    std::map<std::uint64_t, std::optional<Placement>> waiting;  // mutex; by restart
    std::uint64_t next = 0;                                     // mutex; restart to be offered
};

// One call of anneal. Thread `t` of `n` makes the restarts t, t + n, t + 2 n and so on.
class Annealer {
public:
    Annealer(const Design& design, Region region, const AnnealOptions& options,
             Incumbent& incumbent, std::stop_token stop, AnnealProgress& progress)
        : options(options),
          incumbent(incumbent),
          stop(std::move(stop)),
          progress(progress),
          threads(std::max(1U, options.threads)),
          dieNum(design.dies.size()),
          whole(design, region),
          coarse(hasFewDies() ? nullptr : CoarseLevel::of(whole)),
          results(incumbent) {}

    void run();

private:
    // How much of a restart is over after some moves; 1 or more is its end.
    using Pace = std::function<double(std::uint64_t moves)>;

    void work(unsigned thread);
    void workThroughMoves(unsigned thread);
    void workUntilDeadline(unsigned thread);
    void workUntilStopped(unsigned thread);
    std::uint64_t restart(std::uint64_t number, double expectedMoves, const Pace& pace,
                          const LevelAnnealer::Notice& notice);
    LevelAnnealer::Notice offering() {
        return [this](const Placement& placement) { incumbent.offer(placement, kFinder); };
    }

    bool isOver() const {
        return stop.stop_requested() || (options.deadline && Clock::now() >= *options.deadline);
    }
    CoolingSchedule::Kind scheduleFor(double partOfUsual) const {
        return partOfUsual < kSingleStartBelow ? CoolingSchedule::Kind::SingleStart
               : hasFewDies()                  ? CoolingSchedule::Kind::FewDies
                                               : CoolingSchedule::Kind::Usual;
    }
    bool hasFewDies() const { return dieNum <= kFewDies; }
    std::uint64_t usualMoves() const {
        return (hasFewDies() ? kMovesIfFewDies : kMovesPerDieAndDie) * dieNum * dieNum;
    }

    const AnnealOptions& options;
    Incumbent& incumbent;
    const std::stop_token stop;
    AnnealProgress& progress;
    const unsigned threads;
    const std::size_t dieNum;
    const PreparedDesign whole;
    const std::unique_ptr<const CoarseLevel> coarse;  // null if it is not worth it
    OrderedResults results;                           // with a number of moves
};

void Annealer::run() {
    {
        std::vector<std::jthread> others;
        for (unsigned thread = 1; thread < threads; ++thread) {
            others.emplace_back([this, thread] { work(thread); });
        }
        work(0);
    }
    results.offerRest();
}

void Annealer::work(unsigned thread) {
    if (options.iterations > 0) {
        workThroughMoves(thread);
    } else if (options.deadline) {
        workUntilDeadline(thread);
    } else {
        workUntilStopped(thread);
    }
}

// Equal restarts, as many on every thread.
void Annealer::workThroughMoves(unsigned thread) {
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
            [&result](const Placement& placement) { result = placement; });
        results.add(number, std::move(result));
    }
}

// A short restart, so that there is something early; its speed tells how many more are worth it.
void Annealer::workUntilDeadline(unsigned thread) {
    double part = kFirstRestart;  // of the time that is left
    double expectedMoves = 0.0;
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        const auto begin = Clock::now();
        const std::chrono::duration<double> length = (*options.deadline - begin) * part;
        const std::uint64_t moves = restart(
            number, expectedMoves,
            [begin, length](std::uint64_t) { return (Clock::now() - begin) / length; }, offering());
        const std::chrono::duration<double> took = Clock::now() - begin;
        const std::chrono::duration<double> left = *options.deadline - Clock::now();
        const auto usual =
            took * (static_cast<double>(usualMoves()) / static_cast<double>(moves + 1));
        part = 1.0 / std::max(1.0, std::round(left / usual));
        expectedMoves = left / usual * part * static_cast<double>(usualMoves());
    }
}

// The longer it lasts, the longer are the restarts.
void Annealer::workUntilStopped(unsigned thread) {
    double length = kFirstRestart * static_cast<double>(usualMoves());
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        restart(
            number, number < threads ? 0.0 : length,
            [length](std::uint64_t moves) { return static_cast<double>(moves) / length; },
            offering());
        length *= kStretch;
    }
}

// The expected number of moves decides on the schedule and the level to begin on; 0 is for a
// restart that is to find something soon. Returns the number of moves.
std::uint64_t Annealer::restart(std::uint64_t number, double expectedMoves, const Pace& pace,
                                const LevelAnnealer::Notice& notice) {
    progress.restarts.fetch_add(1, std::memory_order_relaxed);
    const double part = expectedMoves / static_cast<double>(usualMoves());
    Restart restart(whole, part < kCoarseLevelFrom ? nullptr : coarse.get(), {options.seed, number},
                    scheduleFor(part), notice);
    std::uint64_t moves = 0;
    while (!isOver()) {
        const double done = pace(moves);
        if (done >= 1.0) {
            break;
        }
        restart.advance(kStride, done);
        moves += kStride;
        progress.iterations.fetch_add(kStride, std::memory_order_relaxed);
    }
    restart.finish();
    return moves;
}

}  // namespace

void anneal(const Design& design, Region region, const AnnealOptions& options, Incumbent& incumbent,
            std::stop_token stop, AnnealProgress& progress) {
    Annealer(design, region, options, incumbent, std::move(stop), progress).run();
}

}  // namespace korvel
