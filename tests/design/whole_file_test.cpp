// Files that are written whole or not at all.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "design/WholeFile.h"

namespace korvel::test {
namespace {

namespace fs = std::filesystem;

class WholeFile : public testing::Test {
protected:
    WholeFile() {
        std::string name = (fs::temp_directory_path() / "korvel-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~WholeFile() override { fs::remove_all(folder); }

    static std::string contents(const fs::path& file) {
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::size_t fileNum() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    fs::path folder;
};

TEST_F(WholeFile, ReplacesWhatWasThere) {
    const fs::path file = folder / "report";
    EXPECT_FALSE(writeWhole(file, "a first and longer one"));
    EXPECT_FALSE(writeWhole(file, "second"));
    EXPECT_EQ(contents(file), "second");
    EXPECT_EQ(fileNum(), 1U);
}

TEST_F(WholeFile, ReplacesTheFileBehindALink) {
    fs::create_directory(folder / "elsewhere");
    std::ofstream(folder / "elsewhere" / "report") << "old";
    fs::create_symlink("elsewhere/report", folder / "link");
    EXPECT_FALSE(writeWhole(folder / "link", "new"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(contents(folder / "elsewhere" / "report"), "new");
}

TEST_F(WholeFile, WritesToADeviceWithoutReplacingIt) {
    fs::create_symlink("/dev/null", folder / "device");
    EXPECT_FALSE(writeWhole(folder / "device", "into the void"));
    EXPECT_TRUE(fs::is_character_file(folder / "device"));
    fs::create_symlink("/dev/full", folder / "full");
    EXPECT_EQ(writeWhole(folder / "full", "no room"), std::errc::no_space_on_device);
}

TEST_F(WholeFile, LeavesNothingWhereItCannotWrite) {
    EXPECT_EQ(writeWhole(folder / "missing" / "report", "x"), std::errc::no_such_file_or_directory);
    fs::create_directory(folder / "taken");
    EXPECT_EQ(writeWhole(folder / "taken", "x"), std::errc::is_a_directory);
    EXPECT_EQ(fileNum(), 1U);
}

// A limit on the size of files stands in for a full disk.
TEST_F(WholeFile, KeepsTheOldOneWhenTheNewOneDoesNotFit) {
    std::ofstream(folder / "report") << "old";
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 10'000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::error_code fault = writeWhole(folder / "report", std::string(20'000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(fault, std::errc::file_too_large);
    EXPECT_EQ(contents(folder / "report"), "old");
    EXPECT_EQ(fileNum(), 1U);
}

}  // namespace
}  // namespace korvel::test
