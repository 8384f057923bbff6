// Reads the rules of a package for a design, from a file and the command line. Says everything that
// is wrong with them at once, with file and line.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "design/Design.h"
#include "design/Diagnostics.h"
#include "rules/Rules.h"

namespace korvel {

// What the command line says: finite lengths of 0 or more, which override those of the file.
struct RuleOverrides {
    std::optional<double> spacing;  // the global one
    std::optional<double> edge;     // of all four sides
};

// Without a path, only those of the command line. The region is usable. No rules come back if
// anything is an error.
std::optional<Rules> readRules(const std::optional<std::string>& path,
                               const RuleOverrides& overrides, const Design& design, Region region,
                               Diagnostics& diagnostics);
// `file` is its name in findings.
std::optional<Rules> readRules(std::istream& in, const std::string& file,
                               const RuleOverrides& overrides, const Design& design, Region region,
                               Diagnostics& diagnostics);

}  // namespace korvel
