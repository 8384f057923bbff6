// The diagnosing reader: good designs to the last digit, and the exact words for every mistake.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "design/DesignReader.h"

namespace korvel::test {
namespace {

struct Files {
    std::string blocks =
        "UCSC blocks 1.0\n"
        "NumSoftRectangularBlocks : 0\n"
        "NumHardRectilinearBlocks : 2\n"
        "NumTerminals : 1\n"
        "a hardrectilinear 4 (0, 0) (0, 4) (10, 4) (10, 0)\n"
        "b hardrectilinear 4 (0,0) (0,3.5) (2.5,3.5) (2.5,0)\n"
        "p terminal\n";
    std::string placement =
        "UCLA pl 1.0\n"
        "a 0 0 DIMS = (10, 4) : N\n"
        "b 0 0 : N\n"
        "p 0 5.5\n";
    std::string nets =
        "UCLA nets 1.0\n"
        "NumNets : 2\n"
        "NumPins : 5\n"
        "NetDegree : 2\n"
        "a I : %50 %-25\n"
        "b O : %-50 %0.0\n"
        "NetDegree : 3\n"
        "b B : %0 %0\n"
        "p B\n"
        "a B : %0 %0\n";
};

constexpr Region kRegion{20, 20};

std::string printed(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    return out.str();
}

struct Reading {
    explicit Reading(const Files& files, Region region = kRegion) {
        std::istringstream in[] = {std::istringstream(files.blocks),
                                   std::istringstream(files.placement),
                                   std::istringstream(files.nets)};
        design = readDesign({in[0], in[1], in[2]}, "d", region, diagnostics);
        text = printed(diagnostics);
    }
    Diagnostics diagnostics;
    std::optional<Design> design;
    std::string text;
};

TEST(DesignReader, TakesADesignExactly) {
    const Reading reading(Files{});
    EXPECT_EQ(reading.text, "");
    ASSERT_TRUE(reading.design);
    const Design& design = *reading.design;
    EXPECT_EQ(design.name, "d");
    ASSERT_EQ(design.dies.size(), 2U);
    EXPECT_EQ(design.dies[1].name, "b");
    EXPECT_EQ(design.dies[1].size.width, 2.5);
    EXPECT_EQ(design.dies[1].size.height, 3.5);
    ASSERT_EQ(design.terminals.size(), 1U);
    EXPECT_EQ(design.terminals[0].at.y, 5.5);
    ASSERT_EQ(design.nets.size(), 2U);
    const auto& pins = design.nets[0].pins;
    EXPECT_EQ(pins[0].offset.x, 10.0);
    EXPECT_EQ(pins[0].offset.y, 1.0);
    EXPECT_EQ(pins[1].body, 1U);
    EXPECT_EQ(pins[1].offset.x, 0.0);
    EXPECT_EQ(pins[1].offset.y, 1.75);
    EXPECT_EQ(design.nets[1].pins[1].body, 2U);  // the terminal, behind the dies
}

enum Which { kBlocks, kPlacement, kNets };

// One piece of one of the files above is replaced.
Files changed(Which which, const std::string& piece, const std::string& by) {
    Files files;
    std::string& file = which == kBlocks      ? files.blocks
                        : which == kPlacement ? files.placement
                                              : files.nets;
    file.replace(file.find(piece), piece.size(), by);
    return files;
}

struct Change {
    Which which;
    std::string piece;
    std::string by;
};

// Ways of writing that are as good as others.
TEST(DesignReader, ToleratesWhatMeansTheSame) {
    const Change changes[] = {
        {kBlocks, "UCSC blocks 1.0\n", ""},
        {kBlocks, "UCSC", "\xEF\xBB\xBFUCSC"},
        {kBlocks, "\np term", "\n\n # comment\n\tp\tterm"},
        {kBlocks, "p terminal\n", "p terminal"},
        {kBlocks, "p terminal", "p terminal # comment\r"},
        {kBlocks, "(0,0) (0,3.5) (2.5,3.5) (2.5,0)", "(3,8)(5.5,8)(5.5,4.5)( 3 , 4.5 )"},
        {kBlocks, "(0,0) (0,3.5) (2.5,3.5) (2.5,0)", "(-1,3.5) (-3.5,3.5) (-3.5,7) (-1,7)"},
        {kPlacement, "a 0 0 DIMS = (10, 4) : N\n", ""},
        {kPlacement, "b 0 0 : N", "b -3 1e2 : FW"},
        {kNets, "NetDegree : 2", "NetDegree : 2 clock"},
        {kBlocks, "4 (0,0)", "4(0,0)"},
        {kNets, "p B\n", "p B : %0.0 %0\n"},
        {kNets, "I : %50 %-25", "I:%50.005%-25"},
        {kNets, "NumNets : 2\nNumPins : 5", "NumPins : 5\nNumNets : 2"},
    };
    for (const Change& change : changes) {
        const Reading reading(changed(change.which, change.piece, change.by));
        EXPECT_EQ(reading.text, "") << change.by;
        ASSERT_TRUE(reading.design) << change.by;
        EXPECT_EQ(reading.design->dies[1].size.height, 3.5) << change.by;
        EXPECT_EQ(reading.design->nets[1].pins.size(), 3U) << change.by;
    }
}

struct Mistake {
    Change change;
    std::string text;  // without the lines' ends
};

void PrintTo(const Mistake& mistake, std::ostream* out) {
    *out << shown(mistake.change.by);
}

class Mistakes : public testing::TestWithParam<Mistake> {};

TEST_P(Mistakes, AreReportedInTheseWords) {
    const auto& [change, text] = GetParam();
    const Reading reading(changed(change.which, change.piece, change.by));
    EXPECT_EQ(reading.text, text + "\n");
    EXPECT_EQ(reading.design.has_value(), text.find("error: ") == std::string::npos);
}

const std::string kB = "(0,0) (0,3.5) (2.5,3.5) (2.5,0)";

INSTANTIATE_TEST_SUITE_P(
    InHeaders, Mistakes,
    testing::Values(
        Mistake{{kBlocks, "NumSoftRectangularBlocks : 0\n", ""},
                "d.blocks: error: found no line that begins with NumSoftRectangularBlocks, "
                "expected 'NumSoftRectangularBlocks : COUNT'"},
        Mistake{{kBlocks, "NumTerminals : 1\n", ""},
                "d.blocks: error: found no line that begins with NumTerminals, expected "
                "'NumTerminals : COUNT'"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals 1"},
                "d.blocks:4: error: NumTerminals: found '1', expected a colon and a count"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals:1"},
                "d.blocks:4: error: found 'NumTerminals:1', expected 'NumTerminals : COUNT'"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals : -1"},
                "d.blocks:4: error: NumTerminals: found '-1', expected a count"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals : 1.5"},
                "d.blocks:4: error: NumTerminals: found '1.5', expected a count"},
        Mistake{{kBlocks, "Terminals : 1", "Terminals : 4294967296"},
                "d.blocks:4: error: NumTerminals: found '4294967296', expected a count"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals :"},
                "d.blocks:4: error: NumTerminals: found the end of the line, expected a count"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals : 1 or so"},
                "d.blocks:4: warning: NumTerminals: found 'or', expected the end of the line; what "
                "follows is passed over"},
        Mistake{{kBlocks, "UCSC blocks 1.0", "Made by hand"},
                "d.blocks:1: warning: found 'Made', expected a header; the line is passed over"},
        Mistake{{kNets, "UCLA nets 1.0", "Made by hand"},
                "d.nets:1: warning: found 'Made', expected a header; the line is passed over"},
        Mistake{{kNets, "NumPins : 5", "NumPins : 5\nNumPins : 5"},
                "d.nets:4: error: found NumPins again, expected it once (first on line 3)"},
        Mistake{{kNets, "NumPins : 5\nNetDegree : 2", "NetDegree : 2\nNumPins : 5"},
                "d.nets:4: error: found NumPins behind a record, expected it before the first"},
        Mistake{{kBlocks, "Blocks : 2", "Blocks : 3"},
                "d.blocks:3: error: found 2 hard blocks, expected 3 as NumHardRectilinearBlocks "
                "says"},
        Mistake{{kBlocks, "NumTerminals : 1", "NumTerminals : 4294967295"},
                "d.blocks:4: error: found 1 terminal, expected 4294967295 as NumTerminals says"},
        Mistake{{kNets, "NumNets : 2", "NumNets : 3"},
                "d.nets:2: error: found 2 nets, expected 3 as NumNets says"},
        Mistake{{kNets, "NumPins : 5", "NumPins : 9"},
                "d.nets:3: warning: found 5 pins, expected 9 as NumPins says"}));

INSTANTIATE_TEST_SUITE_P(
    InBlocks, Mistakes,
    testing::Values(
        Mistake{{kBlocks, "(2.5,0)", ""},
                "d.blocks:6: error: die 'b': found the end of the line, expected '('"},
        Mistake{{kBlocks, kB, ""},
                "d.blocks:6: error: die 'b': found the end of the line, expected '('"},
        Mistake{{kBlocks, "4 " + kB, ""},
                "d.blocks:6: error: die 'b': found the end of the line, expected a count"},
        Mistake{{kBlocks, "(2.5,0)", "(2.5,0"},
                "d.blocks:6: error: die 'b': found the end of the line, expected ')'"},
        Mistake{{kBlocks, "(0,0)", "(0,0"},
                "d.blocks:6: error: die 'b': found '(0,3.5)', expected ')'"},
        Mistake{{kBlocks, "(2.5,0)", "(2.5 0)"},
                "d.blocks:6: error: die 'b': found '0)', expected ','"},
        Mistake{{kBlocks, "(2.5,0)", "(2.5,)"},
                "d.blocks:6: error: die 'b': found ')', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(wide,0)"},
                "d.blocks:6: error: die 'b': found 'wide', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(2.5mm,0)"},
                "d.blocks:6: error: die 'b': found '2.5mm', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(nan,0)"},
                "d.blocks:6: error: die 'b': found 'nan', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(-inf,0)"},
                "d.blocks:6: error: die 'b': found '-inf', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(1e999,0)"},
                "d.blocks:6: error: die 'b': found '1e999', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(-2e15,0)"},
                "d.blocks:6: error: die 'b': found '-2e15', expected a number up to 1e15"},
        Mistake{{kBlocks, "(2.5,0)", "(0x2,0)"},
                "d.blocks:6: error: die 'b': found '0x2', expected a number up to 1e15"},
        Mistake{{kBlocks, "4 (0,0)", "four (0,0)"},
                "d.blocks:6: error: die 'b': found 'four', expected a count"},
        Mistake{{kBlocks, "4 (0,0)", "3 (0,0)"},
                "d.blocks:6: error: die 'b': found 3 corners, expected the 4 of a rectangle"},
        Mistake{{kBlocks, "4 " + kB, "6 (0,0) (0,2) (1,2) (1,1) (2,1) (2,0)"},
                "d.blocks:6: error: die 'b': found 6 corners, expected the 4 of a rectangle"},
        Mistake{{kBlocks, "4 " + kB, "4294967295 " + kB},
                "d.blocks:6: error: die 'b': found 4294967295 corners, expected the 4 of a "
                "rectangle"},
        Mistake{{kBlocks, "(2.5,0)", "(2.5,0) (1,1)"},
                "d.blocks:6: error: die 'b': found a corner too many, expected the 4 of a "
                "rectangle"},
        Mistake{{kBlocks, "(0,3.5)", "(1,3.5)"},
                "d.blocks:6: error: die 'b': found corners of no rectangle, expected one along the "
                "axes"},
        Mistake{{kBlocks, kB, "(0,0) (3.5,2.5) (0,3.5) (2.5,0)"},
                "d.blocks:6: error: die 'b': found corners of no rectangle, expected one along the "
                "axes"},
        Mistake{{kBlocks, kB, "(0,0) (0,0) (2.5,0) (2.5,0)"},
                "d.blocks:6: error: die 'b': found a size of 2.5 x 0, expected a width and a "
                "height above 0"},
        Mistake{{kBlocks, kB, "(0,0) (0,2) (20.5,2) (20.5,0)"},
                "d.blocks:6: error: die 'b': found a size of 20.5 x 2, expected one that fits into "
                "the area of 20 x 20"},
        Mistake{{kBlocks, kB, "(0,0) (0,20) (20,20) (20,0)"},
                "d.blocks: error: found dies of 440 in all, expected no more than the 400 of the "
                "area"},
        Mistake{{kBlocks, "b hard", "a hard"},
                "d.blocks:6: error: found the name 'a' again, expected it once (first on line 5)\n"
                "d.pl:3: error: found the name 'b', expected one from the .blocks file"},
        Mistake{{kBlocks, "p terminal", "b terminal\np terminal"},
                "d.blocks:7: error: found the name 'b' again, expected it once (first on line 6)\n"
                "d.blocks:4: error: found 2 terminals, expected 1 as NumTerminals says"},
        Mistake{{kBlocks, "p terminal", "p pad"},
                "d.blocks:7: error: block 'p': found 'pad', expected hardrectilinear or terminal"},
        Mistake{{kBlocks, "p terminal", "p"},
                "d.blocks:7: error: block 'p': found the end of the line, expected "
                "hardrectilinear or terminal"},
        Mistake{{kBlocks, "p terminal", "p terminal fixed"},
                "d.blocks:7: warning: terminal 'p': found 'fixed', expected the end of the line; "
                "what follows is passed over"},
        Mistake{{kBlocks, "p terminal", "p terminal\nDIMS terminal"},
                "d.blocks:8: error: found the name 'DIMS', expected none that is a word of the "
                "format\n"
                "d.blocks:4: error: found 2 terminals, expected 1 as NumTerminals says\n"
                "d.pl: error: found no line of 1 terminal, expected the position of every one; "
                "the first is 'DIMS'"},
        Mistake{{kBlocks, "p terminal", std::string("p terminal\n\xE4\x00q\x1B terminal", 24)},
                "d.blocks:8: error: found the name '\\xE4\\x00q\\x1B', expected characters that "
                "can be printed\n"
                "d.blocks:4: error: found 2 terminals, expected 1 as NumTerminals says\n"
                "d.pl: error: found no line of 1 terminal, expected the position of every one; "
                "the first is '\\xE4\\x00q\\x1B'"},
        Mistake{{kBlocks, "p terminal", "s softrectangular 10 0.5 2\np terminal"},
                "d.blocks:7: error: found the soft block 's', expected hard ones only, as others "
                "cannot be placed"},
        Mistake{{kBlocks, "Blocks : 0", "Blocks : 1"},
                "d.blocks:2: error: found 1 soft block, expected hard ones only, as others cannot "
                "be placed"}));

