// Which nets count towards the wirelength of a partial placement, in the order in which they are to
// be summed: for each number of placed blocks an array of positions to compare.
//
// Read-only after construction.
#pragma once

#include <array>
#include <vector>

#include "classic/alignment/PinTable.h"

namespace korvel {

class LengthTable {
public:
    LengthTable(const AlignmentNets& nets, const PinTable& pins);

    struct SitePair {
        unsigned first;
        unsigned second;
    };
    // Tracks of the first and of the second pin.
    struct TrackPair {
        std::array<unsigned, kBodyAxes> first;
        std::array<unsigned, kBodyAxes> second;
    };
    // One net by the box around its sites, or consecutive nets of two pins: between sites, or
    // between tracks of the same two bodies.
    struct Term {
        enum class Kind { Box, Sites, Tracks };
        Kind kind;
        unsigned firstBody;   // of tracks
        unsigned secondBody;  // of tracks
        Range items;
    };

    // Of nets of which at least two pins are placed, not all on one block.
    std::span<const Term> terms(unsigned placed) const { return part(allTerms, termsOf[placed]); }
    std::span<const unsigned> boxSites(const Term& term) const { return part(sites, term.items); }
    std::span<const SitePair> sitePairs(const Term& term) const {
        return part(allSitePairs, term.items);
    }
    std::span<const TrackPair> trackPairs(const Term& term) const {
        return part(allTrackPairs, term.items);
    }

    // Ends the process when a net has more pins placed than its degree says.
    void checkPlacedCounts(unsigned placed) const {
        Net::checkPlacedNum(fullestNets[placed].degree, fullestNets[placed].placedPins);
    }
    unsigned getNetNum() const { return netNum; }

private:
    // A term of nets of two pins, or a net whose term depends on how many blocks are placed.
    struct Part {
        unsigned placed;   // blocks that must be for the term to count
        Term term;         // unless it is
        const Net* other;  // such a net
    };
    std::vector<Part> makeParts(const AlignmentNets& nets, const PinTable& pins);
    void addPair(std::vector<Part>& parts, const AlignmentNets& nets, const PinTable& pins,
                 const Net& net);
    Term pairTerm(const PinTable::PinPlace& first, const PinTable::PinPlace& second);
    void addTerm(const AlignmentNets& nets, const PinTable& pins, const Net& net, unsigned placed);
    struct Fill {
        unsigned degree;
        unsigned placedPins;
    };
    static Fill fullestNet(const AlignmentNets& nets, unsigned placed);

    std::vector<Term> allTerms;
    std::vector<Range> termsOf;  // by number of placed blocks
    std::vector<unsigned> sites;
    std::vector<SitePair> allSitePairs;
    std::vector<TrackPair> allTrackPairs;
    std::vector<Fill> fullestNets;  // by number of placed blocks: a net that overflows, if any does
    unsigned netNum;
};

}  // namespace korvel
