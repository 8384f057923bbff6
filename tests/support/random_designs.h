// Random designs on a grid, and whether placements of them are legal, for the tests of what works
// on designs in double precision.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "design/Placement.h"
#include "judge/Judge.h"

namespace korvel::test {

inline constexpr Orient kNotMirrored[] = {Orient::N, Orient::E, Orient::S, Orient::W};

// All sizes, offsets and places are multiples of `grid`.
struct RandomShape {
    unsigned dies = 3;
    unsigned terminals = 2;
    unsigned nets = 5;
    unsigned largestNet = 4;
    int largestSide = 4;     // of a die, in steps of the grid
    int terminalSpread = 8;  // terminals lie up to this far on both sides of the origin
    double grid = 1.0;
};

class RandomDesigns {
public:
    explicit RandomDesigns(unsigned seed) : random(seed) {}

    int number(int low, int high) { return std::uniform_int_distribution<>(low, high)(random); }
    Orient orient() { return kNotMirrored[number(0, 3)]; }

    Design make(const RandomShape& shape) {
        Design design;
        for (unsigned die = 0; die < shape.dies; ++die) {
            design.dies.push_back({"d" + std::to_string(die),
                                   {number(1, shape.largestSide) * shape.grid,
                                    number(1, shape.largestSide) * shape.grid}});
        }
        for (unsigned terminal = 0; terminal < shape.terminals; ++terminal) {
            const int far = shape.terminalSpread;
            design.terminals.push_back(
                {"t" + std::to_string(terminal),
                 {number(-far, far) * shape.grid, number(-far, far) * shape.grid}});
        }
        for (unsigned net = 0; net < shape.nets; ++net) {
            design.nets.push_back(makeNet(design, shape));
        }
        return design;
    }

private:
    Design::Net makeNet(const Design& design, const RandomShape& shape) {
        Design::Net net;
        const auto bodies = static_cast<int>(design.dies.size() + design.terminals.size());
        for (int pin = number(2, static_cast<int>(shape.largestNet)); pin > 0; --pin) {
            const auto body = static_cast<unsigned>(number(0, bodies - 1));
            Spot offset;
            if (design.isDie(body)) {
                const Extent size = design.dies[body].size;
                offset = {number(0, static_cast<int>(size.width / shape.grid)) * shape.grid,
                          number(0, static_cast<int>(size.height / shape.grid)) * shape.grid};
            }
            net.pins.push_back({body, offset});
        }
        return net;
    }

    std::mt19937 random;
};

// Whether the dies lie inside the region and apart, each up to `slack`.
inline bool isLegal(const Design& design, Region region, const Placement& placement,
                    double slack = 0.0) {
    return judge(design, region, placement, slack).isLegal();
}

}  // namespace korvel::test
