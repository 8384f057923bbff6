#include "run/RunProgress.h"

#include <utility>

namespace korvel {

RunProgress::Phase::Phase(RunProgress& progress, std::string name, std::string unit,
                          std::function<Gauge()> gauge)
    : progress(progress) {
    const std::lock_guard lock(progress.mutex);
    progress.name = std::move(name);
    progress.unit = std::move(unit);
    progress.gauge = std::move(gauge);
    progress.began = RunClock::now();
}

RunProgress::Phase::~Phase() {
    const std::lock_guard lock(progress.mutex);
    progress.name.clear();
    progress.gauge = nullptr;
}

RunProgress::View RunProgress::view() const {
    const std::lock_guard lock(mutex);
    if (!gauge) {
        return {};
    }
    const std::chrono::duration<double> seconds = RunClock::now() - began;
    return {name, unit, seconds.count(), gauge()};
}

}  // namespace korvel
