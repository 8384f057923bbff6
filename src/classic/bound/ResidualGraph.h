// How a cut can be changed: the residual graph of the flow problem that the best cut solves. Its
// vertices are the bodies of a node.
//
// Call the surplus of a body its slope in the cut less what flows into it plus what flows out. It
// is 0 for every body of a cut. A change along an arc from a to b makes the surplus of a larger by
// 1 and that of b smaller by 1, and the arc's gain is what that adds to the bound. So changes along
// all arcs of a cycle give a cut again, and add up to the gain of the cycle. Between two bodies
// only the change with the largest gain is kept.
//
// Belongs to one thread. Allocates nothing once it has seen the largest node.
#pragma once

#include <cstdint>
#include <vector>

#include "classic/bound/LengthCut.h"

namespace korvel {

class ResidualGraph {
public:
    enum class Change : std::uint8_t {
        AddFlow,      // from -> to
        RemoveFlow,   // to -> from
        RaiseSlope,   // of the pair group, whose second body is `from`
        LowerSlope,   // of the pair group, whose second body is `to`
        MoveLowEnd,   // of the box net, off `from`, to be read off `to`
        MoveHighEnd,  // of the box net, off `to`, to be read off `from`
    };
    struct Choice {
        Change change = Change::AddFlow;
        std::uint32_t item = 0;  // pair group or box net

        bool operator==(const Choice&) const = default;
    };
    struct Arc {
        unsigned from;
        unsigned to;
        float gain;  // in the bound, per unit
        Choice choice;
    };
    static constexpr unsigned kUnlimited = ~0U;

    // `nets` must outlive the graph. Gaps may be smaller by `slack`; gains up to `negligible` are
    // left alone. Both are lengths.
    ResidualGraph(const LengthNets& nets, double slack, double negligible)
        : nets(nets), slack(slack), negligible(static_cast<float>(negligible)) {}

    // Takes a cut and the node that it is to be good for. They are used until the next call.
    void load(LengthCut& newCut, const OrientedNets& node, const BodyMatrix& newGaps);

    // Of the best change between every two bodies, less what is negligible.
    const BodyMatrix& getGains() const { return gains; }
    Arc arc(unsigned from, unsigned to) const {
        return {from, to, gains.at(from, to) + negligible, choices[gains.cell(from, to)]};
    }

    // How many units the change can be made by before its gain falls by more than `tolerance`.
    unsigned room(const Arc& arc, double tolerance) const {
        return (this->*operationsOf(arc).room)(arc, tolerance);
    }
    // Makes the change, in the cut and in the flow, and returns what it gains. The cut's own flows
    // are left behind until storeFlows.
    double apply(const Arc& arc, unsigned units) {
        return (this->*operationsOf(arc).apply)(arc, units);
    }
    // Finds the best changes anew where the one that was made may matter.
    void refreshAfter(const Arc& arc) { (this->*operationsOf(arc).refresh)(arc); }

    // Brings the cut's flows up to date.
    void storeFlows() { cut->setFlows(flowUnits); }

private:
    struct Operations {
        unsigned (ResidualGraph::*room)(const Arc&, double tolerance) const;
        double (ResidualGraph::*apply)(const Arc&, unsigned units);
        void (ResidualGraph::*refresh)(const Arc&);
    };
    static const Operations kOperations[];  // by Change
    static const Operations& operationsOf(const Arc& arc) {
        return kOperations[static_cast<unsigned>(arc.choice.change)];
    }

    struct Offer {
        float gain;
        Choice choice;

        void improve(float otherGain, Choice otherChoice) {
            if (otherGain > gain) {
                *this = {otherGain, otherChoice};
            }
        }
    };

    void loadEnds();
    void refreshArc(unsigned from, unsigned to);
    Offer bestOffer(unsigned from, unsigned to) const;
    void offerSlope(unsigned from, unsigned to, Offer& best) const;
    void offerEnd(End end, unsigned from, unsigned to, Offer& best) const;

    unsigned unlimited(const Arc& arc, double tolerance) const;
    unsigned flowToRemove(const Arc& arc, double tolerance) const;
    unsigned stepsToRaise(const Arc& arc, double tolerance) const;
    unsigned stepsToLower(const Arc& arc, double tolerance) const;
    unsigned oneEnd(const Arc& arc, double tolerance) const;

    double addFlow(const Arc& arc, unsigned units);
    double removeFlow(const Arc& arc, unsigned units);
    double raiseSlope(const Arc& arc, unsigned units);
    double lowerSlope(const Arc& arc, unsigned units);
    double setSlope(unsigned group, unsigned steps);
    double moveEnd(const Arc& arc, unsigned units);
    void flipReadOff(End end, unsigned body, unsigned net);

    void refreshForward(const Arc& arc);
    void refreshBackward(const Arc& arc);
    void refreshBoth(const Arc& arc);
    void refreshEnd(const Arc& arc);

    unsigned& flow(unsigned from, unsigned to) { return flowUnits[gains.cell(from, to)]; }
    unsigned flow(unsigned from, unsigned to) const { return flowUnits[gains.cell(from, to)]; }
    const LengthNets::PairLength& lengthOf(unsigned group) const {
        return *oriented->pairLengths[group];
    }

    const LengthNets& nets;
    double slack;
    float negligible;
    // As loaded:
    LengthCut* cut = nullptr;
    const OrientedNets* oriented = nullptr;
    const BodyMatrix* gaps = nullptr;
    unsigned bodyNum = 0;
    BodyMatrix gains;
    std::vector<Choice> choices;      // by cell of the gains
    std::vector<unsigned> flowUnits;  // by cell of the gains
    // By body: its outermost pins by box net, and bits of the box nets whose end is read off it.
    std::vector<const float*> outermost[kEnds];
    std::vector<std::uint64_t> readOff[kEnds];
};

}  // namespace korvel
