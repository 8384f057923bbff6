// One run of `place`: takes a design and options, lets the engines work, and ends when they are
// done, at the time limit, or when it is asked to.
//
// Shared between threads: the thread that executes the run, those of the engines, the timer of the
// limit, the signal watch, and whoever shows how the run stands. Incumbent and RunProgress guard
// themselves, the stop source is made for threads, `ending` is atomic, and the rest does not change
// after construction.
#pragma once

#include <atomic>
#include <optional>
#include <stop_token>

#include "run/AutoPlan.h"
#include "run/RunProgress.h"
#include "run/RunResult.h"

namespace korvel {

class PlaceRun {
public:
    // The design must outlive it. The notice is of every new best placement, from any thread.
    PlaceRun(const Design& design, Region region, RunOptions options,
             Incumbent::Notice notice = {});

    // Works until the end, on this thread and on those that the options allow. Call it once.
    RunResult execute();

    // Ends the run with what it has; any thread, also before execute().
    void interrupt() { end(Ending::Interrupted); }

    // For those who watch, from any thread.
    const RunProgress& getProgress() const { return progress; }
    std::optional<Found> best() const { return incumbent.best(); }
    double elapsed() const;
    std::optional<double> timeLimit() const { return limit; }

private:
    void end(Ending reason);
    void offerStart(const Placement& start);
    void runClassic(RunResult& result);
    void runAuto(RunResult& result);
    void anneal(RunResult& result, double until);
    void prove(RunResult& result);

    const Design& design;
    const Region region;
    const RunOptions options;
    const AutoPlan plan;
    const std::optional<double> limit;  // seconds
    const RunClock::time_point began = RunClock::now();
    Incumbent incumbent;
    RunProgress progress;
    std::stop_source stopping;
    std::atomic<Ending> ending{Ending::Done};  // the first reason stays
};

}  // namespace korvel
