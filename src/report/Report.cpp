#include "report/Report.h"

namespace korvel {

namespace {

Json designFields(const Design& design) {
    return {{"name", design.name},
            {"dies", design.dies.size()},
            {"terminals", design.terminals.size()},
            {"nets", design.nets.size()}};
}

Json dieFields(const Design::Die& die, const PlacedDie& placed) {
    const Extent size = turned(die.size, placed.orient);
    return {{"name", die.name},    {"x", placed.at.x},
            {"y", placed.at.y},    {"orientation", OrientConverter::OrientToString(placed.orient)},
            {"width", size.width}, {"height", size.height}};
}

Json overlapFields(const Design& design, const Judgement::Overlap& overlap) {
    return {{"dies", {design.dies[overlap.first].name, design.dies[overlap.second].name}},
            {"width", overlap.size.width},
            {"height", overlap.size.height},
            {"area", overlap.area()}};
}

Json outsideFields(const Design& design, const Judgement::Outside& outside) {
    return {{"die", design.dies[outside.die].name},
            {"left", outside.left},
            {"right", outside.right},
            {"below", outside.below},
            {"above", outside.above}};
}

Json judgementFields(const Design& design, const Judgement& judgement) {
    Json fields{{"tolerance", judgement.tolerance},
                {"wirelength", judgement.wirelength},
                {"wirelengthBetweenDies", judgement.wirelengthBetweenDies},
                {"utilization", judgement.utilization},
                {"extent",
                 {{"x", judgement.low.x},
                  {"y", judgement.low.y},
                  {"width", judgement.extent.width},
                  {"height", judgement.extent.height}}},
                {"overlapNum", judgement.overlapNum},
                {"overlapArea", judgement.overlapArea}};
    Json& overlaps = fields["overlaps"] = Json::array();
    for (const Judgement::Overlap& overlap : judgement.overlaps) {
        overlaps.push_back(overlapFields(design, overlap));
    }
    Json& outside = fields["outside"] = Json::array();
    for (const Judgement::Outside& die : judgement.outside) {
        outside.push_back(outsideFields(design, die));
    }
    Json& mirrored = fields["mirrored"] = Json::array();
    for (const unsigned die : judgement.mirrored) {
        mirrored.push_back(design.dies[die].name);
    }
    return fields;
}

}  // namespace

std::string programVersion() {
    return "korvel " KORVEL_VERSION;
}

Json reportHead(const std::string& command, const Design& design, Region region, bool isLegal) {
    return {{"format", kReportFormat},
            {"program", programVersion()},
            {"command", command},
            {"legal", isLegal},
            {"design", designFields(design)},
            {"region", {{"width", region.width}, {"height", region.height}}}};
}

Json reportOn(const std::string& command, const Design& design, Region region,
              const Placement& placement, const Judgement& judgement) {
    const bool isWhole = placement.size() == design.dies.size();
    Json report = reportHead(command, design, region, isWhole && judgement.isLegal());
    Json& dies = report["dies"] = Json::array();
    for (std::size_t die = 0; die < placement.size(); ++die) {
        dies.push_back(dieFields(design.dies[die], placement[die]));
    }
    report["judgement"] = judgementFields(design, judgement);
    return report;
}

std::string textOf(const Json& report) {
    constexpr int kIndent = 2;
    return report.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel
