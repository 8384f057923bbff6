// `korvel place` as its users meet it: whole runs of the program, their files and their ends.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

#include "support/front_door.h"

namespace korvel::test {
namespace {

using Json = nlohmann::json;

class Place : public testing::Test {
protected:
    Place() {
        writeDesign("d", 3);
        writeDesign("many", 25);
    }

    // Dies of 4 x 2 and 3 x 2, each connected to the next two, and the first to a terminal.
    void writeDesign(const std::string& name, unsigned dies) const {
        std::ostringstream blocks;
        std::ostringstream places;
        std::ostringstream nets;
        blocks << "NumSoftRectangularBlocks : 0\nNumHardRectilinearBlocks : " << dies
               << "\nNumTerminals : 1\n";
        unsigned netNum = 1;
        nets << "NetDegree : 2\nd0 B : %50 %50\nt B\n";
        for (unsigned die = 0; die < dies; ++die) {
            const unsigned width = 3 + die % 2;
            blocks << "d" << die << " hardrectilinear 4 (0, 0) (0, 2) (" << width << ", 2) ("
                   << width << ", 0)\n";
            places << "d" << die << " 0 0\n";
            for (unsigned next = die + 1; next < dies && next < die + 3; ++next, ++netNum) {
                nets << "NetDegree : 2\nd" << die << " B : %50 %0\nd" << next << " B : %-50 %0\n";
            }
        }
        door.write(name + ".blocks", blocks.str() + "t terminal\n");
        door.write(name + ".pl", places.str() + "t 4 4\n");
        door.write(name + ".nets", "NumNets : " + std::to_string(netNum) + "\nNumPins : " +
                                       std::to_string(2 * netNum) + "\n" + nets.str());
    }

    Json report(const std::string& file) const { return Json::parse(door.read(file)); }

