#include "run/AutoPlan.h"

#include <algorithm>

#include "proof/AxisOptimum.h"

namespace korvel {

namespace {

// Up to so many dies a proof is a matter of seconds to minutes.
constexpr std::size_t kMostProvedDies = 8;
// What a run takes that nobody has limited, unless it can be expected to end with a proof.
constexpr double kUnasked = 60.0;

// A start for the proof, which makes good for what it lacks.
constexpr double kShortAnnealing = 1.0;
constexpr double kShortShare = 0.1;
// A few dies more: annealing has mostly found its best by then.
constexpr double kMiddleShare = 0.5;

}  // namespace

AutoPlan planFor(std::size_t dies, const RunOptions& options) {
    const bool isProvable = dies <= kMaxProofDies;
    if (isProvable && (options.prove || dies <= kMostProvedDies)) {
        const double most = options.timeLimit.value_or(kUnasked) * kShortShare;
        return {options.timeLimit, std::min(kShortAnnealing, most), true};
    }
    const double whole = options.timeLimit.value_or(kUnasked);
    return {whole, isProvable ? whole * kMiddleShare : whole, isProvable};
}

}  // namespace korvel
