// The benchmark reader: what it takes from the files, and the exact words for what it refuses.

#include "support/helpers.h"

namespace korvel::test {
namespace {

// A design with all that is tolerated: header lines, comments, DIMS, blocks without position,
// Windows line ends, a terminal whose name a die has.
struct Files {
    std::string blocks =
        "UCSC blocks 1.0\n# two dies\nNumSoftRectangularBlocks : 0\n"
        "NumHardRectilinearBlocks : 2\nNumTerminals : 2\n\n"
        "a hardrectilinear 4 (1, 2) (1, 6) (11, 6) (11, 2)\r\n"
        "b hardrectilinear 4 (0,0) (0,3.5) (2.5,3.5) (2.5,0)\n"
        "p terminal\n# in between\na terminal\n";
    std::string placement = "UCLA pl 1.0\n# fixed\np 100 200.5\na 3 4 DIMS = (10, 4) : W\nb 0 0\n";
    std::string nets =
        "UCLA nets 1.0\nNumNets : 2\nNumPins : 4\n"
        "NetDegree : 2\na I : %50 %-25.0\nb O : %-50 %0\n"
        "# to the outside\nNetDegree : 2\na B : %0 %0 # centre\np B\n";
};

struct Reading {
    explicit Reading(const Files& files)
        : status(read(placer, files.blocks, files.placement, files.nets)) {}
    std::ostringstream report;
    Placer placer{0.0F, report};
    int status;  // -1: read to the end
};

TEST(Reader, FillsTheNetlist) {
    Reading reading(Files{});
    EXPECT_EQ(reading.report.str(), "");
    ASSERT_EQ(reading.status, -1);
    Netlist& netlist = reading.placer.netlist;
    const Block& a = netlist.blocks[0];
    EXPECT_EQ(a.getWidth(), 10);
    EXPECT_EQ(a.getHeight(), 4);
    EXPECT_EQ(a.getOrient(), Orient::W);
    EXPECT_EQ(a.getCoord().y, 4);
    EXPECT_EQ(netlist.blocks[1].getHeight(), 3.5F);
    EXPECT_EQ(netlist.terminals[0].getIndex(), 2);
    EXPECT_EQ(netlist.terminals[0].getCoord().y, 200.5F);
    EXPECT_EQ(netlist.terminals[1].getCoord().x, 0);  // the die of its name was placed
    // Percent from the centre become fractions from the corner.
    std::vector<Pin>& pins = netlist.pins;
    EXPECT_EQ(pins[0].getOffset().x, 1);
    EXPECT_EQ(pins[0].getOffset().y, 0.25F);
    EXPECT_EQ(pins[1].getOffset().x, 0);
    EXPECT_EQ(pins[1].getDirection(), 'O');
    EXPECT_TRUE(pins[3].isPlaced());
    EXPECT_EQ(pins[3].getCoord().x, 100);
    EXPECT_EQ(netlist.nets[1].getPlacedPinsNum(), 1U);
    EXPECT_EQ(a.getNetsIndexes(), (std::vector<unsigned>{0, 1}));
    EXPECT_EQ(a.getPins(), (std::vector<Pin*>{&pins[0], &pins[2]}));
    EXPECT_EQ(netlist.nets[1].getPins(), (std::vector<Pin*>{&pins[2], &pins[3]}));
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

TEST(Reader, ErrorsAndWarningsAreWordedExactly) {
    const std::string noBlock = "ERROR by .nets file parsing: cannot find a block with name ";
    const std::string noPlace = "ERROR by .pl file parsing: cannot find a block with name ";
    const std::string maps = " in  blocks or hash maps\n";
    struct Case {
        Which which;
        std::string piece;
        std::string by;
        int status;
        std::string text;
    };
    const Case cases[] = {
        {kBlocks, "Blocks : 0", "Blocks : 1", 0,
         "ERROR: .blocks contains soft blocks -- this tool cannot work with soft blocks\n"},
        {kBlocks, "p terminal", "p pad", 0,
         "ERROR by parsing: .blocks contains unreadable block type\n"},
        {kBlocks, "p terminal", "s softrectangular\np terminal", -1,
         "ERROR by parsing: .blocks contains soft blocks -- this tool cannot work with soft "
         "blocks\n"},
        {kBlocks, "4 (0,0) (0,3.5) (2.5,3.5) (2.5,0)",
         "6 (0,0) (0,3.5) (2.5,3.5) (2,3.5) (1,1) (2.5,0)", -1,
         "ERROR in parsing .blocks file: rectilinear blocks can be only rectangles for now\n"},
        {kBlocks, "4 (0,0) (0,3.5) (2.5,3.5) (2.5,0)", "3 (0,0) (0,3.5) (2.5,3.5)", -1, ""},
        {kBlocks, "4 (0,0) (0,3.5)", "2 (0,0) (0,3.5)", 0,
         "ERROR by .blocks file parsing: cannot read the vertices of block b\n"},
        {kBlocks, "(11, 6)", "(wide, 6)", 0,
         "ERROR by .blocks file parsing: cannot read the vertices of block a\n"},
        {kPlacement, "b 0 0", "c 0 0", 0, noPlace + "c in map\n"},
        {kPlacement, "b 0 0", "b 0 0 : N", 0, noPlace + ": in map\n"},
        {kPlacement, "b 0 0", "b 0", 0,
         "ERROR by .pl file parsing: cannot read the position of b\n"},
        {kPlacement, ": W", ": w", -1,
         "\nERROR: by converting string value to Orient enum value (BasicStructs)\n"},
        {kNets, "b O", "c O", 0, noBlock + "c" + maps},
        {kNets, "p B", "p B : %0 %0", 0, noBlock + ":" + maps},
        {kNets, "NetDegree : 2\na I", "a I", 0,
         "ERROR by .nets file parsing: pin of a comes before the first NetDegree\n"},
        {kNets, "Degree : 2", "Degree : two", 0,
         "ERROR by .nets file parsing: cannot read the degree of a net\n"},
        {kNets, "%0 # centre", "0", 0,
         "ERROR by .nets file parsing: cannot read the pin offsets of block a\n"},
        {kNets, "NumPins : 4", "NumPins : 9", -1,
         "CRITICAL WARNING by .nets file parsing: number of parsed pins and given number of pins "
         "are not same!\nParsed pin number: 4, Given pin number: 9\n\n"},
    };
    for (const Case& c : cases) {
        Reading reading(changed(c.which, c.piece, c.by));
        EXPECT_EQ(reading.status, c.status) << c.by;
        EXPECT_EQ(reading.report.str(), c.text) << c.by;
    }
}

TEST(Reader, LinesMayHaveAnyLength) {
    const std::string name(50000, 'b');
    Files files = changed(kBlocks, "b hard", std::string(50000, ' ') + name + " hard");
    files.placement = "p 100 200.5\n" + name + " 3 4";
    files.nets = "NumNets : 0 NumPins : 0";
    Reading reading(files);
    EXPECT_EQ(reading.report.str(), "");
    ASSERT_EQ(reading.status, -1);
    EXPECT_EQ(reading.placer.netlist.blocks[1].getName(), name);
    EXPECT_EQ(reading.placer.netlist.blocks[1].getCoord().y, 4);
}

TEST(Reader, MorePinsThanDeclaredAreSafe) {
    Files files;
    files.nets = "NumNets : 60\nNumPins : 1\n";
    for (unsigned i = 0; i < 60; ++i) {
        files.nets += "NetDegree : 3\na B : %50 %0\nb B : %0 %50\np B\n";
    }
    Reading reading(files);
    ASSERT_EQ(reading.status, -1);
    reading.placer.run();
    EXPECT_EQ(readReport(reading.report.str()).at(0).placement.size(), 2U);
}

TEST(Reader, NamesTheFileThatIsMissing) {
    std::ostringstream report;
    Placer placer(0.0F, report);
    placer.params.setInputName("no/such/design");
    EXPECT_THROW(IO(placer).parseInput(), ProcessEnd);
    EXPECT_EQ(report.str(),
              "\n===   Parsing Input Files   ===\n\n"
              "ERROR: .blocks file could not be opened successfully\n");
}

TEST(ReaderDeathTest, CountsAndOffsetsThatCannotBeAbort) {
    struct Case {
        Which which;
        const char* piece;
        const char* by;
        const char* assertion;
    };
    const Case cases[] = {
        {kBlocks, "Blocks : 2", "Blocks : 3", "placer.getBlockNum\\(\\) == bIndex"},
        {kBlocks, "Terminals : 2", "Terminals : 1", "placer.getTermNum\\(\\) == tIndex-bIndex"},
        {kNets, "Nets : 2", "Nets : 1", "src/IO.*placer.getNetNum\\(\\) == nIndex"},
        {kNets, "%50 ", "%4951 ", "pOffsets.x <= 50.0 && pOffsets.x >=-50.0"},
        {kNets, "%50 ", "%-5051 ", "pOffsets.x <= 50.0 && pOffsets.x >=-50.0"},
        {kNets, "%-25.0", "%-5051", "pOffsets.y <= 50.0 && pOffsets.y >=-50.0"},
        {kNets, "%-25.0", "%4951", "pOffsets.y <= 50.0 && pOffsets.y >=-50.0"},
    };
    for (const Case& c : cases) {
        EXPECT_DEATH(Reading(changed(c.which, c.piece, c.by)), c.assertion);
    }
    EXPECT_EQ(Reading(changed(kNets, "%50 ", "%4950 ")).status, -1);  // lax, on purpose
}

}  // namespace
}  // namespace korvel::test
