// Designs for the tests, engines loaded with them, and a judge of what a run reports: it does not
// search and shares no arithmetic with the placer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "IO.h"
#include "Placer.h"
#include "ProcessEnd.h"

namespace korvel::test {

inline constexpr Orient kTurned[] = {Orient::N, Orient::E, Orient::S, Orient::W};
inline constexpr Orient kMirrored[] = {Orient::FN, Orient::FE, Orient::FS, Orient::FW};

// --- Designs ---------------------------------------------------------------------------------

struct Die {
    std::string name;
    float width, height;
};
struct Terminal {
    std::string name;
    float x, y;
};
// A pin: on a die in percent from the die's centre, as the files have it, or on a terminal.
struct PinAt {
    std::string owner;
    float x = 0, y = 0;
};

struct Design {
    std::vector<Die> dies;
    std::vector<Terminal> terminals;
    std::vector<std::vector<PinAt>> nets;
    Area area;  // none if 0

    bool isDie(const std::string& name) const {
        return std::any_of(dies.begin(), dies.end(), [&](const Die& d) { return d.name == name; });
    }
    std::string blocksFile() const {
        std::ostringstream text;
        text << "NumSoftRectangularBlocks : 0\nNumHardRectilinearBlocks : " << dies.size()
             << "\nNumTerminals : " << terminals.size() << "\n";
        for (const auto& [name, w, h] : dies) {
            text << name << " hardrectilinear 4 (0, 0) (0, " << h << ") (" << w << ", " << h
                 << ") (" << w << ", 0)\n";
        }
        for (const Terminal& terminal : terminals) {
            text << terminal.name << " terminal\n";
        }
        return text.str();
    }
    std::string placementFile() const {
        std::ostringstream text;
        for (const auto& [name, x, y] : terminals) {
            text << name << " " << x << " " << y << "\n";
        }
        return text.str();
    }
    std::string netsFile() const {
        std::ostringstream text;
        std::size_t pinNum = 0;
        for (const auto& net : nets) {
            pinNum += net.size();
        }
        text << "NumNets : " << nets.size() << "\nNumPins : " << pinNum << "\n";
        for (const auto& net : nets) {
            text << "NetDegree : " << net.size() << "\n";
            for (const auto& [owner, x, y] : net) {
                text << owner << " B";
                if (isDie(owner)) {
                    text << " : %" << x << " %" << y;
                }
                text << "\n";
            }
        }
        return text.str();
    }
};

struct Shape {
    unsigned dies, terminals, nets;
    bool fractional = false;  // die sizes
};

// Every die is joined to an earlier one, the area fits, and terminals lie on its border. All sizes
// and places are multiples of a quarter of a unit (of a sixteenth with fractional sizes), so that
// wirelengths are exact.
inline Design randomDesign(unsigned seed, const Shape& shape) {
    std::mt19937 random(seed);
    const auto below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
    const auto size = [&] {
        const unsigned quarters = 16 + 4 * below(40) + (shape.fractional ? below(4) : 0);
        return 0.25F * static_cast<float>(quarters);
    };
    Design design;
    float largest = 0.0F;
    for (unsigned i = 0; i < shape.dies; ++i) {
        design.dies.push_back({"d" + std::to_string(i), size(), size()});
        largest = std::max({largest, design.dies.back().width, design.dies.back().height});
    }
    const float perSide = std::ceil(std::sqrt(static_cast<float>(shape.dies)));
    const float side = std::ceil(largest * perSide) + 8;
    design.area = {side, side};
    for (unsigned i = 0; i < shape.terminals; ++i) {
        Terminal terminal{"t" + std::to_string(i), below(2) == 0 ? 0.0F : side,
                          static_cast<float>(below(static_cast<unsigned>(side) + 1))};
        if (below(2) == 0) {
            std::swap(terminal.x, terminal.y);
        }
        design.terminals.push_back(terminal);
    }
    const auto percent = [&] { return 25.0F * static_cast<float>(below(5)) - 50.0F; };
    const auto pinOf = [&](unsigned owner) {
        return owner < shape.dies ? PinAt{design.dies[owner].name, percent(), percent()}
                                  : PinAt{design.terminals[owner - shape.dies].name};
    };
    for (unsigned i = 0; i < shape.nets; ++i) {
        std::vector<PinAt> net;
        if (i + 1 < shape.dies) {
            net = {pinOf(i + 1), pinOf(below(i + 1))};
        }
        for (unsigned more = below(3) + (net.empty() ? 2 : 0); more > 0; --more) {
            net.push_back(pinOf(below(shape.dies + shape.terminals)));
        }
        design.nets.push_back(std::move(net));
    }
    return design;
}

// The readers' part of a run; the exit status if they end it.
inline int read(Placer& placer, const std::string& blocks, const std::string& placement,
                const std::string& nets) {
    IO io(placer);
    std::istringstream in[] = {std::istringstream(blocks), std::istringstream(placement),
                               std::istringstream(nets)};
    try {
        io.parseBlocks(in[0]);
        io.parsePlacement(in[1]);
        io.parseNets(in[2]);
    } catch (const ProcessEnd& end) {
        return end.status;
    }
    for (Block& block : placer.netlist.blocks) {
        block.findNetsIndexes();
    }
    return -1;
}

inline void load(Placer& placer, const Design& design, unsigned threads) {
    placer.setNumThreads(threads);
    if (design.area.width > 0) {
        placer.params.setDieWidth(design.area.width);
        placer.params.setDieHight(design.area.height);
        placer.params.setAreaConst();
    }
    read(placer, design.blocksFile(), design.placementFile(), design.netsFile());
}

// An engine with a design, and all that it has reported.
struct Engine {
    explicit Engine(const Design& design, unsigned threads = 1) { load(placer, design, threads); }
    std::ostringstream report;
    Placer placer{0.0F, report};
    Netlist& netlist = placer.netlist;
};

// --- The judge -------------------------------------------------------------------------------

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
