// What a partial placement's wirelength along one axis can never fall below, as a linear function
// of where its bodies are. For each net one end is read off a chosen pin and the other end off
// another one: no net is shorter than any two of its pins are apart. How low the sum of all these
// distances can get follows from the gaps between the bodies.
//
// A choice of pins that is good for one node is good for many others, whatever their orientations,
// so it is kept and tried on them.
#pragma once

#include <vector>

#include "classic/bound/LengthNets.h"
#include "classic/bound/SlotMatrix.h"

namespace korvel {

// The orientations of a node along one axis, as cuts see them.
struct AxisView {
    Axis axis = kX;
    std::vector<unsigned> orients;                             // by slot
    std::vector<const LengthNets::PairGroup::Points*> points;  // by pair group

    void turn(const LengthNets& nets, const std::vector<Orient>& blockOrients);
};

// The nets' ends pull bodies together. Units of pull that one body has backward and another forward
// are carried from one to the other, and count with the gap between them.
struct Carried {
    std::size_t cell;  // of the two bodies' slots
    double units;
};

class LengthCut {
public:
    LengthCut() = default;
    // Box nets read off one body only, groups of pairs at their middle.
    LengthCut(const LengthNets& nets, Axis axis, unsigned placed);

    // A sure lower bound for a node is what its orientations fix, and what is carried over its
    // gaps. Each gap may be smaller by `slack`.
    double fixedPart(const AxisView& view, double slack) const;
    double carriedPart(const SlotMatrix& gaps) const {
        double sum = 0.0;
        for (const Carried& one : carried) {
            sum += double{gaps.at(one.cell)} * one.units;
        }
        return sum;
    }

    const std::vector<Carried>& getCarried() const { return carried; }
    // All pulls must be taken up, as they are after all changes.
    void setCarried(const std::vector<unsigned>& unitsByCell);

    // Of how many points of a pair group the displacement is taken to lie beyond, in halves.
    unsigned getHalfPoints(unsigned group) const { return halfPoints[group]; }
    void setHalfPoints(unsigned group, unsigned number) { halfPoints[group] = number; }

    // The bodies that the ends of a box net are read off.
    struct Ends {
        unsigned low;
        unsigned high;
    };
    unsigned boxNum() const { return static_cast<unsigned>(ends.size()); }
    Ends getEnds(unsigned net) const { return ends[net]; }
    void readLowOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body);
    void readHighOff(const LengthNets& nets, Axis axis, unsigned net, unsigned body);

private:
    double& place(unsigned body, unsigned orient) {
        return places[body * kUnmirroredOrients + orient];
    }

    std::vector<unsigned> halfPoints;  // by pair group
    std::vector<Ends> ends;            // by box net
    // By body and orientation: what the places of its pins add, of box nets.
    std::vector<double> places;
    std::vector<Carried> carried;
    double carriedUnits = 0.0;  // in all
};

}  // namespace korvel
