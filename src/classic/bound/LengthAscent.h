// Improves a cut for one node until it is good enough or the best there is. Which pins the nets are
// read off and how the pulls are paired is a flow problem, the dual of finding the coordinates of
// least wirelength. Its residual graph has a vertex for each body only; as long as it holds a cycle
// of positive gain, going around it raises the value (M. Klein, "A primal method for minimal cost
// flows", Management Science 14, 1967). After a cycle only the arcs that it has touched are looked
// at again.
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <cstdint>
#include <vector>

#include "classic/bound/LengthCut.h"

namespace korvel {

class LengthAscent {
public:
    // `nets` must outlive the ascent. Gaps may be smaller by `slack`; gains up to `negligible` are
    // not followed.
    LengthAscent(const LengthNets& nets, double slack, double negligible)
        : nets(nets), slack(slack), negligible(static_cast<float>(negligible)) {}

    // Returns the value that the cut then has for the node; stops when it has reached `target`.
    double raise(LengthCut& cut, const AxisView& view, const SlotMatrix& gaps, double target);

private:
    // How a unit of pull that one body has too much gets to another body: it is carried, or less is
    // carried the other way, or a group or an end of a net is read off differently.
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
        std::uint32_t item = 0;  // group or net

        bool operator==(const Choice&) const = default;
    };
    struct Arc {
        float gain;
        Choice choice;

        void offer(float otherGain, Choice otherChoice) {
            if (otherGain > gain) {
                *this = {otherGain, otherChoice};
            }
        }
    };
    // Of the cycle that is followed.
    struct Step {
        unsigned from;
        unsigned to;
        Arc arc;
    };
    // The node and the cut at hand.
    struct Task {
        LengthCut* cut = nullptr;
        const AxisView* view = nullptr;
        const SlotMatrix* gaps = nullptr;
        unsigned slotNum = 0;
    };

    void load();
    void loadEnds();
    void refreshArc(unsigned from, unsigned to);
    Arc bestArc(unsigned from, unsigned to) const;
    void offerGroup(unsigned from, unsigned to, Arc& best) const;
    void offerEnds(unsigned from, unsigned to, Arc& best) const;
    void offerMoves(const std::uint64_t* ends, const std::uint64_t* reached,
                    const float* placesFrom, const float* placesTo, Way way, Arc& best) const;

    bool findCycle();
    unsigned relaxAll();
    bool traceCycle(unsigned slot);
    double followCycle();
    unsigned roomAlong(const Step& step, double tolerance) const;
    double follow(const Step& step, unsigned room);
    void refreshAround(const Step& step);
    void refreshEnd(const Step& step);

    unsigned& carriedUnits(unsigned from, unsigned to) { return units[gains.cell(from, to)]; }
    unsigned carriedUnits(unsigned from, unsigned to) const { return units[gains.cell(from, to)]; }

    const LengthNets& nets;
    double slack;
    float negligible;
    Task task;
    // Of the best arc between two slots: what it gains more than is negligible, and what it is.
    SlotMatrix gains;
    std::vector<Choice> choices;
    std::vector<unsigned> units;  // carried
    // By slot: where box nets' pins are on it, and bits of those that are read off it.
    std::vector<const float*> lowest;
    std::vector<const float*> highest;
    std::vector<std::uint64_t> lowEnds;
    std::vector<std::uint64_t> highEnds;
    // Longest ways found so far from each slot, and where they go next.
    std::vector<Quad> potentials;
    std::vector<QuadMask> successors;
    std::vector<float> relaxed;  // by slot: its way when those leading to it were looked at last
    std::vector<Step> cycle;
};

}  // namespace korvel
