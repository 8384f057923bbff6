// A timer: calls a function when a time is over, unless it is no longer wanted by then.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace korvel {

// Waits so long; false if the request to stop comes first.
inline bool sleepFor(std::chrono::duration<double> time, const std::stop_token& cancelled) {
    std::mutex mutex;
    std::condition_variable_any nobodyNotifies;
    std::unique_lock lock(mutex);
    nobodyNotifies.wait_for(lock, cancelled, time, [] { return false; });
    return !cancelled.stop_requested();
}

// Calls `function` once, on the thread returned. That thread's end, or its request to stop, cancels
// the call if it has not begun.
template <typename Function>
std::jthread callAfter(std::chrono::duration<double> time, Function function) {
    return std::jthread([time, function](const std::stop_token& cancelled) {
        if (sleepFor(time, cancelled)) {
            function();
        }
    });
}

}  // namespace korvel
