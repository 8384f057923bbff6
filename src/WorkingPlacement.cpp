#include "WorkingPlacement.h"

#include <algorithm>
#include <cmath>

#include "BoundingBox.h"

namespace korvel {

WorkingPlacement::WorkingPlacement(const AlignmentTables& tables) : tables(tables) {
    const std::size_t bodyNum = tables.bodies.size();
    const std::size_t blockNum = tables.getBlockNum();
    orients.assign(bodyNum, Orient::N);
    onSide.assign(bodyNum, 0);
    // Terminals are where their offsets say; blocks are placed later.
    lanes = tables.laneOffsets(Orient::N);
    for (const Point site : tables.siteOffsets(Orient::N)) {
        sites[kX].push_back(site.x);
        sites[kY].push_back(site.y);
    }
    for (const Axis axis : {kX, kY}) {
        edges[axis].assign(blockNum, 0.0F);
        wholeExtents[axis].assign(blockNum, 0.0F);
        wanted[axis].assign(blockNum, 0.0F);
        outdated[axis].assign(blockNum, 1);
    }
}

void WorkingPlacement::start(unsigned number) {
    tables.checkPlacedCounts(number);
    numPlaced = number;
    for (const Axis axis : {kX, kY}) {
        std::fill_n(outdated[axis].begin(), number, 1);
    }
}

void WorkingPlacement::place(unsigned block, Point corner, Orient orient) {
    const AlignmentTables::Body& body = tables.bodies[block];
    orients[block] = orient;
    onSide[block] = swapsWidthAndHeight(orient) ? 1 : 0;
    edges[kX][block] = corner.x;
    edges[kY][block] = corner.y;
    for (const Axis axis : {kX, kY}) {
        const unsigned family = familyAlong(block, axis);
        wholeExtents[axis][block] = std::trunc(tables.extents[family][block]);
        const std::vector<float>& offsets = tables.laneOffsets(orient);
        for (unsigned i = body.lanes[family].begin; i < body.lanes[family].end; ++i) {
            lanes[i] = edges[axis][block] + offsets[i];
        }
    }
    const std::vector<Point>& offsets = tables.siteOffsets(orient);
    for (unsigned i = body.sites.begin; i < body.sites.end; ++i) {
        sites[kX][i] = corner.x + offsets[i].x;
        sites[kY][i] = corner.y + offsets[i].y;
    }
}

Point WorkingPlacement::wantedStep(unsigned block) {
    for (const Axis axis : {kX, kY}) {
        if (outdated[axis][block] != 0) {
            outdated[axis][block] = 0;
            wanted[axis][block] = vote(tables.blockBallot(numPlaced, block), axis, Middle::Lower);
        }
    }
    return {wanted[kX][block], wanted[kY][block]};
}

Point WorkingPlacement::wantedStepToTerminals() {
    const AlignmentTables::Ballot& ballot = tables.terminalBallot(numPlaced);
    return {vote(ballot, kX, Middle::Upper), vote(ballot, kY, Middle::Upper)};
}

float WorkingPlacement::vote(const AlignmentTables::Ballot& ballot, Axis axis, Middle middle) {
    votes.clear();
    votes.addStays(ballot.stays);
    for (unsigned i = ballot.bundles.begin; i < ballot.bundles.end; ++i) {
        const auto [index, ownIsSecond] = tables.bundleVotes[i];
        const AlignmentTables::Bundle& bundle = tables.bundles[index];
        const AlignmentTables::Range pairs =
            bundle.pairs[AlignmentTables::kFamilies * familyAlong(bundle.first, axis) +
                         familyAlong(bundle.second, axis)];
        for (unsigned p = pairs.begin; p < pairs.end; ++p) {
            const auto [first, second, weight] = tables.lanePairs[p];
            const float offset = lanes[second] - lanes[first];
            votes.addPairs(ownIsSecond ? -offset : offset, weight);
        }
    }
    for (unsigned i = ballot.nets.begin; i < ballot.nets.end; ++i) {
        votes.add(adviceOf(tables.netVotes[i], axis));
    }
    return votes.step(middle);
}

AxisAdvice WorkingPlacement::adviceOf(const AlignmentTables::NetVote& net, Axis axis) const {
    const std::vector<float>& positions = sites[axis];
    AxisEnds own;
    for (unsigned i = net.own.begin; i < net.own.end; ++i) {
        own.add(positions[tables.siteLists[i]]);
    }
    AxisEnds other;
    for (unsigned i = net.other.begin; i < net.other.end; ++i) {
        other.add(positions[tables.siteLists[i]]);
    }
    AxisAdvice advice;
    if (adviceFromEnds(own, other, advice)) {
        return advice;
    }
    AxisScan scan;
    for (unsigned i = net.scan.begin; i < net.scan.end; ++i) {
        const auto [site, isOwn] = tables.scanPins[i];
        if (isOwn) {
            scan.addOwn(positions[site]);
        } else {
            scan.addOther(positions[site]);
        }
    }
    return scan.advice();
}

void WorkingPlacement::moveBlock(unsigned index, Point distance) {
    for (const unsigned body : tables.bodiesOf(index)) {
        moveBody(body, kX, distance.x);
        moveBody(body, kY, distance.y);
    }
}

void WorkingPlacement::moveAll(Point distance) {
    for (unsigned block = 0; block < numPlaced; ++block) {
        if (tables.bodies[block].index < static_cast<int>(numPlaced)) {
            moveBody(block, kX, distance.x);
            moveBody(block, kY, distance.y);
        }
    }
}

void WorkingPlacement::moveBody(unsigned body, Axis axis, float distance) {
    if (distance == 0.0F) {
        return;
    }
    edges[axis][body] += distance;
    const AlignmentTables::Range ownLanes = tables.bodies[body].lanes[familyAlong(body, axis)];
    for (unsigned i = ownLanes.begin; i < ownLanes.end; ++i) {
        lanes[i] += distance;
    }
    const AlignmentTables::Range ownSites = tables.bodies[body].sites;
    for (unsigned i = ownSites.begin; i < ownSites.end; ++i) {
        sites[axis][i] += distance;
    }
    for (const unsigned block : tables.dependents(body)) {
        outdated[axis][block] = 1;
    }
}

float WorkingPlacement::boxLength(AlignmentTables::Range list) const {
    BoundingBox box;
    for (unsigned i = list.begin; i < list.end; ++i) {
        const unsigned site = tables.siteLists[i];
        box.add({sites[kX][site], sites[kY][site]});
    }
    return box.halfPerimeter();
}

void WorkingPlacement::applyTo(Netlist& netlist) const {
    for (unsigned i = 0; i < numPlaced; ++i) {
        netlist.blocks[i].updateBlockState({edges[kX][i], edges[kY][i]}, orients[i], false);
    }
    for (std::size_t i = 0; i < netlist.pins.size(); ++i) {
        const auto& [body, pinLanes] = tables.pinPlaces[i];
        if (body < numPlaced) {
            netlist.pins[i].setCoord(
                {lanes[pinLanes[familyAlong(body, kX)]], lanes[pinLanes[familyAlong(body, kY)]]});
        }
    }
}

}  // namespace korvel
