// The front door as its users meet it: whole runs of the program with `check`, `draw` and `help`.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/front_door.h"

namespace korvel::test {
namespace {

using testing::Test;
using Json = nlohmann::json;

class Commands : public Test {
protected:
    Commands() {
        door.write("d.blocks",
                   "NumSoftRectangularBlocks : 0\nNumHardRectilinearBlocks : 2\nNumTerminals : 1\n"
                   "big hardrectilinear 4 (0, 0) (0, 2) (4, 2) (4, 0)\n"
                   "small hardrectilinear 4 (0, 0) (0, 1) (2, 1) (2, 0)\nt terminal\n");
        door.write("d.pl", "big 0 0\nsmall 0 0\nt 10 0\n");
        door.write("d.nets",
                   "NumNets : 3\nNumPins : 6\n"
                   "NetDegree : 2\nbig B : %50 %50\nsmall B : %-50 %-50\n"
                   "NetDegree : 2\nbig B : %-50 %0\nbig B : %50 %0\n"
                   "NetDegree : 2\nsmall B : %0 %0\nt B\n");
        door.write("good.pl", "big 0 0 : N\nsmall 5 2 : E\n");
        door.write("bad.pl", "big 0 0 : N\nsmall 3 1.5 : FN\n");
    }
    static std::string firstLine(const std::string& text) {
        return text.substr(0, text.find('\n'));
    }

