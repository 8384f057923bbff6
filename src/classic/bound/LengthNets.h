// The nets as the bound on their length needs them: for each, the outermost pins of each body that
// it joins, by orientation. Worked out for a search from the first blocks of an order, then read by
// all workers. Bodies and their numbers: see Bodies.h.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Axis.h"
#include "base/VertexSet.h"
#include "classic/netlist/PairGroups.h"

namespace korvel {

class LengthNets {
public:
    // For the first numBlocks blocks in their final order.
    LengthNets(const Netlist& netlist, unsigned numBlocks);

    // --- Box nets: those of more than two pins, on two bodies at least ------------------------

    // Those of which two bodies are placed; they are the first ones.
    unsigned boxNum(unsigned placed) const { return boxNums[placed]; }
    // The terminals, or else the first block.
    unsigned firstBody(unsigned net) const { return firstBodies[net]; }
    // Where its pins on the body lie, relative to the body's corner: by net, for its nets only.
    const float* lowest(Axis axis, unsigned body, unsigned orient) const {
        return lows.data() + rowOf(axis, body, orient);
    }
    const float* highest(Axis axis, unsigned body, unsigned orient) const {
        return highs.data() + rowOf(axis, body, orient);
    }
    // Bits of the nets that a body is on.
    const std::uint64_t* netsOn(unsigned body) const {
        return membership.data() + std::size_t{body} * wordNum;
    }
    bool isOn(unsigned net, unsigned body) const {
        return VertexSet(netsOn(body), wordNum).contains(net);
    }
    unsigned getWordNum() const { return wordNum; }

    // --- Pair groups: the nets of two pins between the same two bodies ------------------------

    // Their length along an axis is a sum of distances from the displacement (second body minus
    // first) to fixed points, one for each net.
    struct PairGroup {
        unsigned first;
        unsigned second;  // the larger one

        struct Points {
            std::vector<double> at;  // ascending
            // What they add to the sum of distances where the displacement is taken to lie beyond
            // that many of them, in halves: each pulls it one way or the other, or neither way.
            std::vector<double> values;
        };
        std::vector<Points> pointsByOrients;

        const Points& points(Axis axis, unsigned firstOrient, unsigned secondOrient) const {
            return pointsByOrients[pointsIndex(axis, firstOrient, secondOrient)];
        }
        std::size_t size() const { return pointsByOrients.front().at.size(); }
    };
    static constexpr unsigned kNoGroup = ~0U;

    // Those of which both bodies are placed.
    std::span<const PairGroup> groups(unsigned placed) const {
        return {pairGroups.data(), groupNums[placed]};
    }
    // Position of the group between two bodies, in either order, or kNoGroup.
    unsigned groupBetween(unsigned a, unsigned b) const { return groupsBetween[a * bodyNum + b]; }

    // Length of the nets whose placed pins are on terminals only.
    double terminalLength(unsigned placed) const { return terminalLengths[placed]; }

    std::size_t getNetNum() const { return netNum; }

private:
    struct Member;
    struct BoxNet;

    static std::size_t pointsIndex(unsigned axis, unsigned firstOrient, unsigned secondOrient) {
        return (std::size_t{axis} * kUnmirroredOrients + firstOrient) * kUnmirroredOrients +
               secondOrient;
    }
    std::size_t rowOf(unsigned axis, unsigned body, unsigned orient) const {
        return ((std::size_t{axis} * bodyNum + body) * kUnmirroredOrients + orient) *
               firstBodies.size();
    }
    PairGroup& groupOf(unsigned first, unsigned second);
    void addPairs(const korvel::PairGroup& pairs);
    void finishPairs();
    static BoxNet boxOf(const Net& net, const Bodies& bodies);
    void spreadBoxes(std::vector<BoxNet>& boxes);
    void addTerminals(const Net& net, const Bodies& bodies);

    unsigned bodyNum;
    unsigned wordNum = 1;  // of a set of box nets
    std::size_t netNum;
    std::vector<PairGroup> pairGroups;
    std::vector<unsigned> groupsBetween;
    std::vector<unsigned> firstBodies;  // by box net, as are the rows of these:
    std::vector<float> lows;
    std::vector<float> highs;
    std::vector<std::uint64_t> membership;
    // By number of placed blocks.
    std::vector<unsigned> groupNums;
    std::vector<unsigned> boxNums;
    std::vector<double> terminalLengths;
};

}  // namespace korvel
