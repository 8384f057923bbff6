#include "classic/alignment/WorkingPlacement.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

// What a handful of roundings may change, of the largest value that takes part.
constexpr double kRounding = 0x1p-21;
// What the vote of a sorted group takes, in votes of single nets.
constexpr unsigned kVotesOfGroup = 10;

}  // namespace

// Terminals are where their offsets say; blocks are placed later.
WorkingPlacement::WorkingPlacement(const AlignmentTables& tables)
    : tables(tables),
      tracks(tables.pins.trackOffsets(AxisOrient::along(kX, Orient::N))),
      sites(tables.pins.siteOffsets(Orient::N)),
      orients(tables.bodyNum(), Orient::N),
      knownSteps{TrailMemo(tables.numBlocks), TrailMemo(tables.numBlocks)},
      knownLengths(std::size_t{kAxes} * tables.numBlocks) {
    const std::size_t bodyNum = tables.bodyNum();
    for (const Axis axis : {kX, kY}) {
        axisOrients[axis].assign(bodyNum, AxisOrient::along(axis, Orient::N));
        edges[axis].assign(bodyNum, 0.0F);
        drifts[axis].assign(bodyNum, 0.0);
        wholeExtents[axis].assign(bodyNum, 0.0F);
        trails[axis].resize(bodyNum);
        wanted[axis].assign(bodyNum, 0.0F);
        outdated[axis].assign(bodyNum, 1);
    }
}

void WorkingPlacement::start(unsigned number) {
    numPlaced = number;
    for (const Axis axis : {kX, kY}) {
        std::fill_n(outdated[axis].begin() + Bodies::ofBlock(0), number, 1);
    }
}

void WorkingPlacement::place(unsigned block, Point corner, Orient orient) {
    const unsigned number = Bodies::ofBlock(block);
    const PinTable::Body& body = tables.pins.body(number);
    orients[number] = orient;
    edges[kX][number] = corner.x;
    edges[kY][number] = corner.y;
    for (const Axis axis : {kX, kY}) {
        const AxisOrient axisOrient = AxisOrient::along(axis, orient);
        const float edge = edges[axis][number];
        axisOrients[axis][number] = axisOrient;
        wholeExtents[axis][number] = std::trunc(body.extents[axisOrient.bodyAxis()]);
        drifts[axis][number] = kRounding * reachOf(number, axis);
        trails[axis][number] = Trail(orient, edge);
        const std::vector<float>& offsets = tables.pins.trackOffsets(axisOrient);
        const Range placed = body.tracks[axisOrient.bodyAxis()];
        for (unsigned i = placed.begin; i < placed.end; ++i) {
            tracks[i] = edge + offsets[i];
        }
    }
    const std::vector<Quad>& offsets = tables.pins.siteOffsets(orient);
    const Quad cornerQuad = quadOf(corner);
    for (unsigned i = body.sites.begin; i < body.sites.end; ++i) {
        sites[i] = cornerQuad + offsets[i];
    }
}

Point WorkingPlacement::wantedStep(unsigned block) {
    return outcome(tables.ballots.ofBlock(numPlaced, block), Bodies::ofBlock(block), Middle::Lower);
}

Point WorkingPlacement::wantedStepToTerminals() {
    const unsigned asker = Bodies::kTerminals;
    outdated[kX][asker] = 1;
    outdated[kY][asker] = 1;
    return outcome(tables.ballots.ofTerminals(numPlaced), asker, Middle::Upper);
}

// Votes are taken along the axes where that is not known already.
Point WorkingPlacement::outcome(const BallotTable::Ballot& ballot, unsigned asker, Middle middle) {
    const bool asks[kAxes] = {outdated[kX][asker] != 0 && !isRemembered(kX, ballot, asker),
                              outdated[kY][asker] != 0 && !isRemembered(kY, ballot, asker)};
    if (asks[kX] || asks[kY]) {
        vote(ballot);
    }
    for (const Axis axis : {kX, kY}) {
        if (asks[axis]) {
            for (const BallotTable::GroupVote& group : tables.ballots.groups(ballot)) {
                votes.addAlong(axis, shiftedList(group, axis));
            }
            wanted[axis][asker] = votes.step(axis, middle);
            knownSteps[axis].keep(wanted[axis][asker]);
        }
        outdated[axis][asker] = 0;
    }
    return {wanted[kX][asker], wanted[kY][asker]};
}

