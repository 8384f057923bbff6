// Simulated annealing of sequence pairs and orientations: good placements of any number of dies,
// without a proof. Restarts are independent of one another and run on all threads.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <stop_token>

#include "results/Incumbent.h"

namespace korvel {

struct AnnealOptions {
    std::uint64_t seed = 1;
    unsigned threads = 1;
    // Moves of all restarts together; 0: until stopped. The results that a number of moves ends
    // with depend on it, the seed and the number of threads alone, unless it is stopped before.
    std::uint64_t iterations = 0;
    // When the time is up, without a number of moves. The cooling is stretched to last until then.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

// How far it is. Shared between threads: restarts add to it; any thread may read it, and may find
// one member ahead of the other.
struct AnnealProgress {
    std::atomic<std::uint64_t> iterations{0};  // moves tried, all threads
    std::atomic<unsigned> restarts{0};         // begun
};

// Anneals until the moves are made, the deadline is reached or a stop is asked for, and offers what
// it finds: legal placements with exact coordinates. Without a number of moves they are offered as
// soon as they are found; with one, when all earlier restarts have ended, so that of two equal
// results the same one is always first. Obeys a stop within some moves and at most one exact
// program, which takes milliseconds for a hundred dies. Returns with nothing offered if no legal
// placement was found. The design must have a die. Its threads share the incumbent, which guards
// itself, and with a mutex the results that wait for earlier restarts; that mutex is held while
// they are offered.
void anneal(const Design& design, Region region, const AnnealOptions& options, Incumbent& incumbent,
            std::stop_token stop, AnnealProgress& progress);

}  // namespace korvel
