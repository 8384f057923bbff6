#include "run/ClassicNetlist.h"

namespace korvel {

namespace {

constexpr char kBothWays = 'B';

// Files have percent from the middle, and the classic reader rounds these: taken back to them, pins
// get the same fractions to the bit.
float fraction(double offset, double extent) {
    const auto percent = static_cast<float>((offset / extent - 0.5) * 100.0);
    return static_cast<float>((percent + 50.0) / 100.0);
}

Point inSinglePrecision(Spot spot) {
    return {static_cast<float>(spot.x), static_cast<float>(spot.y)};
}

void loadBodies(Netlist& netlist, const Design& design) {
    int index = 0;
    for (const Design::Die& die : design.dies) {
        netlist.blocks.emplace_back(index++, die.name, static_cast<float>(die.size.width),
                                    static_cast<float>(die.size.height));
    }
    for (const Design::Terminal& terminal : design.terminals) {
        netlist.terminals.emplace_back(index++, terminal.name, 0.0F, 0.0F,
                                       inSinglePrecision(terminal.at), Orient::N, false);
    }
}

void loadPin(Netlist& netlist, const Design& design, const Design::Pin& from, Net& net) {
    const bool isDie = design.isDie(from.body);
    Block& owner =
        isDie ? netlist.blocks[from.body] : netlist.terminals[from.body - design.dies.size()];
    Point offset;
    if (isDie) {
        const Extent size = design.dies[from.body].size;
        offset = {fraction(from.offset.x, size.width), fraction(from.offset.y, size.height)};
    }
    Pin& pin = netlist.pins.emplace_back(
        static_cast<int>(netlist.pins.size()), kBothWays, owner.getCoord(), offset, !isDie,
        owner.getWidth(), owner.getHeight(), static_cast<unsigned>(owner.getIndex()), &net);
    if (!isDie) {
        pin.setPlaced();
    }
    owner.addPin(&pin);
    net.addPin(&pin);
}

std::size_t countPins(const Design& design) {
    std::size_t number = 0;
    for (const Design::Net& net : design.nets) {
        number += net.pins.size();
    }
    return number;
}

// Nets and pins point to one another, so that their arrays must not grow later.
void loadNets(Netlist& netlist, const Design& design) {
    netlist.nets.reserve(design.nets.size());
    netlist.pins.reserve(countPins(design));
    for (const Design::Net& from : design.nets) {
        Net& net = netlist.nets.emplace_back(static_cast<unsigned>(netlist.nets.size()),
                                             static_cast<unsigned>(from.pins.size()));
        for (const Design::Pin& pin : from.pins) {
            loadPin(netlist, design, pin, net);
        }
    }
}

}  // namespace

void loadDesign(Placer& placer, const Design& design, Region region) {
    placer.params.setDieWidth(static_cast<float>(region.width));
    placer.params.setDieHight(static_cast<float>(region.height));
    placer.params.setAreaConst();
    placer.setBlockNum(static_cast<unsigned>(design.dies.size()));
    placer.setTermNum(static_cast<unsigned>(design.terminals.size()));
    loadBodies(placer.netlist, design);
    loadNets(placer.netlist, design);
    placer.setNetNum(static_cast<unsigned>(placer.netlist.nets.size()));
    placer.setPinNum(static_cast<unsigned>(placer.netlist.pins.size()));
    for (Block& block : placer.netlist.blocks) {
        block.findNetsIndexes(placer.report());
    }
}

}  // namespace korvel
