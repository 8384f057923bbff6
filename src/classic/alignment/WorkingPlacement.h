// One worker's placement in the making: where the blocks of the node at hand and their pins lie,
// and what their nets want. Belongs to one thread; nothing here allocates while searching.
//
// Use: start() with the number of placed blocks, place() each of them, then ask for wanted steps,
// move blocks and measure.
#pragma once

#include <cmath>
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
    unsigned getBlockNum() const { return tables.getBlockNum(); }

    void start(unsigned number);
    // Orientation: unmirrored.
    void place(unsigned block, Point corner, Orient orient);

    // Lower or left edge; extent in the current orientation, cut to whole units.
    float edge(Axis axis, unsigned block) const { return edges[axis][block]; }
    float wholeExtent(Axis axis, unsigned block) const { return wholeExtents[axis][block]; }

    // The step that the nets of the block ask for. Asking again costs nothing as long as no pin
    // that it depends on has moved, and little where all have stood the same way lately.
    Point wantedStep(unsigned block);
    // The common step that the nets to terminals ask for.
    Point wantedStepToTerminals();

    // Moves the bodies of that block index.
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
    // Lanes of the body along the axis, as a family.
    unsigned familyAlong(unsigned body, Axis axis) const {
        return AlignmentTables::familyOf(turns[axis][body]);
    }
    AlignmentTables::Range lanesAlong(unsigned body, Axis axis) const {
        return tables.bodies[body].lanes[familyAlong(body, axis)];
    }
    Point outcome(const AlignmentTables::Ballot& ballot, unsigned asker, Middle middle);
    bool isRemembered(Axis axis, const AlignmentTables::Ballot& ballot, unsigned asker);
    void vote(const AlignmentTables::Ballot& ballot);
    void voteOfBundles(const AlignmentTables::Ballot& ballot, Axis axis);
    SortedRun runOf(const AlignmentTables::BundleVote& vote, Axis axis) const;
    template <typename IsUseless>
    float sumHPWL(const IsUseless& isUseless) const;
    float leastHPWL() const;
    double leastLength(unsigned bundle, Axis axis) const;
    double laneOrigin(unsigned body, Axis axis) const;
    double reachOf(unsigned body, Axis axis) const;
    void voteOfNet(AlignmentTables::Range list);
    Quad nextEnds(const unsigned*& list) const;
    Quad endsOf(std::span<const unsigned> list, Quad ends) const;
    void moveBody(unsigned index, Point distance);
    float boxLength(AlignmentTables::Range list) const;
    float addSitePairs(float sum, AlignmentTables::Range pairs) const;
    float addLaneJoints(float sum, const AlignmentTables::LengthRun& run) const;

    const AlignmentTables& tables;
    unsigned numPlaced = 0;
    std::vector<Orient> orients;             // by body
    std::vector<unsigned> turns[kAxes];      // by body
    std::vector<float> lanes;                // positions
    std::vector<Quad> sites;                 // positions
    std::vector<float> edges[kAxes];         // by body; 0 of the terminals
    std::vector<double> drifts[kAxes];       // by body: how far its lanes may be from where they
                                             // belong by the edge
    std::vector<float> wholeExtents[kAxes];  // by block
    // By asker: a block, or the body of the terminals for the step toward them.
    std::vector<float> wanted[kAxes];   // last outcome of its vote
    std::vector<char> outdated[kAxes];  // the vote has to be taken again
    StepVotes votes;
    std::vector<Trail> trails[kAxes];  // by block
    TrailMemo knownSteps[kAxes];
    TrailMemo knownLengths;
};

template <typename IsUseless>
float WorkingPlacement::partialHPWL(const IsUseless& isUseless) {
    tables.checkPlacedCounts(numPlaced);
    if (knownLengths.ask(numPlaced, tables.getNetNum(), std::size_t{kAxes} * numPlaced)) {
        for (unsigned block = 0; block < numPlaced; ++block) {
            knownLengths.add(trails[kX][block]);
            knownLengths.add(trails[kY][block]);
        }
        if (const float* known = knownLengths.known()) {
            return *known;
        }
    }
    const float least = leastHPWL();
    if (isUseless(least)) {
        return least;
    }
    const float sum = sumHPWL(isUseless);
    if (!isUseless(sum)) {
        knownLengths.keep(sum);
    }
    return sum;
}

template <typename IsUseless>
float WorkingPlacement::sumHPWL(const IsUseless& isUseless) const {
    const AlignmentTables::Range runs = tables.lengthRunsOf(numPlaced);
    float sum = 0.0F;
    for (unsigned i = runs.begin; i < runs.end && !isUseless(sum); ++i) {
        const AlignmentTables::LengthRun& run = tables.lengthRuns[i];
        switch (run.kind) {
            case AlignmentTables::Length::Box:
                sum += boxLength(run.items);
                break;
            case AlignmentTables::Length::Sites:
                sum = addSitePairs(sum, run.items);
                break;
            case AlignmentTables::Length::Lanes:
                sum = addLaneJoints(sum, run);
                break;
        }
    }
    return sum;
}

}  // namespace korvel