INSTANTIATE_TEST_SUITE_P(
    InPositions, Mistakes,
    testing::Values(
        Mistake{{kPlacement, "p 0 5.5\n", ""},
                "d.pl: error: found no line of 1 terminal, expected the position of every one; "
                "the first is 'p'"},
        Mistake{{kPlacement, "p 0 5.5", "p 0"},
                "d.pl:4: error: position of 'p': found the end of the line, expected a number up "
                "to 1e15"},
        Mistake{{kPlacement, "p 0 5.5", "p 0 inf"},
                "d.pl:4: error: position of 'p': found 'inf', expected a number up to 1e15"},
        Mistake{
            {kPlacement, "p 0 5.5", "p 0 5.5 N"},
            "d.pl:4: error: position of 'p': found 'N', expected ': ORIENTATION', 'DIMS = (W, H) : "
            "ORIENTATION' or the end of the line"},
        Mistake{
            {kPlacement, "b 0 0 : N", "b 0 0 :"},
            "d.pl:3: error: position of 'b': found the end of the line, expected an orientation"},
        Mistake{{kPlacement, "b 0 0 : N", "b 0 0 : n"},
                "d.pl:3: error: position of 'b': found 'n', expected an orientation: N, E, S, W, "
                "FN, FE, FS or "
                "FW"},
        Mistake{{kPlacement, "b 0 0 : N", "b 0 0 : N /FIXED"},
                "d.pl:3: warning: position of 'b': found '/FIXED', expected the end of the line; "
                "what follows "
                "is passed over"},
        Mistake{{kPlacement, "= (10, 4)", "= 10, 4"},
                "d.pl:2: error: position of 'a': found '10,', expected '('"},
        Mistake{{kPlacement, "b 0 0", "p 1 1"},
                "d.pl:4: error: found the name 'p' again, expected it once (first on line 3)"},
        Mistake{{kPlacement, "b 0 0", "c 0 0"},
                "d.pl:3: error: found the name 'c', expected one from the .blocks file"},
        Mistake{{kPlacement, "p 0 5.5", "p 0 20.5"},
                "d.pl:4: warning: found 1 terminal, expected none outside the area of 20 x 20; the "
                "first is 'p' at 0, 20.5"}));

