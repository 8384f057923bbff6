#include "run/ClassicNetlist.h"

#include "classic/netlist/NetlistBuilder.h"

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

std::size_t countPins(const Design& design) {
    std::size_t number = 0;
    for (const Design::Net& net : design.nets) {
        number += net.pins.size();
    }
    return number;
}

void loadPin(NetlistBuilder& builder, Netlist& netlist, const Design& design,
             const Design::Pin& pin) {
    if (!design.isDie(pin.body)) {
        builder.addTerminalPin(netlist.terminals[pin.body - design.dies.size()], kBothWays);
        return;
    }
    const Extent size = design.dies[pin.body].size;
    builder.addBlockPin(netlist.blocks[pin.body], kBothWays,
                        {fraction(pin.offset.x, size.width), fraction(pin.offset.y, size.height)});
}

void loadNets(Netlist& netlist, const Design& design, std::ostream& report) {
    NetlistBuilder builder(netlist, design.nets.size(), countPins(design));
    for (const Design::Net& net : design.nets) {
        builder.addNet(static_cast<unsigned>(net.pins.size()), net.pins.size());
        for (const Design::Pin& pin : net.pins) {
            loadPin(builder, netlist, design, pin);
        }
    }
    builder.finish(report);
}

}  // namespace

void loadDesign(Placer& placer, const Design& design, Region region) {
    placer.params.setDieWidth(static_cast<float>(region.width));
    placer.params.setDieHight(static_cast<float>(region.height));
    placer.params.setAreaConst();
    placer.setBlockNum(static_cast<unsigned>(design.dies.size()));
    placer.setTermNum(static_cast<unsigned>(design.terminals.size()));
    loadBodies(placer.netlist, design);
    loadNets(placer.netlist, design, placer.report());
    placer.setNetNum(static_cast<unsigned>(placer.netlist.nets.size()));
    placer.setPinNum(static_cast<unsigned>(placer.netlist.pins.size()));
}

}  // namespace korvel
