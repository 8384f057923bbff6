// What a run of `place` tells in the end: lines for people, JSON for programs.
#pragma once

#include <string>

#include "report/Report.h"
#include "run/RunResult.h"

namespace korvel {

// What a report repeats of the command line.
struct PlaceInputs {
    std::string design;  // as it was given
    std::string start;   // empty: none
    Region region;
};

// Design, area, wirelength, extent, who found it, how the run ended, and the table of dies. Without
// a placement: that there is none, and how the run ended.
std::string placeSummary(const Design& design, Region region, const RunOptions& options,
                         const RunResult& result);

Json placeReport(const Design& design, const PlaceInputs& inputs, const RunOptions& options,
                 const RunResult& result);

}  // namespace korvel