    FrontDoor door;
};

TEST_F(Place, SavesWhatCheckConfirms) {
    for (const std::string engine : {"auto", "classic"}) {
        SCOPED_TRACE(engine);
        ASSERT_EQ(door.run("place d --area 20 20 -o r --engine " + engine), 0);
        EXPECT_EQ(door.err(), "");
        EXPECT_NE(door.out().find("Written: r.pl r.svg r.json\n"), std::string::npos);
        EXPECT_NE(door.read("r.svg").find("</svg>"), std::string::npos);
        const Json said = report("r.json");
        ASSERT_EQ(door.run("check d r.pl --area 20 20 --json -"), 0);
        const Json checked = Json::parse(door.out());
        EXPECT_EQ(said["judgement"]["wirelength"], checked["judgement"]["wirelength"]);
        EXPECT_EQ(said["dies"], checked["dies"]);
        EXPECT_EQ(said["options"]["engine"], engine);
        EXPECT_EQ(said["run"]["ended"], engine == "auto" ? "proved optimal" : "done");
    }
}

TEST_F(Place, TellsProgramsWhatItDid) {
    ASSERT_EQ(
        door.run("place d --area 20 20 --engine classic --time-limit 1m --threads 2 --json -"), 0);
    const Json run = Json::parse(door.out())["run"];
    EXPECT_EQ(run["passes"].size(), 2U);
    EXPECT_EQ(run["passes"][0]["name"], "initial pass");
    EXPECT_EQ(run["passes"][1]["searched"], 1.0);
    EXPECT_EQ(run["nodes"], run["passes"][0]["nodes"].get<unsigned>() +
                                run["passes"][1]["nodes"].get<unsigned>());
    EXPECT_TRUE(run["lowerBound"].is_null());
    EXPECT_EQ(Json::parse(door.out())["options"]["timeLimit"], 60.0);
    EXPECT_EQ(Json::parse(door.out())["options"]["threads"], 2);
}

TEST_F(Place, SummaryAndTableAreForPeople) {
    ASSERT_EQ(door.run("place d --area 20 20"), 0);
    for (const char* line :
         {"Design       d\n", "Area         20 x 20\n", "Utilization  5.0 %\n", "Wirelength   ",
          "Found        by ", "Ended        proved optimal to ", "Die", "\nd2 "}) {
        EXPECT_NE(door.out().find(line), std::string::npos) << line;
    }
    EXPECT_EQ(door.err(), "");
    ASSERT_EQ(door.run("place d --area 20 20 --quiet"), 0);
    EXPECT_EQ(door.out() + door.err(), "");
    ASSERT_EQ(door.run("place d --area 20 20 --verbose"), 0);
    EXPECT_NE(door.err().find("  HPWL "), std::string::npos);
    EXPECT_EQ(door.err().find('\r'), std::string::npos);
}

TEST_F(Place, EndsWithItsStatus) {
    door.write("far.pl", "d0 0 0\nd1 10 0\nd2 0 10\n");
    door.write("overlap.pl", "d0 0 0\nd1 1 0\nd2 0 10\n");
    door.write("part.pl", "d0 0 0\nd2 0 10\n");
    door.write("more.pl", "d0 0 0\nd1 10 0\nd2 0 10\nd3 5 5\n");
    struct Case {
        const char* arguments;
        int status;
        const char* message;  // somewhere on standard error
    };
    const Case cases[] = {
        {"--area 20 20 --start far.pl", 0, ""},
        {"--area 4.5 4.5", 1, ""},
        {"--area 4.5 4.5 --engine classic", 1, ""},
        {"", 2, "--area is required"},
        {"--area 20 20 --time-limit 9x", 2, "'9x' is no time such as 90, 90s, 15m or 2h"},
        {"--area 20 20 --gap 101%", 2, "'101%' is no part such as 1% or 0.01"},
        {"--area 20 20 --threads 0", 2, "--threads"},
        {"--area 20 20 --engine best", 2, "--engine"},
        {"--area 20 20 --quiet --verbose", 2, "--quiet excludes --verbose"},
        {"--area 20 20 -o there/", 2, "'there/' names no file"},
        {"--area 3.5 3.5", 3, "error"},  // too small for the largest die
        {"--area 20 20 --start overlap.pl", 3,
         "overlap.pl: error: found 1 overlap, expected a legal placement to start from"},
        {"--area 20 20 --start part.pl", 3,
         "part.pl: error: found no place for 'd1', expected all dies"},
        {"--area 20 20 --start more.pl", 3,
         "more.pl:4: error: found 'd3', expected a die of the design"},
        {"--area 20 20 --start none.pl", 3, "none.pl: error"},
        {"--area 20 20 -o none/r", 4,
         "cannot write 'none/r.pl': there is no directory 'none'\n"
         "korvel: cannot write 'none/r.json'"},
        {"--area 20 20 --json .", 4, "cannot write '.': that is a directory"},
        {"--area 20 20 --json /dev/full", 4, "cannot write '/dev/full'"},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.arguments);
        EXPECT_EQ(door.run(std::string("place d ") + expected.arguments), expected.status);
        EXPECT_NE(door.err().find(expected.message), std::string::npos) << door.err();
        if (expected.status < 2) {
            EXPECT_EQ(door.err(), "");
        }
    }
}

TEST_F(Place, WithoutAResultThereIsOnlyAReport) {
    door.write("r.pl", "of another run");
    EXPECT_EQ(door.run("place d --area 4.5 4.5 -o r"), 1);
    EXPECT_NE(door.out().find("No legal placement was found.\n"), std::string::npos);
    EXPECT_NE(door.out().find("proved that no legal placement exists"), std::string::npos);
    EXPECT_EQ(door.read("r.pl"), "of another run");
    EXPECT_FALSE(door.has("r.svg"));
    EXPECT_EQ(report("r.json")["legal"], false);
    EXPECT_EQ(report("r.json")["run"]["ended"], "no legal placement exists");
}

TEST_F(Place, LosesNoTimeBeforeItSaysThatFilesHaveNoPlace) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(door.run("place many --area 20 20 --time-limit 20 -o none/r"), 4);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

// The program in its folder, to be sent signals.
class Running {
public:
    Running(const FrontDoor& door, std::vector<std::string> words) {
        words.insert(words.begin(), KORVEL_PROGRAM);
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        door.write(".out", "");
        process = fork();
        if (process == 0) {
            const int out = open(door.path(".out").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
            dup2(out, STDOUT_FILENO);
            dup2(out, STDERR_FILENO);
            const bool there = chdir(door.path("").c_str()) == 0;
            if (there) {
                execv(KORVEL_PROGRAM, arguments.data());
            }
            _exit(99);
        }
    }
    void send(int signal) const { kill(process, signal); }
    int wait() const {
        int status = 0;
        waitpid(process, &status, 0);
        return status;
    }

private:
    pid_t process;
};

// Waits until the run tells of an improvement, so that there is something to save.
void awaitImprovement(const FrontDoor& door) {
    for (int tries = 0; tries < 2000 && door.out().find("HPWL") == std::string::npos; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

TEST_F(Place, ASignalEndsItWithFilesAndAReport) {
    for (const int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        const std::string prefix = "s" + std::to_string(signal);
        const Running run(door, {"place", "many", "--area", "20", "20", "-o", prefix, "--verbose"});
        awaitImprovement(door);
        run.send(signal);
        const int status = run.wait();
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
        EXPECT_NE(door.out().find("Ended        interrupted\n"), std::string::npos);
        EXPECT_EQ(report(prefix + ".json")["run"]["ended"], "interrupted");
        EXPECT_EQ(door.run("check many " + prefix + ".pl --area 20 20"), 0);
    }
}

TEST_F(Place, KilledHardItLeavesTheOldFiles) {
    door.write("k.pl", "old");
    const Running run(door, {"place", "many", "--area", "20", "20", "-o", "k", "--verbose"});
    awaitImprovement(door);
    run.send(SIGKILL);
    EXPECT_TRUE(WIFSIGNALED(run.wait()));
    EXPECT_EQ(door.read("k.pl"), "old");
    EXPECT_FALSE(door.has("k.json"));
}

}  // namespace
}  // namespace korvel::test
