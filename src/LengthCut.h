// What a partial placement's wirelength along one axis can never fall below, as a linear function
// of where its bodies are. For each net one end is read off a chosen pin and the other end off
// another one: no net is shorter than any two of its pins are apart. How low the sum of all these
// distances can get follows from the gaps between the bodies.
//
// A choice of pins that is good for one node is good for many others, whatever their orientations,
// so it is kept and tried on them.
#pragma once

#include <vector>

#include "LengthNets.h"
#include "Quad.h"

namespace korvel {

// A node along one axis, as cuts see it. Slots number its bodies: the blocks, then the terminals.
struct AxisView {
    Axis axis = kX;
    unsigned slotNum = 0;
    unsigned quadNum = 0;           // quads of a row of slots; what is too much takes no part
    std::vector<unsigned> orients;  // by slot
    // By slot `to` in rows of slots `from`: how far `to` lies at least beyond `from`.
    std::vector<Quad> gaps;
    std::vector<const LengthNets::PairGroup::Points*> points;  // by pair group
    double pointSum = 0.0;                                     // of all groups

    Quad* rowTo(unsigned to) { return gaps.data() + std::size_t{to} * quadNum; }
    const Quad* rowTo(unsigned to) const { return gaps.data() + std::size_t{to} * quadNum; }
    float gap(unsigned from, unsigned to) const { return rowTo(to)[from / kLanes][from % kLanes]; }

    // Makes room for the blocks of a node; the gaps are left to be filled in.
    void start(const LengthNets& nets, Axis along, const std::vector<Orient>& blockOrients);
};

// The nets' ends pull bodies together. Units of pull that one body has backward and another forward
// are carried from one to the other, and count with the gap between them.
struct Carried {
    unsigned from;
    unsigned to;
    unsigned units;
};

class LengthCut {
public:
    LengthCut() = default;
    // Box nets read off one body only, groups of pairs at their middle.
    LengthCut(const LengthNets& nets, Axis axis, unsigned placed);

    // A sure lower bound for that node.
    double value(const AxisView& view) const;

    const std::vector<Carried>& getCarried() const { return carried; }
    // Must take up all pulls, as they are after all changes.
    void setCarried(const std::vector<unsigned>& units, unsigned slotNum, unsigned stride);

    // Of how many points of a pair group the displacement is taken to lie beyond, in halves.
    unsigned getHalfPoints(unsigned group) const { return halfPoints[group]; }
    void setHalfPoints(unsigned group, unsigned number) { halfPoints[group] = number; }

    // The members of a box net that its ends are read off.
    struct Ends {
        unsigned low;
        unsigned high;
    };
    Ends getEnds(unsigned net) const { return ends[net]; }
    void readLowOff(const LengthNets& nets, Axis axis, unsigned net, unsigned member);
    void readHighOff(const LengthNets& nets, Axis axis, unsigned net, unsigned member);

private:
    void addPin(unsigned body, int times, const float* offsets);
    unsigned slotOf(unsigned body) const;

    std::vector<unsigned> halfPoints;  // by pair group
    std::vector<Ends> ends;            // by box net
    // By slot and orientation: what the places of its pins add, of box nets.
    std::vector<double> places;
    std::vector<Carried> carried;
};

}  // namespace korvel
