#include "classic/TerminalTrials.h"

#include <cmath>

namespace korvel {

namespace {

float keepInside(float shift, float extent, float areaExtent) {
    if (shift < 0) {
        return 0.0F;
    }
    return shift + extent > areaExtent ? areaExtent - extent : shift;
}

}  // namespace

float TerminalTrials::cost(unsigned b, Orient orient, const std::vector<unsigned>& termNets) {
    Block& block = netlist.blocks[b];
    block.updateBlockState({}, orient, false);
    Point shift = shiftOf(b, termNets);
    if (areaConst) {
        shift = keepInArea(shift, block);
    }
    if (std::fabs(shift.x) > 0.001 || std::fabs(shift.y) > 0.001) {
        block.moveBlock(shift);
    }
    // Later blocks find more of their nets completed by others.
    const float factor =
        b == 0 ? 0.6F : static_cast<float>(std::pow(0.6, (10.0 / numBlocks) * (b + 1)));
    float sum = 0.0F;
    for (const unsigned index : termNets) {
        sum += netlist.nets[index].calcTermFCHPWL(factor);
    }
    netlist.unplaceAllNets();
    return sum;
}

Point TerminalTrials::shiftOf(unsigned b, const std::vector<unsigned>& termNets) {
    votes.clear(termNets.size());
    for (const unsigned index : termNets) {
        const Net& net = netlist.nets[index];
        const unsigned placed = net.getPlacedPinsNum();
        // Of a late block only complete nets take part.
        if (placed > 1 && placed != net.getTermNum() &&
            (placed == net.getDeclaredDegree() || b < 0.4 * numBlocks)) {
            votes.addWithFree(net.combinedOffsetsToTerms());
        }
    }
    return votes.step(Middle::Upper);
}

// Cuts a shift at the area's right and top edges; a shift left and down is dropped. A cut shift
// is not looked at again.
Point TerminalTrials::keepInArea(Point shift, const Block& block) const {
    if (shift.x < 0 && shift.y < 0) {
        return {};
    }
    return {keepInside(shift.x, block.getWidthOriented(), area.width),
            keepInside(shift.y, block.getHeightOriented(), area.height)};
}

}  // namespace korvel
