// A worker's own placement: where the blocks of the node at hand and their pins lie, and what their
// nets want. Belongs to one thread; allocates nothing once the largest vote has been held.
//
// Use: start() with the number of placed blocks, place() each of them, then ask for wanted steps,
// move blocks and measure.
#pragma once

#include <span>
#include <vector>

#include "classic/alignment/AlignmentTables.h"
#include "classic/alignment/StepVotes.h"
#include "classic/alignment/TrailMemo.h"

namespace korvel {

class WorkingPlacement {
public:
    // `tables` must outlive the placement.
    explicit WorkingPlacement(const AlignmentTables& tables);

    // Blocks that can be placed.
    unsigned getBlockNum() const { return tables.numBlocks; }

    void start(unsigned number);
    // Orientation: unmirrored.
    void place(unsigned block, Point corner, Orient orient);

    // Lower or left edge; extent in the current orientation, cut to whole units.
    float edge(Axis axis, unsigned block) const { return edges[axis][Bodies::ofBlock(block)]; }
    float wholeExtent(Axis axis, unsigned block) const {
        return wholeExtents[axis][Bodies::ofBlock(block)];
    }

    // The step that the nets of the block ask for. Asking again costs nothing as long as no pin
    // that it depends on has moved, and little where all have stood the same way lately.
    Point wantedStep(unsigned block);
    // The common step that the nets to terminals ask for.
    Point wantedStepToTerminals();

    // Moves the block with that index; in a netlist of separate pieces several may have it, or
    // none.
    void moveBlock(unsigned index, Point distance);
    // Moves all placed blocks.
    void moveAll(Point distance);

    // Wirelength of the placed pins; nets whose placed pins all lie on one block are left out,
    // their length is not known yet. Summed net by net, in float, until the sum is found to be
    // useless: `isUseless(sum)` must stay true once it is. Then the result is some useless sum.
    template <typename IsUseless>
    float partialHPWL(const IsUseless& isUseless);

    // Brings the netlist's placed blocks and their pins here, marked and counted as placed.
    void applyTo(Netlist& netlist) const;

private:
    // The body's own axis that lies along the axis.
    BodyAxis bodyAxis(unsigned body, Axis axis) const { return axisOrients[axis][body].bodyAxis(); }
    Point outcome(const BallotTable::Ballot& ballot, unsigned asker, Middle middle);
    bool isRemembered(Axis axis, const BallotTable::Ballot& ballot, unsigned asker);
    void vote(const BallotTable::Ballot& ballot);
    void voteOfNet(std::span<const unsigned> pinList);
    ShiftedList shiftedList(const BallotTable::GroupVote& vote, Axis axis) const;
    double trackOrigin(unsigned body, Axis axis) const;
    double reachOf(unsigned body, Axis axis) const;
    Quad nextEnds(std::span<const unsigned>& pinList) const;
    Quad endsOf(std::span<const unsigned> siteList, Quad ends) const;
    void moveBody(unsigned number, Point distance);
    template <typename IsUseless>
    float sumHPWL(const IsUseless& isUseless) const;
    float boxLength(std::span<const unsigned> siteList) const;
    float addSitePairs(float sum, std::span<const LengthTable::SitePair> pairs) const;
    float addTrackPairs(float sum, const LengthTable::Term& term) const;

    const AlignmentTables& tables;
    unsigned numPlaced = 0;
    std::vector<float> tracks;  // positions
    std::vector<Quad> sites;    // positions
    // By body.
    std::vector<Orient> orients;
    std::vector<AxisOrient> axisOrients[kAxes];
    std::vector<float> edges[kAxes];    // 0 of the terminals
    std::vector<double> drifts[kAxes];  // how far tracks may be from where they belong by the edge
    std::vector<float> wholeExtents[kAxes];
    std::vector<Trail> trails[kAxes];
    // By asker.
    std::vector<float> wanted[kAxes];   // last outcome of its vote
    std::vector<char> outdated[kAxes];  // the vote has to be taken again
    StepVotes votes;
    TrailMemo knownSteps[kAxes];
    TrailMemo knownLengths;
};

template <typename IsUseless>
float WorkingPlacement::partialHPWL(const IsUseless& isUseless) {
    tables.lengths.checkPlacedCounts(numPlaced);
    if (knownLengths.ask(numPlaced, tables.lengths.getNetNum(), std::size_t{kAxes} * numPlaced)) {
        for (unsigned block = 0; block < numPlaced; ++block) {
            knownLengths.add(trails[kX][Bodies::ofBlock(block)]);
            knownLengths.add(trails[kY][Bodies::ofBlock(block)]);
        }
        if (const float* known = knownLengths.known()) {
            return *known;
        }
    }
    const float sum = sumHPWL(isUseless);
    if (!isUseless(sum)) {
        knownLengths.keep(sum);
    }
    return sum;
}

template <typename IsUseless>
float WorkingPlacement::sumHPWL(const IsUseless& isUseless) const {
    float sum = 0.0F;
    for (const LengthTable::Term& term : tables.lengths.terms(numPlaced)) {
        if (isUseless(sum)) {
            break;
        }
        switch (term.kind) {
            case LengthTable::Term::Kind::Box:
                sum += boxLength(tables.lengths.boxSites(term));
                break;
            case LengthTable::Term::Kind::Sites:
                sum = addSitePairs(sum, tables.lengths.sitePairs(term));
                break;
            case LengthTable::Term::Kind::Tracks:
                sum = addTrackPairs(sum, term);
                break;
        }
    }
    return sum;
}

}  // namespace korvel
