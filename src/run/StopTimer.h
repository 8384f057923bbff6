// Calls a function once when a moment has come, on a thread of its own, unless the timer is
// destroyed before.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace korvel {

using RunClock = std::chrono::steady_clock;

inline RunClock::duration clockSpan(double seconds) {
    return std::chrono::duration_cast<RunClock::duration>(std::chrono::duration<double>(seconds));
}

class StopTimer {
public:
    StopTimer(RunClock::time_point moment, std::function<void()> ring);

private:
    std::jthread waiting;  // its destructor wakes and joins it
};

}  // namespace korvel
