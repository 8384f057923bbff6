#include "run/AutoPlan.h"

#include <algorithm>

#include "proof/AxisOptimum.h"

namespace korvel {

namespace {

// Up to so many dies a proof is a matter of seconds to minutes.
constexpr std::size_t kMostProvedDies = 8;
// What a run takes that nobody has limited, unless it can be expected to end with a proof.
constexpr double kUnasked = 60.0;

// The first annealing only gives the proof a placement to start from: so many seconds per pair of
// dies, and at most this part of the whole time.
constexpr double kShortAnnealing = 0.03;
constexpr double kFirstAnnealing = 0.1;
// When the proof of a few dies more, which may come to its end and finds short placements on its
// way, gives way to annealing.
constexpr double kProofTried = 0.6;

}  // namespace

AutoPlan planFor(std::size_t dies, const RunOptions& options) {
    const bool isCounted = options.iterations && !options.timeLimit;
    if (isCounted && dies > (options.prove ? kMaxProofDies : kMostProvedDies)) {
        return {false, std::nullopt, 0.0};
    }
    if (dies > kMaxProofDies) {
        const double whole = options.timeLimit.value_or(kUnasked);
        return {false, whole, whole};
    }
    if (options.prove || dies <= kMostProvedDies) {
        const double pairs = static_cast<double>(dies) * static_cast<double>(dies - 1) / 2.0;
        const double most = options.timeLimit.value_or(kUnasked) * kFirstAnnealing;
        return {true, options.timeLimit, std::min(kShortAnnealing * pairs, most)};
    }
    const double whole = options.timeLimit.value_or(kUnasked);
    return {true, whole, whole * kFirstAnnealing, whole * kProofTried};
}

}  // namespace korvel
