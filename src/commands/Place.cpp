// `korvel place`: reads a design, lets a run look for a placement, shows and saves what it found.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <thread>

#include "commands/Command.h"
#include "commands/PlaceReport.h"
#include "commands/ProgressLine.h"
#include "design/DesignReader.h"
#include "design/PlacementFile.h"
#include "design/WholeFile.h"
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

    bool jsonOnly() const { return json == kStandardOutput; }
};

// --- Command line --------------------------------------------------------------------------------

std::string faultOfDuration(const std::string& text) {
    return parseDuration(text) ? "" : "'" + text + "' is no time such as 90, 90s, 15m or 2h";
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
    command
        .add_option("--threads", run.threads, "Worker threads; as many as the machine runs at once")
        ->type_name("N")
        ->check(CLI::Range(1U, kMostThreads));
    command
        .add_option("--engine", run.engine, "auto, or classic: the passes of the classic interface")
        ->type_name("NAME")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Engine>{{"auto", Engine::Auto}, {"classic", Engine::Classic}}));
}

void addOptions(CLI::App& command, PlaceOptions& options) {
    command
        .add_option("design", options.inputs.design,
                    "Path of the design, with or without one of the extensions .blocks, .pl, .nets")
        ->type_name("DESIGN")
        ->required();
    addArea(command, options.inputs.region);
    command.add_option("-o,--output", options.prefix, "Save PREFIX.pl, PREFIX.json and PREFIX.svg")
        ->type_name("PREFIX")
        ->check([](const std::string& prefix) {
            return fs::path(prefix).filename().empty() ? "'" + prefix + "' names no file" : "";
        });
    command
        .add_option(
            "--start", options.inputs.start,
            "A placement that is known: what has to be beaten, and is reported if nothing does")
        ->type_name("FILE.pl");
    addRunOptions(command, options.run);
    command
        .add_option(
            "--json", options.json,
            "Write the report as JSON to a file, or, with -, to standard output and nothing "
            "else there")
        ->type_name("FILE");
    CLI::Option* quiet = command.add_flag("--quiet", options.quiet, "No summary and no progress");
    command
        .add_flag("--verbose", options.verbose, "A line on standard error for every improvement")
        ->excludes(quiet);
}

// --- Input ---------------------------------------------------------------------------------------

// What keeps the placement in a file from being a start; empty if nothing does.
std::string faultOfStart(const ReadPlacement& read, const Design& design, Region region) {
    const std::vector<std::string> missing = read.missing(design);
    if (!missing.empty()) {
        return "places " + countText(design.dies.size() - missing.size(), "die", "dies") + " of " +
               std::to_string(design.dies.size()) + ", '" + missing.front() +
               "' is the first missing; a start has to have all of them";
    }
    const Judgement judgement =
        judge(design, region, *read.whole(), touchingLength(region, kTouchingInFiles));
    if (judgement.isLegal()) {
        return "";
    }
    return "found " + countText(judgement.overlapNum, "overlap", "overlaps") + ", " +
           countText(judgement.outside.size(), "die", "dies") + " outside the area and " +
           countText(judgement.mirrored.size(), "mirrored die", "mirrored dies") +
           ", expected a legal placement to start from";
}

std::optional<Placement> readStart(const std::string& path, const Design& design, Region region,
                                   Diagnostics& diagnostics) {
    const ReadPlacement read = readPlacement(path, design, diagnostics);
    for (const ReadPlacement::Unknown& unknown : read.unknown) {
        diagnostics.error(path, unknown.line,
                          "found " + shown(unknown.name) + ", expected a die of the design");
    }
    if (!diagnostics.hasErrors()) {
        const std::string fault = faultOfStart(read, design, region);
        if (fault.empty()) {
            return read.whole();
        }
        diagnostics.error(path, 0, fault);
    }
    return std::nullopt;
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
    if (!options.json.empty() && !options.jsonOnly()) {
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
        return "there is no directory '" + directory.string() + "'";
    }
    if (fs::is_directory(path, ignored)) {
        return "that is a directory";
    }
    const fs::path written = fs::exists(path, ignored) && !fs::is_regular_file(path, ignored)
                                 ? fs::path(path)
                                 : directory;
    return access(written.c_str(), W_OK) == 0 ? "" : "no permission to write there";
}

