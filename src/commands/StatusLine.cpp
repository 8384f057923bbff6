#include "commands/StatusLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iomanip>
#include <sstream>

#include "base/CallAfter.h"
#include "report/Text.h"
#include "run/Duration.h"

namespace korvel {

namespace {

constexpr auto kRedraw = std::chrono::milliseconds(250);
constexpr const char* kEraseLine = "\r\x1b[K";

std::size_t terminalWidth() {
    constexpr std::size_t kUsual = 80;
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? size.ws_col : kUsual;
}

// Three digits are enough for a number that changes all the time.
std::string roughText(double number) {
    std::ostringstream text;
    const char* unit = "";
    for (const char* next : {"k", "M", "G", "T"}) {
        if (number < 1000.0) {
            break;
        }
        number /= 1000.0;
        unit = next;
    }
    text << std::setprecision(3) << number << unit;
    return text.str();
}

std::string timeText(const PlaceRun& run) {
    const std::string elapsed = durationText(run.elapsed());
    return run.timeLimit() ? elapsed + " of " + durationText(*run.timeLimit()) : elapsed;
}

std::string workText(const RunProgress::View& view) {
    const auto count = static_cast<double>(view.gauge.count);
    const double rate = view.seconds > 0.0 ? count / view.seconds : 0.0;
    return roughText(count) + " " + view.unit + ", " + roughText(rate) + "/s";
}

}  // namespace

void StatusLine::say(const std::string& line) {
    const std::lock_guard lock(mutex);
    erase();
    out << line << '\n' << std::flush;
}

void StatusLine::show(const std::string& status) {
    if (!terminal) {
        return;
    }
    const std::lock_guard lock(mutex);
    erase();
    // The last column stays free: some terminals begin a new line when it is written to.
    out << status.substr(0, terminalWidth() - 1) << std::flush;
    shown = !status.empty();
}

void StatusLine::erase() {
    if (shown) {
        out << kEraseLine;
        shown = false;
    }
}

std::jthread showStatus(const PlaceRun& run, StatusLine& line) {
    return std::jthread([&run, &line](const std::stop_token& stop) {
        while (sleepFor(kRedraw, stop)) {
            line.show(statusText(run));
        }
    });
}

std::string statusText(const PlaceRun& run) {
    const RunProgress::View view = run.getProgress().view();
    const std::optional<Found> found = run.best();
    std::string text = view.phase.empty() ? "" : view.phase + "  ";
    text += timeText(run);
    text +=
        found ? "  HPWL " + numberText(found->wirelength()) + " after " + durationText(found->after)
              : "  nothing legal yet";
    if (view.gauge.count > 0) {
        text += "  " + workText(view);
    }
    if (view.gauge.share) {
        text += "  " + percentText(*view.gauge.share, 1) + " searched";
    }
    if (view.gauge.lowerBound && found && found->wirelength() > 0.0) {
        const double best = found->wirelength();
        text += "  gap " + percentText((best - *view.gauge.lowerBound) / best, 2);
    }
    return text;
}

std::string improvementText(const Found& found) {
    return durationText(found.after) + "  HPWL " + numberText(found.wirelength()) + "  " +
           found.finder;
}

}  // namespace korvel