    FrontDoor door;
};

TEST_F(Commands, EndWithTheirStatus) {
    struct Case {
        const char* arguments;
        int status;
        const char* message;  // the first line on standard error
    };
    const Case cases[] = {
        {"check d good.pl --area 10 10", 0, ""},
        {"check d.nets good.pl --area 10 10", 0, ""},
        {"check --area 10 10 d bad.pl", 1, ""},
        {"check d bad.pl --area 10 10 --tolerance 2", 1, ""},  // a mirrored die stays one
        {"check d good.pl --area 10 3.5", 1, ""},
        {"draw d bad.pl --area 10 10 -o p.svg", 0, ""},
        {"--version", 0, ""},
        {"help draw", 0, ""},
        {"check d good.pl", 2, "korvel check: --area is required"},
        {"check d good.pl --area 10", 2, "korvel check: --area: 2 required W H missing"},
        {"check d good.pl --area 10 -1", 2,
         "korvel check: --area: '-1' is not a positive finite number"},
        {"check d good.pl --area inf 1", 2,
         "korvel check: --area: 'inf' is not a positive finite number"},
        {"check d good.pl --area 1x 1", 2,
         "korvel check: --area: '1x' is not a positive finite number"},
        {"check d good.pl --area 10 10 --tolerance -1", 2,
         "korvel check: --tolerance: '-1' is not zero or a positive finite number"},
        {"check d good.pl --area 10 10 --spacing -1", 2,
         "korvel check: --spacing: '-1' is not zero or a positive finite number"},
        {"draw d good.pl --area 10 10 -o p.svg --edge inf", 2,
         "korvel draw: --edge: 'inf' is not zero or a positive finite number"},
        {"check d good.pl --area 10 10 --rules none.yaml", 3,
         "none.yaml: error: found no file that can be read: No such file or directory"},
        {"check d --area 10 10", 2, "korvel check: PLACEMENT is required"},
        {"draw d good.pl --area 10 10", 2, "korvel draw: --output is required"},
        {"draw d good.pl --area 10 10 -o p.svg more", 2,
         "korvel draw: The following argument was not expected: more"},
        {"check none good.pl --area 10 10", 3,
         "none.blocks: error: found no file that can be read: No such file or directory"},
        {"check d none.pl --area 10 10", 3,
         "none.pl: error: found no file that can be read: No such file or directory"},
        {"check d good.pl --area 10 10 --json none/r.json", 4,
         "korvel: cannot write 'none/r.json': No such file or directory"},
        {"draw d good.pl --area 10 10 -o none/p.svg", 4,
         "korvel: cannot write 'none/p.svg': No such file or directory"},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.arguments);
        EXPECT_EQ(door.run(expected.arguments), expected.status);
        EXPECT_EQ(firstLine(door.err()), expected.message);
    }
}

TEST_F(Commands, SayThatStandardOutputIsFull) {
    EXPECT_EQ(door.run("check d good.pl --area 10 10", "> /dev/full"), 4);
    EXPECT_EQ(door.err(), "korvel: cannot write to standard output\n");
}

TEST_F(Commands, CheckTellsPeople) {
    door.run("check d good.pl --area 10 10");
    EXPECT_EQ(door.out(),
              "Design       d\n"
              "             2 dies, 1 terminal, 3 nets\n"
              "Area         10 x 10\n"
              "Utilization  10.0 %\n"
              "Wirelength   14.5 (HPWL)\n"
              "             10.5 without nets on one die\n"
              "Extent       6 x 4 from (0, 0)\n"
              "Legal        yes\n");
    door.run("check d bad.pl --area 4.5 10");
    EXPECT_EQ(door.out(),
              "Design       d\n"
              "             2 dies, 1 terminal, 3 nets\n"
              "Area         4.5 x 10\n"
              "Utilization  22.2 %\n"
              "Wirelength   13.5 (HPWL)\n"
              "             9.5 without nets on one die\n"
              "Extent       5 x 2.5 from (0, 0)\n"
              "Legal        no: 1 overlap, 1 die outside, 1 die mirrored\n"
              "\nOverlapping dies, the largest overlap first:\n"
              "  big  small  area 0.5  1 x 0.5\n"
              "\nDies outside the area:\n"
              "  small  by 0.5 at the right\n"
              "\nDies that are mirrored, while they can only be turned:\n"
              "  small  FN\n");
}

TEST_F(Commands, CheckTellsPrograms) {
    EXPECT_EQ(door.run("check d bad.pl --area 4.5 10 --json -"), 1);
    Json report = Json::parse(door.out());
    EXPECT_EQ(report["format"], 1);
    EXPECT_EQ(report["command"], "check");
    EXPECT_EQ(report["legal"], false);
    EXPECT_EQ(report["design"],
              Json::parse(R"({"name": "d", "dies": 2, "terminals": 1, "nets": 3})"));
    EXPECT_EQ(report["region"], Json::parse(R"({"width": 4.5, "height": 10})"));
    EXPECT_EQ(report["dies"][1], Json::parse(R"({"name": "small", "x": 3, "y": 1.5,
                                                 "orientation": "FN", "width": 2, "height": 1})"));
    Json judgement = report["judgement"];
    EXPECT_DOUBLE_EQ(judgement["tolerance"], 1e-5);
    judgement.erase("tolerance");
    judgement.erase("utilization");
    EXPECT_EQ(judgement, Json::parse(R"({
        "wirelength": 13.5, "wirelengthBetweenDies": 9.5,
        "extent": {"x": 0, "y": 0, "width": 5, "height": 2.5},
        "overlapNum": 1, "overlapArea": 0.5,
        "overlaps": [{"dies": ["big", "small"], "width": 1, "height": 0.5, "area": 0.5}],
        "outside": [{"die": "small", "left": 0, "right": 0.5, "below": 0, "above": 0}],
        "mirrored": ["small"]})"));
}

TEST_F(Commands, CheckWritesTheReportBesideTheSummary) {
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --json r.json"), 0);
    EXPECT_EQ(Json::parse(door.read("r.json"))["legal"], true);
    EXPECT_NE(door.out(), "");
}

TEST_F(Commands, CheckTellsOfDiesThatAreMissingOrUnknown) {
    door.write("part.pl", "small 5 2 : E\nhuge 1 1\n");
    EXPECT_EQ(door.run("check d part.pl --area 10 10 --json -"), 1);
    const Json report = Json::parse(door.out());
    EXPECT_EQ(report["legal"], false);
    EXPECT_EQ(report["missing"], Json({"big"}));
    EXPECT_EQ(report["unknown"], Json({"huge"}));
    EXPECT_FALSE(report.contains("judgement"));
    door.write("more.pl", "big 0 0\nsmall 5 2 : E\nhuge 1 1\n");
    EXPECT_EQ(door.run("check d more.pl --area 10 10"), 1);
    EXPECT_NE(door.out().find("Legal        no: 1 name unknown\n"), std::string::npos);
}

constexpr const char* kRules =
    "spacing: 2\nedge: 0.5\nkeepouts: [[6, 2, 2, 2]]\n"
    "dies: { small: { turns: [N, S] }, big: { at: [0, 1], turn: N } }\n"
    "pairs: [ { dies: [big, small], weight: 3, reach: 1 } ]\n";

TEST_F(Commands, CheckTellsPeopleOfRules) {
    door.write("r.yaml", kRules);
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --rules r.yaml"), 1);
    EXPECT_EQ(
        door.out(),
        "Design       d\n"
        "             2 dies, 1 terminal, 3 nets\n"
        "Area         10 x 10\n"
        "Utilization  10.0 %\n"
        "Wirelength   14.5 (HPWL)\n"
        "             10.5 without nets on one die\n"
        "Extent       6 x 4 from (0, 0)\n"
        "Weighted     20.5 (HPWL times the nets' weights)\n"
        "Rules        spacing 2, edge 0.5, 1 keep-out, 1 die fixed, 1 die not to be turned "
        "freely, 1 net weighted, 1 net limited in reach\n"
        "Legal        no: 1 gap too small, 1 fixed die moved, 1 die turned wrongly, 1 net too "
        "long\n"
        "\nGaps that are too small:\n"
        "  big  small  1 of 2\n"
        "\nFixed dies that lie elsewhere:\n"
        "  big  at (0, 0)  fixed at (0, 1)\n"
        "\nDies in an orientation that is not allowed:\n"
        "  small  E  allowed: N, S\n"
        "\nNets beyond their reach:\n"
        "  net 1  3 of 1  big, small\n");
    door.write("side.pl", "big 0 1\nsmall 7.75 3 : N\n");
    door.write("w.yaml", "keepouts: [[6, 2, 2, 2]]\ndies: { small: { within: [0, 0, 9, 9] } }\n");
    EXPECT_EQ(door.run("check d side.pl --area 10 10 --rules w.yaml --edge 0.5"), 1);
    EXPECT_EQ(door.out().substr(door.out().find("Rules")),
              "Rules        edge 0.5, 1 keep-out, 1 die within a rectangle\n"
              "Legal        no: 2 dies too near a side, 1 die in a keep-out, 1 die beyond its "
              "rectangle\n"
              "\nDies too near a side of the area:\n"
              "  big    left   0 of 0.5\n"
              "  small  right  0.25 of 0.5\n"
              "\nDies in keep-outs:\n"
              "  small  keep-out 1  area 0.25  0.25 x 1\n"
              "\nDies beyond their rectangle:\n"
              "  small  right  by 0.75\n");
}

TEST_F(Commands, CheckTellsProgramsOfRules) {
    door.write("r.yaml", kRules);
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --rules r.yaml --spacing 3 --json -"), 1);
    const Json report = Json::parse(door.out());
    EXPECT_EQ(report["legal"], false);
    EXPECT_EQ(report["weightedWirelength"], 20.5);
    EXPECT_EQ(report["rules"], Json::parse(R"({
        "spacing": 3, "edge": {"left": 0.5, "bottom": 0.5, "right": 0.5, "top": 0.5},
        "keepouts": [{"x": 6, "y": 2, "width": 2, "height": 2}],
        "dies": [{"name": "big", "at": {"x": 0, "y": 1}, "orientations": ["N"],
                  "within": null, "spacing": null},
                 {"name": "small", "at": null, "orientations": ["N", "S"],
                  "within": null, "spacing": null}],
        "pairs": [{"dies": ["big", "small"], "spacing": null, "weight": 3, "reach": 1}]})"));
    EXPECT_EQ(report["violations"], Json::parse(R"({
        "gapNum": 1, "gaps": [{"dies": ["big", "small"], "found": 1, "needed": 3}],
        "edges": [], "keepouts": [],
        "moved": [{"die": "big", "found": {"x": 0, "y": 0}, "fixed": {"x": 0, "y": 1}}],
        "turned": [{"die": "small", "found": "E", "allowed": ["N", "S"]}], "within": [],
        "reaches": [{"net": 1, "dies": ["big", "small"], "length": 3, "reach": 1}]})"));
    door.write("side.pl", "big 0 1\nsmall 7.75 3 : N\n");
    door.write("w.yaml", "keepouts: [[6, 2, 2, 2]]\ndies: { small: { within: [0, 0, 9, 9] } }\n");
    EXPECT_EQ(door.run("check d side.pl --area 10 10 --rules w.yaml --edge 0.5 --json -"), 1);
    const Json violations = Json::parse(door.out())["violations"];
    EXPECT_EQ(violations["edges"], Json::parse(R"([
        {"die": "big", "side": "left", "found": 0, "needed": 0.5},
        {"die": "small", "side": "right", "found": 0.25, "needed": 0.5}])"));
    EXPECT_EQ(violations["keepouts"], Json::parse(R"([
        {"die": "small", "keepout": 1, "width": 0.25, "height": 1, "area": 0.25}])"));
    EXPECT_EQ(violations["within"],
              Json::parse(R"([{"die": "small", "side": "right", "beyond": 0.75}])"));
}

TEST_F(Commands, CheckTakesTheRulesOfTheExample) {
    door.write("e.pl",
               "cpu0 5440 4850\ncpu1 13500 4850\nmem0 5900 12500\nmem1 13650 12500\n"
               "mem2 11550 200\nio 6900 0\n");
    const std::string example = std::string("'") + KORVEL_EXAMPLES + "/interposer'";
    EXPECT_EQ(door.run("check " + example + " e.pl --area 22000 18000 --rules " + example +
                       ".rules.yaml"),
              0);
    EXPECT_EQ(door.err(), "");
}

TEST_F(Commands, CheckFindsRulesThatAreKept) {
    door.run("check d good.pl --area 10 10");
    const std::string plain = door.out();
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --spacing 1 --edge 0"), 0);
    std::string expected = plain;
    expected.insert(plain.find("Legal"), "Rules        spacing 1\n");
    EXPECT_EQ(door.out(), expected);
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --edge 0.5 --tolerance 0.5"), 0);
    door.write("empty.yaml", "# nothing yet\n");
    EXPECT_EQ(door.run("check d good.pl --area 10 10 --rules empty.yaml"), 0);
    EXPECT_NE(door.out().find("Rules        none, dies may touch\n"), std::string::npos);
}

TEST_F(Commands, TakeNoWrongRules) {
    door.write("wrong.yaml", "spacing: x\ndies: { bigg: { turn: N } }\n");
    for (const char* command :
         {"check d good.pl --area 10 10", "draw d good.pl --area 10 10 -o -"}) {
        EXPECT_EQ(door.run(std::string(command) + " --rules wrong.yaml --edge 6"), 3);
        EXPECT_EQ(door.out(), "");
        EXPECT_EQ(door.err(),
                  "wrong.yaml:1: error: spacing: found 'x', expected a length of 0 or more\n"
                  "wrong.yaml:2: error: dies: found the name 'bigg', expected that of a die; the "
                  "nearest is 'big'\n"
                  "error: edge: found [6, 6, 6, 6], expected some of the area of 10 x 10 to be "
                  "left\n");
    }
}

TEST_F(Commands, DrawWritesOnePictureOrNone) {
    EXPECT_EQ(door.run("draw d good.pl --area 10 10 -o p.svg"), 0);
    EXPECT_EQ(door.out(), "");
    EXPECT_EQ(door.run("draw d good.pl --area 10 10 -o -"), 0);
    EXPECT_EQ(door.out(), door.read("p.svg"));
    EXPECT_EQ(door.run("draw d good.pl --area 10 10 --spacing 2 -o ruled.svg"), 0);
    EXPECT_NE(door.read("ruled.svg").find("gap too small"), std::string::npos);
    door.write("part.pl", "small 5 2 : E\n");
    EXPECT_EQ(door.run("draw d part.pl --area 10 10 -o part.svg"), 3);
    EXPECT_EQ(door.err(), "part.pl: error: found no place for 'big', expected all dies\n");
    EXPECT_FALSE(door.has("part.svg"));
}

TEST_F(Commands, HelpTellsOfTheCommandAskedFor) {
    for (const char* arguments : {"help check", "check --help", "check -h"}) {
        EXPECT_EQ(door.run(arguments), 0);
        EXPECT_NE(door.out().find("korvel check"), std::string::npos) << arguments;
        EXPECT_NE(door.out().find("--tolerance"), std::string::npos) << arguments;
    }
}

// Words that are no commands, or not in the first place, are the classic interface's.
TEST_F(Commands, LeaveTheRestToTheClassicInterface) {
    for (const char* arguments : {"", "-h", "chec", "-f check", "-f d -o d -a 10 10 --json"}) {
        EXPECT_EQ(door.run(arguments), 1);
        EXPECT_NE(door.out(), "") << arguments;
        EXPECT_EQ(door.err(), "") << arguments;
    }
}

}  // namespace
}  // namespace korvel::test
