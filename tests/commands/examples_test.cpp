// The shipped examples from their files to every command's result. What the program says of them is
// compared with sums over the files by the tests' own reader and judge.

#include <gtest/gtest.h>

#include <iomanip>
#include <nlohmann/json.hpp>

#include "support/plain_reader.h"

namespace korvel::test {
namespace {

using Json = nlohmann::json;

struct Example {
    const char* name;
    // As the program's own proof found it, in the area of AREAS.txt. It finds the same for all
    // images of the design, by other trees.
    double shortest;
};
void PrintTo(const Example& example, std::ostream* out) {
    *out << example.name;
}

constexpr double kSameLength = 1e-6;  // what a proof leaves open, as a part of the length

class ExampleRun : public testing::TestWithParam<Example> {
protected:
    ExampleRun() : path(std::string(KORVEL_EXAMPLES) + "/" + GetParam().name) {
        design = readPlainly(path);
        for (const auto& line : wordsOfLines(contentsOf(KORVEL_EXAMPLES "/AREAS.txt"))) {
            if (line[0] == GetParam().name) {
                design.area = {std::stof(line.at(1)), std::stof(line.at(2))};
            }
        }
    }

    std::string area() const {
        std::ostringstream text;
        text << " --area " << design.area.width << " " << design.area.height << " ";
        return text.str();
    }
    std::string placing() const { return "place '" + path + "'" + area(); }

    // That the report's lengths and its legality are those of its placement.
    void expectSound(const Json& report) const {
        Placement placement;
        for (std::size_t i = 0; i < design.dies.size(); ++i) {
            const Json& die = report["dies"][i];
            placement[die["name"]] = {die["orientation"], die["x"], die["y"]};
            const auto [width, height] = extent(design.dies[i], die["orientation"]);
            EXPECT_EQ(die["name"], design.dies[i].name);
            EXPECT_EQ(die["width"], width);
            EXPECT_EQ(die["height"], height);
        }
        expectSound(placement, report);
    }
    // That the table of the dies in a summary has the report's figures.
    void expectTable(const std::string& summary, const Json& report) const {
        const auto lines = wordsOfLines(summary.substr(summary.find("\nDie ")));
        ASSERT_EQ(lines.size(), 1 + design.dies.size());
        for (std::size_t i = 0; i < design.dies.size(); ++i) {
            const Json& die = report["dies"][i];
            const auto& line = lines[1 + i];
            ASSERT_EQ(line.size(), 6U);
            EXPECT_EQ(line[0], die["name"]);
            EXPECT_EQ(line[3], die["orientation"]);
            const std::pair<std::size_t, const char*> figures[] = {
                {1, "x"}, {2, "y"}, {4, "width"}, {5, "height"}};
            for (const auto& [column, field] : figures) {
                EXPECT_NEAR(std::stod(line[column]), die[field], 1e-4);
            }
        }
    }
    void expectSound(const Placement& placement, const Json& report) const {
        const Json& judgement = report["judgement"];
        const double length = wirelength(design, placement, true);
        EXPECT_NEAR(judgement["wirelength"], length, 1e-9 * length);
        EXPECT_NEAR(judgement["wirelengthBetweenDies"], wirelength(design, placement, false),
                    1e-9 * length);
        EXPECT_EQ(report["legal"], true);
        expectLegal(placement);
    }
    void expectLegal(const Placement& placement) const {
        Pass pass;
        pass.placement = placement;
        pass.width = design.area.width;
        pass.height = design.area.height;
        EXPECT_EQ(faults(design, pass), "");
    }

