// Placement files of any tool, and our own there and back.

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "design/Numeral.h"
#include "design/PlacementFile.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

korvel::Design twoDies() {
    korvel::Design design;
    design.dies = {{"a", {10, 4}}, {"b", {2.5, 3.5}}};
    design.terminals = {{"p", {0, 1.0 / 3.0}}};
    return design;
}

struct PlacementReading {
    explicit PlacementReading(const std::string& file) {
        std::istringstream in(file);
        Diagnostics diagnostics;
        read = readPlacement(in, "x.pl", twoDies(), diagnostics);
        std::ostringstream out;
        diagnostics.print(out);
        text = out.str();
    }
    ReadPlacement read;
    std::string text;
};

TEST(PlacementFile, IsWrittenInTheShortestExactForm) {
    std::ostringstream out;
    writePlacement(out, twoDies(), {{{0.1 + 0.2, 1e6}, Orient::N}, {{-0.0, 1e-300}, Orient::FE}});
    EXPECT_EQ(out.str(),
              "UCLA pl 1.0\n\n"
              "a 0.30000000000000004 1000000 DIMS = (10, 4) : N\n"
              "b 0 1e-300 DIMS = (3.5, 2.5) : FE\n"
              "p 0 0.3333333333333333\n");
}

TEST(PlacementFile, ComesBackAsItWas) {
    for (int i = 0; i < 8; ++i) {
        const auto orient = static_cast<Orient>(i);
        const korvel::Placement placement{{{1.0 / 3.0, -1e15}, orient}, {{2e-7, 9e14}, Orient::W}};
        std::ostringstream out;
        writePlacement(out, twoDies(), placement);
        const PlacementReading reading(out.str());
        EXPECT_EQ(reading.text, "");
        const auto whole = reading.read.whole();
        ASSERT_TRUE(whole);
        for (std::size_t die = 0; die < 2; ++die) {
            EXPECT_EQ((*whole)[die].at.x, placement[die].at.x);
            EXPECT_EQ((*whole)[die].at.y, placement[die].at.y);
            EXPECT_EQ((*whole)[die].orient, placement[die].orient);
        }
    }
}

TEST(PlacementFile, IsReadByTheBaseReader) {
    std::ostringstream out;
    writePlacement(out, twoDies(), {{{1.5, 2}, Orient::E}, {{20, 0.25}, Orient::S}});
    const Design design{{{"a", 10, 4}, {"b", 2.5, 3.5}}, {{"p", 0, 0}}, {}, {}};
    std::ostringstream report;
    Placer placer(0.0F, report);
    ASSERT_EQ(read(placer, design.blocksFile(), out.str(), "NumNets : 0\nNumPins : 0\n"), -1);
    EXPECT_EQ(report.str(), "");
    EXPECT_EQ(placer.netlist.blocks[0].getOrient(), Orient::E);
    EXPECT_EQ(placer.netlist.blocks[1].getCoord().y, 0.25F);
    EXPECT_EQ(placer.netlist.terminals[0].getCoord().y, 1.0F / 3.0F);
}

TEST(PlacementFile, OfOtherToolsMayBeBare) {
    const PlacementReading reading("# by hand\nb 1 2\na\t3\t4 : FS\r\n");
    EXPECT_EQ(reading.text, "");
    const auto whole = reading.read.whole();
    ASSERT_TRUE(whole);
    EXPECT_EQ((*whole)[0].orient, Orient::FS);
    EXPECT_EQ((*whole)[0].at.y, 4);
    EXPECT_EQ((*whole)[1].orient, Orient::N);
}

TEST(PlacementFile, LeavesMissingAndUnknownToTheCaller) {
    const PlacementReading reading("UCLA pl 1.0\nc 0 0\nb 1 2\nd what\n");
    EXPECT_EQ(reading.text, "");
    EXPECT_FALSE(reading.read.whole());
    EXPECT_EQ(reading.read.missing(twoDies()), std::vector<std::string>{"a"});
    ASSERT_EQ(reading.read.unknown.size(), 2U);
    EXPECT_EQ(reading.read.unknown[1].name, "d");
    EXPECT_EQ(reading.read.unknown[1].line, 4U);
}

TEST(PlacementFile, FindingsAreWordedExactly) {
    struct Case {
        const char* file;
        const char* text;
        bool hasB;
    };
    const Case cases[] = {
        {"b 1 2 DIMS = (2.5, 3.5) : N\nb 1 3\n",
         "x.pl:2: error: found the name 'b' again, expected it once (first on line 1)\n", true},
        {"b 1 two\n", "x.pl:1: error: position of 'b': found 'two', expected a number up to 1e15\n",
         false},
        {"b 1 2 DIMS = (2.5, 3.6) : N\n",
         "x.pl:1: error: die 'b': found dimensions of (2.5, 3.6), expected (2.5, 3.5) in "
         "orientation N\n",
         false},
        {"b 1 2 DIMS = (2.500001, 3.5) : FS\n", "", true},
        {"b 1 2 DIMS = (2.5, 3.5) : W\n",
         "x.pl:1: warning: die 'b': found dimensions of (2.5, 3.5), expected (3.5, 2.5) in "
         "orientation W; the orientation is what counts\n",
         true},
        {"b 1 2 DIMS = (3.5, 2.5) : N\n",
         "x.pl:1: error: die 'b': found dimensions of (3.5, 2.5), expected (2.5, 3.5) in "
         "orientation N\n",
         false},
        {"b 1 2 DIMS (2.5, 3.5) :\n",
         "x.pl:1: error: position of 'b': found the end of the line, expected an orientation\n",
         false},
        {"p 7 8\nb 1 2\n",
         "x.pl:1: warning: terminal 'p': found (7, 8), expected (0, 0.3333333333333333) as in the "
         "design, which is what counts\n",
         true},
    };
    for (const Case& c : cases) {
        const PlacementReading reading(c.file);
        EXPECT_EQ(reading.text, c.text);
        EXPECT_EQ(reading.read.dies[1].has_value(), c.hasB) << c.file;
    }
}

TEST(PlacementFile, ThatIsNotThereIsAnError) {
    Diagnostics diagnostics;
    const ReadPlacement read = readPlacement("no/such.pl", twoDies(), diagnostics);
    EXPECT_EQ(read.missing(twoDies()).size(), 2U);
    EXPECT_EQ(diagnostics.getErrorNum(), 1U);
    EXPECT_EQ(diagnostics.getFindings()[0].file, "no/such.pl");
}

}  // namespace
}  // namespace korvel::test
