// `korvel check`: what a placement is worth, and whether it is legal.
#include <cmath>

#include "commands/Command.h"
#include "judge/Judge.h"
#include "judge/RuleJudge.h"
#include "report/Report.h"
#include "report/RuleReport.h"
#include "report/RuleText.h"
#include "report/Text.h"

namespace korvel {

namespace {

struct CheckOptions {
    PlacedDesignPaths paths;
    Region region;
    RuleOptions rules;
    std::string jsonPath;
    std::optional<double> tolerance;
};

// What there is to say of a placement that was read.
struct Checked {
    const Design& design;
    Region region;
    std::vector<std::string> missing;
    std::vector<std::string> unknown;
    std::optional<Placement> placement;  // if no die is missing
    std::optional<Judgement> judgement;
    const std::optional<Rules>& rules;  // if they were asked for
    std::optional<RuleJudgement> ruleJudgement;

    bool areRulesKept() const { return !ruleJudgement || ruleJudgement->areRulesKept(); }
    // A name that is unknown may be a die that lies in the way.
    bool isLegal() const {
        return judgement && judgement->isLegal() && areRulesKept() && unknown.empty();
    }
};

Checked checked(const PlacedDesign& placed, const CheckOptions& options) {
    Checked result{placed.design,
                   options.region,
                   placed.placement.missing(placed.design),
                   {},
                   placed.placement.whole(),
                   {},
                   placed.rules,
                   {}};
    for (const ReadPlacement::Unknown& unknown : placed.placement.unknown) {
        result.unknown.push_back(unknown.name);
    }
    if (result.placement) {
        const double tolerance =
            options.tolerance.value_or(touchingLength(options.region, kTouchingInFiles));
        result.judgement = judge(placed.design, options.region, *result.placement, tolerance);
        if (placed.rules) {
            result.ruleJudgement = judgeRules(placed.design, options.region, *placed.rules,
                                              *result.placement, tolerance);
        }
    }
    return result;
}

std::string listText(const std::string& heading, const std::vector<std::string>& names) {
    std::string text = names.empty() ? "" : "\n" + heading + "\n";
    for (const std::string& name : names) {
        text += "  " + name + "\n";
    }
    return text;
}

std::string verdict(const Checked& result) {
    std::string faults = result.judgement ? faultCounts(*result.judgement) : "";
    const auto addText = [&faults](const std::string& text) {
        faults += (faults.empty() || text.empty() ? "" : ", ") + text;
    };
    const auto add = [&addText](std::size_t number, const char* one, const char* many) {
        addText(number > 0 ? countText(number, one, many) : "");
    };
    addText(result.ruleJudgement ? ruleFaultCounts(*result.ruleJudgement) : "");
    add(result.missing.size(), "die missing", "dies missing");
    add(result.unknown.size(), "name unknown", "names unknown");
    return faults.empty() ? "yes" : "no: " + faults;
}

std::string summaryOf(const Checked& result) {
    Rows rows = result.judgement ? summaryRows(result.design, result.region, *result.judgement)
                                 : designRows(result.design, result.region);
    if (result.ruleJudgement) {
        for (Row& row : weightedRows(*result.rules, *result.ruleJudgement)) {
            rows.push_back(std::move(row));
        }
    }
    if (result.rules) {
        rows.push_back({"Rules", rulesText(*result.rules)});
    }
    rows.push_back({"Legal", verdict(result)});
    std::string text = aligned(rows, "ll");
    if (result.judgement) {
        text += faultsText(result.design, *result.placement, *result.judgement);
    }
    if (result.ruleJudgement) {
        text +=
            ruleFaultsText(result.design, *result.rules, *result.placement, *result.ruleJudgement);
    }
    return text + listText("Dies that the file does not place:", result.missing) +
           listText("Names that the design does not have:", result.unknown);
}

std::string jsonOf(const Checked& result) {
    const auto& [design, region, missing, unknown, placement, judgement, rules, ruleJudgement] =
        result;
    Json report = judgement ? reportOn("check", design, region, *placement, *judgement)
                            : reportHead("check", design, region, false);
    report["legal"] = result.isLegal();
    report["missing"] = missing;
    report["unknown"] = unknown;
    if (rules) {
        report["rules"] = rulesFields(design, *rules);
    }
    if (ruleJudgement) {
        report["weightedWirelength"] = ruleJudgement->weightedWirelength;
        report["violations"] = violationFields(design, *rules, *placement, *ruleJudgement);
    }
    return textOf(report);
}

int check(const CheckOptions& options, CommandOutput& output) {
    const auto placed = readPlacedDesign(options.paths, options.region, options.rules, output.err);
    if (!placed) {
        return kWrongInput;
    }
    const Checked result = checked(*placed, options);
    const bool isJsonOnly = options.jsonPath == "-";
    output.out << (isJsonOnly ? jsonOf(result) : summaryOf(result));
    if (!isJsonOnly && !options.jsonPath.empty() &&
        !writeFile(options.jsonPath, jsonOf(result), output.err)) {
        return kNotWritten;
    }
    return result.isLegal() ? kLegal : kNotLegal;
}

}  // namespace

void addCheck(CLI::App& program, CommandOutput& output) {
    CLI::App& command =
        addCommand(program, "check", "Score a placement and say whether it is legal");
    const auto options = std::make_shared<CheckOptions>();
    addPlacedDesign(command, options->paths);
    addArea(command, options->region);
    addRules(command, options->rules);
    command
        .add_option("--tolerance", options->tolerance,
                    "By how much dies may overlap, leave the area or miss a rule (default: a "
                    "millionth of the area's larger side)")
        ->type_name("LENGTH")
        ->check(faultOfTolerance);
    addJson(command, options->jsonPath);
    command.footer(
        "Exit status: 0 legal, 1 not legal, 2 wrong usage, 3 wrong input, 4 a file could "
        "not be written.");
    command.callback([options, &output] { output.status = check(*options, output); });
}

}  // namespace korvel
