// A layout to begin annealing with. A value.
#pragma once

#include "anneal/SequencePair.h"

namespace korvel {

struct Start {
    SequencePair orders;
    Placement placement;  // roughly; dies may overlap
};

}  // namespace korvel
