#include "classic/netlist/Pin.h"

#include <cstdlib>

namespace korvel {

Point Pin::placeInBlock(Orient orient) const {
    if (terminal) {
        return pCoord;
    }
    const float w = blockWidth;
    const float h = blockHeight;
    const auto [fx, fy] = pOffset;
    switch (orient) {
        case Orient::N:
            return {fx * w, fy * h};
        case Orient::E:
            return {fy * h, (1 - fx) * w};
        case Orient::S:
            return {(1 - fx) * w, (1 - fy) * h};
        case Orient::W:
            return {(1 - fy) * h, fx * w};
        case Orient::FN:
            return {(1 - fx) * w, fy * h};
        case Orient::FE:
            return {fy * h, fx * w};
        case Orient::FS:
            return {fx * w, (1 - fy) * h};
        case Orient::FW:
            return {(1 - fy) * h, (1 - fx) * w};
        case Orient::Undefined:
            break;
    }
    return {};
}

Pin::Moved Pin::move(Point distance) {
    const Point from = pCoord;
    pCoord.x += distance.x;
    pCoord.y += distance.y;
    return {net, from, pCoord};
}

Pin::Updated Pin::updatePinState(Point corner, Orient orient, bool isFlipped) {
    const bool mirrored = orient >= Orient::FN;
    if (mirrored != isFlipped || orient == Orient::Undefined) {
        std::cout << "ERROR: Pin//function \"updatePinState\" -- block with undefined orient!"
                  << std::flush;
        std::exit(0);
    }
    const Point place = placeInBlock(orient);
    pCoord = {corner.x + place.x, corner.y + place.y};
    placed = true;
    return {net, pCoord};
}

void Pin::printParams(std::ostream& out) const {
    out << "pIndex: ";
    printFields(out);
}

void Pin::printParamsInLine(std::ostream& out) const {
    out << "\tpIndex: ";
    printFields(out);
}

void Pin::printFields(std::ostream& out) const {
    out << pIndex << ", pDirection: " << pDirection << ", pCoord: " << pCoord.x << ' ' << pCoord.y
        << ", pOffset: " << pOffset.x << ' ' << pOffset.y << ", blockWidth: " << blockWidth
        << ", blockHeight: " << blockHeight << std::endl;
}

}  // namespace korvel
