// Reports on a placement for programs: JSON whose fields docs/json.md describes. Every command's
// report has the part made here and adds its own fields to it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "design/Placement.h"
#include "judge/Judge.h"

namespace korvel {

// Fields keep the order in which they are written down.
using Json = nlohmann::ordered_json;

// Of the structure of reports. It grows when a field changes its meaning or goes; new fields do not
// count, as readers can pass over them.
inline constexpr int kReportFormat = 1;

// "korvel 0.1.0".
std::string programVersion();

// The beginning of every report: format, program, command, legal, design, region. `isLegal` is the
// answer in short, and false if there is no placement.
Json reportHead(const std::string& command, const Design& design, Region region, bool isLegal);

// The head, dies and judgement. Without dies, nothing is legal.
Json reportOn(const std::string& command, const Design& design, Region region,
              const Placement& placement, const Judgement& judgement);

// Indented, ending with a newline. Bytes that are no UTF-8, which names can have, become U+FFFD.
std::string textOf(const Json& report);

}  // namespace korvel
