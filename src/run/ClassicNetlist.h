// A design as the classic search wants it.
#pragma once

#include "classic/Placer.h"
#include "design/Design.h"

namespace korvel {

// Gives the engine, which must be new, the area and the netlist that the classic reader would have
// read from the design's files: single precision, pins as fractions of their dies. Blocks keep the
// number of their die as original index.
void loadDesign(Placer& placer, const Design& design, Region region);

}  // namespace korvel
