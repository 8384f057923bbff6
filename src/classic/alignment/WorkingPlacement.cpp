#include "classic/alignment/WorkingPlacement.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

// What a handful of roundings may change, of the largest value that takes part.
constexpr double kRounding = 0x1p-21;
// What a vote of a bundle takes, in those of single nets.
constexpr unsigned kVotesOfBundle = 10;

}  // namespace

// Terminals are where their offsets say; blocks are placed later.
WorkingPlacement::WorkingPlacement(const AlignmentTables& tables)
    : tables(tables),
      lanes(tables.laneOffsets(0)),
      sites(tables.siteOffsets(Orient::N)),
      knownSteps{TrailMemo(tables.getBlockNum()), TrailMemo(tables.getBlockNum())},
      knownLengths(std::size_t{kAxes} * tables.getBlockNum()) {
    const std::size_t bodyNum = tables.bodies.size();
    const std::size_t blockNum = tables.getBlockNum();
    orients.assign(bodyNum, Orient::N);
    for (const Axis axis : {kX, kY}) {
        turns[axis].assign(bodyNum, AlignmentTables::turnAlong(axis, Orient::N));
        edges[axis].assign(bodyNum, 0.0F);
        drifts[axis].assign(bodyNum, 0.0);
        wholeExtents[axis].assign(blockNum, 0.0F);
        trails[axis].resize(blockNum);
        wanted[axis].assign(blockNum + 1, 0.0F);
        outdated[axis].assign(blockNum + 1, 1);
    }
}

void WorkingPlacement::start(unsigned number) {
    numPlaced = number;
    for (const Axis axis : {kX, kY}) {
        std::fill_n(outdated[axis].begin(), number, 1);
    }
}

void WorkingPlacement::place(unsigned block, Point corner, Orient orient) {
    const AlignmentTables::Body& body = tables.bodies[block];
    orients[block] = orient;
    edges[kX][block] = corner.x;
    edges[kY][block] = corner.y;
    for (const Axis axis : {kX, kY}) {
        const unsigned turn = AlignmentTables::turnAlong(axis, orient);
        const unsigned family = AlignmentTables::familyOf(turn);
        turns[axis][block] = turn;
        wholeExtents[axis][block] = std::trunc(tables.extents[family][block]);
        const float edge = edges[axis][block];
        drifts[axis][block] = kRounding * reachOf(block, axis);
        trails[axis][block] = Trail(orient, edge);
        const std::vector<float>& offsets = tables.laneOffsets(turn);
        for (unsigned i = body.lanes[family].begin; i < body.lanes[family].end; ++i) {
            lanes[i] = edge + offsets[i];
        }
    }
    const std::vector<Quad>& offsets = tables.siteOffsets(orient);
    const Quad cornerQuad = quadOf(corner);
    for (unsigned i = body.sites.begin; i < body.sites.end; ++i) {
        sites[i] = cornerQuad + offsets[i];
    }
}

Point WorkingPlacement::wantedStep(unsigned block) {
    return outcome(tables.blockBallot(numPlaced, block), block, Middle::Lower);
}

Point WorkingPlacement::wantedStepToTerminals() {
    const unsigned asker = tables.terminalBody();
    outdated[kX][asker] = 1;
    outdated[kY][asker] = 1;
    return outcome(tables.terminalBallot(numPlaced), asker, Middle::Upper);
}

// Votes are taken along the axes where that is not known already.
Point WorkingPlacement::outcome(const AlignmentTables::Ballot& ballot, unsigned asker,
                                Middle middle) {
    const bool asks[kAxes] = {outdated[kX][asker] != 0 && !isRemembered(kX, ballot, asker),
                              outdated[kY][asker] != 0 && !isRemembered(kY, ballot, asker)};
    if (asks[kX] || asks[kY]) {
        vote(ballot);
    }
    for (const Axis axis : {kX, kY}) {
        if (asks[axis]) {
            voteOfBundles(ballot, axis);
            wanted[axis][asker] = votes.step(axis, middle);
            knownSteps[axis].keep(wanted[axis][asker]);
        }
        outdated[axis][asker] = 0;
    }
    return {wanted[kX][asker], wanted[kY][asker]};
}

