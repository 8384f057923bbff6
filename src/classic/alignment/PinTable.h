// Where the positions of pins are kept while blocks are placed and moved, and how far from the
// corner of its block each of them lies.
//
// Pins of a body at the same place share a "site", which has both coordinates. The pins of sorted
// groups share more: many of them stand in the same columns or rows. Their positions are kept per
// "track": one u track for each distinct place along the body's width, one v track for each along
// its height. A pin's position is that of its u track and its v track; the u tracks of a body that
// lies on its side run along y.
//
// Read-only after construction.
#pragma once

#include <vector>

#include "base/Quad.h"
#include "classic/alignment/AlignmentNets.h"
#include "classic/alignment/AxisOrient.h"
#include "classic/alignment/Range.h"

namespace korvel {

class PinTable {
public:
    explicit PinTable(const AlignmentNets& nets);

    struct Body {
        Range tracks[kBodyAxes];
        Range sites;
        float extents[kBodyAxes];  // 0 of the terminals
        float reach;  // from the corner to the farthest track plus the body's extent, at the most
        int index;    // what moves go by: the block's number but in a netlist of separate pieces;
                      // -1 of the terminals
    };
    static constexpr unsigned kNoSite = ~0U;
    struct PinPlace {
        unsigned body;
        unsigned site;  // kNoSite if it is on tracks
        unsigned tracks[kBodyAxes];
    };

    const Body& body(unsigned number) const { return bodies[number]; }
    // The bodies of a block index.
    const std::vector<unsigned>& bodiesOf(unsigned index) const { return bodiesOfIndex[index]; }
    const PinPlace& placeOf(std::size_t pinNumber) const { return pinPlaces[pinNumber]; }

    // Relative to the corner of the body: of tracks along the axis that they then have, of sites
    // along both, in an unmirrored orientation. Terminals are where their offsets say.
    const std::vector<float>& trackOffsets(AxisOrient orient) const {
        return trackOffsetsReversed[orient.isReversed() ? 1 : 0];
    }
    const std::vector<Quad>& siteOffsets(Orient orient) const {
        return siteOffsetsByOrient[orientIndex(orient)];
    }

private:
    using Pins = std::vector<const Pin*>;
    Body makeBody(const AlignmentNets& nets, unsigned number, const Pins& onTracks,
                  const Pins& onSites);
    Range numberTracks(const AlignmentNets& nets, BodyAxis axis, const Pins& pins);
    Range numberSites(const AlignmentNets& nets, const Pins& pins);

    std::vector<Body> bodies;
    std::vector<std::vector<unsigned>> bodiesOfIndex;
    std::vector<PinPlace> pinPlaces;
    std::vector<float> trackOffsetsReversed[2];  // as they are, reversed
    std::vector<Quad> siteOffsetsByOrient[kUnmirroredOrients];
};

}  // namespace korvel
