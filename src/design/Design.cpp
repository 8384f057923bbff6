#include "design/Design.h"

namespace korvel {

namespace {

int quarterTurns(Orient orient) {
    return static_cast<int>(orient) % static_cast<int>(kUnmirroredOrients);
}

}  // namespace

Extent turned(Extent size, Orient orient) {
    return quarterTurns(orient) % 2 == 1 ? Extent{size.height, size.width} : size;
}

// A mirrored die is mirrored left to right first, then turned.
Spot turned(Spot offset, Extent size, Orient orient) {
    const Spot from = orient >= Orient::FN ? Spot{size.width - offset.x, offset.y} : offset;
    switch (quarterTurns(orient)) {
        case 1:
            return {from.y, size.width - from.x};
        case 2:
            return {size.width - from.x, size.height - from.y};
        case 3:
            return {size.height - from.y, from.x};
        default:
            return from;
    }
}

}  // namespace korvel
