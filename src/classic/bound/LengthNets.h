// The nets as the bound on their length needs them: where the outermost pins of each net lie on
// each body, by orientation. Bodies and their numbers: see Bodies.h.
//
// Worked out once for all searches with as many blocks, then read by all workers. Lengths are in
// the unit of the netlist.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Axis.h"
#include "base/VertexSet.h"
#include "classic/netlist/PairGroups.h"

namespace korvel {

// The ends of a net along an axis.
enum End : unsigned { kLow, kHigh, kEnds };

class LengthNets {
public:
    // For the first numBlocks blocks in their final order.
    LengthNets(const Netlist& netlist, unsigned numBlocks);

    // --- Box nets: all but the nets of two pins, if they are on two bodies at least -----------

    // Those of which two bodies are placed; they are the first ones.
    unsigned boxNum(unsigned placed) const { return boxNums[placed]; }
    // The one with the smallest number.
    unsigned firstBody(unsigned net) const { return firstBodies[net]; }
    // Where the outermost pins on the body lie, from its corner: by net, for nets on it only.
    const float* outermost(End end, Axis axis, unsigned body, unsigned orient) const {
        return places[end].data() + rowOf(axis, body, orient);
    }
    // The box nets that are on a body, as bits in getWordNum() words.
    const std::uint64_t* netsOn(unsigned body) const {
        return membership.data() + std::size_t{body} * wordNum;
    }
    bool isOn(unsigned net, unsigned body) const {
        return VertexSet(netsOn(body), wordNum).contains(net);
    }
    unsigned getWordNum() const { return wordNum; }

    // --- Pair groups (see PairGroups.h) --------------------------------------------------------

    // The length of a pair group along an axis, as a function of d, the position of the second body
    // minus that of the first: the sum of |d - breakpoint| over its n nets. It is convex and
    // piecewise linear. For every whole slope from -n to n, the line
    //     slope * d + intercepts[slope + n]
    // is nowhere above it: nets whose breakpoint the line takes to be below d count with slope 1,
    // those above with -1; one net in between may count with slope 0.
    struct PairLength {
        std::vector<double> breakpoints;  // ascending
        std::vector<double> intercepts;
    };
    struct GroupLength {
        unsigned first;                   // body
        unsigned second;                  // body, of a larger number
        std::vector<PairLength> lengths;  // by axis and orientations

        const PairLength& length(Axis axis, unsigned firstOrient, unsigned secondOrient) const {
            return lengths[lengthIndex(axis, firstOrient, secondOrient)];
        }
        // How many nets.
        std::size_t size() const { return lengths.front().breakpoints.size(); }
    };
    static constexpr unsigned kNoGroup = ~0U;

    // Those of which both bodies are placed.
    std::span<const GroupLength> groups(unsigned placed) const {
        return {pairGroups.data(), groupNums[placed]};
    }
    // Position of the group between two bodies, in either order, or kNoGroup.
    unsigned groupBetween(unsigned a, unsigned b) const { return groupsBetween[a * bodyNum + b]; }

    // --- All nets ----------------------------------------------------------------------------

    // Along both axes, of the nets of which only terminals are placed.
    double terminalLength(unsigned placed) const { return terminalLengths[placed]; }

    std::size_t getNetNum() const { return netNum; }

private:
    struct Member;
    struct BoxNet;

    static std::size_t lengthIndex(unsigned axis, unsigned firstOrient, unsigned secondOrient) {
        return (std::size_t{axis} * kUnmirroredOrients + firstOrient) * kUnmirroredOrients +
               secondOrient;
    }
    std::size_t rowOf(unsigned axis, unsigned body, unsigned orient) const {
        return ((std::size_t{axis} * bodyNum + body) * kUnmirroredOrients + orient) *
               firstBodies.size();
    }
    GroupLength& groupOf(unsigned first, unsigned second);
    void addPairs(const PairGroup& pairs);
    void finishPairs();
    static BoxNet boxOf(const Net& net, const Bodies& bodies);
    void spreadBoxes(std::vector<BoxNet>& boxes);
    void addTerminals(const Net& net, const Bodies& bodies);

    unsigned bodyNum;
    unsigned wordNum = 1;  // of a set of box nets
    std::size_t netNum;
    std::vector<GroupLength> pairGroups;
    std::vector<unsigned> groupsBetween;    // by first and second body
    std::vector<unsigned> firstBodies;      // by box net
    std::vector<float> places[kEnds];       // rows by axis, body and orientation; in it by box net
    std::vector<std::uint64_t> membership;  // by body: bits of box nets
    // By number of placed blocks.
    std::vector<unsigned> groupNums;
    std::vector<unsigned> boxNums;
    std::vector<double> terminalLengths;
};

}  // namespace korvel
