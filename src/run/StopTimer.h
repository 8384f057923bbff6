// Calls a function once when a moment has come, on a thread of its own, unless the timer is
// destroyed before.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace korvel {

using RunClock = std::chrono::steady_clock;

class StopTimer {
public:
    StopTimer(RunClock::time_point moment, std::function<void()> ring);

private:
    std::jthread waiting;  // its destructor wakes and joins it
};

}  // namespace korvel
