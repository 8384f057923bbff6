// What stands under a picture: the design's name, its figures, and what the signs mean.
#pragma once

#include <string>

#include "draw/Bundles.h"
#include "draw/RuleMarks.h"
#include "draw/View.h"
#include "judge/Judge.h"

namespace korvel {

struct CaptionFacts {
    const Design& design;
    Region region;
    const Judgement& judgement;
    const Bundles& bundles;
    std::size_t hiddenBundleNum;
    const Ruled* ruled;  // null without rules
};

// The mark of a terminal, in pixels.
std::string terminalSign(Spot centre);

// SVG, within the view's caption.
std::string drawCaption(const CaptionFacts& facts, const View& view);

}  // namespace korvel