    std::string path;  // of the design, without ending
    Design design;
    FrontDoor door;
};

TEST_P(ExampleRun, IsReadAsTheFilesHaveIt) {
    std::ostringstream scattered;
    Placement placement;
    for (std::size_t die = 0; die < design.dies.size(); ++die) {
        const double x = 100.0 * static_cast<double>(die * die);
        const double y = 70.0 * static_cast<double>(die);
        const std::string orient(1, "ESWN"[die % 4]);
        placement[design.dies[die].name] = {orient, x, y};
        scattered << design.dies[die].name << " " << x << " " << y << " : " << orient << "\n";
    }
    door.write("scattered.pl", scattered.str());
    EXPECT_EQ(door.run("check '" + path + "' scattered.pl --json -" + area()), 1);
    const Json report = Json::parse(door.out());
    EXPECT_DOUBLE_EQ(report["judgement"]["wirelength"], wirelength(design, placement, true));
    EXPECT_DOUBLE_EQ(report["judgement"]["wirelengthBetweenDies"],
                     wirelength(design, placement, false));
    EXPECT_EQ(report["design"]["terminals"], design.terminals.size());
    EXPECT_EQ(report["design"]["nets"], design.nets.size());
}

TEST_P(ExampleRun, EndsWithTheShortestPlacementInAllFiles) {
    ASSERT_EQ(door.run(placing() + "-o r --iterations 2000"), 0);
    const Json report = Json::parse(door.read("r.json"));
    expectSound(report);
    expectSound(readPlacedPlainly(door.read("r.pl")), report);
    const double length = report["judgement"]["wirelength"];
    EXPECT_NEAR(length, GetParam().shortest, kSameLength * length);
    EXPECT_EQ(report["run"]["ended"], "proved optimal");
    EXPECT_LE(report["run"]["lowerBound"], length);
    EXPECT_GE(report["run"]["lowerBound"], length * (1 - kSameLength));

    ASSERT_EQ(door.run("check '" + path + "' r.pl --json -" + area()), 0);
    EXPECT_EQ(Json::parse(door.out())["judgement"]["wirelength"], length);
    ASSERT_EQ(door.run("draw '" + path + "' r.pl -o drawn.svg" + area()), 0);
    EXPECT_EQ(door.read("drawn.svg"), door.read("r.svg"));
}

TEST_P(ExampleRun, HasImagesThatAreAsShort) {
    Design image = mirroredDesign(design);
    for (int turns = 0; turns < 4; ++turns) {
        SCOPED_TRACE(turns);
        for (const Design& seen : {image, mirroredDesign(image)}) {
            writeDesign(door, seen);
            std::ostringstream arguments;
            arguments << "place d --threads 1 --iterations 100 --json - --area " << seen.area.width
                      << " " << seen.area.height;
            ASSERT_EQ(door.run(arguments.str()), 0) << door.err();
            const double length = Json::parse(door.out())["judgement"]["wirelength"];
            EXPECT_NEAR(length, GetParam().shortest, kSameLength * length);
        }
        image = turnedDesign(image);
    }
}

TEST_P(ExampleRun, EndsAtTheGapAskedFor) {
    const std::string command = placing() + "--threads 1 --iterations 1 --gap 90%";
    ASSERT_EQ(door.run(command + " --json -"), 0);
    const Json report = Json::parse(door.out());
    expectSound(report);
    EXPECT_EQ(report["run"]["ended"], "gap reached");
    const double length = report["judgement"]["wirelength"];
    const double bound = report["run"]["lowerBound"];
    const double gap = (length - bound) / length;
    EXPECT_LE(bound, GetParam().shortest);
    EXPECT_GE(length, GetParam().shortest * (1 - kSameLength));
    EXPECT_NEAR(report["run"]["gap"], gap, 1e-12);
    EXPECT_LE(gap, 0.9);
    EXPECT_GT(gap, 0.0);

    ASSERT_EQ(door.run(command), 0);
    std::ostringstream row;
    row << std::setprecision(10) << "\nLower bound  " << bound << ", gap " << std::setprecision(3)
        << 100 * gap << " %\n";
    EXPECT_NE(door.out().find(row.str()), std::string::npos) << row.str() << door.out();
    EXPECT_NE(door.out().find("\nEnded        gap of 90 % reached\n"), std::string::npos);
    expectTable(door.out(), report);
}

TEST_P(ExampleRun, OfTheClassicEngineIsSoundAndNotBelowTheShortest) {
    ASSERT_EQ(door.run(placing() + "--engine classic --json -"), 0);
    const Json report = Json::parse(door.out());
    expectSound(report);
    EXPECT_GE(report["judgement"]["wirelength"], GetParam().shortest * (1 - kSameLength));
    std::ostringstream arguments;
    arguments << "-f '" << path << "' -o r -a " << design.area.width << " " << design.area.height;
    ASSERT_EQ(door.run(arguments.str()), 0);
    const Pass first = readReport(door.out()).at(0);
    const double length = wirelength(design, first.placement, false);
    EXPECT_NEAR(first.wirelength, length, 2e-5 * length);  // coordinates have six digits
    expectLegal(first.placement);
}

INSTANTIATE_TEST_SUITE_P(Shipped, ExampleRun,
                         testing::Values(Example{"tutorial", 11950.0},
                                         Example{"no-terminals", 52550.0575},
                                         Example{"interposer", 692843.37}),
                         [](const auto& run) {
                             std::string name = run.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace korvel::test
