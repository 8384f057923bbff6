#include "classic/netlist/Block.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "classic/netlist/Net.h"
#include "classic/netlist/Pin.h"

namespace korvel {

namespace {

[[noreturn]] void endOnUndefinedOrient() {
    std::cout << "Undefined orient!" << std::endl;
    std::exit(0);
}

}  // namespace

Block::Block(int index, std::string name, float width, float height, Point coord, Orient orient,
             bool isFlipped)
    : bIndex(index),
      origIndex(index),
      bName(std::move(name)),
      bWidth(width),
      bHeight(height),
      bArea(width * height),
      bCoord(coord),
      bOrient(orient),
      isFlipped(isFlipped) {}

float Block::getWidthOriented() const {
    if (keepsWidthHorizontal(bOrient)) {
        return bWidth;
    }
    if (swapsWidthAndHeight(bOrient)) {
        return bHeight;
    }
    endOnUndefinedOrient();
}

float Block::getHeightOriented() const {
    if (keepsWidthHorizontal(bOrient)) {
        return bHeight;
    }
    if (swapsWidthAndHeight(bOrient)) {
        return bWidth;
    }
    endOnUndefinedOrient();
}

void Block::updateBlockState(Point coord, Orient orient, bool flipped) {
    bCoord = coord;
    bOrient = orient;
    isFlipped = flipped;
    updateBlockPins();
}

void Block::updateBlockPins() {
    for (Pin* pin : pins) {
        pin->updatePinState(bCoord, bOrient, isFlipped).net->incrementPlacedPins();
    }
}

void Block::moveBlock(Point distance) {
    bCoord.x += distance.x;
    bCoord.y += distance.y;
    for (Pin* pin : pins) {
        pin->move(distance);
    }
}

void Block::updateOrderIndex(unsigned index) {
    bIndex = static_cast<int>(index);
    for (Pin* pin : pins) {
        pin->updateBlockIndex(index);
    }
}

void Block::findNetsIndexes(std::ostream& out) {
    if (!netsIndexes.empty()) {
        netsIndexes.clear();
        out << "WARNING!: check your code! schouldn't be called twice!" << std::endl;
    }
    for (const Pin* pin : pins) {
        netsIndexes.push_back(pin->getNetPtr()->getIndex());
    }
    std::sort(netsIndexes.begin(), netsIndexes.end());
    netsIndexes.erase(std::unique(netsIndexes.begin(), netsIndexes.end()), netsIndexes.end());
}

void Block::printParams(std::ostream& out) const {
    out << std::endl
        << "bIndex: " << bIndex << std::endl
        << "bName: " << bName << std::endl
        << "bWidth: " << bWidth << std::endl
        << "bHeight: " << bHeight << std::endl
        << "bArea: " << bArea << std::endl
        << "bCoordX: " << bCoord.x << std::endl
        << "bCoordY: " << bCoord.y << std::endl
        << "bOrient: " << OrientConverter::OrientToString(bOrient) << std::endl;
}

std::vector<unsigned> commonNets(const Block& a, const Block& b) {
    std::vector<unsigned> common;
    std::set_intersection(a.getNetsIndexes().begin(), a.getNetsIndexes().end(),
                          b.getNetsIndexes().begin(), b.getNetsIndexes().end(),
                          std::back_inserter(common));
    return common;
}

}  // namespace korvel
