// A lower bound on the wirelength that the alignment of a node can end with, found without doing
// it. Most block-complete nodes are rejected by their wirelength, and more than half of those
// already by this bound, at a fraction of the cost. It decides nothing that the wirelength would
// not decide the same way.
//
// Why it is one: wherever the alignment slides the blocks, two blocks in a chain of relations stay
// apart by the (whole) extents along the chain, and no block leaves the area. So the displacement
// between any two blocks, or between a block and the terminals, lies in a known interval. For the
// nets of two pins between the same two bodies the length is a convex function of that displacement
// (a sum of distances to points), and its least value over the interval is found from its median;
// a larger net spans at least what the displacements of each two of its bodies demand. Nets are
// counted once each. What the alignment's tolerances and float rounding can take away is taken off
// every interval and off the sum.
#pragma once

#include <vector>

#include "BBNode.h"
#include "Netlist.h"

namespace korvel {

class LengthBound {
public:
    // For the first numBlocks blocks in their final order. Read-only from then on.
    LengthBound(const Netlist& netlist, unsigned numBlocks, Area area);

    // What one worker needs to compute with.
    struct Workspace {
        // Along each axis, by first and second body: how far the second lies at least beyond the
        // first.
        std::vector<double> leastGaps[kAxes];
        std::vector<double> least[kAxes];  // coordinate, by body
        std::vector<double> most[kAxes];
        std::vector<double> paths;    // from one block: longest chain of extents, or -1
        std::vector<double> extents;  // whole units
        std::vector<unsigned> order;
    };
    Workspace makeWorkspace() const;

    // The bound for a block-complete node with its coordinates found; 0 when none is known. More
    // than `enough` is not asked for.
    double leastLength(const BBNode& node, Workspace& space, double enough) const;

private:
    // A sum of distances to points, as a function of position.
    class Distances {
    public:
        void add(double point) { points.push_back({point, 0.0, 0.0}); }
        void finish();
        double leastWithin(double low, double high) const;

    private:
        struct Point {
            double at;
            double weightBefore;  // number of points before this one
            double momentBefore;  // sum of their positions
        };
        double valueAt(double position) const;

        std::vector<Point> points;  // ascending
        double median = 0.0;
        double weight = 0.0;  // number of points
        double moment = 0.0;  // sum of their positions
    };

    struct PairGroup {
        unsigned placed;  // number of placed blocks from which it counts
        unsigned first;   // body
        unsigned second;  // body
        // By axis, orientation of first and of second.
        std::vector<Distances> lengths;
    };
    struct Member {
        unsigned body;
        // Ends of the body's pins on the net, by orientation and axis.
        float low[kUnmirroredOrients][kAxes];
        float high[kUnmirroredOrients][kAxes];
    };
    struct BoxNet {
        unsigned placed;  // number of placed blocks from which it counts: of at least two bodies
        std::vector<Member> members;  // ascending by body
    };

    static std::size_t lengthIndex(Axis axis, Orient first, Orient second) {
        return (static_cast<std::size_t>(axis) * kUnmirroredOrients + orientIndex(first)) *
                   kUnmirroredOrients +
               orientIndex(second);
    }
    void addBox(const Net& net);
    unsigned bodyOf(const Pin& pin) const;
    bool findGaps(const BBNode& node, Axis axis, Workspace& space) const;
    double pairLength(const PairGroup& group, const BBNode& node, Axis axis,
                      const Workspace& space) const;
    double boxLength(const BoxNet& net, const BBNode& node, Axis axis,
                     const Workspace& space) const;
    bool isPlaced(unsigned body, const BBNode& node) const {
        return body < node.numBlocks || body == numBlocks;
    }
    Orient orientOf(unsigned body, const BBNode& node) const {
        return body < numBlocks ? node.blocksOrients[body] : Orient::N;
    }

    unsigned numBlocks;
    Area area;
    double slack;    // what tolerances and rounding can take off a displacement
    double sumKept;  // part of the sum that rounding leaves for certain
    bool usable;
    std::vector<PairGroup> pairGroups;  // ascending by number of placed blocks
    std::vector<BoxNet> boxNets;        // likewise
};

}  // namespace korvel
