// Simulated annealing of sequence pairs and orientations: good placements of any number of dies,
// without a proof (S. Kirkpatrick, C. D. Gelatt, M. P. Vecchi, "Optimization by simulated
// annealing", Science 220, 1983).
//
// From the top down; everything from Restart on belongs to one thread:
//   anneal            one call: hands numbered restarts to the threads, offers what they find
//   Restart           an attempt from scratch, on one level or two: a coarse design without the
//                     small dies that hang on a larger one, then the whole design
//   LevelAnnealer     anneals one level through one schedule
//   CoolingSchedule   which coolings that are, and the temperature at each point of them; a cooling
//                     begins with a start (a random layout, or one from the coarse level) or heats
//                     the best layout up again
//   MoveGenerator     makes one random change of the layout: a move (GroupMoves, MoveProbabilities)
//   Layout            orders, orientations and coordinates; arranges what was changed (Packing),
//                     measures it (NetCosts), keeps or undoes it
//   Acceptance        decides which of the two
//
// The threads of a call share, and nothing else:
//   the design, the region, the options, and what is prepared of them: never changed
//   the incumbent, which has a lock of its own, and the token to stop
//   AnnealProgress: atomic counters; readers may see one before the other
//   with a number of moves, results that wait for earlier restarts (OrderedResults),
//   under a lock during which the incumbent's is taken, never the other way round
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
// results the same one is always first. A stop is looked for every 64 moves; then the best layout
// gets exact coordinates, and a restart on its coarse level makes some thousand moves more, which
// mend the layout of the whole design: tens of milliseconds for a hundred dies. Returns with
// nothing offered if no legal placement was found. The design must have a die.
void anneal(const Design& design, Region region, const AnnealOptions& options, Incumbent& incumbent,
            std::stop_token stop, AnnealProgress& progress);

}  // namespace korvel
