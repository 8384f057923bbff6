#include "run/Run.h"

#include <algorithm>
#include <utility>

#include "run/ClassicEngine.h"

namespace korvel {

Run::Run(const Design& design, Region region, RunOptions options, Notice notice)
    : design(design),
      options(std::move(options)),
      notice(std::move(notice)),
      incumbent([this](const Found& found) { improved(found); }),
      results(design, region, incumbent),
      region(region) {}

double Run::elapsed() const {
    return std::chrono::duration<double>(RunClock::now() - began).count();
}

void Run::end(Ending reason) {
    Ending none = Ending::Exhausted;
    ending.compare_exchange_strong(none, reason);
    stopping.request_stop();
}

void Run::improved(const Found& found) {
    const double seconds = elapsed();
    foundAfter = seconds;
    if (notice) {
        notice(found, seconds);
    }
}

RunResult Run::execute() {
    began = RunClock::now();
    std::optional<StopTimer> timer;
    if (options.timeLimit) {
        timer.emplace(began + clockSpan(*options.timeLimit), [this] { end(Ending::TimeLimit); });
    }
    if (options.start) {
        results.offer(*options.start, "the start placement");
    }
    RunResult result;
    runClassic(result);
    timer.reset();
    result.best = incumbent.best();
    result.foundAfter = foundAfter;
    result.ending = ending;
    result.seconds = elapsed();
    return result;
}

void Run::runClassic(RunResult& result) {
    ClassicEngine engine(design, region, options, results, progress);
    std::optional<RunClock::time_point> deadline;
    if (options.timeLimit) {
        deadline = began + clockSpan(*options.timeLimit);
    }
    result.passes = engine.run(deadline, stopping.get_token());
    for (const PassFigures& pass : result.passes) {
        result.nodes += pass.nodes;
    }
    if (!std::all_of(result.passes.begin(), result.passes.end(),
                     [](const PassFigures& pass) { return pass.exhausted; })) {
        end(Ending::TimeLimit);  // of a stage
    }
}

}  // namespace korvel
