// Who votes about what when the blocks of a partial placement are aligned: for each number of
// placed blocks and each of these blocks an array of positions to compare.
//
// Nets of two pins that join the same two sites ask for the same step, so they vote once, with
// their number as weight. Sorted groups vote as a whole.
//
// Read-only after construction.
#pragma once

#include <cstdint>
#include <vector>

#include "classic/alignment/SortedGroups.h"

namespace korvel {

class BallotTable {
public:
    BallotTable(const AlignmentNets& nets, const PinTable& pins, const SortedGroups& sortedGroups);

    // A vote's own side is the block that is to be moved.
    struct GroupVote {
        unsigned group;  // a sorted one
        bool ownIsSecond;
    };
    struct PairVote {
        unsigned own;         // site
        unsigned other;       // site
        std::int32_t weight;  // nets that join these sites
    };
    struct Ballot {
        Range groups;            // of groupVotes
        Range pairs;             // of pairVotes
        Range nets;              // of netVotes: of more than two pins, or not all placed
        std::int32_t stays = 0;  // nets that want no step whatever the positions
        unsigned mostVotes = 0;  // whatever the orientations
    };

    // The votes about a block with the first `placed` blocks placed, block < placed.
    const Ballot& ofBlock(unsigned placed, unsigned block) const {
        return blockBallots[static_cast<std::size_t>(placed) * (placed - 1) / 2 + block];
    }
    // The votes about moving all placed blocks together toward the terminals.
    const Ballot& ofTerminals(unsigned placed) const { return terminalBallots[placed]; }

    std::span<const GroupVote> groups(const Ballot& ballot) const {
        return part(groupVotes, ballot.groups);
    }
    std::span<const PairVote> pairs(const Ballot& ballot) const {
        return part(pairVotes, ballot.pairs);
    }
    // Each is a part of the pin lists, see pinList().
    std::span<const Range> nets(const Ballot& ballot) const { return part(netVotes, ballot.nets); }
    // A net's placed pins in its order: those that are not to be moved and those that are, in turn;
    // each time their number, then their sites. The first number may be 0.
    std::span<const unsigned> pinList(Range vote) const { return part(pinLists, vote); }

    // An asker is a body: a block's asks about the block, the terminals' about the step toward
    // them. These are the askers whose ballots a block's body takes part in.
    const std::vector<unsigned>& askers(unsigned body) const { return askersOfBody[body]; }
    // The blocks' bodies that take part in the asker's ballots, its own as well: all that may move.
    const std::vector<unsigned>& partners(unsigned asker) const { return partnersOfAsker[asker]; }

private:
    struct Source;
    void findPartners(const AlignmentNets& nets);
    void addAsker(unsigned body, unsigned asker);
    Ballot makeBlockBallot(const Source& source, unsigned placed, unsigned block);
    Ballot makeTerminalBallot(const Source& source, unsigned placed);
    Ballot openBallot() const;
    void close(Ballot& ballot) const;
    void addGroup(Ballot& ballot, const Source& source, unsigned number, bool ownIsFirst);
    void addAsPair(Ballot& ballot, const Source& source, const Net& net, const auto& isOwn);
    void addNet(Ballot& ballot, const Source& source, const Net& net, unsigned placed,
                const auto& isOwn);

    std::vector<Ballot> blockBallots;
    std::vector<Ballot> terminalBallots;
    std::vector<GroupVote> groupVotes;
    std::vector<PairVote> pairVotes;
    std::vector<Range> netVotes;
    std::vector<unsigned> pinLists;
    std::vector<std::vector<unsigned>> askersOfBody;
    std::vector<std::vector<unsigned>> partnersOfAsker;
};

}  // namespace korvel
