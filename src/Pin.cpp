#include "Pin.h"

#include <cstdlib>

namespace korvel {

bool pinPlaceInBlock(Point offset, float blockWidth, float blockHeight, Orient orient,
                     Point& place) {
    const float w = blockWidth;
    const float h = blockHeight;
    const auto [fx, fy] = offset;
    switch (orient) {
        case Orient::N:
            place = {fx * w, fy * h};
            return true;
        case Orient::E:
            place = {fy * h, (1 - fx) * w};
            return true;
        case Orient::S:
            place = {(1 - fx) * w, (1 - fy) * h};
            return true;
        case Orient::W:
            place = {(1 - fy) * h, fx * w};
            return true;
        case Orient::FN:
            place = {(1 - fx) * w, fy * h};
            return true;
        case Orient::FE:
            place = {fy * h, fx * w};
            return true;
        case Orient::FS:
            place = {fx * w, (1 - fy) * h};
            return true;
        case Orient::FW:
            place = {(1 - fy) * h, (1 - fx) * w};
            return true;
        case Orient::Undefined:
            break;
    }
    return false;
}

Pin::Moved Pin::move(Point distance) {
    const Point from = pCoord;
    pCoord.x += distance.x;
    pCoord.y += distance.y;
    return {net, from, pCoord};
}

Pin::Updated Pin::updatePinState(Point corner, Orient orient, bool isFlipped) {
    const bool mirrored = orient >= Orient::FN;
    Point place;
    if (mirrored != isFlipped ||
        !pinPlaceInBlock(pOffset, blockWidth, blockHeight, orient, place)) {
        std::cout << "ERROR: Pin//function \"updatePinState\" -- block with undefined orient!"
                  << std::flush;
        std::exit(0);
    }
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
