// A layout that a cooling begins with or has ended with. A value.
#pragma once

#include "anneal/SequencePair.h"

namespace korvel {

struct StartLayout {
    SequencePair orders;
    Placement placement;  // of a start, roughly: dies may overlap
};

}  // namespace korvel
