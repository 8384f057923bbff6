// The nets of a design, arranged for programs that move dies along one axis at a time.
//
// Of each net only the outermost pins on each body count. A net on one body has a fixed length. One
// that joins two bodies costs a convex function of their distance; all nets between the same two
// bodies are a bundle, whose costs are summed into one such function by axis and orientations. What
// is left are the wide nets, of three bodies and more. All terminals are one body, the ground,
// which lies at the origin.
//
// Filled once and never changed; any thread may read. Refers to nothing of the design that it was
// made from.
#pragma once

#include <array>
#include <vector>

#include "base/Axis.h"
#include "base/Infinity.h"
#include "design/Design.h"
#include "nets/PiecewiseLinear.h"

namespace korvel {

// From where to where the pins of a net on one body reach along an axis, from the body's position.
struct PinRange {
    double low = kInfiniteLength;
    double high = -kInfiniteLength;

    void cover(double at) { cover(PinRange{at, at}); }
    void cover(const PinRange& other) {
        low = other.low < low ? other.low : low;
        high = other.high > high ? other.high : high;
    }
    PinRange movedBy(double distance) const { return {low + distance, high + distance}; }
    double length() const { return high - low; }
    bool operator==(const PinRange&) const = default;
};

// The pins of a net on one body.
struct BodyPins {
    unsigned body;
    std::array<std::array<PinRange, kUnmirroredOrients>, kAxes> ranges;

    const PinRange& range(Axis axis, Orient orient) const {
        return ranges[axis][orientIndex(orient)];
    }
    bool operator==(const BodyPins&) const = default;
};

// Lengths are in the design's unit, orientations N, E, S or W; that of the ground does not matter.
// All nets weigh the same so far, so weights are numbers of nets.
class NetModel {
public:
    // All nets between two bodies.
    struct Bundle {
        unsigned a;  // a die
        unsigned b;  // a die after it, or the ground
        double weight;
    };
    // Nets over the same pin ranges on three bodies or more.
    struct WideNet {
        std::vector<BodyPins> members;  // by body; the ground, if at all, is the last one
        double weight;
    };

    explicit NetModel(const Design& design);

    unsigned dieNum() const { return static_cast<unsigned>(sizes.size()); }
    unsigned ground() const { return dieNum(); }
    double size(unsigned die, Axis axis, Orient orient) const {
        return lengthAlong(axis, sizes[die], orient);
    }

    // By a, then by b.
    const std::vector<Bundle>& bundles() const { return joined; }
    // Their numbers, in the order in which the nets of the design first name them.
    const std::vector<std::size_t>& bundlesInNetOrder() const { return inNetOrder; }
    // What a bundle costs along an axis, by the position of a less that of b. The slope far left is
    // less than 0 by the bundle's weight, the one far right is more by as much.
    const PiecewiseLinear& cost(std::size_t bundle, Axis axis, Orient ofA, Orient ofB) const {
        return costs[costIndex(bundle, axis, ofA, ofB)];
    }
    const std::vector<WideNet>& wideNets() const { return wide; }
    // Of all nets on one body.
    double fixedLength() const { return onOneBody; }

private:
    using TwoBodies = std::array<BodyPins, 2>;

    static std::size_t costIndex(std::size_t bundle, Axis axis, Orient ofA, Orient ofB) {
        return ((bundle * kAxes + std::size_t{axis}) * kUnmirroredOrients + orientIndex(ofA)) *
                   kUnmirroredOrients +
               orientIndex(ofB);
    }

    std::vector<BodyPins> pinsByBody(const Design& design, const Design::Net& net) const;
    void addWide(std::vector<BodyPins> members);
    void addBundle(const std::vector<TwoBodies>& nets);

    std::vector<Extent> sizes;  // in orientation N
    std::vector<Bundle> joined;
    std::vector<std::size_t> inNetOrder;
    std::vector<PiecewiseLinear> costs;  // by costIndex
    std::vector<WideNet> wide;
    double onOneBody = 0.0;
};

}  // namespace korvel
