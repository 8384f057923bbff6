#include "anneal/Acceptance.h"

#include <algorithm>
#include <cmath>

#include "base/Infinity.h"

namespace korvel {

namespace {

// The estimates of what a move may save, in overflow or by sliding, fade by this part with every
// move: they look back some thousand moves.
constexpr double kFading = 1e-3;

// The penalty, in parts of the scale.
constexpr double kLeastPenalty = 0.05;
constexpr double kMostPenalty = 100.0;
// It rises and falls alike, until the last part of a cooling, which is to end with legal layouts.
constexpr double kTighter = 1.02;
constexpr double kEasier = 0.98;
constexpr double kHardlyEasier = 0.9995;
constexpr double kLegalFrom = 0.8;

}  // namespace

void Acceptance::restart(const Layout& layout) {
    keptLength = layout.length();
    keptOverflow = layout.overflow();
    penalty = scale();
    overflowSaving = slidingSaving = keptLength;
}

void Acceptance::replace(const Layout& layout) {
    keptLength = layout.length();
    keptOverflow = 0.0;
}

void Acceptance::reheat(const Layout& layout) {
    replace(layout);
    penalty = std::min(penalty, scale());
}

double Acceptance::drawThreshold(RandomStream& random) const {
    return -temperature * std::log(1.0 - random.uniform());
}

Layout::Limits Acceptance::limits(double threshold, bool slidesAnyway) const {
    return {keptOverflow + (threshold + overflowSaving) / penalty,
            slidesAnyway ? kInfiniteLength
                         : keptLength + threshold + penalty * keptOverflow + slidingSaving};
}

double Acceptance::costOf(const Layout& arranged) {
    const double longer = arranged.length() - keptLength;
    const double wider = arranged.overflow() - keptOverflow;
    if (wider > 0.0) {
        overflowSaving = std::max(overflowSaving, -longer);
    }
    return longer + penalty * wider;
}

void Acceptance::accept(const Layout& arranged) {
    slidingSaving = std::max(slidingSaving, arranged.savedBySliding());
    keptLength = arranged.length();
    keptOverflow = arranged.overflow();
}

void Acceptance::fade() {
    overflowSaving *= 1.0 - kFading;
    slidingSaving *= 1.0 - kFading;
}

void Acceptance::adaptPenalty(double cooled) {
    const double easing = cooled < kLegalFrom ? kEasier : kHardlyEasier;
    penalty = std::clamp(penalty * (isLegal() ? easing : kTighter), kLeastPenalty * scale(),
                         kMostPenalty * scale());
}

}  // namespace korvel
