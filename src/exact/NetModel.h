// The nets of a design, arranged for programs that move dies along one axis at a time. A net that
// joins two bodies costs a convex function of their distance; all nets between the same two bodies
// are summed into one such function, by axis and orientations. What is left are the wide nets, of
// three bodies and more. All terminals are one body, the ground, which lies at the origin.
// Filled once and never changed; any thread may read.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "base/Axis.h"
#include "design/Design.h"

namespace korvel {

// Lengths are in the design's unit, orientations N, E, S or W.
class NetModel {
public:
    // Where a convex piecewise linear function of a distance bends.
    struct Bend {
        double at;
        double value;  // of the function there
        double slope;  // from there on
        double turn;   // how much steeper it is than before; positive
    };
    // The function's value; 0 for one without bends.
    static double value(std::span<const Bend> bends, double distance);

    // Two bodies that nets join; their distance is the position of a less that of b.
    struct Pair {
        unsigned a;  // a die
        unsigned b;  // another die, or the ground
    };
    // From a body's position, the lowest and highest pin that a net has on it.
    struct Reach {
        double low;
        double high;
    };
    struct Member {
        unsigned body;
        std::array<std::array<Reach, kUnmirroredOrients>, 2> reach;  // by axis and orientation
    };
    struct WideNet {
        std::vector<Member> members;  // bodies differ; the ground, if at all, is the last one
        double count;                 // how many nets of the design are alike
    };

    explicit NetModel(const Design& design);

    unsigned dieNum() const { return static_cast<unsigned>(sizes.size()); }
    unsigned ground() const { return dieNum(); }
    double size(unsigned die, Axis axis, Orient orient) const {
        return swapsWidthAndHeight(orient) == (axis == kX) ? sizes[die].height : sizes[die].width;
    }

    const std::vector<Pair>& pairs() const { return joined; }
    // What the nets of a pair cost along an axis. The ground's orientation is N.
    std::span<const Bend> bends(std::size_t pair, Axis axis, Orient ofA, Orient ofB) const {
        return tables[tableIndex(pair, axis, ofA, ofB)];
    }
    const std::vector<WideNet>& wideNets() const { return wide; }

private:
    static std::size_t tableIndex(std::size_t pair, Axis axis, Orient ofA, Orient ofB) {
        return ((pair * 2 + std::size_t{axis}) * kUnmirroredOrients + orientIndex(ofA)) *
                   kUnmirroredOrients +
               orientIndex(ofB);
    }

    std::vector<Member> membersOf(const Design& design, const Design::Net& net) const;
    void addWide(std::vector<Member> members);
    void fillTables(std::size_t pair, const std::vector<std::pair<Member, Member>>& nets);

    std::vector<Extent> sizes;
    std::vector<Pair> joined;
    std::vector<std::vector<Bend>> tables;  // by tableIndex
    std::vector<WideNet> wide;
};

}  // namespace korvel
