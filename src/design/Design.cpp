#include "design/Design.h"

namespace korvel {

namespace {

bool isMirrored(Orient orient) {
    return orient >= Orient::FN;
}

Orient withoutMirror(Orient orient) {
    return isMirrored(orient) ? static_cast<Orient>(static_cast<int>(orient) - 4) : orient;
}

}  // namespace

Extent turned(Extent size, Orient orient) {
    return swapsWidthAndHeight(withoutMirror(orient)) ? Extent{size.height, size.width} : size;
}

// A mirrored die is mirrored left to right first, then turned.
Spot turned(Spot offset, Extent size, Orient orient) {
    const Spot from = isMirrored(orient) ? Spot{size.width - offset.x, offset.y} : offset;
    switch (withoutMirror(orient)) {
        case Orient::E:
            return {from.y, size.width - from.x};
        case Orient::S:
            return {size.width - from.x, size.height - from.y};
        case Orient::W:
            return {size.height - from.y, from.x};
        default:
            return from;
    }
}

}  // namespace korvel