INSTANTIATE_TEST_SUITE_P(
    InNets, Mistakes,
    testing::Values(
        Mistake{{kNets, "NetDegree : 2", "NetDegree : 3"},
                "d.nets:4: error: net 1: found 2 pins, expected 3 as NetDegree says"},
        Mistake{{kNets, "NetDegree : 3", "NetDegree : 2"},
                "d.nets:7: error: net 2: found 3 pins, expected 2 as NetDegree says"},
        Mistake{{kNets, "NetDegree : 2", "NetDegree : two"},
                "d.nets:4: error: net 1: found 'two', expected a count"},
        Mistake{{kNets, "NetDegree : 2", "NetDegree 2"},
                "d.nets:4: error: net 1: found '2', expected a colon and a count"},
        Mistake{{kNets, "NetDegree : 2", "NetDegree : 2 clock 1"},
                "d.nets:4: warning: net 1: found '1', expected the end of the line; what "
                "follows is passed over"},
        Mistake{{kNets, "NetDegree : 2\na I : %50 %-25\nb O", "b B : %0 %0\nNetDegree : 1\nb O"},
                "d.nets:4: error: found a pin of 'b', expected 'NetDegree : COUNT' before it\n"
                "d.nets:3: warning: found 4 pins, expected 5 as NumPins says\n"
                "d.nets:5: warning: found 1 net of less than 2 pins, expected 2 or more; the first "
                "is here"},
        Mistake{{kNets, "NumPins : 5\n", "b B : %0 %0\nNumPins : 5\n"},
                "d.nets:3: error: found a pin of 'b', expected 'NetDegree : COUNT' before it"},
        Mistake{{kNets, "NumPins : 5\n", "NumPins : 5\nc B\n"},
                "d.nets:4: error: found a pin of 'c', expected 'NetDegree : COUNT' before it"},
        Mistake{{kNets, "a I", "c I"},
                "d.nets:5: error: found the name 'c', expected one from the .blocks file"},
        Mistake{{kNets, "a I : %50 %-25", "a"},
                "d.nets:5: error: pin of 'a': found the end of the line, expected a direction, "
                "such as B"},
        Mistake{{kNets, "a I : %50 %-25", "a I"},
                "d.nets:5: error: pin of 'a': found the end of the line, expected '%'"},
        Mistake{{kNets, "a I : %50 %-25", "a I : %50"},
                "d.nets:5: error: pin of 'a': found the end of the line, expected '%'"},
        Mistake{{kNets, "%50 %-25", "50 -25"},
                "d.nets:5: error: pin of 'a': found '50', expected '%'"},
        Mistake{{kNets, "%50 %-25", "%50 %-25%"},
                "d.nets:5: warning: pin of 'a': found '%', expected the end of the line; what "
                "follows is passed over"},
        Mistake{{kNets, "%50 ", "%nan "},
                "d.nets:5: error: pin of 'a': found 'nan', expected a number up to 1e15"},
        Mistake{{kNets, "%50 ", "%50.02 "},
                "d.nets:5: error: pin of 'a': found %50.02 %-25, expected a place on the die, from "
                "%-50 to %50"},
        Mistake{{kNets, "%-25", "%-51"},
                "d.nets:5: error: pin of 'a': found %50 %-51, expected a place on the die, from "
                "%-50 to %50"},
        Mistake{{kNets, "p B", "p B : %50 %0"},
                "d.nets:9: warning: pin of 'p': found %50 %0, expected no offset at a terminal; it "
                "is passed over"}));

