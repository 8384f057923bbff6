// What the commands have in common: their exit statuses, where they write, and the options that
// mean the same to each. A command is a function that adds itself to the program. A new one
// needs its declaration here, its file in CMakeLists.txt, and in Commands.cpp a call and its name
// among the first words.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <ostream>
#include <string>

#include "design/Design.h"
#include "design/PlacementFile.h"
#include "rules/RulesReader.h"

namespace korvel {

// Exit statuses of the front door, a promise to scripts.
enum ExitStatus : int {
    kLegal = 0,       // also: did what was asked, where legality is not the question
    kNotLegal = 1,    // or no legal placement found
    kWrongUsage = 2,  // of the command line
    kWrongInput = 3,
    kNotWritten = 4,  // a file, or standard output
};

// Where a command writes, and the status that it ends with.
struct CommandOutput {
    std::ostream& out;
    std::ostream& err;
    int status = kLegal;
};

// A subcommand without options but help.
CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description);

// What is wrong with a word of the command line that is to be a length; empty if nothing is.
std::string faultOfLength(const std::string& word);
std::string faultOfTolerance(const std::string& word);  // which may be zero

// `--area W H`, obligatory: two positive finite numbers, in the unit of the design.
void addArea(CLI::App& command, Region& region);

// `--json FILE`: the report for programs; - for standard output, and nothing else there.
void addJson(CLI::App& command, std::string& path);

// The words DESIGN and PLACEMENT of the command line.
struct PlacedDesignPaths {
    std::string design;
    std::string placement;
};
void addPlacedDesign(CLI::App& command, PlacedDesignPaths& paths);

// `--rules FILE`, `--spacing S` and `--edge E`: the rules of the package.
struct RuleOptions {
    std::optional<std::string> path;
    RuleOverrides overrides;
};
void addRules(CLI::App& command, RuleOptions& options);

// A design, what a file says of its placement, and the rules that it has to keep, if any option
// asks for some. None if one of them cannot be used; everything that is wrong or odd is said on
// `err`.
struct PlacedDesign {
    Design design;
    ReadPlacement placement;
    std::optional<Rules> rules;
};
std::optional<PlacedDesign> readPlacedDesign(const PlacedDesignPaths& paths, Region region,
                                             const RuleOptions& ruleOptions, std::ostream& err);

// Writes a file whole or not at all. Whether it was written; if not, says why on `err`.
bool writeFile(const std::string& path, const std::string& content, std::ostream& err);

// `output` outlives the program's parsing; its streams are used from the calling thread only.
void addPlace(CLI::App& program, CommandOutput& output);
void addCheck(CLI::App& program, CommandOutput& output);
void addDraw(CLI::App& program, CommandOutput& output);

}  // namespace korvel
