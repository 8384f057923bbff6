// What the classic interface writes beside its report.

#include <set>

#include "support/plain_reader.h"

namespace korvel::test {
namespace {

TEST(Program, AppendsOneStatisticsLinePerRun) {
    const FrontDoor door;
    // The dies' pins meet, at no length; so the main pass cannot beat the initial one.
    writeDesign(door, {{{"a", 10, 10}, {"b", 10, 10}}, {}, {{{"a", 50, 0}, {"b", -50, 0}}}, {}});
    door.run("-f d -o r -a 30 20.5 -s");
    door.run("-f ../$(basename $PWD)/d -o r -a 100 50 -s");
    EXPECT_EQ(withoutTimes(door.read("statistics.txt")),
              "d || area: 30 x 20.5 || initWL: 0 || bestWL: 0 || runtime: T\n"
              "d || area: 100 x 50 || initWL: 0 || bestWL: 0 || runtime: T\n");
    door.remove("statistics.txt");
    std::filesystem::create_directory(door.path("statistics.txt"));
    EXPECT_EQ(door.run("-f d -o r -a 30 20.5 -s"), 0);
    EXPECT_NE(door.out().find("ERROR: results.txt file could not be opened successfully\n"),
              std::string::npos);
}

TEST(Program, HandsAnyOutputNameToGnuplotAndCleansUp) {
    const FrontDoor door;
    writeDesign(door, {{{"it's", 10, 4}}, {}, {}, {}});
    door.writeScript("gnuplot", "echo \"$#\" > count\ncp \"$1\" script\ncp nets.txt n\n");
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain_bestnode"},
        {"two words", "two words_bestnode"},
        {"-p", "-p_bestnode"},
        {"o'clock", "o''clock_bestnode"},
        {"$(touch hit);`touch hit`\\\"", "$(touch hit);`touch hit`\\\"_bestnode"},
    };
    for (const auto& [name, written] : cases) {
        SCOPED_TRACE(name);
        door.write("name", name);
        EXPECT_EQ(door.run("-f d -a 20 20 -p -o \"$(cat name)\""), 0);
        EXPECT_NE(door.out().find(std::string("\n===   Plot into the output file ") + name +
                                  "_bestnode.plt   ===\n\n\tPlotting...\n"),
                  std::string::npos);
        EXPECT_EQ(door.read("count"), "1\n");
        EXPECT_NE(door.read("script").find(std::string("set output '") + written + ".png'\n"),
                  std::string::npos);
        std::set<std::string> left;
        for (const auto& [file, text] : door.files()) {
            left.insert(file);
        }
        EXPECT_EQ(left, (std::set<std::string>{"count", "d.blocks", "d.nets", "d.pl", "gnuplot",
                                               "n", "name", "script"}));
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
