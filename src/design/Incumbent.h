// The best legal placement that a run has found so far, shared by all engines and threads of the
// run. Engines offer, anybody reads.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "base/Infinity.h"
#include "design/Placement.h"

namespace korvel {

struct Found {
    Placement placement;
    double wirelength;
    std::string finder;  // which engine, in the user's words
};

class Incumbent {
public:
    // `notice` is called for every improvement, one at a time, on the thread that offered it.
    explicit Incumbent(std::function<void(const Found&)> notice = {}) : notice(std::move(notice)) {}

    // Keeps a legal placement if it is shorter than all before; says whether. Any thread.
    bool offer(const Placement& placement, double length, const std::string& finder);

    // Infinity before anything is found. Any thread; a stale value is larger, never smaller.
    double wirelength() const { return shortest.load(std::memory_order_relaxed); }

    std::optional<Found> best() const;

private:
    std::function<void(const Found&)> notice;
    std::atomic<double> shortest{kInfiniteLength};
    mutable std::mutex mutex;
    std::optional<Found> found;  // mutex
};

}  // namespace korvel
