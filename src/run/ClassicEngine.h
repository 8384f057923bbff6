// The classic search under a run: the same tables, the same passes, silent. Every new best node of
// the search goes to the incumbent as a legal placement.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <stop_token>

#include "classic/Placer.h"
#include "run/LegalResults.h"
#include "run/RunProgress.h"
#include "run/RunResult.h"

namespace korvel {

class ClassicEngine : private SearchObserver {
public:
    // All but the options must outlive it. With a start, only what is shorter is looked for; a
    // design that is placed in stages uses it for nothing.
    ClassicEngine(const Design& design, Region region, const RunOptions& options,
                  LegalResults& results, RunProgress& progress);

    // Runs all passes; with a deadline, stages share the time to it so that the last one is
    // reached. It ends soon after `stop`, and not by the deadline alone. Call it once.
    std::vector<PassFigures> run(std::optional<RunClock::time_point> deadline,
                                 const std::stop_token& stop);

private:
    void passBegins(unsigned blocks) override;
    void searchBegins() override;
    unsigned nextStage(unsigned blocks) const override;
    void passEnds() override;
    void improved(const BBNode& node, const WorkingPlacement& placement) override;
    bool worked(std::uint64_t nodes, double share) override;

    unsigned stagesAfter(unsigned blocks) const;
    RunClock::duration shareOfStage(unsigned blocks) const;
    std::string passName(unsigned blocks) const;
    Placement draftOf(const BBNode& node, const WorkingPlacement& placement) const;
    Relations relationsOf(const BBNode& node, const Placement& draft) const;
    RunProgress::Gauge gauge() const;

    const Design& design;
    LegalResults& results;
    RunProgress& progress;
    std::ostream silence{nullptr};
    Placer placer;
    std::stop_token stop;
    std::optional<RunClock::time_point> deadline;
    std::vector<PassFigures> passes;
    std::mutex bestMutex;  // while workers live, of the last pass's best length and improvements

    // Of the current pass.
    std::optional<RunProgress::Phase> phase;
    RunClock::time_point passBegan;
    RunClock::duration leastTime{};  // to its first node, or to its search
    std::optional<RunClock::time_point> passDeadline;
    std::atomic<std::uint64_t> passNodes{0};
    std::atomic<double> passShare{0.0};
    std::atomic<bool> passEndedEarly{false};
};

}  // namespace korvel
