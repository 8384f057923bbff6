// Spans of time as users write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// Seconds of `90`, `90s`, `1.5m` or `2h`: a positive number, then a unit or none. Nothing for any
// other text, and for more than a year.
std::optional<double> parseDuration(std::string_view text);

// Such as `4.2 s`, `12 min 5 s`, `2 h 0 min`: as exact as a reader wants it.
std::string durationText(double seconds);

}  // namespace korvel
