#include "commands/PlaceReport.h"

#include "report/Text.h"
#include "run/Duration.h"

namespace korvel {

namespace {

template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

std::string endingWord(Ending ending) {
    switch (ending) {
        case Ending::TimeLimit:
            return "time limit";
        case Ending::Interrupted:
            return "interrupted";
        case Ending::Exhausted:
            break;
    }
    return "exhausted";
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
            {"threads", options.threads}};
}

Json runFields(const RunResult& result) {
    Json fields{{"ended", endingWord(result.ending)},
                {"seconds", result.seconds},
                {"nodes", result.nodes},
                {"foundBy", result.best ? Json(result.best->finder) : Json(nullptr)},
                {"foundAfter", result.best ? Json(result.foundAfter) : Json(nullptr)}};
    Json& passes = fields["passes"] = Json::array();
    for (const PassFigures& pass : result.passes) {
        passes.push_back(passFields(pass));
    }
    return fields;
}

Rows runRows(const RunOptions& options, const RunResult& result) {
    return {{"Ended", endingText(result, options)},
            {"Time", durationText(result.seconds)},
            {"Nodes", std::to_string(result.nodes)}};
}

}  // namespace

std::string endingText(const RunResult& result, const RunOptions& options) {
    switch (result.ending) {
        case Ending::TimeLimit:
            return "time limit of " + durationText(options.timeLimit.value_or(result.seconds));
        case Ending::Interrupted:
            return "interrupted";
        case Ending::Exhausted:
            break;
    }
    return "search exhausted";
}

std::string placeSummary(const Design& design, Region region, const RunOptions& options,
                         const RunResult& result) {
    if (!result.best) {
        return "No legal placement was found.\n\n" + aligned(runRows(options, result), "ll");
    }
    const Placement& placement = result.best->placement;
    Rows rows = summaryRows(design, region, judge(design, region, placement));
    rows.push_back(
        {"Found", "by " + result.best->finder + ", after " + durationText(result.foundAfter)});
    for (Row& row : runRows(options, result)) {
        rows.push_back(std::move(row));
    }
    return aligned(rows, "ll") + "\n" + diesTable(design, placement);
}

Json placeReport(const Design& design, const PlaceInputs& inputs, const RunOptions& options,
                 const RunResult& result) {
    const Placement placement = result.best ? result.best->placement : Placement();
    const Judgement judgement = result.best ? judge(design, inputs.region, placement) : Judgement();
    Json report = reportOn("place", design, inputs.region, placement, judgement);
    if (!result.best) {
        report["judgement"] = nullptr;
    }
    report["options"] = optionFields(inputs, options);
    report["run"] = runFields(result);
    return report;
}

}  // namespace korvel