// Takes the step over from when all that it depends on stood as it does now.
bool WorkingPlacement::isRemembered(Axis axis, const AlignmentTables::Ballot& ballot,
                                    unsigned asker) {
    TrailMemo& memo = knownSteps[axis];
    const unsigned bundleNum = ballot.bundles.end - ballot.bundles.begin;
    const std::vector<unsigned>& partners = tables.partners(asker);
    const unsigned effort = ballot.mostVotes + kVotesOfBundle * bundleNum;
    if (!memo.ask(numPlaced * (tables.getBlockNum() + 1) + asker, effort, partners.size())) {
        return false;
    }
    for (const unsigned partner : partners) {
        if (partner < numPlaced) {
            memo.add(trails[axis][partner]);
        }
    }
    const float* known = memo.known();
    if (known != nullptr) {
        wanted[axis][asker] = *known;
    }
    return known != nullptr;
}

void WorkingPlacement::vote(const AlignmentTables::Ballot& ballot) {
    votes.clear(ballot.mostVotes + 1);
    votes.add(adviceToStay(), ballot.stays);
    for (unsigned i = ballot.pairs.begin; i < ballot.pairs.end; ++i) {
        const auto [own, other, weight] = tables.pairVotes[i];
        votes.add(adviceForPair(sites[other] - sites[own]), weight);
    }
    for (unsigned i = ballot.nets.begin; i < ballot.nets.end; ++i) {
        voteOfNet(tables.netVotes[i]);
    }
}

void WorkingPlacement::voteOfBundles(const AlignmentTables::Ballot& ballot, Axis axis) {
    for (unsigned i = ballot.bundles.begin; i < ballot.bundles.end; ++i) {
        votes.addAlong(axis, runOf(tables.bundleVotes[i], axis));
    }
}

SortedRun WorkingPlacement::runOf(const AlignmentTables::BundleVote& vote, Axis axis) const {
    const AlignmentTables::Bundle& bundle = tables.bundles[vote.bundle];
    const unsigned first = bundle.first;
    const unsigned second = bundle.second;
    const unsigned firstTurn = turns[axis][first];
    const unsigned secondTurn = turns[axis][second];
    const double shift = laneOrigin(second, axis) - laneOrigin(first, axis);
    const double reach = reachOf(first, axis) + reachOf(second, axis);
    const double tolerance = drifts[axis][first] + drifts[axis][second] + kRounding * reach;
    // What the second body wants has the order that the gaps have with both turned by half.
    if (vote.ownIsSecond) {
        const auto list = bundle.list(AlignmentTables::oppositeTurn(firstTurn),
                                      AlignmentTables::oppositeTurn(secondTurn));
        return {tables.entriesOf(list), lanes.data(), -1.0F, -shift, tolerance};
    }
    const auto list = bundle.list(firstTurn, secondTurn);
    return {tables.entriesOf(list), lanes.data(), 1.0F, shift, tolerance};
}

// Where the body's lanes are counted from.
double WorkingPlacement::laneOrigin(unsigned body, Axis axis) const {
    const unsigned turn = turns[axis][body];
    const double edge = edges[axis][body];
    return AlignmentTables::isReversed(turn)
               ? edge + tables.extents[AlignmentTables::familyOf(turn)][body]
               : edge;
}

// How far from the origin the body's lanes lie at the most.
double WorkingPlacement::reachOf(unsigned body, Axis axis) const {
    return std::fabs(double{edges[axis][body]}) + tables.bodies[body].reach;
}

void WorkingPlacement::voteOfNet(AlignmentTables::Range list) {
    const unsigned* next = &tables.scanLists[list.begin];
    const unsigned* end = next + (list.end - list.begin);
    NetScan scan;
    if (*next == 0) {
        ++next;
    } else {
        scan.addOther(nextEnds(next));
    }
    while (next != end) {
        scan.addOwn(nextEnds(next));
        if (next == end) {
            break;
        }
        scan.addOther(nextEnds(next));
    }
    votes.addWithFree(scan.advice());
}

// The ends of so many sites as the list says, and past them.
Quad WorkingPlacement::nextEnds(const unsigned*& list) const {
    const unsigned number = *list++;
    Quad ends = endsOf({list, number}, allLanes(kInfinity));
    list += number;
    return ends;
}

Quad WorkingPlacement::endsOf(std::span<const unsigned> list, Quad ends) const {
    for (const unsigned site : list) {
        ends = smaller(sites[site], ends);
    }
    return ends;
}

void WorkingPlacement::moveBlock(unsigned index, Point distance) {
    for (const unsigned body : tables.bodiesOf(index)) {
        moveBody(body, distance);
    }
}

void WorkingPlacement::moveAll(Point distance) {
    for (unsigned block = 0; block < numPlaced; ++block) {
        if (tables.bodies[block].index < static_cast<int>(numPlaced)) {
            moveBody(block, distance);
        }
    }
}

