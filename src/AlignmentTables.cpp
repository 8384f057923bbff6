#include "AlignmentTables.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace korvel {

// Fills the tables: bodies with their lanes and sites first, then what refers to them.
class AlignmentTables::Builder {
public:
    Builder(AlignmentTables& tables, const Netlist& netlist) : t(tables), netlist(netlist) {}

    void build() {
        numberBodies();
        for (unsigned body = 0; body <= t.terminalBody(); ++body) {
            buildBody(body);
        }
        buildBundles();
        t.terminalBallots.emplace_back();
        t.lengthRunRanges.emplace_back();
        t.fullestNets.push_back({0, 0});
        for (unsigned placed = 1; placed <= t.numBlocks; ++placed) {
            for (unsigned block = 0; block < placed; ++block) {
                t.blockBallots.push_back(blockBallot(placed, block));
            }
            t.terminalBallots.push_back(terminalBallot(placed));
            t.lengthRunRanges.push_back(lengthRuns(placed));
            t.fullestNets.push_back(fullestNet(placed));
        }
    }

private:
    // Blocks that this pass does not place lie beyond every m.
    unsigned bodyOf(const Pin& pin) const { return pinBodies[pinNumber(pin)]; }
    std::size_t pinNumber(const Pin& pin) const { return &pin - netlist.pins.data(); }

    bool isPlaced(const Pin& pin, unsigned placed) const {
        return pin.isTerminal() || bodyOf(pin) < placed;
    }
    unsigned countPlaced(const Net& net, unsigned placed) const {
        return static_cast<unsigned>(
            std::count_if(net.getPins().begin(), net.getPins().end(),
                          [&](const Pin* pin) { return isPlaced(*pin, placed); }));
    }
    static bool isPair(const Net& net) {
        return net.getDeclaredDegree() == 2 && net.getNetDegree() == 2;
    }

    static unsigned size(const auto& array) { return static_cast<unsigned>(array.size()); }

    void numberBodies() {
        pinBodies.assign(netlist.pins.size(), t.terminalBody());
        for (unsigned i = 0; i < netlist.blocks.size(); ++i) {
            const unsigned body = i < t.numBlocks ? i : t.numBlocks + 1;
            for (const Pin* pin : netlist.blocks[i].getPins()) {
                pinBodies[pinNumber(*pin)] = body;
            }
        }
        t.pinPlaces.resize(netlist.pins.size());
        pinSites.resize(netlist.pins.size());
        t.dependentBlocks.resize(t.numBlocks + 1);
        t.indexBodies.resize(t.numBlocks);
        for (unsigned block = 0; block < t.numBlocks; ++block) {
            t.extents[kX].push_back(netlist.blocks[block].getWidth());
            t.extents[kY].push_back(netlist.blocks[block].getHeight());
            const int index = netlist.blocks[block].getIndex();
            if (index < static_cast<int>(t.numBlocks)) {
                t.indexBodies[static_cast<unsigned>(index)].push_back(block);
            }
        }
    }

