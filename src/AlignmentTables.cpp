#include "AlignmentTables.h"

#include <algorithm>
#include <cmath>
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
        groupPairs();
        for (unsigned body = 0; body <= t.terminalBody(); ++body) {
            buildBody(body);
        }
        for (PairGroup& group : groups) {
            group.byLanes ? buildLanePairs(group) : buildSitePairs(group);
        }
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
    // A net of two pins; of the first two if there are more of them than it declares.
    static bool isPair(const Net& net) {
        return net.getDeclaredDegree() == 2 && net.getNetDegree() >= 2;
    }
    bool isPlacedPair(const Net& net, unsigned placed) const {
        return isPair(net) && isPlaced(*net.getPins()[0], placed) &&
               isPlaced(*net.getPins()[1], placed) && countPlaced(net, placed) == 2;
    }

    static unsigned size(const auto& array) { return static_cast<unsigned>(array.size()); }

    void numberBodies() {
        pinBodies.assign(netlist.pins.size(), t.terminalBody());
        for (unsigned i = 0; i < netlist.blocks.size(); ++i) {
            const unsigned body = i < t.numBlocks ? i : t.unplacedBody();
            for (const Pin* pin : netlist.blocks[i].getPins()) {
                pinBodies[pinNumber(*pin)] = body;
            }
        }
        t.pinPlaces.resize(netlist.pins.size(), {t.unplacedBody(), kNoSite, {0, 0}});
        hasLanes.resize(netlist.pins.size(), false);
        t.dependentBlocks.resize(t.numBlocks + 1);
        t.indexBodies.resize(t.numBlocks);
        for (unsigned block = 0; block < t.numBlocks; ++block) {
            t.extents[0].push_back(netlist.blocks[block].getWidth());
            t.extents[1].push_back(netlist.blocks[block].getHeight());
            const int index = netlist.blocks[block].getIndex();
            if (index < static_cast<int>(t.numBlocks)) {
                t.indexBodies[static_cast<unsigned>(index)].push_back(block);
            }
        }
        for (std::vector<float>& extents : t.extents) {
            extents.push_back(0.0F);
        }
    }

    // What tells apart the pins of a body.
    static Point placeOf(const Pin& pin) {
        return pin.isTerminal() ? pin.getCoord() : pin.getOffset();
    }
    static float along(Point place, unsigned family) { return family == 0 ? place.x : place.y; }

    // The nets of two pins between the same two bodies. The order of the bodies does not matter
    // unless both ends have the same block index: then the first pin is the one that votes for
    // itself.
    struct PairGroup {
        unsigned first = 0;
        unsigned second = 0;
        struct Joint {
            const Net* net;
            const Pin* first;
            const Pin* second;
        };
        std::vector<Joint> joints;
        bool byLanes = false;
        unsigned bundle = 0;              // of bundles, by lanes
        std::vector<PairVote> sitePairs;  // own is first, else
    };

    void groupPairs() {
        std::map<std::pair<unsigned, unsigned>, unsigned> groupOf;
        groupOfNet.resize(netlist.nets.size());
        for (const Net& net : netlist.nets) {
            if (!isPlacedPair(net, t.numBlocks)) {
                continue;
            }
            const Pin* first = net.getPins()[0];
            const Pin* second = net.getPins()[1];
            if (first->getBlockIndex() != second->getBlockIndex() &&
                bodyOf(*second) < bodyOf(*first)) {
                std::swap(first, second);
            }
            const auto [found, isNew] =
                groupOf.emplace(std::pair(bodyOf(*first), bodyOf(*second)), size(groups));
            if (isNew) {
                groups.emplace_back();
                groups.back().first = bodyOf(*first);
                groups.back().second = bodyOf(*second);
            }
            groups[found->second].joints.push_back({&net, first, second});
            groupOfNet[net.getIndex()] = found->second;
        }
        for (PairGroup& group : groups) {
            group.byLanes = isCheaperByLanes(group);
            for (const PairGroup::Joint& joint : group.joints) {
                hasLanes[pinNumber(*joint.first)] = group.byLanes;
                hasLanes[pinNumber(*joint.second)] = group.byLanes;
            }
        }
    }

    // A vote about both axes costs less than two about one; blocks lie on their sides half the
    // time.
    static bool isCheaperByLanes(const PairGroup& group) {
        std::set<std::array<float, 4>> sitePairs;
        std::set<std::pair<float, float>> lanePairs[kFamilies][kFamilies];
        for (const auto& [net, first, second] : group.joints) {
            if (net->getNetDegree() > 2) {
                return false;  // its pins may vote one by one too, which takes sites
            }
            const Point a = placeOf(*first);
            const Point b = placeOf(*second);
            sitePairs.insert({a.x, a.y, b.x, b.y});
            for (unsigned f = 0; f < kFamilies; ++f) {
                for (unsigned s = 0; s < kFamilies; ++s) {
                    lanePairs[f][s].emplace(along(a, f), along(b, s));
                }
            }
        }
        const std::size_t upright = lanePairs[0][0].size() + lanePairs[1][1].size();
        const std::size_t onSide = lanePairs[0][1].size() + lanePairs[1][0].size();
        return upright + onSide < 3 * sitePairs.size();
    }

    // Lanes and sites for the distinct places of the body's pins.
    void buildBody(unsigned body) {
        std::map<float, unsigned> laneOfPlace[kFamilies];
        std::map<std::pair<float, float>, unsigned> siteOfPlace;
        std::vector<const Pin*> pins;
        for (const Pin& pin : netlist.pins) {
            if (bodyOf(pin) != body) {
                continue;
            }
            pins.push_back(&pin);
            const Point place = placeOf(pin);
            if (hasLanes[pinNumber(pin)]) {
                laneOfPlace[0].emplace(place.x, 0);
                laneOfPlace[1].emplace(place.y, 0);
            } else {
                siteOfPlace.emplace(std::pair(place.x, place.y), 0);
            }
        }
        Body entry;
        entry.index = body < t.numBlocks ? netlist.blocks[body].getIndex() : -1;
        for (unsigned family = 0; family < kFamilies; ++family) {
            entry.lanes[family] = numberPlaces(laneOfPlace[family], t.laneOffsetsByDirection);
        }
        entry.sites = numberPlaces(siteOfPlace, t.siteOffsetsByOrient);

        for (const Pin* pin : pins) {
            const Point place = placeOf(*pin);
            PinPlace& kept = t.pinPlaces[pinNumber(*pin)];
            kept = {body, kNoSite, {0, 0}};
            if (hasLanes[pinNumber(*pin)]) {
                kept.lanes[0] = laneOfPlace[0].at(place.x);
                kept.lanes[1] = laneOfPlace[1].at(place.y);
            } else {
                kept.site = siteOfPlace.at({place.x, place.y});
            }
            setOffsets(*pin, kept);
        }
        t.bodies.push_back(entry);
        setReach(body);
    }

    // Numbers the places on from those that are there and makes room for their offsets.
    template <typename Places, typename Offsets>
    static Range numberPlaces(Places& places, Offsets& offsetsByOrient) {
        Range range;
        range.begin = size(offsetsByOrient[0]);
        range.end = range.begin;
        for (auto& [place, number] : places) {
            number = range.end++;
        }
        for (auto& offsets : offsetsByOrient) {
            offsets.resize(range.end);
        }
        return range;
    }

    void setOffsets(const Pin& pin, const PinPlace& kept) {
        if (kept.site != kNoSite) {
            for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
                t.siteOffsetsByOrient[o][kept.site] =
                    quadOf(pin.placeInBlock(static_cast<Orient>(o)));
            }
            return;
        }
        for (unsigned family = 0; family < kFamilies; ++family) {
            const unsigned lane = kept.lanes[family];
            t.laneOffsetsByDirection[0][lane] = along(pin.placeInBlock(Orient::N), family);
            t.laneOffsetsByDirection[1][lane] = along(pin.placeInBlock(Orient::S), family);
        }
    }

    void setReach(unsigned body) {
        Body& entry = t.bodies[body];
        entry.reach = 0.0F;
        for (unsigned family = 0; family < kFamilies; ++family) {
            float furthest = 0.0F;
            for (unsigned i = entry.lanes[family].begin; i < entry.lanes[family].end; ++i) {
                furthest = std::max(furthest, std::fabs(t.laneOffsetsByDirection[0][i]));
            }
            entry.reach = std::max(entry.reach, furthest + std::fabs(t.extents[family][body]));
        }
    }

    const PinPlace& keptAt(const Pin& pin) const { return t.pinPlaces[pinNumber(pin)]; }

    void buildLanePairs(PairGroup& group) {
        group.bundle = size(t.bundles);
        Bundle bundle{group.first, group.second, {}};
        for (unsigned f = 0; f < kFamilies; ++f) {
            for (unsigned s = 0; s < kFamilies; ++s) {
                std::map<std::pair<unsigned, unsigned>, unsigned> weights;
                for (const auto& [net, first, second] : group.joints) {
                    ++weights[{keptAt(*first).lanes[f], keptAt(*second).lanes[s]}];
                }
                for (unsigned turn = 0; turn < 4; ++turn) {
                    const unsigned a = 2 * f + turn % 2;
                    const unsigned b = 2 * s + turn / 2;
                    bundle.lists[kTurns * a + b] = sortedList(group, a, b, weights);
                }
            }
        }
        t.bundles.push_back(bundle);
    }

    // Where the lane lies from the corner, roughly.
    float offsetOf(unsigned body, unsigned turn, unsigned lane) const {
        const float offset = t.laneOffsetsByDirection[0][lane];
        return isReversed(turn) ? t.extents[familyOf(turn)][body] - offset : offset;
    }

    Range sortedList(const PairGroup& group, unsigned firstTurn, unsigned secondTurn,
                     const auto& weights) {
        Range range{size(t.sortedPairs), 0};
        for (const auto& [lanes, weight] : weights) {
            const float gap = offsetOf(group.second, secondTurn, lanes.second) -
                              offsetOf(group.first, firstTurn, lanes.first);
            t.sortedPairs.push_back({gap, weight, lanes.first, lanes.second});
        }
        std::sort(t.sortedPairs.begin() + range.begin, t.sortedPairs.end(),
                  [](const SortedPair& a, const SortedPair& b) { return a.gap < b.gap; });
        unsigned before = 0;
        for (unsigned i = range.begin; i < t.sortedPairs.size(); ++i) {
            before += std::exchange(t.sortedPairs[i].weightBefore, before);
        }
        t.sortedPairs.push_back({0.0F, before, 0, 0});
        range.end = size(t.sortedPairs);
        return range;
    }

    void buildSitePairs(PairGroup& group) const {
        std::map<std::pair<unsigned, unsigned>, std::int32_t> weights;
        for (const auto& [net, first, second] : group.joints) {
            ++weights[{keptAt(*first).site, keptAt(*second).site}];
        }
        for (const auto& [sites, weight] : weights) {
            group.sitePairs.push_back({sites.first, sites.second, weight});
        }
    }

    // Collects one ballot at the end of the vote arrays.
    class BallotBuilder {
    public:
        explicit BallotBuilder(Builder& builder) : b(builder) {
            ballot.bundles.begin = size(b.t.bundleVotes);
            ballot.pairs.begin = size(b.t.pairVotes);
            ballot.nets.begin = size(b.t.netVotes);
        }

        void addStay() { ++ballot.stays; }

        // All nets of the pair's group vote when the first of them comes.
        void addPair(const Net& net, const Pin& own) {
            const unsigned number = b.groupOfNet[net.getIndex()];
            if (!groupsSeen.insert(number).second) {
                return;
            }
            const PairGroup& group = b.groups[number];
            const bool ownIsFirst = Builder::ownIsFirst(group, net, own);
            bodies.insert({group.first, group.second});
            if (group.byLanes) {
                b.t.bundleVotes.push_back({group.bundle, !ownIsFirst});
                unsigned mostPairs = 0;
                for (const Range pairs : b.t.bundles[group.bundle].lists) {
                    mostPairs = std::max(mostPairs, pairs.end - pairs.begin);
                }
                ballot.mostVotes += mostPairs;
            }
            for (const auto& [first, second, weight] : group.sitePairs) {
                b.t.pairVotes.push_back(ownIsFirst ? PairVote{first, second, weight}
                                                   : PairVote{second, first, weight});
                ++ballot.mostVotes;
            }
        }

        // Pins that are not placed are left out; a net without other pins advises nothing.
        template <typename IsOwn>
        void addNet(const Net& net, unsigned placed, const IsOwn& isOwn) {
            Range runs;
            runs.begin = size(b.t.scanRuns);
            bool hasOther = false;
            bool wasOwn = true;
            for (const Pin* pin : net.getPins()) {
                if (!b.isPlaced(*pin, placed)) {
                    continue;
                }
                const bool own = isOwn(*pin);
                if (own && runs.begin == size(b.t.scanRuns)) {
                    addRun();
                    wasOwn = false;
                }
                if (own != wasOwn) {
                    addRun();
                }
                b.t.siteLists.push_back(b.keptAt(*pin).site);
                ++b.t.scanRuns.back().end;
                wasOwn = own;
                hasOther = hasOther || !own;
                bodies.insert(b.bodyOf(*pin));
            }
            runs.end = size(b.t.scanRuns);
            if (hasOther) {
                b.t.netVotes.push_back(runs);
                ++ballot.mostVotes;
            }
        }

        Ballot finish() {
            ballot.bundles.end = size(b.t.bundleVotes);
            ballot.pairs.end = size(b.t.pairVotes);
            ballot.nets.end = size(b.t.netVotes);
            return ballot;
        }

        const std::set<unsigned>& bodiesSeen() const { return bodies; }

    private:
        void addRun() { b.t.scanRuns.push_back({size(b.t.siteLists), size(b.t.siteLists)}); }

        Builder& b;
        Ballot ballot;
        std::set<unsigned> groupsSeen;
        std::set<unsigned> bodies;
    };

    static bool ownIsFirst(const PairGroup& group, const Net& net, const Pin& own) {
        const auto joint =
            std::find_if(group.joints.begin(), group.joints.end(),
                         [&](const auto& candidate) { return candidate.net == &net; });
        return joint->first == &own;
    }

    Ballot blockBallot(unsigned placed, unsigned block) {
        BallotBuilder ballot(*this);
        for (const unsigned index : netlist.blocks[block].getNetsIndexes()) {
            const Net& net = netlist.nets[index];
            const unsigned placedPins = countPlaced(net, placed);
            if (placedPins < 2) {
                continue;
            }
            const auto isOwn = [block](const Pin& pin) { return pin.getBlockIndex() == block; };
            if (!isPlacedPair(net, placed)) {
                ballot.addNet(net, placed, isOwn);
            } else if (isOwn(*net.getPins()[0])) {
                ballot.addPair(net, *net.getPins()[0]);
            } else if (isOwn(*net.getPins()[1])) {
                ballot.addPair(net, *net.getPins()[1]);
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
            if (isPlacedPair(net, placed)) {
                ballot.addPair(net, *net.getPins()[net.getPins()[0]->isTerminal() ? 1 : 0]);
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
            if (isPlacedPair(net, placed)) {
                addPairLength(net, runs.begin);
                continue;
            }
            LengthRun run{};
            run.items.begin = size(t.siteLists);
            for (const Pin* pin : net.getPins()) {
                if (isPlaced(*pin, placed)) {
                    t.siteLists.push_back(keptAt(*pin).site);
                }
            }
            run.items.end = size(t.siteLists);
            t.lengthRuns.push_back(run);
        }
        runs.end = size(t.lengthRuns);
        return runs;
    }

    // Adds the net to the last run of this number of placed blocks if it goes on there.
    void addPairLength(const Net& net, unsigned firstRun) {
        const PairGroup& group = groups[groupOfNet[net.getIndex()]];
        const Pin* first = net.getPins()[0];
        const Pin* second = net.getPins()[1];
        if (group.byLanes && bodyOf(*first) != group.first) {
            std::swap(first, second);
        }
        LengthRun run{};
        if (group.byLanes) {
            const unsigned joint = size(t.laneJoints);
            LaneJoint lanes{};
            std::copy_n(keptAt(*first).lanes, kFamilies, lanes.lanes[0]);
            std::copy_n(keptAt(*second).lanes, kFamilies, lanes.lanes[1]);
            t.laneJoints.push_back(lanes);
            run = {Length::Lanes, group.first, group.second, {joint, joint + 1}};
        } else {
            const unsigned pair = size(t.sitePairs);
            t.sitePairs.push_back({keptAt(*first).site, keptAt(*second).site});
            run = {Length::Sites, 0, 0, {pair, pair + 1}};
        }
        if (t.lengthRuns.size() > firstRun) {
            LengthRun& last = t.lengthRuns.back();
            if (last.kind == run.kind && last.first == run.first && last.second == run.second &&
                last.items.end - last.items.begin < kLongestRun) {
                ++last.items.end;
                return;
            }
        }
        t.lengthRuns.push_back(run);
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
                       (pin->isTerminal() && !isPlacedPair(net, placed))) {
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
    std::vector<bool> hasLanes;  // by pin
    std::vector<PairGroup> groups;
    std::vector<unsigned> groupOfNet;  // of nets of two pins
};

AlignmentTables::AlignmentTables(const Netlist& netlist, unsigned numBlocks)
    : numBlocks(numBlocks) {
    Builder(*this, netlist).build();
}

void AlignmentTables::checkPlacedCounts(unsigned placed) const {
    Net::checkPlacedNum(fullestNets[placed].degree, fullestNets[placed].placedPins);
}

}  // namespace korvel
