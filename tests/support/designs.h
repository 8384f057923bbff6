// Designs made from a seed, and engines loaded with them: what tests and benchmarks work on.
#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "classic/IO.h"
#include "classic/Placer.h"
#include "classic/ProcessEnd.h"

namespace korvel::test {

struct Die {
    std::string name;
    double width, height;
};
struct Terminal {
    std::string name;
    double x, y;
};
// A pin: on a die in percent from the die's centre, as the files have it, or on a terminal.
struct PinAt {
    std::string owner;
    double x = 0, y = 0;
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
        return 0.25 * (16 + 4 * below(40) + (shape.fractional ? below(4) : 0));
    };
    Design design;
    double largest = 0.0;
    for (unsigned i = 0; i < shape.dies; ++i) {
        design.dies.push_back({"d" + std::to_string(i), size(), size()});
        largest = std::max({largest, design.dies.back().width, design.dies.back().height});
    }
    const double perSide = std::ceil(std::sqrt(shape.dies));
    const double side = std::ceil(largest * perSide) + 8;
    design.area = {static_cast<float>(side), static_cast<float>(side)};
    for (unsigned i = 0; i < shape.terminals; ++i) {
        Terminal terminal{"t" + std::to_string(i), below(2) == 0 ? 0.0 : side,
                          static_cast<double>(below(static_cast<unsigned>(side) + 1))};
        if (below(2) == 0) {
            std::swap(terminal.x, terminal.y);
        }
        design.terminals.push_back(terminal);
    }
    const auto percent = [&] { return 25.0 * below(5) - 50.0; };
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

}  // namespace korvel::test
