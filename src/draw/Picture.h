// A placement as a picture for a slide and for the eye: SVG, with details for the mouse to find.
#pragma once

#include <string>

#include "design/Placement.h"
#include "draw/RuleMarks.h"
#include "judge/Judge.h"

namespace korvel {

// The area, the dies to scale with names and a mark at the corner that is the lower-left one in
// orientation N, terminals, and connections, gathered in bundles. Of whatever unit and size, the
// picture has the same size in pixels. Dies need not be legal: those at fault by the judgement,
// which is one of this placement, stand out. With rules it also shows these, and what breaks them.
// `placement` has a place for each die. Any thread.
std::string drawSvg(const Design& design, Region region, const Placement& placement,
                    const Judgement& judgement, const Ruled* ruled = nullptr);

}  // namespace korvel
