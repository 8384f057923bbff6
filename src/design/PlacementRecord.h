// A line of a .pl file.
#pragma once

#include <optional>
#include <string>

#include "design/Design.h"
#include "design/RecordFile.h"

namespace korvel {

struct PlacementRecord {
    Spot at;
    std::optional<Extent> dims;
    Orient orient = Orient::N;
};

// Reads what follows the name. None after an error, which is reported; `subject` says of what.
std::optional<PlacementRecord> readPlacementRecord(RecordFile& file, const std::string& subject);

}  // namespace korvel
