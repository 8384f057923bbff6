// Result files that appear whole or not at all: written under another name beside their place, then
// renamed. Whoever reads the path, at whatever moment, finds the old content or the new.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace korvel {

// The error that kept the file from being written; none if it is there. On an error the old file
// is untouched and nothing is left beside it. A device or pipe, which has no content to keep, is
// written to directly. Any thread.
[[nodiscard]] std::error_code writeWhole(const std::string& path, std::string_view content);

}  // namespace korvel