    // Lanes and sites for the distinct places of the body's pins. Terminals are "placed" at the
    // origin: their place is their position.
    void buildBody(unsigned body) {
        std::map<float, unsigned> laneOfPlace[kFamilies];
        std::map<std::pair<float, float>, unsigned> siteOfPlace;
        std::vector<const Pin*> pins;
        for (const Pin& pin : netlist.pins) {
            if (bodyOf(pin) == body) {
                pins.push_back(&pin);
                const Point place = placeOf(pin);
                laneOfPlace[0].emplace(place.x, 0);
                laneOfPlace[1].emplace(place.y, 0);
                siteOfPlace.emplace(std::pair(place.x, place.y), 0);
            }
        }
        Body entry;
        entry.index = body < t.numBlocks ? netlist.blocks[body].getIndex() : -1;
        unsigned nextLane = size(t.laneOffsetsByOrient[0]);
        for (unsigned family = 0; family < kFamilies; ++family) {
            entry.lanes[family].begin = nextLane;
            for (auto& [place, lane] : laneOfPlace[family]) {
                lane = nextLane++;
            }
            entry.lanes[family].end = nextLane;
        }
        unsigned nextSite = size(t.siteOffsetsByOrient[0]);
        entry.sites.begin = nextSite;
        for (auto& [place, site] : siteOfPlace) {
            site = nextSite++;
        }
        entry.sites.end = nextSite;
        t.bodies.push_back(entry);

        for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
            t.laneOffsetsByOrient[o].resize(nextLane);
            t.siteOffsetsByOrient[o].resize(nextSite);
        }
        for (const Pin* pin : pins) {
            const Point place = placeOf(*pin);
            const unsigned u = laneOfPlace[0].at(place.x);
            const unsigned v = laneOfPlace[1].at(place.y);
            const unsigned site = siteOfPlace.at({place.x, place.y});
            t.pinPlaces[pinNumber(*pin)] = {body, {u, v}};
            pinSites[pinNumber(*pin)] = site;
            for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
                const Point offset = offsetOf(*pin, static_cast<Orient>(o));
                const bool onSide = swapsWidthAndHeight(static_cast<Orient>(o));
                t.laneOffsetsByOrient[o][u] = onSide ? offset.y : offset.x;
                t.laneOffsetsByOrient[o][v] = onSide ? offset.x : offset.y;
                t.siteOffsetsByOrient[o][site] = offset;
            }
        }
    }

    // What tells apart the pins of a body.
    static Point placeOf(const Pin& pin) {
        return pin.isTerminal() ? pin.getCoord() : pin.getOffset();
    }
    static Point offsetOf(const Pin& pin, Orient orient) {
        return pin.isTerminal() ? pin.getCoord() : pin.placeInBlock(orient);
    }

    // Gathers the nets of two pins by their bodies and then by the lanes that they join.
    void buildBundles() {
        using LaneKey = std::pair<unsigned, unsigned>;
        std::vector<std::array<std::map<LaneKey, unsigned>, kFamilies * kFamilies>> weights;
        for (const Net& net : netlist.nets) {
            netPairs.push_back(size(t.pairNets));
            if (!isPair(net) || !isPassed(net)) {
                continue;
            }
            const PairEnds ends = endsOf(net);
            const auto [found, isNew] =
                bundleOf.emplace(std::pair(ends.first, ends.second), size(weights));
            if (isNew) {
                weights.emplace_back();
                t.bundles.push_back({ends.first, ends.second, {}});
            }
            const PairNet pair = lanesOf(net, ends.swapped);
            t.pairNets.push_back(pair);
            for (unsigned f = 0; f < kFamilies; ++f) {
                for (unsigned s = 0; s < kFamilies; ++s) {
                    ++weights[found->second][kFamilies * f + s]
                             [{pair.lanes[0][f], pair.lanes[1][s]}];
                }
            }
        }
        for (unsigned b = 0; b < t.bundles.size(); ++b) {
            for (unsigned families = 0; families < kFamilies * kFamilies; ++families) {
                Range& range = t.bundles[b].pairs[families];
                range.begin = size(t.lanePairs);
                for (const auto& [lanes, weight] : weights[b][families]) {
                    t.lanePairs.push_back({lanes.first, lanes.second, weight});
                }
                range.end = size(t.lanePairs);
            }
        }
    }

    // All of the net's pins belong to terminals or to blocks of this pass.
    bool isPassed(const Net& net) const {
        return std::all_of(net.getPins().begin(), net.getPins().end(),
                           [&](const Pin* pin) { return bodyOf(*pin) <= t.terminalBody(); });
    }

    struct PairEnds {
        unsigned first;
        unsigned second;
        bool swapped;  // against the order of the net's pins
    };
    // The bodies of a net of two pins. Their order does not matter unless both ends have the same
    // block index: then the first pin is the one that votes for itself.
    PairEnds endsOf(const Net& net) const {
        const Pin& a = *net.getPins()[0];
        const Pin& b = *net.getPins()[1];
        const bool swapped = a.getBlockIndex() != b.getBlockIndex() && bodyOf(b) < bodyOf(a);
        return swapped ? PairEnds{bodyOf(b), bodyOf(a), true}
                       : PairEnds{bodyOf(a), bodyOf(b), false};
    }

    PairNet lanesOf(const Net& net, bool swapped) const {
        PairNet pair{};
        for (unsigned end = 0; end < 2; ++end) {
            const Pin& pin = *net.getPins()[swapped ? 1 - end : end];
            std::copy_n(t.pinPlaces[pinNumber(pin)].lanes, kFamilies, pair.lanes[end]);
        }
        return pair;
    }

    // Collects one ballot at the end of the vote arrays.
    class BallotBuilder {
    public:
        explicit BallotBuilder(Builder& builder) : b(builder) {
            ballot.bundles.begin = size(b.t.bundleVotes);
            ballot.nets.begin = size(b.t.netVotes);
        }

        void addStay() { ++ballot.stays; }

        // The net's whole bundle votes when its first net comes.
        void addPair(const Net& net, bool ownIsFirstPin) {
            const PairEnds ends = b.endsOf(net);
            const unsigned bundle = b.bundleOf.at({ends.first, ends.second});
            if (bundlesSeen.insert(bundle).second) {
                b.t.bundleVotes.push_back({bundle, ownIsFirstPin == ends.swapped});
            }
            bodies.insert({ends.first, ends.second});
        }

        // Pins that are not placed are left out; a net without other pins advises nothing.
        template <typename IsOwn>
        void addNet(const Net& net, unsigned placed, const IsOwn& isOwn) {
            NetVote vote;
            vote.scan.begin = size(b.t.scanPins);
            for (const Pin* pin : net.getPins()) {
                if (b.isPlaced(*pin, placed)) {
                    b.t.scanPins.push_back({b.pinSites[b.pinNumber(*pin)], isOwn(*pin)});
                    bodies.insert(b.bodyOf(*pin));
                }
            }
            vote.scan.end = size(b.t.scanPins);
            vote.own = listSites(vote.scan, true);
            vote.other = listSites(vote.scan, false);
            if (vote.other.begin != vote.other.end) {
                b.t.netVotes.push_back(vote);
            }
        }

        Ballot finish() {
            ballot.bundles.end = size(b.t.bundleVotes);
            ballot.nets.end = size(b.t.netVotes);
            return ballot;
        }

        const std::set<unsigned>& bodiesSeen() const { return bodies; }

    private:
        Range listSites(Range scan, bool own) {
            Range list;
            list.begin = size(b.t.siteLists);
            for (unsigned i = scan.begin; i < scan.end; ++i) {
                if (b.t.scanPins[i].own == own) {
                    b.t.siteLists.push_back(b.t.scanPins[i].site);
                }
            }
            list.end = size(b.t.siteLists);
            return list;
        }

        Builder& b;
        Ballot ballot;
        std::set<unsigned> bundlesSeen;
        std::set<unsigned> bodies;
    };

    Ballot blockBallot(unsigned placed, unsigned block) {
        BallotBuilder ballot(*this);
        for (const unsigned index : netlist.blocks[block].getNetsIndexes()) {
            const Net& net = netlist.nets[index];
            const unsigned placedPins = countPlaced(net, placed);
            if (placedPins < 2) {
                continue;
            }
            const auto isOwn = [block](const Pin& pin) { return pin.getBlockIndex() == block; };
            if (!isPair(net)) {
                ballot.addNet(net, placed, isOwn);
            } else if (isOwn(*net.getPins()[0])) {
                ballot.addPair(net, true);
            } else if (isOwn(*net.getPins()[1])) {
                ballot.addPair(net, false);
            } else {
                ballot.addStay();
            }
        }
        for (const unsigned body : ballot.bodiesSeen()) {
            std::vector<unsigned>& dependents = t.dependentBlocks[body];
            if (std::find(dependents.begin(), dependents.end(), block) == dependents.end()) {
                dependents.push_back(block);
            }
        }
        return ballot.finish();
    }

    Ballot terminalBallot(unsigned placed) {
        BallotBuilder ballot(*this);
        for (const Net& net : netlist.nets) {
            const unsigned placedPins = countPlaced(net, placed);
            if (net.getTermNum() == 0 || placedPins < 2 || placedPins == net.getTermNum()) {
                continue;
            }
            if (isPair(net)) {
                ballot.addPair(net, !net.getPins()[0]->isTerminal());
            } else {
                ballot.addNet(net, placed, [](const Pin& pin) { return !pin.isTerminal(); });
            }
        }
        return ballot.finish();
    }

    Fill fullestNet(unsigned placed) const {
        Fill fullest{1, 0};
        for (const Net& net : netlist.nets) {
            const Fill fill{net.getDeclaredDegree(), countPlaced(net, placed)};
            if (fill.placedPins > fill.degree && fullest.placedPins <= fullest.degree) {
                fullest = fill;
            }
        }
        return fullest;
    }

    // The nets whose length is known when that many blocks are placed.
    Range lengthRuns(unsigned placed) {
        Range runs;
        runs.begin = size(t.lengthRuns);
        for (const Net& net : netlist.nets) {
            if (!isSpread(net, placed)) {
                continue;
            }
            if (isPair(net)) {
                addToPairRun(net, runs.begin);
                continue;
            }
            LengthRun run{};
            run.items.begin = size(t.siteLists);
            for (const Pin* pin : net.getPins()) {
                if (isPlaced(*pin, placed)) {
                    t.siteLists.push_back(pinSites[pinNumber(*pin)]);
                }
            }
            run.items.end = size(t.siteLists);
            t.lengthRuns.push_back(run);
        }
        runs.end = size(t.lengthRuns);
        return runs;
    }

    void addToPairRun(const Net& net, unsigned firstRun) {
        const PairEnds ends = endsOf(net);
        const unsigned pair = netPairs[net.getIndex()];
        if (t.lengthRuns.size() > firstRun) {
            LengthRun& last = t.lengthRuns.back();
            if (last.pairs && last.first == ends.first && last.second == ends.second &&
                last.items.end == pair && last.items.end - last.items.begin < kLongestRun) {
                ++last.items.end;
                return;
            }
        }
        t.lengthRuns.push_back({true, ends.first, ends.second, {pair, pair + 1}});
    }

    // At least two pins are placed, and not all on one block. Of a terminal that comes first only
    // the index counts, on purpose.
    bool isSpread(const Net& net, unsigned placed) const {
        const Pin* first = nullptr;
        for (const Pin* pin : net.getPins()) {
            if (!isPlaced(*pin, placed)) {
                continue;
            }
            if (first == nullptr) {
                first = pin;
            } else if (pin->getBlockIndex() != first->getBlockIndex() ||
                       (pin->isTerminal() && !isPair(net))) {
                return true;
            }
        }
        return false;
    }

    // So that a sum that has become useless is not carried much further.
    static constexpr unsigned kLongestRun = 64;

    AlignmentTables& t;
    const Netlist& netlist;
    std::vector<unsigned> pinBodies;
    std::vector<unsigned> pinSites;
    std::vector<unsigned> netPairs;  // place in pairNets, of nets of two pins
    std::map<std::pair<unsigned, unsigned>, unsigned> bundleOf;  // by bodies
};

AlignmentTables::AlignmentTables(const Netlist& netlist, unsigned numBlocks)
    : numBlocks(numBlocks) {
    Builder(*this, netlist).build();
}

void AlignmentTables::checkPlacedCounts(unsigned placed) const {
    Net::checkPlacedNum(fullestNets[placed].degree, fullestNets[placed].placedPins);
}

}  // namespace korvel
