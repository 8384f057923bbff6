// One restart: an attempt from scratch, with random streams of its own. A design of hosts and
// satellites is annealed without its satellites first, and what this coarse level ends with are the
// starts for the whole design. Any other design has one level.
// Owned and used by one thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "anneal/Coarsening.h"
#include "anneal/LevelAnnealer.h"

namespace korvel {

// The design without its satellites. Stays where it is made; filled once and never changed.
struct CoarseLevel {
    CoarseLevel(Coarsening coarsening, Region region)
        : coarsening(std::move(coarsening)), prepared(this->coarsening.coarse(), region) {}
    ~CoarseLevel() = default;
    CoarseLevel(const CoarseLevel&) = delete;
    CoarseLevel& operator=(const CoarseLevel&) = delete;

    // Nothing if the design is not worth it.
    static std::unique_ptr<const CoarseLevel> of(const PreparedDesign& whole);

    const Coarsening coarsening;
    const PreparedDesign prepared;
};

class Restart {
public:
    // What the random numbers depend on.
    struct Numbers {
        std::uint64_t seed;
        std::uint64_t restart;
    };

    // Designs must outlive the restart. `kind` is the schedule of the whole design from random
    // starts: without `coarse`, or if that finds no legal layout.
    Restart(const PreparedDesign& whole, const CoarseLevel* coarse, Numbers numbers,
            CoolingSchedule::Kind kind, LevelAnnealer::Notice notice);

    // Goes on by that many moves. `progress` is how much of the restart is over, from 0 to below 1.
    void advance(unsigned moves, double progress);
    // Ends the restart: tells of its best layout, if that is not done.
    void finish();

private:
    void beginWhole();

    const PreparedDesign& whole;
    const CoarseLevel* const coarse;
    const RandomStream stream;
    const CoolingSchedule::Kind kind;
    const LevelAnnealer::Notice notice;
    // One of them at a time.
    std::optional<LevelAnnealer> coarseAnnealer, annealer;
};

}  // namespace korvel
