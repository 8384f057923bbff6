// Whole runs of the built program, and the files that it writes.

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>

#include "support/helpers.h"

namespace korvel::test {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The program in a folder of its own. A "gnuplot" in that folder is found before any other.
class Program {
public:
    Program() {
        std::string name = (fs::temp_directory_path() / "korvel-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~Program() { fs::remove_all(folder); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Standard output, with elapsed times masked.
    std::string run(const std::string& arguments) {
        const std::string command = "cd '" + folder.string() + "' && PATH=\"$PWD:$PATH\" '" +
                                    KORVEL_PROGRAM + "' " + arguments + " > out";
        status = WEXITSTATUS(std::system(command.c_str()));
        return masked(contents(folder / "out"));
    }
    static std::string masked(std::string text) {
        const std::string mark = "runtime: ";
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
            at += mark.size();
            text.replace(at, text.find('\n', at) - at, "T");
        }
        return text;
    }
    void write(const std::string& name, const std::string& text) {
        std::ofstream(folder / name) << text;
    }
    void write(const Design& design) {
        write("d.blocks", design.blocksFile());
        write("d.pl", design.placementFile());
        write("d.nets", design.netsFile());
    }

    fs::path folder;
    int status = 0;
};

// Each folder of runs holds a design, d.*, its arguments and the expected output.
TEST(Program, RepeatsTheRecordedRuns) {
    for (const char* name : {"pair", "trio"}) {
        SCOPED_TRACE(name);
        const fs::path recorded = fs::path(KORVEL_RUNS) / name;
        Program program;
        fs::copy(recorded, program.folder);
        std::string arguments = contents(recorded / "arguments");
        arguments.pop_back();
        EXPECT_EQ(program.run(arguments + " --threads 1"), contents(recorded / "expected"));
        EXPECT_EQ(program.status, 0);
    }
}

// The first number in a text behind a mark, and what follows it.
double numberBehind(const std::string& text, const std::string& mark, double* next = nullptr) {
    double number = -1;
    std::istringstream in(text.substr(std::min(text.size(), text.find(mark) + mark.size())));
    in >> number;
    if (next != nullptr) {
        in >> *next;
    }
    return number;
}

// With all workers of the machine, in the area that the example's first lines name.
TEST(Program, PlacesTheExamples) {
    for (const char* name : {"tutorial", "no-terminals", "interposer"}) {
        SCOPED_TRACE(name);
        const std::string design = std::string(KORVEL_EXAMPLES) + "/" + name;
        const std::string blocks = contents(design + ".blocks");
        double height = 0;
        const double width = numberBehind(blocks, "# Area ", &height);
        std::ostringstream arguments;
        arguments << "-f '" << design << "' -o r -a " << width << " " << height;
        Program program;
        const Pass first = readReport(program.run(arguments.str())).at(0);
        EXPECT_EQ(program.status, 0);
        EXPECT_EQ(first.placement.size(), numberBehind(blocks, "NumHardRectilinearBlocks :"));
        EXPECT_LE(first.width, width);
        EXPECT_LE(first.height, height);
    }
}

TEST(Program, AppendsOneStatisticsLinePerRun) {
    Program program;
    // The dies' pins meet, at no length; so the main pass cannot beat the initial one.
    program.write(Design{{{"a", 10, 10}, {"b", 10, 10}}, {}, {{{"a", 50, 0}, {"b", -50, 0}}}, {}});
    program.run("-f d -o r -a 30 20.5 -s");
    program.run("-f ../$(basename $PWD)/d -o r -a 100 50 -s");
    EXPECT_EQ(Program::masked(contents(program.folder / "statistics.txt")),
              "d || area: 30 x 20.5 || initWL: 0 || bestWL: 0 || runtime: T\n"
              "d || area: 100 x 50 || initWL: 0 || bestWL: 0 || runtime: T\n");
    fs::remove(program.folder / "statistics.txt");
    fs::create_directory(program.folder / "statistics.txt");
    const std::string output = program.run("-f d -o r -a 30 20.5 -s");
    EXPECT_EQ(program.status, 0);
    EXPECT_NE(output.find("ERROR: results.txt file could not be opened successfully\n"),
              std::string::npos);
}

TEST(Program, HandsAnyOutputNameToGnuplotAndCleansUp) {
    Program program;
    program.write(Design{{{"it's", 10, 4}}, {}, {}, {}});
    program.write("gnuplot", "#!/bin/sh\necho \"$#\" > count\ncp \"$1\" script\ncp nets.txt n\n");
    fs::permissions(program.folder / "gnuplot", fs::perms::owner_all);
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain_bestnode"},
        {"two words", "two words_bestnode"},
        {"-p", "-p_bestnode"},
        {"o'clock", "o''clock_bestnode"},
        {"$(touch hit);`touch hit`\\\"", "$(touch hit);`touch hit`\\\"_bestnode"},
    };
    for (const auto& [name, written] : cases) {
        SCOPED_TRACE(name);
        program.write("name", name);
        const std::string output = program.run("-f d -a 20 20 -p -o \"$(cat name)\"");
        EXPECT_EQ(program.status, 0);
        EXPECT_NE(output.find(std::string("\n===   Plot into the output file ") + name +
                              "_bestnode.plt   ===\n\n\tPlotting...\n"),
                  std::string::npos);
        EXPECT_EQ(contents(program.folder / "count"), "1\n");
        EXPECT_NE(contents(program.folder / "script")
                      .find(std::string("set output '") + written + ".png'\n"),
                  std::string::npos);
        EXPECT_TRUE(fs::exists(program.folder / "n"));
        std::set<std::string> left;
        for (const auto& entry : fs::directory_iterator(program.folder)) {
            left.insert(entry.path().filename().string());
        }
        EXPECT_EQ(left, (std::set<std::string>{"count", "d.blocks", "d.nets", "d.pl", "gnuplot",
                                               "n", "name", "out", "script"}));
    }
}

// Net 0 is a line; net 1 a star of its three placed pins around their centroid, (8 / 3, 6 / 3);
// net 2 has one pin placed and net 3 none.
TEST(Plot, DrawsDiesAndNetsThatHaveTwoPinsPlaced) {
    Engine engine(Design{{{"a", 8, 4}, {"b's", 2.5F, 4}, {"c", 1, 1}},
                         {{"t", 0, 6}},
                         {{{"a", 50, 0}, {"b's", -50, 50}},
                          {{"a", -50, -50}, {"a", 50, -50}, {"t"}, {"c"}},
                          {{"a"}, {"c"}},
                          {{"c"}, {"c"}}},
                         {1000, 50}});
    engine.placer.params.setOutputName("it's");
    BBNode node;
    node.addBlock(Orient::N, engine.netlist);
    node.addBlock(Orient::E, engine.netlist);
    engine.netlist.blocks[0].updateBlockState({0, 0}, Orient::N, false);
    engine.netlist.blocks[1].updateBlockState({8, 0}, Orient::E, false);
    std::ostringstream script, data;
    engine.placer.writePlotScript(node, "x", script, data);
    EXPECT_EQ(script.str(), R"(set terminal png size 600, 30 enhanced font "Helvetica,65"
set output 'it''s_x.png'

set obj rect from 0,0 to 1000, 50 fc rgb 'gray' fs solid 0.4 noborder
set obj rect from 0,0 to 8,4 fc rgb 'skyblue' fs solid 0.8 border lc rgb 'royalblue' lw 12
set obj rect from 8,0 to 12,2.5 fc rgb 'skyblue' fs solid 0.8 border lc rgb 'royalblue' lw 12
set label 'a' at 1 , 0.5 font "Helvetica,42" front
set label 'b''s' at 8.5 , 0.3125 font "Helvetica,42" front
set style line 1 lc rgb 'orange' lt 1 lw 5 pt 7 ps 4

plot [0:1000] [0:50] NaN notitle, \
	'nets.txt' index 0 with linespoints ls 1 notitle, \
	''	index 1 with linespoints ls 1 notitle, \
	''	index 2 with linespoints ls 1 notitle, \
	''	index 3 with linespoints ls 1 notitle
)");
    EXPECT_EQ(data.str(),
              "8  2\n12  2.5\n\n\n"
              "2.66667  2\n0  0\n\n\n2.66667  2\n8  0\n\n\n2.66667  2\n0  6\n\n\n");
}

}  // namespace
}  // namespace korvel::test