TEST(DesignReader, SaysEverythingAtOnceButNotTheSameTwice) {
    Files files;
    files.blocks = changed(kBlocks, "(2.5,0)", "(2.5,zero)").blocks;
    files.placement = changed(kPlacement, "p 0", "p zero").placement;
    files.nets = changed(kNets, "b O :", "b O").nets + "NetDegree : 0\n" + "c B : %0 %0\n";
    const Reading reading(files, {0, std::numeric_limits<double>::quiet_NaN()});
    EXPECT_EQ(reading.text,
              "error: found an area of 0 x nan, expected a width and a height above 0\n"
              "d.blocks:6: error: die 'b': found 'zero', expected a number up to 1e15\n"
              "d.pl:4: error: position of 'p': found 'zero', expected a number up to 1e15\n"
              "d.nets:12: error: found the name 'c', expected one from the .blocks file\n"
              "d.nets:11: error: net 3: found 1 pin, expected 0 as NetDegree says\n"
              "d.nets:2: error: found 3 nets, expected 2 as NumNets says\n"
              "d.nets:3: warning: found 6 pins, expected 5 as NumPins says\n");
}

TEST(DesignReader, TakesADieThatFitsWhenTurned) {
    EXPECT_EQ(Reading(Files{}, {4, 15}).text, "");
    EXPECT_EQ(Reading(Files{}, {3.9, 15}).text,
              "d.blocks:5: error: die 'a': found a size of 10 x 4, expected one that fits into the "
              "area of 3.9 x 15\n");
}

