// Whole runs of the classic interface, repeated to the letter. A folder of tests/recorded is one:
//
//     arguments  the command line; with --threads 1 where it places dies, as only one thread
//                repeats itself
//     input/     the files that lie in the current folder
//     expected/  those that are there afterwards as well: stdout, status, and whatever the program
//                and its gnuplot wrote
//
// The program's path reads PROGRAM and elapsed times read T.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/front_door.h"

namespace korvel::test {
namespace {

namespace fs = std::filesystem;

std::string comparable(std::string text) {
    const std::string program = KORVEL_PROGRAM;
    for (auto at = text.find(program); at != std::string::npos; at = text.find(program, at)) {
        text.replace(at, program.size(), "PROGRAM");
    }
    return withoutTimes(std::move(text));
}

class RecordedRun : public testing::TestWithParam<std::string> {};

TEST_P(RecordedRun, RepeatsToTheLetter) {
    const fs::path recorded = fs::path(KORVEL_RECORDED) / GetParam();
    const std::map<std::string, std::string> input = filesBelow(recorded / "input");
    std::map<std::string, std::string> expected = filesBelow(recorded / "expected");
    ASSERT_NE(expected["stdout"], "");
    expected.insert(input.begin(), input.end());

    const FrontDoor door;
    if (!input.empty()) {
        door.copyInto(recorded / "input");
    }
    door.writeScript("gnuplot", "cp \"$1\" gnuplot-script\ncp nets.txt gnuplot-data\n");
    std::string arguments = contentsOf(recorded / "arguments");
    arguments.pop_back();
    const int status = door.run(arguments);
    door.remove("gnuplot");
    door.write("stdout", door.out());
    door.write("status", std::to_string(status) + "\n");

    std::map<std::string, std::string> there = door.files();
    for (auto& [name, text] : there) {
        text = comparable(std::move(text));
        EXPECT_EQ(text, expected[name]) << name;
    }
    for (const auto& [name, text] : expected) {
        EXPECT_TRUE(there.count(name) != 0) << name << " is missing";
    }
}

std::vector<std::string> recordedRuns() {
    std::vector<std::string> runs;
    for (const auto& entry : fs::directory_iterator(KORVEL_RECORDED)) {
        runs.push_back(entry.path().filename().string());
    }
    std::sort(runs.begin(), runs.end());
    return runs;
}

std::string nameOf(const testing::TestParamInfo<std::string>& run) {
    std::string name = run.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Classic, RecordedRun, testing::ValuesIn(recordedRuns()), nameOf);

}  // namespace
}  // namespace korvel::test
