// `korvel place`: reads a design, lets a run look for a placement, shows and saves what it found.
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <thread>

#include "commands/Command.h"
#include "commands/PlaceReport.h"
#include "commands/StatusLine.h"
#include "design/DesignReader.h"
#include "design/PlacementFile.h"
#include "draw/Picture.h"
#include "report/Text.h"
#include "run/Duration.h"
#include "run/SignalWatch.h"

namespace korvel {

namespace {

namespace fs = std::filesystem;

constexpr unsigned kMostThreads = 1024;
constexpr const char* kStandardOutput = "-";

struct PlaceOptions {
    PlaceInputs inputs;
    RunOptions run;
    std::string prefix;  // empty: no files
    std::string json;    // empty: none
    bool quiet = false;
    bool verbose = false;

    bool isJsonOnly() const { return json == kStandardOutput; }
};

// --- Command line --------------------------------------------------------------------------------

// A part such as 0.01 or 1%; nothing if it is none, or not below the whole.
std::optional<double> parsePart(const std::string& text) {
    const bool isPercent = !text.empty() && text.back() == '%';
    const char* last = text.data() + text.size() - (isPercent ? 1 : 0);
    double part = -1.0;
    const auto [end, error] = std::from_chars(text.data(), last, part, std::chars_format::fixed);
    part = isPercent ? part / 100.0 : part;
    const bool isPart = error == std::errc() && end == last && part >= 0.0 && part < 1.0;
    return isPart ? std::optional(part) : std::nullopt;
}

std::string faultOfDuration(const std::string& text) {
    return parseDuration(text) ? "" : "'" + text + "' is no time such as 90, 90s, 15m or 2h";
}

std::string faultOfPart(const std::string& text) {
    return parsePart(text) ? "" : "'" + text + "' is no part such as 1% or 0.01";
}

std::string faultOfPrefix(const std::string& prefix) {
    return fs::path(prefix).filename().empty() ? "'" + prefix + "' names no file" : "";
}

void addRunOptions(CLI::App& command, RunOptions& run) {
    run.threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
    command
        .add_option_function<std::string>(
            "--time-limit",
            [&run](const std::string& text) { run.timeLimit = parseDuration(text); },
            "End after this time with the best found: 90, 90s, 15m, 2h")
        ->type_name("TIME")
        ->check(faultOfDuration);
    command.add_option("--threads", run.threads, "Without it, as many as the machine runs at once")
        ->type_name("N")
        ->check(CLI::Range(1U, kMostThreads).description(""));
    command
        .add_option("--engine", run.engine,
                    "auto: annealing and proof; classic: the passes of the classic interface")
        ->type_name("auto|classic")
        ->transform(
            CLI::CheckedTransformer(
                std::map<std::string, Engine>{{"auto", Engine::Auto}, {"classic", Engine::Classic}})
                .description(""));
}

void addAutoOptions(CLI::App& command, RunOptions& run) {
    command.add_flag("--prove", run.prove,
                     "Give the time to the proof, after a short annealing; for up to 12 dies");
    command
        .add_option_function<std::string>(
            "--gap", [&run](const std::string& text) { run.gap = parsePart(text).value_or(0.0); },
            "End when the wirelength is proved to be within this part of the shortest: 1%")
        ->type_name("PART")
        ->check(faultOfPart);
    command.add_option("--seed", run.seed, "Of the random numbers of annealing")->type_name("N");
    command
        .add_option("--iterations", run.iterations,
                    "Moves of annealing, instead of a time: with the same seed and number of "
                    "threads the same result")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
}

void addOptions(CLI::App& command, PlaceOptions& options) {
    command
        .add_option("DESIGN", options.inputs.design,
                    "The design's path, with or without .blocks, .pl or .nets")
        ->type_name("")
        ->required();
    addArea(command, options.inputs.region);
    command.add_option("-o,--output", options.prefix, "Save PREFIX.pl, PREFIX.json and PREFIX.svg")
        ->type_name("PREFIX")
        ->check(faultOfPrefix);
    command
        .add_option("--start", options.inputs.start,
                    "A legal placement that is to be beaten, and is the result if nothing does")
        ->type_name("FILE.pl");
    addRunOptions(command, options.run);
    addAutoOptions(command, options.run);
    addJson(command, options.json);
    CLI::Option* quiet = command.add_flag("--quiet", options.quiet, "No summary and no progress");
    command
        .add_flag("--verbose", options.verbose, "A line on standard error for every improvement")
        ->excludes(quiet);
    command.footer(
        "Without a time limit, up to 8 dies are placed until the result is proved optimal, more "
        "dies for a minute, and the classic engine runs until its search is exhausted. Ctrl-C "
        "ends with the best found.\n"
        "Exit status: 0 a legal placement, 1 none found, 2 wrong usage, 3 wrong input, 4 a file "
        "could not be written.");
}

// --- Input ---------------------------------------------------------------------------------------

// The placement to start from; anything that keeps it from being one is an error.
std::optional<Placement> readStart(const std::string& path, const Design& design, Region region,
                                   Diagnostics& diagnostics) {
    const ReadPlacement read = readPlacement(path, design, diagnostics);
    for (const auto& [name, line] : read.unknown) {
        diagnostics.error(path, line, "found " + shown(name) + ", expected a die of the design");
    }
    const std::optional<Placement> start = read.whole();
    if (diagnostics.hasErrors()) {
        return std::nullopt;
    }
    if (!start) {
        diagnostics.error(
            path, 0,
            "found no place for " + shown(read.missing(design).front()) + ", expected all dies");
        return std::nullopt;
    }
    const double tolerance = touchingLength(region, kTouchingInFiles);
    const std::string faults = faultCounts(judge(design, region, *start, tolerance));
    if (!faults.empty()) {
        diagnostics.error(path, 0,
                          "found " + faults + ", expected a legal placement to start from");
    }
    return start;
}

// The design, and in the options the start; nothing if anything is wrong with either.
std::optional<Design> readInputs(PlaceOptions& options, std::ostream& err) {
    const PlaceInputs& inputs = options.inputs;
    Diagnostics diagnostics;
    std::optional<Design> design = readDesign(inputs.design, inputs.region, diagnostics);
    if (design && !inputs.start.empty()) {
        options.run.start = readStart(inputs.start, *design, inputs.region, diagnostics);
    }
    diagnostics.print(err);
    return diagnostics.hasErrors() ? std::nullopt : std::move(design);
}

// --- Files ---------------------------------------------------------------------------------------

std::vector<std::string> resultPaths(const PlaceOptions& options) {
    std::vector<std::string> paths;
    if (!options.prefix.empty()) {
        for (const char* extension : {".pl", ".json", ".svg"}) {
            paths.push_back(options.prefix + extension);
        }
    }
    if (!options.json.empty() && !options.isJsonOnly()) {
        paths.push_back(options.json);
    }
    return paths;
}

// What would keep a file from being written, as far as that can be known without writing it.
std::string faultOfPath(const std::string& path) {
    std::error_code ignored;
    const fs::path parent = fs::path(path).parent_path();
    const fs::path directory = parent.empty() ? fs::path(".") : parent;
    if (!fs::is_directory(directory, ignored)) {
        return "there is no directory " + shown(directory.string());
    }
    const fs::file_status there = fs::status(path, ignored);
    if (fs::is_directory(there)) {
        return "that is a directory";
    }
    // A file is replaced by a new one; a device or a pipe is written to.
    const bool isReplaced = !fs::exists(there) || fs::is_regular_file(there);
    const fs::path& written = isReplaced ? directory : fs::path(path);
    return access(written.c_str(), W_OK) == 0 ? "" : "no permission to write there";
}

// Asked before the search, so that its result is not lost by what could have been known.
bool canWriteAll(const PlaceOptions& options, std::ostream& err) {
    bool can = true;
    for (const std::string& path : resultPaths(options)) {
        const std::string fault = faultOfPath(path);
        if (!fault.empty()) {
            err << "korvel: cannot write '" << path << "': " << fault << '\n';
            can = false;
        }
    }
    return can;
}

struct WrittenFiles {
    std::string names;  // each behind a blank
    bool isComplete = true;
};

// The files that go by the prefix, and the report of its own name. Without a placement there is
// only the report.
WrittenFiles writeFiles(const Design& design, const PlaceOptions& options, const RunResult& result,
                        const std::string& json, std::ostream& err) {
    WrittenFiles written;
    const auto write = [&](const std::string& path, const std::string& content) {
        if (writeFile(path, content, err)) {
            written.names += " " + path;
        } else {
            written.isComplete = false;
        }
    };
    if (!options.prefix.empty() && result.best) {
        const auto& [placement, judgement, finder, after] = *result.best;
        std::ostringstream text;
        writePlacement(text, design, placement);
        write(options.prefix + ".pl", text.str());
        write(options.prefix + ".svg",
              drawSvg(design, options.inputs.region, placement, judgement));
    }
    if (!options.prefix.empty()) {
        write(options.prefix + ".json", json);
    }
    if (!options.json.empty() && !options.isJsonOnly()) {
        write(options.json, json);
    }
    return written;
}

// --- The command ---------------------------------------------------------------------------------

RunResult search(const Design& design, const PlaceOptions& options, std::ostream& err) {
    const bool isTerminal = &err == &std::cerr && isatty(STDERR_FILENO) != 0 && !options.quiet;
    StatusLine line(err, isTerminal);
    PlaceRun run(design, options.inputs.region, options.run, [&](const Found& found) {
        if (options.verbose) {
            line.say(improvementText(found));
        }
    });
    const SignalWatch signals([&run] { run.interrupt(); });
    const std::jthread status = isTerminal ? showStatus(run, line) : std::jthread();
    return run.execute();
}

int place(PlaceOptions& options, CommandOutput& output) {
    const std::optional<Design> design = readInputs(options, output.err);
    if (!design) {
        return kWrongInput;
    }
    if (!canWriteAll(options, output.err)) {
        return kNotWritten;
    }
    const RunResult result = search(*design, options, output.err);
    const std::string json = textOf(placeReport(*design, options.inputs, options.run, result));
    const WrittenFiles written = writeFiles(*design, options, result, json, output.err);
    if (options.isJsonOnly()) {
        output.out << json;
    } else if (!options.quiet) {
        output.out << placeSummary(*design, options.inputs.region, options.run, result);
        if (!written.names.empty()) {
            output.out << "\nWritten:" << written.names << "\n";
        }
    }
    if (!written.isComplete) {
        return kNotWritten;
    }
    return result.best ? kLegal : kNotLegal;
}

}  // namespace

void addPlace(CLI::App& program, CommandOutput& output) {
    CLI::App& command =
        addCommand(program, "place", "Look for a legal placement with a short wirelength");
    const auto options = std::make_shared<PlaceOptions>();
    addOptions(command, *options);
    command.callback([options, &output] { output.status = place(*options, output); });
}

}  // namespace korvel