TEST(DesignReader, NamesDiesInNoNet) {
    Files files;
    files.nets = "NumNets : 0\nNumPins : 0\n";
    const Reading reading(files);
    EXPECT_TRUE(reading.design);
    EXPECT_EQ(reading.text,
              "d.blocks:5: warning: die 'a': found in no net, expected in one or more\n"
              "d.blocks:6: warning: die 'b': found in no net, expected in one or more\n");
}

TEST(DesignReader, CountsWhatItDoesNotPrint) {
    Files files;
    for (unsigned i = 0; i < 33; ++i) {
        files.placement += "x" + std::to_string(i) + " 0 0\n";
    }
    const std::string text = Reading(files).text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 21);
    EXPECT_EQ(text.substr(text.size() - 24), "\n... and 13 more errors\n");
}

TEST(DesignReader, StopsWhereNothingCanBeRight) {
    Files files;
    files.blocks = "NumTerminals : 1\n" + std::string(50000, 'x');
    files.nets = std::string(2000000, 'y');
    for (std::size_t i = 1; i < files.nets.size(); i += 2) {
        files.nets[i] = '\n';
    }
    files.nets = "NetDegree : 4000000000\n" + files.nets;
    const Reading reading(files);
    EXPECT_EQ(reading.text.find("d.blocks:2: error: found '" + std::string(40, 'x') +
                                "...', expected a line of less than 16 KiB\n"),
              0U);
    EXPECT_LT(reading.diagnostics.getErrorNum(), 10100U);
}

