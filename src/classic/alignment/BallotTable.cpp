#include "classic/alignment/BallotTable.h"

#include <map>
#include <utility>

namespace korvel {

// What the ballots are made from.
struct BallotTable::Source {
    unsigned site(const Pin& pin) const { return pins.placeOf(nets.bodies.pinNumber(pin)).site; }
    std::vector<PairVote> votesOfSites(const PairGroup& group) const;

    const AlignmentNets& nets;
    const PinTable& pins;
    const SortedGroups& sortedGroups;
    // By group; empty of sorted ones. The first pin's side as the own one.
    std::vector<std::vector<PairVote>> siteVotes{};
};

std::vector<BallotTable::PairVote> BallotTable::Source::votesOfSites(const PairGroup& group) const {
    std::map<std::pair<unsigned, unsigned>, std::int32_t> weights;
    for (const auto& [first, second] : group.joints) {
        ++weights[{site(*first), site(*second)}];
    }
    std::vector<PairVote> votes;
    votes.reserve(weights.size());
    for (const auto& [sites, weight] : weights) {
        votes.push_back({sites.first, sites.second, weight});
    }
    return votes;
}

BallotTable::BallotTable(const AlignmentNets& nets, const PinTable& pins,
                         const SortedGroups& sortedGroups)
    : askersOfBody(nets.bodies.size()), partnersOfAsker(nets.bodies.size()) {
    findPartners(nets);
    Source source{nets, pins, sortedGroups};
    for (unsigned group = 0; group < nets.groups.size(); ++group) {
        source.siteVotes.push_back(nets.sorted[group] ? std::vector<PairVote>{}
                                                      : source.votesOfSites(nets.groups[group]));
    }
    terminalBallots.emplace_back();
    for (unsigned placed = 1; placed <= nets.numBlocks; ++placed) {
        for (unsigned block = 0; block < placed; ++block) {
            blockBallots.push_back(makeBlockBallot(source, placed, block));
        }
        terminalBallots.push_back(makeTerminalBallot(source, placed));
    }
}

void BallotTable::findPartners(const AlignmentNets& nets) {
    for (unsigned block = 0; block < nets.numBlocks; ++block) {
        const unsigned asker = Bodies::ofBlock(block);
        for (const unsigned number : nets.groupsOfBody[asker]) {
            addAsker(nets.groups[number].first, asker);
            addAsker(nets.groups[number].second, asker);
        }
        for (const Net* net : nets.othersOfBlock[block]) {
            for (const Pin* pin : net->getPins()) {
                addAsker(nets.bodies.of(*pin), asker);
            }
        }
        partnersOfAsker[Bodies::kTerminals].push_back(asker);
    }
}

// Askers come in ascending order. Bodies that never move are no partners.
void BallotTable::addAsker(unsigned body, unsigned asker) {
    if (body == Bodies::kTerminals || body >= askersOfBody.size()) {
        return;
    }
    std::vector<unsigned>& askers = askersOfBody[body];
    if (askers.empty() || askers.back() != asker) {
        askers.push_back(asker);
        partnersOfAsker[asker].push_back(body);
    }
}

BallotTable::Ballot BallotTable::openBallot() const {
    Ballot ballot;
    ballot.groups.begin = endOf(groupVotes);
    ballot.pairs.begin = endOf(pairVotes);
    ballot.nets.begin = endOf(netVotes);
    return ballot;
}

void BallotTable::close(Ballot& ballot) const {
    ballot.groups.end = endOf(groupVotes);
    ballot.pairs.end = endOf(pairVotes);
    ballot.nets.end = endOf(netVotes);
}

BallotTable::Ballot BallotTable::makeBlockBallot(const Source& source, unsigned placed,
                                                 unsigned block) {
    const AlignmentNets& nets = source.nets;
    Ballot ballot = openBallot();
    for (const unsigned number : nets.groupsOfBody[Bodies::ofBlock(block)]) {
        const PairGroup& group = nets.groups[number];
        if (!Bodies::isPlaced(group.first, placed) || !Bodies::isPlaced(group.second, placed)) {
            continue;
        }
        if (group.firstIndex == block || group.secondIndex == block) {
            addGroup(ballot, source, number, group.firstIndex == block);
        } else {
            ballot.stays += static_cast<std::int32_t>(group.joints.size());
        }
    }
    const auto isOwn = [block](const Pin& pin) { return pin.getBlockIndex() == block; };
    for (const Net* net : nets.othersOfBlock[block]) {
        if (nets.isPlacedAsPair(*net, placed)) {
            addAsPair(ballot, source, *net, isOwn);
        } else if (nets.bodies.countPlaced(*net, placed) >= 2) {
            addNet(ballot, source, *net, placed, isOwn);
        }
    }
    close(ballot);
    return ballot;
}

BallotTable::Ballot BallotTable::makeTerminalBallot(const Source& source, unsigned placed) {
    const AlignmentNets& nets = source.nets;
    Ballot ballot = openBallot();
    for (const unsigned number : nets.groupsOfBody[Bodies::kTerminals]) {
        const PairGroup& group = nets.groups[number];
        const bool ownIsFirst = group.first != Bodies::kTerminals;
        const unsigned own = ownIsFirst ? group.first : group.second;
        if (own != Bodies::kTerminals && Bodies::isPlaced(own, placed)) {
            addGroup(ballot, source, number, ownIsFirst);
        }
    }
    const auto isOwn = [](const Pin& pin) { return !pin.isTerminal(); };
    for (const Net* net : nets.others) {
        const unsigned placedPins = nets.bodies.countPlaced(*net, placed);
        if (net->getTermNum() == 0 || placedPins < 2 || placedPins == net->getTermNum()) {
            continue;
        }
        if (nets.isPlacedAsPair(*net, placed)) {
            addAsPair(ballot, source, *net, isOwn);
        } else {
            addNet(ballot, source, *net, placed, isOwn);
        }
    }
    close(ballot);
    return ballot;
}

void BallotTable::addGroup(Ballot& ballot, const Source& source, unsigned number, bool ownIsFirst) {
    if (source.nets.sorted[number]) {
        groupVotes.push_back({number, !ownIsFirst});
        ballot.mostVotes += source.sortedGroups.mostEntries(number);
    }
    for (const auto& [first, second, weight] : source.siteVotes[number]) {
        pairVotes.push_back(ownIsFirst ? PairVote{first, second, weight}
                                       : PairVote{second, first, weight});
        ++ballot.mostVotes;
    }
}

void BallotTable::addAsPair(Ballot& ballot, const Source& source, const Net& net,
                            const auto& isOwn) {
    const Pin& first = *net.getPins()[0];
    const Pin& second = *net.getPins()[1];
    if (!isOwn(first) && !isOwn(second)) {
        ++ballot.stays;
        return;
    }
    const bool ownIsFirst = isOwn(first);
    pairVotes.push_back(
        {source.site(ownIsFirst ? first : second), source.site(ownIsFirst ? second : first), 1});
    ++ballot.mostVotes;
}

// Pins that are not placed are left out; a net without other pins advises nothing.
void BallotTable::addNet(Ballot& ballot, const Source& source, const Net& net, unsigned placed,
                         const auto& isOwn) {
    const unsigned begin = endOf(pinLists);
    std::size_t number = begin;  // where that of the pins at hand stands
    pinLists.push_back(0);
    bool wasOwn = false;
    bool hasOther = false;
    for (const Pin* pin : net.getPins()) {
        if (!Bodies::isPlaced(source.nets.bodies.of(*pin), placed)) {
            continue;
        }
        if (isOwn(*pin) != wasOwn) {
            wasOwn = !wasOwn;
            number = pinLists.size();
            pinLists.push_back(0);
        }
        ++pinLists[number];
        pinLists.push_back(source.site(*pin));
        hasOther = hasOther || !wasOwn;
    }
    if (hasOther) {
        netVotes.push_back({begin, endOf(pinLists)});
        ++ballot.mostVotes;
    }
}

}  // namespace korvel
