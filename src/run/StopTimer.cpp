#include "run/StopTimer.h"

#include <condition_variable>
#include <mutex>

namespace korvel {

StopTimer::StopTimer(RunClock::time_point moment, std::function<void()> ring)
    : waiting([moment, ring = std::move(ring)](const std::stop_token& stop) {
          std::mutex mutex;
          std::condition_variable_any never;
          std::unique_lock lock(mutex);
          never.wait_until(lock, stop, moment, [] { return false; });
          if (!stop.stop_requested()) {
              ring();
          }
      }) {}

}  // namespace korvel
