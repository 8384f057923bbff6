// The figures of one pass of the classic engine, while its workers add to them and others watch.
//
// Shared between threads. `mutex` guards the best length and the number of improvements; the sums
// of nodes and shares are atomic, and a watcher may find one of them ahead of the other.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "run/RunClock.h"
#include "run/RunProgress.h"
#include "run/RunResult.h"

namespace korvel {

class PassTally {
public:
    PassTally(std::string name, unsigned dies) : name(std::move(name)), dies(dies) {}

    const std::string& getName() const { return name; }
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
    const std::string name;
    const unsigned dies;
    const RunClock::time_point began = RunClock::now();
    std::atomic<std::uint64_t> nodes{0};
    std::atomic<double> share{0.0};
    std::mutex mutex;
    std::optional<float> bestLength;  // mutex
    unsigned improvements = 0;        // mutex
};

}  // namespace korvel
