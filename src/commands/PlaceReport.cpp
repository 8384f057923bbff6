#include "commands/PlaceReport.h"

#include <algorithm>
#include <array>

#include "report/Text.h"
#include "run/Duration.h"

namespace korvel {

namespace {

template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

// By how much of its length the best placement may be longer than the shortest one.
std::optional<double> gapOf(const RunResult& result) {
    if (!result.best || !result.lowerBound || result.best->wirelength() <= 0.0) {
        return std::nullopt;
    }
    return std::max(0.0, 1.0 - *result.lowerBound / result.best->wirelength());
}

// By Ending.
constexpr std::array<const char*, 6> kEndingWords{
    "done",       "time limit", "interrupted", "proved optimal", "no legal placement exists",
    "gap reached"};

std::string endingText(const RunOptions& options, const RunResult& result) {
    switch (result.ending) {
        case Ending::TimeLimit: {
            const std::string limit = durationText(result.timeLimit.value_or(result.seconds));
            return options.timeLimit ? "time limit of " + limit
                                     : "after " + limit + ", as no --time-limit was given";
        }
        case Ending::Interrupted:
            return "interrupted";
        case Ending::Proved:
            return "proved optimal to " + percentText(result.proofTolerance);
        case Ending::NoPlacement:
            return "proved that no legal placement exists";
        case Ending::GapReached:
            return "gap of " + percentText(options.gap) + " reached";
        case Ending::Done:
            break;
    }
    return options.engine == Engine::Classic ? "search exhausted, which proves nothing: its cuts "
                                               "may have lost better placements"
                                             : "all iterations made";
}

Json passFields(const PassFigures& pass) {
    return {{"name", pass.name},
            {"dies", pass.dies},
            {"seconds", pass.seconds},
            {"nodes", pass.nodes},
            {"searched", pass.share},
            {"exhausted", pass.exhausted},
            {"improvementNum", pass.improvements},
            {"length", orNull(pass.length)}};
}

Json optionFields(const PlaceInputs& inputs, const RunOptions& options) {
    return {{"design", inputs.design},
            {"start", inputs.start.empty() ? Json(nullptr) : Json(inputs.start)},
            {"engine", options.engine == Engine::Classic ? "classic" : "auto"},
            {"timeLimit", orNull(options.timeLimit)},
            {"threads", options.threads},
            {"seed", options.seed},
            {"iterations", orNull(options.iterations)},
            {"prove", options.prove},
            {"gap", options.gap}};
}

Json runFields(const RunResult& result) {
    Json fields{{"ended", kEndingWords.at(static_cast<std::size_t>(result.ending))},
                {"seconds", result.seconds},
                {"foundBy", result.best ? Json(result.best->finder) : Json(nullptr)},
                {"foundAfter", result.best ? Json(result.best->after) : Json(nullptr)},
                {"lowerBound", orNull(result.lowerBound)},  // infinity is written as null
                {"gap", orNull(gapOf(result))},
                {"nodes", result.nodes},
                {"moves", result.moves}};
    Json& passes = fields["passes"] = Json::array();
    for (const PassFigures& pass : result.passes) {
        passes.push_back(passFields(pass));
    }
    return fields;
}

Rows runRows(const RunOptions& options, const RunResult& result) {
    Rows rows;
    if (result.best) {
        rows.push_back(
            {"Found", "by " + result.best->finder + ", after " + durationText(result.best->after)});
    }
    rows.push_back({"Ended", endingText(options, result)});
    if (const auto gap = gapOf(result)) {
        rows.push_back(
            {"Lower bound", numberText(*result.lowerBound) + ", gap " + percentText(*gap)});
    }
    rows.push_back({"Time", durationText(result.seconds)});
    rows.push_back({"Nodes", std::to_string(result.nodes)});
    if (result.moves > 0) {
        rows.push_back({"Moves", std::to_string(result.moves)});
    }
    return rows;
}

}  // namespace

std::string placeSummary(const Design& design, Region region, const RunOptions& options,
                         const RunResult& result) {
    const bool found = result.best.has_value();
    Rows rows =
        found ? summaryRows(design, region, result.best->judgement) : designRows(design, region);
    for (Row& row : runRows(options, result)) {
        rows.push_back(std::move(row));
    }
    return (found ? "" : "No legal placement was found.\n\n") + aligned(rows, "ll") +
           (found ? "\n" + diesTable(design, result.best->placement) : "");
}

Json placeReport(const Design& design, const PlaceInputs& inputs, const RunOptions& options,
                 const RunResult& result) {
    const std::optional<Found>& best = result.best;
    Json report = best ? reportOn("place", design, inputs.region, best->placement, best->judgement)
                       : reportHead("place", design, inputs.region, false);
    report["options"] = optionFields(inputs, options);
    report["run"] = runFields(result);
    return report;
}

}  // namespace korvel
