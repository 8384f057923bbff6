// One restart of the annealer. A design of hosts and satellites is annealed without its satellites
// first, again and again, and the run on the whole design starts from the best of these layouts;
// any other design has the run alone.
// Owned and used by one thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "anneal/AnnealRun.h"
#include "anneal/Coarsening.h"

namespace korvel {

// The design without its satellites, prepared for runs. Stays where it is made.
struct CoarseLevel {
    CoarseLevel(Coarsening coarsening, Region region)
        : coarsening(std::move(coarsening)), level(this->coarsening.coarse(), region) {}
    CoarseLevel(const CoarseLevel&) = delete;

    // Nothing if the design is not worth it.
    static std::unique_ptr<const CoarseLevel> of(const AnnealLevel& whole);

    const Coarsening coarsening;
    const AnnealLevel level;
};

class Restart {
public:
    // The restart's own random numbers.
    struct Numbers {
        std::uint64_t seed;
        std::uint64_t restart;
    };

    // The levels must outlive the restart. The plan is for a run from random starts: without
    // `coarse`, or if that finds nothing.
    Restart(const AnnealLevel& whole, const CoarseLevel* coarse, Numbers numbers,
            Cooling::Plan plan, AnnealRun::Notice notice);

    // Goes on by that many moves. `share` is how much of the schedule is over, from 0 to 1.
    void advance(unsigned moves, double share);
    // Ends the restart: works out what is found and not yet told.
    void finish();

private:
    void expand();

    const AnnealLevel& whole;
    const CoarseLevel* const coarse;
    const Numbers numbers;
    const Cooling::Plan plan;
    const AnnealRun::Notice notice;
    std::optional<AnnealRun> coarseRun, run;
};

}  // namespace korvel
