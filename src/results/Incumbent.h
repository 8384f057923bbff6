// The best legal placement that a run has found so far, and the one gate to it. All engines and
// threads of a run offer their placements here; each is judged once, by the standard of what the
// program reports, and the judgement stays with the placement, for whoever reports on it.
//
// Shared between threads. `mutex` guards the placement; the length alone is read without it, and
// a stale one is larger, so an offer that it lets pass is compared once more under the mutex.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "base/Infinity.h"
#include "base/Relaxed.h"
#include "exact/ExactCoordinates.h"
#include "judge/Judge.h"

namespace korvel {

// A legal placement.
struct Found {
    Placement placement;
    Judgement judgement;
    std::string finder;  // which engine, in the user's words
    double after = 0.0;  // seconds since the incumbent was made

    double wirelength() const { return judgement.wirelength; }
};

enum class Offer {
    Kept,
    NotShorter,  // than what is known; not judged then
    Illegal,
};

class Incumbent {
public:
    // Called for every improvement, one at a time, on the thread that offered it, with the mutex
    // held: it must not call the incumbent.
    using Notice = std::function<void(const Found&)>;

    // The design must outlive it.
    Incumbent(const Design& design, Region region, Notice notice = {})
        : design(design), region(region), notice(std::move(notice)) {}

    // Keeps the placement if it is legal and shorter than all before. It has a place for each die.
    // Judges before it locks, so threads judge side by side. Any thread.
    Offer offer(const Placement& placement, const std::string& finder);

    // For engines that have decided relations and orientations but know their coordinates only
    // roughly: offers the exact coordinates for these relations and the orientations of `draft`;
    // the draft as it is if there are none, or none that are legal. Any thread; takes a linear
    // program per axis.
    void offerExact(const CoordinateSolver& solver, const Relations& relations,
                    const Placement& draft, const std::string& finder);

    // Infinity before anything is found. Any thread.
    double wirelength() const { return shortest.load(); }

    // Any thread.
    std::optional<Found> best() const;

private:
    const Design& design;
    const Region region;
    const Notice notice;
    Relaxed<double> shortest{kInfiniteLength};  // written under the mutex
    const std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
    mutable std::mutex mutex;
    std::optional<Found> found;  // mutex
};

}  // namespace korvel