TEST(DesignReader, FindsTheFilesByAnyOfTheirNames) {
    const std::string folder = testing::TempDir() + "korvel_design_reader";
    std::filesystem::create_directories(folder);
    const Files files;
    std::ofstream(folder + "/x.1.blocks") << files.blocks;
    std::ofstream(folder + "/x.1.pl") << files.placement;
    std::ofstream(folder + "/x.1.nets") << files.nets;
    for (const char* extension : {"", ".blocks", ".pl", ".nets"}) {
        Diagnostics diagnostics;
        const auto design = readDesign(folder + "/x.1" + extension, kRegion, diagnostics);
        ASSERT_TRUE(design) << printed(diagnostics);
        EXPECT_EQ(design->name, "x.1");
    }
    std::filesystem::remove(folder + "/x.1.blocks");
    std::filesystem::remove(folder + "/x.1.nets");
    std::filesystem::create_directories(folder + "/x.1.nets");
    Diagnostics diagnostics;
    EXPECT_FALSE(readDesign(folder + "/x.1", kRegion, diagnostics));
    EXPECT_EQ(printed(diagnostics),
              folder +
                  "/x.1.blocks: error: found no file that can be read: No such file or "
                  "directory\n" +
                  folder + "/x.1.nets: error: found a directory, expected a file\n");
    std::filesystem::remove_all(folder);
}

// What reads without an error is a design that holds together; nothing else may happen.
TEST(DesignReader, SurvivesAnything) {
    std::mt19937 random(7);
    const auto below = [&random](std::size_t n) { return random() % n; };
    const std::string pieces[] = {"(",
                                  ")",
                                  "%",
                                  ":",
                                  "\n",
                                  " ",
                                  "-",
                                  "nan",
                                  "1e9",
                                  "NetDegree : ",
                                  std::string(1, '\0'),
                                  "\xFF",
                                  "4294967295",
                                  "DIMS",
                                  "#"};
    std::size_t sound = 0;
    for (unsigned run = 0; run < 2000; ++run) {
        Files files;
        for (std::string* file : {&files.blocks, &files.placement, &files.nets}) {
            for (std::size_t i = below(3); i > 0; --i) {
                const std::string piece = pieces[below(std::size(pieces))];
                file->replace(below(file->size()), below(4), piece);
            }
        }
        const Reading reading(files);
        EXPECT_NE(reading.design.has_value(), reading.diagnostics.hasErrors());
        sound += reading.design ? 1 : 0;
        for (const Diagnostics::Finding& finding : reading.diagnostics.getFindings()) {
            EXPECT_TRUE(isPrintable(finding.text));
        }
    }
    EXPECT_GT(sound, 100U);
    EXPECT_LT(sound, 1000U);
}

}  // namespace
}  // namespace korvel::test
