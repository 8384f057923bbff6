// Branch-and-bound that ends with a proof: it divides all placements of a design until each part
// either cannot be shorter than the best placement known, or holds none. For small designs; the
// work grows steeply with the number of dies.
#pragma once

#include <atomic>
#include <cstdint>
#include <stop_token>

#include "base/Tolerances.h"
#include "results/Incumbent.h"

namespace korvel {

struct ProofOptions {
    unsigned threads = 1;  // at least 1
    // Placements that would be shorter by less than this part are not looked for. 0: prove.
    double gap = 0.0;
    // The same, for what counts as proved: the best placement is at most this part longer than the
    // shortest one.
    double tolerance = kProved;
};

enum class ProofEnd {
    Proved,       // the incumbent is the shortest placement, within the tolerance
    NoPlacement,  // the dies cannot be placed inside the region
    GapReached,   // the incumbent is within the gap
    Stopped       // nothing but the lower bound is known
};

struct ProofResult {
    ProofEnd end = ProofEnd::Stopped;
    // No placement is shorter. Infinity if there is none.
    double lowerBound = 0.0;
    std::uint64_t nodes = 0;
};

// What a running proof has reached. Shared between threads: workers add to the counts, and write
// the lower bound one at a time, under the lock of their tree; any thread may read, and may find
// one member ahead of another.
struct ProofProgress {
    std::atomic<double> lowerBound{0.0};  // rising
    std::atomic<std::uint64_t> nodes{0};
    std::atomic<double> shareDone{0.0};  // of the tree, 0 to 1, rising; not of the time
};

// Proves until done or asked to stop. The incumbent may hold a placement already, and others may
// improve it meanwhile; what is found here is offered to it at once, with exact coordinates. A stop
// is heeded within milliseconds. Its threads share the incumbent, which guards itself, and a tree:
// a ProofPool and, with a mutex, the lowest bound of what was given up as no better. Designs of
// more than kMaxProofDies dies get a lower bound only, and end as stopped.
ProofResult prove(const Design& design, Region region, const ProofOptions& options,
                  Incumbent& incumbent, const std::stop_token& stop, ProofProgress& progress);

}  // namespace korvel
