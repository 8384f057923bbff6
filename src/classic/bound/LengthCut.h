// A linear function of the bodies' positions along one axis that is never above the length of all
// nets, and how low the gaps let it get. This is the lower bound of one axis; LengthBound.h says
// how it is used.
//
// The linear function. A net is at least as long as any two of its pins are apart, so a cut reads
// each net of three pins and more (a box net) off two bodies: its low end off the lowest pin on one
// and its high end off the highest pin on the other. The nets of two pins between the same two
// bodies (a pair group) have a length that is convex and piecewise linear in the distance between
// the bodies; a cut takes one of its supporting lines. In the sum every body has a whole slope.
// Only distances count, so the slopes of all bodies add up to 0.
//
// The flow. A cut also says how the slopes are paired: flow(a, b) >= 0 units go from a to b, and
// what flows into a body less what flows out is its slope. Then the linear function is
//     constant + sum of flow(a, b) * (position(b) - position(a))
//  >= constant + sum of flow(a, b) * gap(a, b).
//
// Example, along x: body 0 is the terminals, of which one is at 50; bodies 1 and 2 are blocks A and
// B, 10 wide, A left of B, in an area 100 wide. So gap(1, 2) = 10. Net P joins the left edge of A
// to the right edge of B, net Q the same two edges and the terminal.
//     P, slope 1:                        (position(2) + 10) - position(1)
//     Q, low end off 1, high end off 2:  (position(2) + 10) - position(1)
// The constant is 20, the slopes are -2 for A and 2 for B, flow(1, 2) is 2: the bound is
// 20 + 2 * 10 = 40. That is what P and Q really take when A and B touch around the terminal.
//
// Slopes and flow do not depend on the orientations or the gaps of a node, only the constant does:
// a cut can be tried on any node with as many blocks.
//
// Plain data that belongs to one thread.
#pragma once

#include <vector>

#include "classic/bound/BodyMatrix.h"
#include "classic/bound/LengthNets.h"

namespace korvel {

// What a cut needs to know of a node's orientations along one axis.
struct OrientedNets {
    Axis axis = kX;
    std::vector<unsigned> orients;                           // by body; the terminals' is 0
    std::vector<const LengthNets::PairLength*> pairLengths;  // by pair group

    void orient(const LengthNets& nets, const std::vector<Orient>& blockOrients);
};

class LengthCut {
public:
    // Between two bodies that have any.
    struct Flow {
        std::size_t cell;  // of a BodyMatrix: from, to
        double units;
    };

    LengthCut() = default;
    // Without slopes and flow: both ends of a box net are read off its first body, and pair groups
    // take the line of slope 0.
    LengthCut(const LengthNets& nets, Axis axis, unsigned placed);

    // The bound is the sum of the next two, less than the true one by `slack` for each unit of
    // flow, since every gap may be smaller by that.
    double constant(const OrientedNets& node, double slack) const;
    double flowLength(const BodyMatrix& gaps) const {
        double sum = 0.0;
        for (const Flow& flow : flows) {
            sum += double{gaps.at(flow.cell)} * flow.units;
        }
        return sum;
    }

    const std::vector<Flow>& getFlows() const { return flows; }
    // Units by cell of a BodyMatrix. They must balance the slopes.
    void setFlows(const std::vector<unsigned>& unitsByCell);

    // The line of a pair group of n nets has a slope of `steps` - n; so there are 0 to 2n steps.
    unsigned getSlopeSteps(unsigned group) const { return slopeSteps[group]; }
    void setSlopeSteps(unsigned group, unsigned steps) { slopeSteps[group] = steps; }

    unsigned boxNum() const { return static_cast<unsigned>(endBodies[kLow].size()); }
    // The body that an end of a box net is read off.
    unsigned getBody(End end, unsigned net) const { return endBodies[end][net]; }
    void readOff(const LengthNets& nets, Axis axis, End end, unsigned net, unsigned body);

private:
    void addToParts(const LengthNets& nets, Axis axis, End end, unsigned net, double sign);

    std::vector<unsigned> slopeSteps;        // by pair group
    std::vector<unsigned> endBodies[kEnds];  // by box net
    // What the pins on a body add to the constant as ends of box nets: by body and orientation.
    std::vector<double> boxParts;
    std::vector<Flow> flows;
    double flowUnits = 0.0;  // of all flows
};

}  // namespace korvel
