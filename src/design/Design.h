// A design as everything but the classic search sees it: exact sizes, pins as distances, terminals
// where they are. Plain values, filled once by the reader and never changed; any thread may read.
#pragma once

#include <string>
#include <vector>

#include "base/Axis.h"

namespace korvel {

struct Extent {
    double width = 0.0;
    double height = 0.0;
};

// What the dies are to be placed in, from the origin.
using Region = Extent;

// A position or a displacement in double precision.
struct Spot {
    double x = 0.0;
    double y = 0.0;
};

struct Design {
    struct Die {
        std::string name;
        Extent size;  // in orientation N
    };
    struct Terminal {
        std::string name;
        Spot at;
    };
    struct Pin {
        unsigned body;  // a die; from dies.size() on, a terminal
        Spot offset;    // from the die's lower-left corner in orientation N; terminals: 0, 0
    };
    struct Net {
        std::vector<Pin> pins;
    };

    std::string name;
    std::vector<Die> dies;  // in the order of the input
    std::vector<Terminal> terminals;
    std::vector<Net> nets;

    bool isDie(unsigned body) const { return body < dies.size(); }
    const Terminal& terminalOf(unsigned body) const { return terminals[body - dies.size()]; }
};

// The extent of a die of that size, turned. Orientation: any but Undefined.
Extent turned(Extent size, Orient orient);

// The same along one axis. Orientation: N, E, S or W.
inline double lengthAlong(Axis axis, Extent size, Orient orient) {
    return swapsWidthAndHeight(orient) == (axis == kX) ? size.height : size.width;
}

// Where a pin lies from the lower-left corner of its turned die. Orientation: any but Undefined.
Spot turned(Spot offset, Extent size, Orient orient);

}  // namespace korvel
