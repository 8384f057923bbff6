// Reports for programs and for people.

#include "report/Report.h"

#include <gtest/gtest.h>

#include "commands/PlaceReport.h"
#include "report/Text.h"

namespace korvel::test {
namespace {

TEST(Report, CallsNothingLegalThatIsNotThere) {
    Design design;
    design.dies = {{"a", {1, 1}}};
    EXPECT_EQ(reportOn("place", design, {2, 2}, {}, {})["legal"], false);
    EXPECT_EQ(reportOn("place", design, {2, 2}, {{}}, {})["legal"], true);
}

TEST(Report, CarriesNamesThatAreNoText) {
    Design design;
    design.dies = {{"a\xFF\"", {1, 1}}};
    const std::string text = textOf(reportOn("check", design, {2, 2}, {{}}, {}));
    EXPECT_EQ(Json::parse(text)["dies"][0]["name"], "a\uFFFD\"");
    EXPECT_EQ(text.back(), '\n');
}

TEST(Text, AlignsColumnsByCharacters) {
    EXPECT_EQ(aligned({{"caf\u00e9", "1", "x"}, {"a", "100"}, {"", "", "yz"}}, "lrl"),
              "caf\u00e9    1  x\n"
              "a     100\n"
              "           yz\n");
}

TEST(Text, WritesNumbersOfUse) {
    const std::pair<double, const char*> cases[] = {
        {0.1 + 0.2, "0.3"}, {42000, "42000"}, {114414510.25, "114414510.2"}, {-1.5, "-1.5"}};
    for (const auto& [number, text] : cases) {
        EXPECT_EQ(numberText(number), text);
    }
}

TEST(Text, ListsTwentyFaultsAndCountsTheOthers) {
    Design design;
    Judgement judgement;
    for (unsigned die = 0; die < 50; ++die) {
        design.dies.push_back({"d" + std::to_string(die), {1, 1}});
        judgement.outside.push_back({die, 0, 1, 2, 0});
    }
    const std::string text = faultsText(design, Placement(50), judgement);
    EXPECT_NE(text.find("  d19  by 1 at the right, 2 below\n  and 30 more\n"), std::string::npos);
}

// What the gate found is what is told: the report measures nothing again.
TEST(PlaceReport, RepeatsTheJudgementThatWasKept) {
    Design design;
    design.dies = {{"a", {4, 2}}};
    RunResult result;
    result.best = Found{{{{0, 0}}}, {}, "somebody"};
    result.best->judgement.wirelength = 123;
    result.best->judgement.utilization = 0.25;
    const Json report = placeReport(design, {"d", "", {10, 10}}, {}, result);
    EXPECT_EQ(report["judgement"]["wirelength"], 123);
    EXPECT_EQ(report["judgement"]["utilization"], 0.25);
    EXPECT_EQ(report["legal"], true);
    const std::string summary = placeSummary(design, {10, 10}, {}, result);
    EXPECT_NE(summary.find("123 (HPWL)"), std::string::npos);
    EXPECT_NE(summary.find("25.0 %"), std::string::npos);
}

}  // namespace
}  // namespace korvel::test
