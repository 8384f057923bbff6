// The clock that runs are timed by.
#pragma once

#include <chrono>

namespace korvel {

using RunClock = std::chrono::steady_clock;

inline RunClock::duration clockSpan(double seconds) {
    return std::chrono::duration_cast<RunClock::duration>(std::chrono::duration<double>(seconds));
}

}  // namespace korvel
