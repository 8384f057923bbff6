#include "design/DesignDraft.h"

#include <cmath>

#include "design/Numeral.h"

namespace korvel {

std::string times(Extent size) {
    return numeral(size.width) + " x " + numeral(size.height);
}

bool isUsable(double length) {
    return std::isfinite(length) && length > 0.0;
}

DesignDraft::DesignDraft(Region region, Diagnostics& diagnostics)
    : region(region),
      hasRegion(isUsable(region.width) && isUsable(region.height)),
      diagnostics(diagnostics),
      errorsBefore(diagnostics.getErrorNum()) {
    if (!hasRegion) {
        diagnostics.error(
            {}, 0, "found an area of " + times(region) + ", expected a width and a height above 0");
    }
}

DesignDraft::Body* DesignDraft::find(RecordFile& file) {
    const auto body = bodies.find(file.getWord());
    if (body != bodies.end()) {
        return &body->second;
    }
    if (!blocksFile.empty()) {
        file.error("found the name " + shown(file.getWord()) +
                   ", expected one from the .blocks file");
        bodies.try_emplace(file.getWord(), Body{Kind::kOther, 0, file.getLine()});
    }
    return nullptr;
}

}  // namespace korvel
