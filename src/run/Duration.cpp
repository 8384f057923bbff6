#include "run/Duration.h"

#include <charconv>
#include <cmath>
#include <iomanip>
#include <map>
#include <sstream>

namespace korvel {

namespace {

constexpr double kMinute = 60.0;
constexpr double kHour = 3600.0;
constexpr double kLongest = 366.0 * 24.0 * kHour;

const std::map<std::string_view, double> kUnits{
    {"", 1.0}, {"s", 1.0}, {"m", kMinute}, {"h", kHour}};

}  // namespace

std::optional<double> parseDuration(std::string_view text) {
    double number = 0.0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    const auto unit = kUnits.find(text.substr(static_cast<std::size_t>(end - text.data())));
    if (error != std::errc() || unit == kUnits.end()) {
        return std::nullopt;
    }
    const double seconds = number * unit->second;
    // Also false for what is no number.
    return seconds > 0.0 && seconds <= kLongest ? std::optional(seconds) : std::nullopt;
}

std::string durationText(double seconds) {
    if (seconds < kMinute) {
        std::ostringstream text;
        // Cut, so that no 59.99 becomes a minute's worth of seconds.
        text << std::fixed << std::setprecision(1) << std::floor(seconds * 10.0) / 10.0 << " s";
        return text.str();
    }
    const auto whole = static_cast<long long>(seconds);
    return seconds < kHour
               ? std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s"
               : std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

}  // namespace korvel
