#include "design/WholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <random>

namespace korvel {

namespace {

namespace fs = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code writeAll(int file, std::string_view rest) {
    while (!rest.empty()) {
        const ssize_t written = ::write(file, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

// Some file systems tell only when a file is closed that it did not fit.
std::error_code fill(const fs::path& path, int openFlags, std::string_view content) {
    constexpr mode_t kWhatTheUserAllows = 0666;
    const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | openFlags, kWhatTheUserAllows);
    if (file < 0) {
        return lastError();
    }
    const std::error_code fault = writeAll(file, content);
    const bool closed = ::close(file) == 0;
    return fault || closed ? fault : lastError();
}

// Random, as processes that share the directory need not share their numbers.
fs::path freshNameBeside(const fs::path& path) {
    std::random_device random;
    const std::string number = std::to_string(random()) + "-" + std::to_string(random());
    return path.parent_path() / (".korvel-" + number + ".tmp");
}

std::error_code replace(const fs::path& path, std::string_view content) {
    const fs::path beside = freshNameBeside(path);
    std::error_code fault = fill(beside, O_CREAT | O_EXCL, content);
    if (!fault) {
        fs::rename(beside, path, fault);
    }
    if (fault) {
        std::error_code ignored;
        fs::remove(beside, ignored);
    }
    return fault;
}

}  // namespace

std::error_code writeWhole(const std::string& path, std::string_view content) {
    std::error_code ignored;
    const fs::file_status there = fs::status(path, ignored);
    if (fs::is_regular_file(there)) {
        // Behind a link it is the file that is replaced, not the link.
        return replace(fs::canonical(path, ignored), content);
    }
    if (fs::exists(there) && !fs::is_directory(there)) {
        return fill(path, 0, content);
    }
    return replace(path, content);
}

}  // namespace korvel
