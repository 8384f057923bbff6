#include "design/InputFile.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace korvel {

bool openInput(std::ifstream& in, const std::string& path, Diagnostics& diagnostics) {
    std::error_code none;
    // A directory can be opened but not read.
    if (std::filesystem::is_directory(path, none)) {
        diagnostics.error(path, 0, "found a directory, expected a file");
        return false;
    }
    errno = 0;
    in.open(path);
    if (!in) {
        diagnostics.error(
            path, 0, "found no file that can be read: " + std::generic_category().message(errno));
    }
    return in.is_open();
}

}  // namespace korvel
