#include "commands/Command.h"

#include <cmath>
#include <cstdlib>
#include <utility>

#include "design/DesignReader.h"
#include "design/WholeFile.h"

namespace korvel {

namespace {

std::optional<double> finiteNumber(const std::string& word) {
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    const bool isNumber = !word.empty() && *end == '\0' && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string faultOfLength(const std::string& word) {
    const bool isLength = finiteNumber(word).value_or(0.0) > 0.0;
    return isLength ? "" : "'" + word + "' is not a positive finite number";
}

std::string faultOfTolerance(const std::string& word) {
    const bool isTolerance = finiteNumber(word).value_or(-1.0) >= 0.0;
    return isTolerance ? "" : "'" + word + "' is not zero or a positive finite number";
}

CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description) {
    CLI::App& command = *program.add_subcommand(name, description);
    command.set_help_flag("-h,--help", "Print this help and end");
    return command;
}

void addArea(CLI::App& command, Region& region) {
    command
        .add_option_function<std::pair<double, double>>(
            "--area",
            [&region](const std::pair<double, double>& area) {
                region = {area.first, area.second};
            },
            "Width and height of the area, in the unit of the design")
        ->type_name("W H")
        ->check(faultOfLength)
        ->required();
}

void addJson(CLI::App& command, std::string& path) {
    command
        .add_option("--json", path,
                    "Write the report as JSON; with - to standard output, and nothing else there")
        ->type_name("FILE");
}

void addPlacedDesign(CLI::App& command, PlacedDesignPaths& paths) {
    command
        .add_option("DESIGN", paths.design,
                    "The design's path, with or without .blocks, .pl or .nets")
        ->type_name("")
        ->required();
    command.add_option("PLACEMENT", paths.placement, "The placement, a .pl file")
        ->type_name("")
        ->required();
}

void addRules(CLI::App& command, RuleOptions& options) {
    const char* const length = "LENGTH";
    command
        .add_option("--rules", options.path,
                    "The rules of the package that the placement has to keep, a YAML file")
        ->type_name("FILE");
    command
        .add_option("--spacing", options.overrides.spacing,
                    "Least gap between two dies; overrides the file's")
        ->type_name(length)
        ->check(faultOfTolerance);
    command
        .add_option("--edge", options.overrides.edge,
                    "Least gap between dies and the sides of the area; overrides the file's")
        ->type_name(length)
        ->check(faultOfTolerance);
}

std::optional<PlacedDesign> readPlacedDesign(const PlacedDesignPaths& paths, Region region,
                                             const RuleOptions& ruleOptions, std::ostream& err) {
    const auto& [path, overrides] = ruleOptions;
    const bool hasRules = path || overrides.spacing || overrides.edge;
    Diagnostics diagnostics;
    std::optional<PlacedDesign> placed;
    if (auto design = readDesign(paths.design, region, diagnostics)) {
        ReadPlacement placement = readPlacement(paths.placement, *design, diagnostics);
        std::optional<Rules> rules =
            hasRules ? readRules(path, overrides, *design, region, diagnostics) : std::nullopt;
        placed = PlacedDesign{std::move(*design), std::move(placement), std::move(rules)};
    }
    diagnostics.print(err);
    return diagnostics.hasErrors() ? std::nullopt : std::move(placed);
}

bool writeFile(const std::string& path, const std::string& content, std::ostream& err) {
    const std::error_code fault = writeWhole(path, content);
    if (fault) {
        err << "korvel: cannot write '" << path << "': " << fault.message() << "\n";
    }
    return !fault;
}

}  // namespace korvel
