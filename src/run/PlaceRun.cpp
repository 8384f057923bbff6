#include "run/PlaceRun.h"

#include <algorithm>
#include <utility>

#include "anneal/Annealer.h"
#include "base/CallAfter.h"
#include "proof/Prover.h"
#include "run/ClassicEngine.h"

namespace korvel {

namespace {

// Far from the seeds that users take one after the other.
constexpr std::uint64_t kOtherSeed = 0x9E3779B97F4A7C15U;

}  // namespace

PlaceRun::PlaceRun(const Design& design, Region region, RunOptions options,
                   Incumbent::Notice notice)
    : design(design),
      region(region),
      options(std::move(options)),
      plan(planFor(design.dies.size(), this->options)),
      limit(this->options.engine == Engine::Classic ? this->options.timeLimit : plan.whole),
      incumbent(design, region, std::move(notice)) {}

double PlaceRun::elapsed() const {
    return std::chrono::duration<double>(RunClock::now() - began).count();
}

void PlaceRun::end(Ending reason) {
    Ending none = Ending::Done;
    ending.compare_exchange_strong(none, reason);
    stopping.request_stop();
}

// As it is, and with what can be won by moving its dies without changing how they lie to one
// another.
void PlaceRun::offerStart(const Placement& start) {
    static const std::string kFinder = "the start placement";
    incumbent.offer(start, kFinder);
    incumbent.offerExact(CoordinateSolver(design, region), Relations::of(design, start), start,
                         kFinder);
}

RunResult PlaceRun::execute() {
    std::jthread timer;
    if (limit) {
        timer = callAfter(clockSpan(*limit), [this] { end(Ending::TimeLimit); });
    }
    if (options.start) {
        offerStart(*options.start);
    }
    RunResult result;
    if (options.engine == Engine::Classic) {
        runClassic(result);
    } else {
        runAuto(result);
    }
    timer = {};
    result.best = incumbent.best();
    result.ending = ending;
    result.timeLimit = limit;
    result.seconds = elapsed();
    return result;
}

void PlaceRun::runClassic(RunResult& result) {
    ClassicEngine engine(design, region, options, incumbent, progress);
    std::optional<RunClock::time_point> deadline;
    if (limit) {
        deadline = began + clockSpan(*limit);
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

void PlaceRun::runAuto(RunResult& result) {
    anneal(result, plan.annealedUntil);
    if (plan.proves && !stopping.stop_requested()) {
        prove(result);
    }
    if (plan.provedUntil && !options.iterations && !stopping.stop_requested()) {
        anneal(result, *plan.whole);
    }
    if (!options.iterations) {
        end(Ending::TimeLimit);  // nothing else ends annealing
    }
}

void PlaceRun::anneal(RunResult& result, double until) {
    AnnealProgress annealing;
    const RunProgress::Phase phase(progress, "annealing", "moves", [&annealing] {
        return RunProgress::Gauge{.count = annealing.iterations};
    });
    AnnealOptions annealOptions;
    // Going on with the same numbers would repeat what was done.
    annealOptions.seed = options.seed + (result.moves > 0 ? kOtherSeed : 0);
    annealOptions.threads = options.threads;
    annealOptions.iterations = options.iterations.value_or(0);
    if (!options.iterations) {
        annealOptions.deadline = began + clockSpan(until);
    }
    korvel::anneal(design, region, annealOptions, incumbent, stopping.get_token(), annealing);
    result.moves += annealing.iterations;
}

void PlaceRun::prove(RunResult& result) {
    ProofProgress proof;
    const RunProgress::Phase phase(progress, "proof", "nodes", [&proof] {
        return RunProgress::Gauge{proof.nodes, proof.shareDone, proof.lowerBound};
    });
    const ProofOptions proofOptions{.threads = options.threads, .gap = options.gap};
    std::stop_source phaseStop;
    const std::stop_callback withTheRun(stopping.get_token(), [&] { phaseStop.request_stop(); });
    std::jthread timer;
    if (plan.provedUntil && !options.iterations) {
        timer = callAfter(began + clockSpan(*plan.provedUntil) - RunClock::now(),
                          [&] { phaseStop.request_stop(); });
    }
    const ProofResult proved =
        korvel::prove(design, region, proofOptions, incumbent, phaseStop.get_token(), proof);
    result.nodes += proved.nodes;
    result.lowerBound = proved.lowerBound;
    result.proofTolerance = proofOptions.tolerance;
    switch (proved.end) {
        case ProofEnd::Proved:
            return end(Ending::Proved);
        case ProofEnd::NoPlacement:
            return end(Ending::NoPlacement);
        case ProofEnd::GapReached:
            return end(Ending::GapReached);
        case ProofEnd::Stopped:
            break;
    }
}

}  // namespace korvel
