// What the nets between two bodies cost along one axis, as a function of how far one lies from the
// other: convex and piecewise linear, so thousands of nets become one table. Plain values, filled
// once; any thread may read.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

namespace korvel {

// From where to where a body's pins of one net reach, from the body's lower end.
struct PinRange {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void cover(double at);
};

class BundleCost {
public:
    // A place where the slope grows.
    struct Kink {
        double at;
        double cost;
        int slopeAfter;
    };

    // One net between bodies a and b; the displacement is that of b from a.
    void add(const PinRange& a, const PinRange& b);
    // To be called once, after the last `add`.
    void finish();

    const std::vector<Kink>& getKinks() const { return kinks; }
    int slopeAtLeft() const { return -netNum; }
    // The slope between kink number index - 1 and kink number index.
    int slopeBefore(std::size_t index) const {
        return index == 0 ? slopeAtLeft() : kinks[index - 1].slopeAfter;
    }
    int getNetNum() const { return netNum; }

    double at(double displacement) const;
    // The least cost of any displacement in a range; infinity if the range is empty.
    double leastWithin(double from, double to) const;

    // Whether costs are the same but for rounding, by a displacement or by its opposite.
    bool isLike(const BundleCost& other, bool opposite, double nearness) const;

    // Number of kinks below a displacement.
    std::size_t kinksBelow(double displacement) const;

private:
    void settleCosts();

    std::vector<Kink> kinks;  // ascending
    int netNum = 0;
    double atZero = 0.0;
};

}  // namespace korvel
