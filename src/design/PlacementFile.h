// Placements as .pl files: reads those of any tool against a design, and writes our own, which the
// classic reader takes too.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "design/Design.h"
#include "design/Diagnostics.h"
#include "design/Placement.h"

namespace korvel {

class RecordFile;

// What a placement file says. Dies that are missing and names that are unknown are for the caller
// to judge; they are no findings.
struct ReadPlacement {
    struct Unknown {
        std::string name;
        unsigned line;
    };
    std::vector<std::optional<PlacedDie>> dies;  // by die; none: not in the file, or unreadable
    std::vector<Unknown> unknown;                // in the order of the file

    // The dies' names that the file does not place.
    std::vector<std::string> missing(const Design& design) const;
    // The placement, if it has every die.
    std::optional<Placement> whole() const;
};

// Lines are `name x y : N`, `name x y DIMS = (w, h) : N` or `name x y`, which means N; mirrored
// orientations too. Terminals may be listed. Errors: lines that cannot be read, a name twice, and
// dimensions that are not the die's in any way. What was readable comes back in any case.
ReadPlacement readPlacement(const std::string& path, const Design& design,
                            Diagnostics& diagnostics);
ReadPlacement readPlacement(std::istream& in, const std::string& name, const Design& design,
                            Diagnostics& diagnostics);

// A line of such a file.
struct PlacementRecord {
    Spot at;
    std::optional<Extent> dims;
    Orient orient = Orient::N;
};

// Reads what follows the name. None after an error, which is reported; it is one if the name has
// come before, on line `firstLine`, which is 0 for a new name and becomes this line then.
std::optional<PlacementRecord> readPlacementRecord(RecordFile& file, unsigned& firstLine);

// Dies with their size as placed, then the terminals. Every number reads back as the same double.
void writePlacement(std::ostream& out, const Design& design, const Placement& placement);

}  // namespace korvel
