// What the tests share beside their designs: a judge of what a run reports. It does not search and
// shares no arithmetic with the placer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/designs.h"

namespace korvel::test {

inline constexpr Orient kTurned[] = {Orient::N, Orient::E, Orient::S, Orient::W};
inline constexpr Orient kMirrored[] = {Orient::FN, Orient::FE, Orient::FS, Orient::FW};

struct Spot {
    std::string orient;
    double x, y;  // of the lower-left corner
};
using Placement = std::map<std::string, Spot>;

// What one pass says about itself.
struct Pass {
    std::vector<double> updates;  // of the best wirelength
    bool initial = false;
    double wirelength = 0, width = 0, height = 0;
    Placement placement;
};

inline std::vector<Pass> readReport(const std::string& report) {
    std::vector<Pass> passes;
    std::istringstream lines(report);
    std::string name;
    for (std::string line; std::getline(lines, line);) {
        const auto starts = [&line](const char* with) { return line.rfind(with, 0) == 0; };
        const auto colon = line.rfind(": ");
        const double value =
            colon == std::string::npos ? 0 : std::strtod(line.c_str() + colon + 2, nullptr);
        double x = 0;
        double y = 0;
        if (starts("==   Start B&B")) {
            passes.emplace_back();
        } else if (starts("best solution is updated, bestWL (w/o one-die nets): ")) {
            passes.back().updates.push_back(value);
        } else if (starts("initWL found (w/o one-die nets): ") ||
                   starts("bestBBNode WL (all nets): ")) {
            passes.back().initial = starts("init");
            passes.back().wirelength = value;
        } else if (starts("bestBBNode width: ")) {
            passes.back().width = value;
        } else if (starts("bestBBNode hight: ")) {
            passes.back().height = value;
        } else if (starts("Name: ")) {
            name = line.substr(6, line.find(',') - 6);
            passes.back().placement[name].orient = line.substr(colon + 2);
        } else if (std::sscanf(line.c_str(), "\tCoordinate: (%lf, %lf)", &x, &y) == 2) {
            passes.back().placement[name].x = x;
            passes.back().placement[name].y = y;
        }
    }
    return passes;
}

// Width and height of a die in an orientation.
inline std::pair<double, double> extent(const Die& die, const std::string& orient) {
    const bool upright = orient == "N" || orient == "S";
    return {upright ? die.width : die.height, upright ? die.height : die.width};
}

// Turns the pin about its die's centre: a clockwise quarter turn takes (x, y) to (y, -x).
inline std::pair<double, double> pinPlace(const Die& die, const PinAt& pin, const Spot& spot) {
    double x = die.width * pin.x / 100.0;
    double y = die.height * pin.y / 100.0;
    for (auto turns = std::string("NESW").find(spot.orient); turns > 0; --turns) {
        x = std::exchange(y, -x);
    }
    const auto [w, h] = extent(die, spot.orient);
    return {spot.x + w / 2 + x, spot.y + h / 2 + y};
}

// Half the perimeters of the nets' boxes; without `oneDieNets` those on a single die do not count.
inline double wirelength(const Design& design, const Placement& placement, bool oneDieNets) {
    double sum = 0;
    for (const auto& net : design.nets) {
        std::set<double> xs, ys;
        std::set<std::string> owners;
        const auto add = [&](double x, double y) { xs.insert(x), ys.insert(y); };
        for (const PinAt& pin : net) {
            owners.insert(pin.owner);
            for (const Terminal& terminal : design.terminals) {
                if (terminal.name == pin.owner) {
                    add(terminal.x, terminal.y);
                }
            }
            for (const Die& die : design.dies) {
                if (die.name == pin.owner) {
                    const auto [x, y] = pinPlace(die, pin, placement.at(die.name));
                    add(x, y);
                }
            }
        }
        if (oneDieNets || owners.size() > 1) {
            sum += *xs.rbegin() - *xs.begin() + *ys.rbegin() - *ys.begin();
        }
    }
    return sum;
}

// What is wrong with a placement: dies that are missing, outside the area or on top of each other.
// A die that has no relation along an axis is not counted in the placement's size along it, on
// purpose; so the placement may leave the area by as much as a die is larger than that size.
inline std::string faults(const Design& design, const Pass& pass) {
    constexpr double kTolerance = 0.01;
    double widest = 0;
    double highest = 0;
    for (const Die& die : design.dies) {
        if (pass.placement.count(die.name) == 0) {
            return die.name + " is missing";
        }
        const auto [w, h] = extent(die, pass.placement.at(die.name).orient);
        widest = std::max(widest, w);
        highest = std::max(highest, h);
    }
    const double right = design.area.width + std::max(0.0, widest - pass.width) + kTolerance;
    const double top = design.area.height + std::max(0.0, highest - pass.height) + kTolerance;
    std::string found;
    for (const Die& a : design.dies) {
        const Spot& at = pass.placement.at(a.name);
        const auto [w, h] = extent(a, at.orient);
        if (at.x < -kTolerance || at.x + w > right || at.y < -kTolerance || at.y + h > top) {
            found += a.name + " is outside; ";
        }
        for (const Die& b : design.dies) {
            const Spot& other = pass.placement.at(b.name);
            const auto [bw, bh] = extent(b, other.orient);
            if (a.name < b.name &&
                std::min(at.x + w, other.x + bw) - std::max(at.x, other.x) > kTolerance &&
                std::min(at.y + h, other.y + bh) - std::max(at.y, other.y) > kTolerance) {
                found += a.name + " overlaps " + b.name + "; ";
            }
        }
    }
    return found;
}

// Of a run with an area and dies of whole-unit sizes, whatever the number of workers: each best is
// below the last, over both passes, and what is reported at the end of a pass is legal and as long
// as it says. A main pass that beats nothing reports an empty placement.
inline void expectSoundRun(const Design& design, const std::string& report) {
    const std::vector<Pass> passes = readReport(report);
    ASSERT_EQ(passes.size(), 2U);
    ASSERT_FALSE(passes[0].updates.empty());
    double best = std::numeric_limits<double>::infinity();
    for (const Pass& pass : passes) {
        EXPECT_EQ(pass.initial, &pass == passes.data());
        for (const double update : pass.updates) {
            EXPECT_LT(update, best);
            best = update;
        }
        EXPECT_EQ(pass.placement.empty(), pass.updates.empty());
        if (!pass.placement.empty()) {
            EXPECT_EQ(faults(design, pass), "");
            EXPECT_NEAR(wirelength(design, pass.placement, false), best, 1e-3);
            EXPECT_NEAR(wirelength(design, pass.placement, !pass.initial), pass.wirelength, 1e-3);
        }
    }
}

}  // namespace korvel::test
