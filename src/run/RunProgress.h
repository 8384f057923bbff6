// How a run stands, for whoever shows it while the engines work.
//
// Shared between threads: `mutex` guards all members. The gauge is called with it held, so it must
// not lock anything; gauges read atomics.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace korvel {

// Runs are timed by it.
using RunClock = std::chrono::steady_clock;

inline RunClock::duration clockSpan(double seconds) {
    return std::chrono::duration_cast<RunClock::duration>(std::chrono::duration<double>(seconds));
}

class RunProgress {
public:
    // What an engine can say at any time about the phase that it is in.
    struct Gauge {
        std::uint64_t count = 0;                     // of what the phase counts, since it began
        std::optional<double> share = std::nullopt;  // of the work, 0 to 1
        std::optional<double> lowerBound = std::nullopt;  // no legal placement is shorter
    };
    struct View {
        std::string phase;  // empty between phases
        std::string unit;   // of the count, in the plural
        double seconds = 0.0;
        Gauge gauge;
    };

    // While it lives, the phase goes by this name and `gauge` tells about it, from any thread.
    class Phase {
    public:
        Phase(RunProgress& progress, std::string name, std::string unit,
              std::function<Gauge()> gauge);
        ~Phase();
        Phase(const Phase&) = delete;
        Phase& operator=(const Phase&) = delete;

    private:
        RunProgress& progress;
    };

    View view() const;  // any thread

private:
    mutable std::mutex mutex;
    std::string name;
    std::string unit;
    std::function<Gauge()> gauge;
    RunClock::time_point began;
};

}  // namespace korvel