bool canWriteAll(const PlaceOptions& options, std::ostream& err) {
    for (const std::string& path : resultPaths(options)) {
        const std::string fault = faultOfPath(path);
        if (!fault.empty()) {
            err << "korvel place: cannot write '" << path << "': " << fault << '\n';
            return false;
        }
    }
    return true;
}

class ResultFiles {
public:
    explicit ResultFiles(std::ostream& err) : err(err) {}

    void write(const std::string& path, const std::string& content) {
        if (const std::error_code fault = writeWhole(path, content)) {
            err << "korvel place: cannot write '" << path << "': " << fault.message() << '\n';
            complete = false;
        } else {
            written.push_back(path);
        }
    }
    bool isComplete() const { return complete; }
    const std::vector<std::string>& getWritten() const { return written; }

private:
    std::ostream& err;
    bool complete = true;
    std::vector<std::string> written;
};

void writeFiles(ResultFiles& files, const Design& design, const PlaceOptions& options,
                const RunResult& result, const std::string& json) {
    if (!options.prefix.empty()) {
        if (result.best) {
            std::ostringstream placement;
            writePlacement(placement, design, result.best->placement);
            files.write(options.prefix + ".pl", placement.str());
            files.write(options.prefix + ".svg",
                        drawSvg(design, options.inputs.region, result.best->placement));
        }
        files.write(options.prefix + ".json", json);
    }
    if (!options.json.empty() && !options.jsonOnly()) {
        files.write(options.json, json);
    }
}

// --- The command ---------------------------------------------------------------------------------

RunResult runSearch(const Design& design, const PlaceOptions& options, std::ostream& err) {
    const bool isTerminal = &err == &std::cerr && isatty(STDERR_FILENO) != 0;
    StatusLine line(err, isTerminal && !options.quiet);
    Run run(design, options.inputs.region, options.run, [&](const Found& found, double seconds) {
        if (options.verbose) {
            line.say(improvementText(found, seconds));
        }
    });
    const SignalWatch signals([&run] { run.interrupt(); });
    const ProgressLine progress(run, line);
    return run.execute();
}

void show(const Design& design, const PlaceOptions& options, const RunResult& result,
          const ResultFiles& files, std::ostream& out) {
    out << placeSummary(design, options.inputs.region, options.run, result);
    if (!files.getWritten().empty()) {
        out << "\nWritten:";
        for (const std::string& path : files.getWritten()) {
            out << ' ' << path;
        }
        out << '\n';
    }
}

int place(PlaceOptions& options, CommandRun& run) {
    const std::optional<Design> design = readInputs(options, run.err);
    if (!design) {
        return kWrongInput;
    }
    if (!canWriteAll(options, run.err)) {
        return kNotWritten;
    }
    const RunResult result = runSearch(*design, options, run.err);
    const std::string json = textOf(placeReport(*design, options.inputs, options.run, result));
    ResultFiles files(run.err);
    writeFiles(files, *design, options, result, json);
    if (options.jsonOnly()) {
        run.out << json;
    } else if (!options.quiet) {
        show(*design, options, result, files, run.out);
    }
    if (!files.isComplete()) {
        return kNotWritten;
    }
    return result.best ? kLegal : kNotLegal;
}

}  // namespace

void addPlace(CLI::App& program, CommandRun& run) {
    CLI::App& command =
        addCommand(program, "place", "Look for a placement with a short wirelength");
    const auto options = std::make_shared<PlaceOptions>();
    addOptions(command, *options);
    command.callback([options, &run] { run.status = place(*options, run); });
}

}  // namespace korvel