// Takes the step over from when all that it depends on stood as it does now.
bool WorkingPlacement::isRemembered(Axis axis, const BallotTable::Ballot& ballot, unsigned asker) {
    TrailMemo& memo = knownSteps[axis];
    const std::vector<unsigned>& partners = tables.ballots.partners(asker);
    const unsigned effort = ballot.mostVotes + kVotesOfGroup * ballot.groups.size();
    if (!memo.ask(numPlaced * tables.bodyNum() + asker, effort, partners.size())) {
        return false;
    }
    for (const unsigned partner : partners) {
        if (Bodies::isPlaced(partner, numPlaced)) {
            memo.add(trails[axis][partner]);
        }
    }
    const float* known = memo.known();
    if (known != nullptr) {
        wanted[axis][asker] = *known;
    }
    return known != nullptr;
}

// All votes but those of sorted groups, about both axes.
void WorkingPlacement::vote(const BallotTable::Ballot& ballot) {
    votes.clear(ballot.mostVotes + 1);
    votes.add(adviceToStay(), ballot.stays);
    for (const auto& [own, other, weight] : tables.ballots.pairs(ballot)) {
        votes.add(adviceForPair(sites[other] - sites[own]), weight);
    }
    for (const Range net : tables.ballots.nets(ballot)) {
        voteOfNet(tables.ballots.pinList(net));
    }
}

void WorkingPlacement::voteOfNet(std::span<const unsigned> pinList) {
    NetScan scan;
    if (pinList.front() == 0) {
        pinList = pinList.subspan(1);
    } else {
        scan.addOther(nextEnds(pinList));
    }
    while (!pinList.empty()) {
        scan.addOwn(nextEnds(pinList));
        if (pinList.empty()) {
            break;
        }
        scan.addOther(nextEnds(pinList));
    }
    votes.addWithFree(scan.advice());
}

ShiftedList WorkingPlacement::shiftedList(const BallotTable::GroupVote& vote, Axis axis) const {
    const SortedGroups& groups = tables.sortedGroups;
    const unsigned first = groups.first(vote.group);
    const unsigned second = groups.second(vote.group);
    const AxisOrient firstOrient = axisOrients[axis][first];
    const AxisOrient secondOrient = axisOrients[axis][second];
    const double shift = trackOrigin(second, axis) - trackOrigin(first, axis);
    const double reach = reachOf(first, axis) + reachOf(second, axis);
    const double tolerance = drifts[axis][first] + drifts[axis][second] + kRounding * reach;
    // What the second body wants has the order that the gaps have with both turned by half.
    if (vote.ownIsSecond) {
        return {groups.list(vote.group, firstOrient.opposite(), secondOrient.opposite()),
                tracks.data(), -1.0F, -shift, tolerance};
    }
    return {groups.list(vote.group, firstOrient, secondOrient), tracks.data(), 1.0F, shift,
            tolerance};
}

// Where the body's tracks are counted from.
double WorkingPlacement::trackOrigin(unsigned body, Axis axis) const {
    const AxisOrient orient = axisOrients[axis][body];
    const double edge = edges[axis][body];
    return orient.isReversed() ? edge + tables.pins.body(body).extents[orient.bodyAxis()] : edge;
}

// How far from the origin the body's tracks lie at the most.
double WorkingPlacement::reachOf(unsigned body, Axis axis) const {
    return std::fabs(double{edges[axis][body]}) + tables.pins.body(body).reach;
}

// The ends of so many sites as the list begins with; takes them off the list.
Quad WorkingPlacement::nextEnds(std::span<const unsigned>& pinList) const {
    const unsigned number = pinList.front();
    const Quad ends = endsOf(pinList.subspan(1, number), allLanes(kInfinity));
    pinList = pinList.subspan(1 + number);
    return ends;
}

