#include "classic/alignment/PinTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvel {

namespace {

// What tells apart the pins of a body.
Point spotOf(const Pin& pin) {
    return pin.isTerminal() ? pin.getCoord() : pin.getOffset();
}

float along(Point point, BodyAxis axis) {
    return axis == kU ? point.x : point.y;
}

void sortUnique(auto& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

unsigned rankIn(const auto& sorted, const auto& value) {
    return static_cast<unsigned>(std::lower_bound(sorted.begin(), sorted.end(), value) -
                                 sorted.begin());
}

// Adds as many entries to each of the lists.
Range appendTo(auto& lists, std::size_t number) {
    const Range range{endOf(lists[0]), static_cast<unsigned>(lists[0].size() + number)};
    for (auto& list : lists) {
        list.resize(range.end);
    }
    return range;
}

}  // namespace

PinTable::PinTable(const AlignmentNets& nets)
    : bodiesOfIndex(nets.numBlocks),
      pinPlaces(nets.netlist.pins.size(), {nets.bodies.neverPlaced(), kNoSite, {0, 0}}) {
    std::vector<Pins> onTracks(nets.bodies.size() + 1);
    std::vector<Pins> onSites(nets.bodies.size() + 1);
    for (const Pin& pin : nets.netlist.pins) {
        const unsigned body = nets.bodies.of(pin);
        (nets.isInSortedGroup(pin) ? onTracks : onSites)[body].push_back(&pin);
    }
    for (unsigned body = 0; body < nets.bodies.size(); ++body) {
        bodies.push_back(makeBody(nets, body, onTracks[body], onSites[body]));
        const int index = bodies[body].index;
        if (index >= 0 && index < static_cast<int>(nets.numBlocks)) {
            bodiesOfIndex[static_cast<unsigned>(index)].push_back(body);
        }
    }
}

PinTable::Body PinTable::makeBody(const AlignmentNets& nets, unsigned number, const Pins& onTracks,
                                  const Pins& onSites) {
    Body body{};
    body.index = -1;
    if (number != Bodies::kTerminals) {
        const Block& block = nets.netlist.blocks[Bodies::blockOf(number)];
        body.index = block.getIndex();
        body.extents[kU] = block.getWidth();
        body.extents[kV] = block.getHeight();
    }
    for (const BodyAxis axis : {kU, kV}) {
        body.tracks[axis] = numberTracks(nets, axis, onTracks);
        float farthest = 0.0F;
        for (const float offset : part(trackOffsetsReversed[0], body.tracks[axis])) {
            farthest = std::max(farthest, std::fabs(offset));
        }
        body.reach = std::max(body.reach, farthest + std::fabs(body.extents[axis]));
    }
    body.sites = numberSites(nets, onSites);
    return body;
}

Range PinTable::numberTracks(const AlignmentNets& nets, BodyAxis axis, const Pins& pins) {
    std::vector<float> spots;
    for (const Pin* pin : pins) {
        spots.push_back(along(spotOf(*pin), axis));
    }
    sortUnique(spots);
    const Range range = appendTo(trackOffsetsReversed, spots.size());
    for (const Pin* pin : pins) {
        const unsigned track = range.begin + rankIn(spots, along(spotOf(*pin), axis));
        PinPlace& place = pinPlaces[nets.bodies.pinNumber(*pin)];
        place.body = nets.bodies.of(*pin);
        place.tracks[axis] = track;
        trackOffsetsReversed[0][track] = along(pin->placeInBlock(Orient::N), axis);
        trackOffsetsReversed[1][track] = along(pin->placeInBlock(Orient::S), axis);
    }
    return range;
}

Range PinTable::numberSites(const AlignmentNets& nets, const Pins& pins) {
    std::vector<std::pair<float, float>> spots;
    for (const Pin* pin : pins) {
        spots.emplace_back(spotOf(*pin).x, spotOf(*pin).y);
    }
    sortUnique(spots);
    const Range range = appendTo(siteOffsetsByOrient, spots.size());
    for (const Pin* pin : pins) {
        const unsigned site =
            range.begin + rankIn(spots, std::pair(spotOf(*pin).x, spotOf(*pin).y));
        pinPlaces[nets.bodies.pinNumber(*pin)] = {nets.bodies.of(*pin), site, {0, 0}};
        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            siteOffsetsByOrient[o][site] = quadOf(pin->placeInBlock(static_cast<Orient>(o)));
        }
    }
    return range;
}

}  // namespace korvel
