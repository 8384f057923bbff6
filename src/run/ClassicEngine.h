// The classic engine under a run: the same tables, the same passes, silent. Every new best node of
// its search that has all dies is offered as a placement.
//
// Shared with the workers of a search, which call improved() and worked(): the tally of the pass,
// which guards itself, and `passCutShort`, which is atomic. All else the main thread alone changes,
// while there are no workers.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <stop_token>

#include "classic/Placer.h"
#include "exact/ExactCoordinates.h"
#include "run/RunProgress.h"
#include "run/RunResult.h"

namespace korvel {

// The figures of one pass, while its workers add to them and others watch.
//
// Shared between threads. `mutex` guards the best length and the number of improvements; the sums
// of nodes and shares are atomic, and a watcher may find one of them ahead of the other.
class PassTally {
public:
    PassTally(std::string name, unsigned dies) : pass{.name = std::move(name), .dies = dies} {}

    const std::string& getName() const { return pass.name; }
    RunClock::time_point getBegin() const { return began; }

    // A worker has found a node of this length. False for one that comes late, when another worker
    // has told of a shorter or equally long one; it does not count. Any thread.
    bool improved(float length);

    // A worker has taken so many nodes, and closed that share of the search tree. Any thread.
    void worked(std::uint64_t moreNodes, double moreShare);

    // Any thread.
    RunProgress::Gauge gauge() const;

    // Main thread, when no worker is left.
    PassFigures figures(bool exhausted) const;

private:
    const RunClock::time_point began = RunClock::now();
    std::atomic<std::uint64_t> nodes{0};
    std::atomic<double> share{0.0};
    std::mutex mutex;
    PassFigures pass;  // its length and improvements: mutex; its name and dies never change
};

class ClassicEngine : private SearchObserver {
public:
    // All but the options must outlive it. With a start, only what is shorter is looked for; a
    // design that is placed in stages uses it for nothing.
    ClassicEngine(const Design& design, Region region, const RunOptions& options,
                  Incumbent& incumbent, RunProgress& progress);

    // Runs all passes; with a deadline, each stage gets an equal part of the time that is left. It
    // ends soon after `stop`, and not by the deadline alone. Call it once.
    std::vector<PassFigures> run(std::optional<RunClock::time_point> deadline,
                                 const std::stop_token& stop);

private:
    void passBegins(unsigned blocks) override;
    void passEnds() override;
    void improved(const BBNode& node, const WorkingPlacement& placement) override;
    bool worked(std::uint64_t nodes, double share) override;

    std::string passName(unsigned blocks) const;
    unsigned dieOf(unsigned block) const {
        return static_cast<unsigned>(placer.netlist.blocks[block].getOrigIndex());
    }
    Placement draftOf(const BBNode& node, const WorkingPlacement& placement) const;
    Relations relationsOf(const BBNode& node, const Placement& draft) const;

    const Design& design;
    const CoordinateSolver solver;
    Incumbent& incumbent;
    RunProgress& progress;
    std::ostream silence{nullptr};
    Placer placer;
    std::stop_token stop;
    std::optional<RunClock::time_point> deadline;
    std::vector<PassFigures> passes;  // that have ended

    // Of the pass at hand.
    std::optional<PassTally> tally;
    std::optional<RunProgress::Phase> phase;
    std::optional<RunClock::time_point> passDeadline;
    std::atomic<bool> passCutShort{false};
};

}  // namespace korvel
