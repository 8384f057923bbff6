// The diagnosing reader of designs: the files of the classic reader, one record a line. It says
// everything that is wrong with them at once, with file and line, and is strict where the classic
// reader is lax. Any bytes are safe to read; memory stays within a small multiple of the
// files' size, whatever they declare.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "design/Design.h"
#include "design/Diagnostics.h"

namespace korvel {

// Reads PATH.blocks, PATH.pl and PATH.nets; the path may also end with one of the extensions. No
// design comes back if anything is an error; warnings do no harm. The design's name is the last
// part of the path, without the extension.
std::optional<Design> readDesign(const std::string& path, Region region, Diagnostics& diagnostics);

// The three files as streams, which are named `name`.blocks and so on in the findings.
struct DesignStreams {
    std::istream& blocks;
    std::istream& placement;
    std::istream& nets;
};
std::optional<Design> readDesign(DesignStreams files, const std::string& name, Region region,
                                 Diagnostics& diagnostics);

}  // namespace korvel