void WorkingPlacement::moveBody(unsigned index, Point distance) {
    const AlignmentTables::Body& body = tables.bodies[index];
    for (const Axis axis : {kX, kY}) {
        const float along = axis == kX ? distance.x : distance.y;
        if (along == 0.0F) {
            continue;
        }
        edges[axis][index] += along;
        trails[axis][index].add(along);
        drifts[axis][index] += kRounding * (reachOf(index, axis) + drifts[axis][index]);
        const AlignmentTables::Range moved = lanesAlong(index, axis);
        for (unsigned i = moved.begin; i < moved.end; ++i) {
            lanes[i] += along;
        }
        for (const unsigned block : tables.dependents(index)) {
            outdated[axis][block] = 1;
        }
    }
    const Quad both = quadOf(distance);
    for (unsigned i = body.sites.begin; i < body.sites.end; ++i) {
        sites[i] += both;
    }
}

// What the sum cannot be less than, from the bundles alone: every addition may round it down.
float WorkingPlacement::leastHPWL() const {
    const AlignmentTables::Range bundles = tables.lengthBundlesOf(numPlaced);
    double sum = 0.0;
    for (unsigned i = bundles.begin; i < bundles.end; ++i) {
        sum += leastLength(tables.lengthBundles[i], kX) + leastLength(tables.lengthBundles[i], kY);
    }
    const double rounded = sum * (1.0 - (tables.getNetNum() + 2.0) * 0x1p-23);
    return rounded > 0.0 ? std::nextafter(static_cast<float>(rounded), 0.0F) : 0.0F;
}

double WorkingPlacement::leastLength(unsigned bundle, Axis axis) const {
    const SortedRun run = runOf({bundle, false}, axis);
    const unsigned end = run.pairNum();
    const unsigned middle = run.firstAbove(0.0, 0, end);
    const double* gapsBefore = tables.gapsBeforeOf(run.entries);
    const double gaps = gapsBefore[end] - 2 * gapsBefore[middle];
    const double less = run.weight(0, middle);
    const double more = run.weight(middle, end);
    return gaps + run.shift * (more - less) - run.tolerance * (more + less);
}

float WorkingPlacement::boxLength(AlignmentTables::Range list) const {
    constexpr float kMost = std::numeric_limits<float>::max();
    constexpr float kLeast = std::numeric_limits<float>::min();
    const Quad ends = endsOf({&tables.siteLists[list.begin], list.end - list.begin},
                             Quad{kMost, kMost, -kLeast, -kLeast});
    return (-ends[2] - ends[0]) - ends[3] - ends[1];
}

float WorkingPlacement::addSitePairs(float sum, AlignmentTables::Range pairs) const {
    for (unsigned i = pairs.begin; i < pairs.end; ++i) {
        const auto [first, second] = tables.sitePairs[i];
        const Quad distance = sites[first] - sites[second];
        sum += std::fabs(distance[kX]) + std::fabs(distance[kY]);
    }
    return sum;
}

float WorkingPlacement::addLaneJoints(float sum, const AlignmentTables::LengthRun& run) const {
    const unsigned firstX = familyAlong(run.first, kX);
    const unsigned secondX = familyAlong(run.second, kX);
    for (unsigned i = run.items.begin; i < run.items.end; ++i) {
        const auto& [first, second] = tables.laneJoints[i].lanes;
        sum += std::fabs(lanes[first[firstX]] - lanes[second[secondX]]) +
               std::fabs(lanes[first[firstX ^ 1U]] - lanes[second[secondX ^ 1U]]);
    }
    return sum;
}

void WorkingPlacement::applyTo(Netlist& netlist) const {
    for (unsigned i = 0; i < numPlaced; ++i) {
        netlist.blocks[i].updateBlockState({edges[kX][i], edges[kY][i]}, orients[i], false);
    }
    for (std::size_t i = 0; i < netlist.pins.size(); ++i) {
        const auto& [body, site, pinLanes] = tables.pinPlaces[i];
        if (body >= numPlaced) {
            continue;
        }
        if (site != AlignmentTables::kNoSite) {
            netlist.pins[i].setCoord({sites[site][kX], sites[site][kY]});
        } else {
            netlist.pins[i].setCoord(
                {lanes[pinLanes[familyAlong(body, kX)]], lanes[pinLanes[familyAlong(body, kY)]]});
        }
    }
}

}  // namespace korvel
