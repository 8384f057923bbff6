// Improves a cut for one node until it is good enough or the best there is. Which pins the nets are
// read off and how the pulls are paired is a flow problem, the dual of finding the coordinates of
// least wirelength. Its residual graph has a vertex for each body only; as long as it holds a cycle
// of positive gain, going around it raises the value (M. Klein, "A primal method for minimal cost
// flows", Management Science 14, 1967).
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <cstdint>
#include <vector>

#include "LengthCut.h"

namespace korvel {

class LengthAscent {
public:
    // `nets` must outlive the ascent. Gains up to `negligible` are not followed.
    LengthAscent(const LengthNets& nets, double negligible)
        : nets(nets), negligible(static_cast<float>(negligible)) {}

    // Returns the value that the cut then has for the node; stops when it has reached `target`.
    double raise(LengthCut& cut, const AxisView& view, double target);

private:
    // How a unit of pull that one body has too much gets to another body: it is carried, or less is
    // carried the other way, or a net is read off differently.
    enum class Way : std::uint8_t {
        Carry,
        CarryLess,
        GroupForward,
        GroupBackward,
        LowEnd,
        HighEnd
    };
    struct Choice {
        Way way = Way::Carry;
        std::uint16_t member = 0;  // of the net
        std::uint32_t item = 0;    // group or net
    };
    // An arc of the cycle that is followed.
    struct Step {
        unsigned from;
        unsigned to;
        Choice choice;
        float gain;
    };

    void load(const LengthCut& cut, const AxisView& view);
    void loadMembers(const AxisView& view);
    void collectArcs(const LengthCut& cut, const AxisView& view);
    void collectCarrying(const AxisView& view);
    void collectGroup(unsigned group, unsigned halfPoints, const AxisView& view);
    void collectEnds(unsigned net, LengthCut::Ends ends);
    void offer(unsigned from, unsigned to, float gain, Choice choice) {
        const std::size_t arc = to * stride + from;
        auto* known = reinterpret_cast<float*>(gains.data()) + arc;
        if (gain > *known) {
            *known = gain;
            choices[arc] = choice;
        }
    }

    bool findCycle();
    bool relaxTowards(unsigned to);
    bool traceCycle(unsigned slot);
    double followCycle(LengthCut& cut, const AxisView& view);
    unsigned roomAlong(const Step& step, const LengthCut& cut, const AxisView& view,
                       double tolerance) const;
    double follow(const Step& step, unsigned units, LengthCut& cut, const AxisView& view);

    unsigned& carriedUnits(unsigned from, unsigned to) { return units[to * stride + from]; }
    Quad* gainsTo(unsigned to) { return gains.data() + to * quadNum; }

    const LengthNets& nets;
    float negligible;
    unsigned slotNum = 0;
    unsigned quadNum = 0;
    unsigned stride = 0;          // of rows of slots: whole quads
    std::vector<unsigned> units;  // carried, by slot `to` in rows of slots `from`
    // The best arc for each, likewise.
    std::vector<Quad> gains;
    std::vector<Choice> choices;
    // The members of the box nets that are placed, and where each net's begin.
    struct Member {
        unsigned slot;
        float low;
        float high;
    };
    std::vector<Member> members;
    std::vector<unsigned> firstMembers;
    // Longest ways found so far from each slot, and where they go next.
    std::vector<Quad> potentials;
    std::vector<QuadMask> successors;
    std::vector<Step> cycle;
};

}  // namespace korvel
