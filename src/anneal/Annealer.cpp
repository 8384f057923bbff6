#include "anneal/Annealer.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "anneal/OrderedResults.h"
#include "anneal/Restart.h"

namespace korvel {

namespace {

using Clock = std::chrono::steady_clock;

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

// One call of anneal. Thread `t` of `n` makes the restarts t, t + n, t + 2 n and so on.
class Annealer {
public:
    Annealer(const Design& design, Region region, const AnnealOptions& options,
             Incumbent& incumbent, std::stop_token stop, AnnealProgress& progress)
        : options(options),
          offer([&](const Placement& placement) { incumbent.offer(placement, "annealing"); }),
          stop(std::move(stop)),
          progress(progress),
          threads(std::max(1U, options.threads)),
          hasFewDies(design.dies.size() <= kFewDies),
          usualMoves((hasFewDies ? kMovesIfFewDies : kMovesPerDieAndDie) * design.dies.size() *
                     design.dies.size()),
          whole(design, region),
          coarse(hasFewDies ? nullptr : CoarseLevel::of(whole)),
          results(offer) {}

    void run();

private:
    // How much of a restart is over after some moves; 1 or more is its end.
    using Pace = std::function<double(std::uint64_t moves)>;

    void work(unsigned thread);
    void workThroughMoves(unsigned thread);
    void workUntilDeadline(unsigned thread);
    void workUntilStopped(unsigned thread);
    std::uint64_t restart(std::uint64_t number, double partOfUsual, const Pace& pace,
                          const LevelAnnealer::Notice& notice);

    bool isOver() const {
        return stop.stop_requested() || (options.deadline && Clock::now() >= *options.deadline);
    }
    static Pace paceOver(double length) {
        return [length](std::uint64_t moves) { return static_cast<double>(moves) / length; };
    }

    const AnnealOptions& options;
    const LevelAnnealer::Notice offer;
    const std::stop_token stop;
    AnnealProgress& progress;
    const unsigned threads;
    const bool hasFewDies;
    const std::uint64_t usualMoves;  // of a restart
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
        std::max<std::uint64_t>(1, options.iterations / (usualMoves * threads));
    const auto length = static_cast<double>(options.iterations / (rounds * threads) + 1);
    for (std::uint64_t round = 0; round < rounds && !isOver(); ++round) {
        const std::uint64_t number = round * threads + thread;
        std::optional<Placement> result;
        restart(number, length / static_cast<double>(usualMoves), paceOver(length),
                [&result](const Placement& placement) { result = placement; });
        results.add(number, std::move(result));
    }
}

// A short restart, so that there is something early; its speed tells how many more are worth it.
void Annealer::workUntilDeadline(unsigned thread) {
    double part = kFirstRestart;  // of the time that is left
    double partOfUsual = 0.0;
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        const auto begin = Clock::now();
        const std::chrono::duration<double> length = (*options.deadline - begin) * part;
        const std::uint64_t moves = restart(
            number, partOfUsual,
            [begin, length](std::uint64_t) { return (Clock::now() - begin) / length; }, offer);
        const std::chrono::duration<double> took = Clock::now() - begin;
        const std::chrono::duration<double> left = *options.deadline - Clock::now();
        const auto usual =
            took * (static_cast<double>(usualMoves) / static_cast<double>(moves + 1));
        part = 1.0 / std::max(1.0, std::round(left / usual));
        partOfUsual = left / usual * part;
    }
}

// The longer it lasts, the longer are the restarts.
void Annealer::workUntilStopped(unsigned thread) {
    double partOfUsual = kFirstRestart;
    for (std::uint64_t number = thread; !isOver(); number += threads) {
        restart(number, number < threads ? 0.0 : partOfUsual,
                paceOver(partOfUsual * static_cast<double>(usualMoves)), offer);
        partOfUsual *= kStretch;
    }
}

// How much of its usual moves the restart is expected to make decides on the schedule and the level
// to begin on; 0 is for one that is to find something soon. Returns the number of moves.
std::uint64_t Annealer::restart(std::uint64_t number, double partOfUsual, const Pace& pace,
                                const LevelAnnealer::Notice& notice) {
    progress.restarts.fetch_add(1, std::memory_order_relaxed);
    using Kind = CoolingSchedule::Kind;
    const Kind kind = partOfUsual < kSingleStartBelow ? Kind::SingleStart
                      : hasFewDies                    ? Kind::FewDies
                                                      : Kind::Usual;
    Restart restart(whole, partOfUsual < kCoarseLevelFrom ? nullptr : coarse.get(),
                    {options.seed, number}, kind, notice);
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
