// The summed costs of nets, against plain sums over the nets.
#include <algorithm>
#include <cmath>

#include "base/Tolerances.h"
#include "nets/NetModel.h"
#include "support/random_designs.h"

namespace korvel {
namespace {

using test::RandomDesigns;

// Coordinates are multiples of 1/4, so all sums are exact.
constexpr double kGrid = 0.25;

struct TwoPins {
    PinRange a, b;
    double cost(double distance) const {
        return std::max(distance + a.high, b.high) - std::min(distance + a.low, b.low);
    }
};

std::vector<TwoPins> randomNets(RandomDesigns& random) {
    std::vector<TwoPins> nets(static_cast<std::size_t>(random.number(1, 12)));
    for (TwoPins& net : nets) {
        for (PinRange* range : {&net.a, &net.b}) {
            for (int pin = random.number(1, 3); pin > 0; --pin) {
                range->cover(random.number(-20, 20) * kGrid);
            }
        }
    }
    return nets;
}

double plainSum(const std::vector<TwoPins>& nets, double distance) {
    double sum = 0.0;
    for (const TwoPins& net : nets) {
        sum += net.cost(distance);
    }
    return sum;
}

PiecewiseLinear summed(const std::vector<TwoPins>& nets) {
    double offset = 0.0;
    std::vector<PiecewiseLinear::Jump> jumps;
    for (const auto& [a, b] : nets) {
        offset += b.high - a.low;
        jumps.push_back({b.high - a.high, 1.0});
        jumps.push_back({b.low - a.low, 1.0});
    }
    return {offset, -static_cast<double>(nets.size()), jumps};
}

TEST(PiecewiseLinear, IsThePlainSumAtEveryDistance) {
    RandomDesigns random(2);
    for (int round = 0; round < 200; ++round) {
        const std::vector<TwoPins> nets = randomNets(random);
        const PiecewiseLinear cost = summed(nets);
        for (double at = -12.0; at <= 12.0; at += kGrid / 2) {
            const double value = plainSum(nets, at);
            const double step = kGrid / 4;
            const PiecewiseLinear::Local local = cost.around(at);
            ASSERT_EQ(cost.value(at), value);
            ASSERT_EQ(local.value, value);
            ASSERT_EQ(local.left * step, value - plainSum(nets, at - step));
            ASSERT_EQ(local.right * step, plainSum(nets, at + step) - value);
        }
    }
}

TEST(PiecewiseLinear, BreakpointsAreWhereTheSlopeGrows) {
    RandomDesigns random(3);
    for (int round = 0; round < 200; ++round) {
        const PiecewiseLinear cost = summed(randomNets(random));
        const auto& points = cost.breakpoints();
        for (std::size_t point = 0; point < points.size(); ++point) {
            ASSERT_GT(cost.jumpAt(point), 0.0);
            ASSERT_EQ(cost.numBelow(points[point].at), point);
            ASSERT_EQ(cost.numBelow(points[point].at + kGrid / 2), point + 1);
            ASSERT_EQ(cost.around(points[point].at).left, cost.slopeBefore(point));
        }
        ASSERT_EQ(cost.slopeBefore(points.size()), -cost.slopeBefore(0));
    }
}

TEST(PiecewiseLinear, LeastInARangeIsTheLeastOfAllDistancesInIt) {
    RandomDesigns random(4);
    for (int round = 0; round < 1000; ++round) {
        const std::vector<TwoPins> nets = randomNets(random);
        const double from = random.number(-50, 50) * kGrid;
        const double to = random.number(-50, 50) * kGrid;
        double least = kInfiniteLength;
        for (double at = from; at <= to; at += kGrid) {
            least = std::min(least, plainSum(nets, at));
        }
        ASSERT_EQ(summed(nets).leastWithin(from, to), least);
    }
}

TEST(PiecewiseLinear, LikenessIsThatOfTheValuesAtAllDistances) {
    RandomDesigns random(5);
    int alike = 0;
    for (int round = 0; round < 2000; ++round) {
        const std::vector<TwoPins> nets = randomNets(random);
        std::vector<TwoPins> others = nets;
        for (auto& [a, b] : others) {
            std::swap(a, b);
        }
        std::reverse(others.begin(), others.end());
        if (random.number(0, 1) == 1) {
            others[0].a.cover(random.number(-20, 20) * kGrid);
        }
        bool isSame = true;
        for (double at = -12.0; at <= 12.0; at += kGrid) {
            isSame = isSame && plainSum(nets, at) == plainSum(others, -at);
        }
        alike += isSame ? 1 : 0;
        ASSERT_EQ(summed(nets).isLike(summed(others), true, kTouching), isSame);
        ASSERT_EQ(summed(others).isLike(summed(nets), true, kTouching), isSame);
        ASSERT_TRUE(summed(nets).isLike(summed(nets), false, 0.0));
    }
    EXPECT_GT(alike, 1000);
    EXPECT_LT(alike, 1900);
}

double summedLength(const NetModel& nets, const Placement& placement, Axis axis) {
    const auto position = [&](unsigned body) {
        if (body == nets.ground()) {
            return 0.0;
        }
        return axis == kX ? placement[body].at.x : placement[body].at.y;
    };
    const auto orient = [&](unsigned body) {
        return body == nets.ground() ? Orient::W : placement[body].orient;
    };
    double sum = 0.0;
    for (std::size_t bundle = 0; bundle < nets.bundles().size(); ++bundle) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        const PiecewiseLinear& cost = nets.cost(bundle, axis, orient(a), orient(b));
        EXPECT_EQ(cost.slopeBefore(0), -weight);
        sum += cost.value(position(a) - position(b));
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        PinRange reach;
        for (const BodyPins& pins : net.members) {
            reach.cover(pins.range(axis, orient(pins.body)).movedBy(position(pins.body)));
        }
        sum += net.weight * reach.length();
    }
    return sum;
}

// With nets of every kind, the model's parts add up to the wirelength from the pins themselves.
TEST(NetModel, AddsUpToTheWirelengthOfAnyPlacement) {
    RandomDesigns random(6);
    for (int round = 0; round < 300; ++round) {
        Design design = random.make({4, 3, 20, 5, 12, 60, kGrid});
        design.nets.push_back(design.nets.back());
        const NetModel nets(design);
        Placement placement(design.dies.size());
        for (PlacedDie& die : placement) {
            die = {{random.number(-90, 90) * kGrid, random.number(-90, 90) * kGrid},
                   random.orient()};
        }
        ASSERT_EQ(nets.fixedLength() + summedLength(nets, placement, kX) +
                      summedLength(nets, placement, kY),
                  wirelength(design, placement));
    }
}

}  // namespace
}  // namespace korvel
