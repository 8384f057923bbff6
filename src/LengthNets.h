// The nets as the bound on their length needs them: for each, the outermost pins of each body that
// it joins, by orientation. A "body" is a block, or all terminals together, which never move and
// come last. Worked out once per pass, read by all workers.
#pragma once

#include <vector>

#include "Axis.h"
#include "Netlist.h"

namespace korvel {

class LengthNets {
public:
    // For the first numBlocks blocks in their final order.
    LengthNets(const Netlist& netlist, unsigned numBlocks);

    // A net of more than two pins.
    struct Member {
        unsigned body;
        // Outermost pins on the net, relative to the body's corner.
        float low[kAxes][kUnmirroredOrients];
        float high[kAxes][kUnmirroredOrients];
    };
    struct BoxNet {
        unsigned placed;              // number of placed blocks from which it has two bodies
        std::vector<Member> members;  // the terminals, then blocks ascending
    };

    // The nets of two pins between the same two bodies: their length along an axis is a sum of
    // distances from the displacement (second body minus first) to fixed points, one for each net.
    struct PairGroup {
        unsigned placed;  // number of placed blocks from which it has both bodies
        unsigned first;
        unsigned second;

        // The points in ascending order, and the sums of those before each and of all.
        struct Points {
            std::vector<double> at;
            std::vector<double> sums;
        };
        std::vector<Points> pointsByOrients;

        const Points& points(Axis axis, unsigned firstOrient, unsigned secondOrient) const {
            return pointsByOrients[pointsIndex(axis, firstOrient, secondOrient)];
        }
        std::size_t size() const { return pointsByOrients.front().at.size(); }
    };

    // Those of which two bodies are placed come first.
    const std::vector<BoxNet>& getBoxNets() const { return boxNets; }
    const std::vector<PairGroup>& getPairGroups() const { return pairGroups; }
    unsigned boxNum(unsigned placed) const { return boxNums[placed]; }
    unsigned groupNum(unsigned placed) const { return groupNums[placed]; }

    // Length of the nets whose placed pins are on terminals only.
    double terminalLength(unsigned placed) const { return terminalLengths[placed]; }

    std::size_t getNetNum() const { return netNum; }

private:
    static std::size_t pointsIndex(unsigned axis, unsigned firstOrient, unsigned secondOrient) {
        return (std::size_t{axis} * kUnmirroredOrients + firstOrient) * kUnmirroredOrients +
               secondOrient;
    }
    unsigned bodyOf(const Pin& pin) const;
    PairGroup& groupOf(unsigned first, unsigned second);
    void addPair(const Pin* first, const Pin* second);
    void addBox(const Net& net);
    void addTerminals(const Net& net);
    void sortByPlaced();

    unsigned numBlocks;
    std::size_t netNum;
    std::vector<PairGroup> pairGroups;
    std::vector<BoxNet> boxNets;
    // By number of placed blocks.
    std::vector<unsigned> groupNums;
    std::vector<unsigned> boxNums;
    std::vector<double> terminalLengths;
};

}  // namespace korvel