Quad WorkingPlacement::endsOf(std::span<const unsigned> siteList, Quad ends) const {
    for (const unsigned site : siteList) {
        ends = smaller(sites[site], ends);
    }
    return ends;
}

void WorkingPlacement::moveBlock(unsigned index, Point distance) {
    for (const unsigned body : tables.pins.bodiesOf(index)) {
        moveBody(body, distance);
    }
}

void WorkingPlacement::moveAll(Point distance) {
    for (unsigned block = 0; block < numPlaced; ++block) {
        const unsigned body = Bodies::ofBlock(block);
        if (tables.pins.body(body).index < static_cast<int>(numPlaced)) {
            moveBody(body, distance);
        }
    }
}

void WorkingPlacement::moveBody(unsigned number, Point distance) {
    const PinTable::Body& body = tables.pins.body(number);
    for (const Axis axis : {kX, kY}) {
        const float along = axis == kX ? distance.x : distance.y;
        if (along == 0.0F) {
            continue;
        }
        edges[axis][number] += along;
        trails[axis][number].add(along);
        drifts[axis][number] += kRounding * (reachOf(number, axis) + drifts[axis][number]);
        const Range moved = body.tracks[bodyAxis(number, axis)];
        for (unsigned i = moved.begin; i < moved.end; ++i) {
            tracks[i] += along;
        }
        for (const unsigned asker : tables.ballots.askers(number)) {
            outdated[axis][asker] = 1;
        }
    }
    const Quad both = quadOf(distance);
    for (unsigned i = body.sites.begin; i < body.sites.end; ++i) {
        sites[i] += both;
    }
}

float WorkingPlacement::boxLength(std::span<const unsigned> siteList) const {
    constexpr float kMost = std::numeric_limits<float>::max();
    constexpr float kLeast = std::numeric_limits<float>::min();
    const Quad ends = endsOf(siteList, Quad{kMost, kMost, -kLeast, -kLeast});
    // The largest less the smallest x, plus the largest y, less the smallest: added in this order.
    return (-ends[kLeft] - ends[kRight]) - ends[kDown] - ends[kUp];
}

float WorkingPlacement::addSitePairs(float sum,
                                     std::span<const LengthTable::SitePair> pairs) const {
    for (const auto [first, second] : pairs) {
        const Quad distance = sites[first] - sites[second];
        sum += std::fabs(distance[kX]) + std::fabs(distance[kY]);
    }
    return sum;
}

float WorkingPlacement::addTrackPairs(float sum, const LengthTable::Term& term) const {
    const BodyAxis firstX = bodyAxis(term.firstBody, kX);
    const BodyAxis firstY = bodyAxis(term.firstBody, kY);
    const BodyAxis secondX = bodyAxis(term.secondBody, kX);
    const BodyAxis secondY = bodyAxis(term.secondBody, kY);
    for (const auto& [first, second] : tables.lengths.trackPairs(term)) {
        sum += std::fabs(tracks[first[firstX]] - tracks[second[secondX]]) +
               std::fabs(tracks[first[firstY]] - tracks[second[secondY]]);
    }
    return sum;
}

void WorkingPlacement::applyTo(Netlist& netlist) const {
    for (unsigned i = 0; i < numPlaced; ++i) {
        const unsigned body = Bodies::ofBlock(i);
        netlist.blocks[i].updateBlockState({edges[kX][body], edges[kY][body]}, orients[body],
                                           false);
    }
    for (std::size_t i = 0; i < netlist.pins.size(); ++i) {
        const auto& [body, site, pinTracks] = tables.pins.placeOf(i);
        if (body == Bodies::kTerminals || !Bodies::isPlaced(body, numPlaced)) {
            continue;
        }
        if (site != PinTable::kNoSite) {
            netlist.pins[i].setCoord({sites[site][kX], sites[site][kY]});
        } else {
            netlist.pins[i].setCoord(
                {tracks[pinTracks[bodyAxis(body, kX)]], tracks[pinTracks[bodyAxis(body, kY)]]});
        }
    }
}

}  // namespace korvel
