#include "classic/alignment/AlignmentTables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
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
            group.byLanes ? buildBundle(group) : buildSitePairs(group);
        }
        findOtherNets();
        findDependents();
        buildPairLengths();
        t.terminalBallots.emplace_back();
        t.lengthRunRanges.emplace_back();
        t.lengthBundleRanges.emplace_back();
        t.netNum = size(netlist.nets);
        t.fullestNets.push_back({0, 0});
        for (unsigned placed = 1; placed <= t.numBlocks; ++placed) {
            for (unsigned block = 0; block < placed; ++block) {
                t.blockBallots.push_back(blockBallot(placed, block));
            }
            t.terminalBallots.push_back(terminalBallot(placed));
            t.lengthRunRanges.push_back(lengthRuns(placed));
            t.lengthBundleRanges.push_back(lengthBundles(placed));
            t.fullestNets.push_back(fullestNet(placed));
        }
    }

private:
    // Blocks that this pass does not place lie beyond every m.
    unsigned bodyOf(const Pin& pin) const { return pinBodies[pinNumber(pin)]; }
    std::size_t pinNumber(const Pin& pin) const { return &pin - netlist.pins.data(); }

    bool isPlaced(unsigned body, unsigned placed) const {
        return body < placed || body == t.terminalBody();
    }
    unsigned countPlaced(const Net& net, unsigned placed) const {
        return static_cast<unsigned>(
            std::count_if(net.getPins().begin(), net.getPins().end(),
                          [&](const Pin* pin) { return isPlaced(bodyOf(*pin), placed); }));
    }
    static bool isPair(const Net& net) {
        return net.getDeclaredDegree() == 2 && net.getNetDegree() == 2;
    }
    // Of the nets that declare two pins but have more: the first two are placed, and they alone.
    bool isPlacedAsPair(const Net& net, unsigned placed) const {
        return net.getDeclaredDegree() == 2 && net.getNetDegree() > 2 &&
               isPlaced(bodyOf(*net.getPins()[0]), placed) &&
               isPlaced(bodyOf(*net.getPins()[1]), placed) && countPlaced(net, placed) == 2;
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
        bodyPins.resize(t.unplacedBody() + 1);
        for (const Pin& pin : netlist.pins) {
            bodyPins[bodyOf(pin)].push_back(&pin);
        }
        t.pinPlaces.resize(netlist.pins.size(), {t.unplacedBody(), kNoSite, {0, 0}});
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

    // The nets of two pins between the same two bodies. The order of the bodies does not matter
    // unless both ends have the same block index: then the first pin is the one that votes for
    // itself.
    struct PairGroup {
        unsigned first = 0;   // body
        unsigned second = 0;  // body
        unsigned firstIndex = 0;
        unsigned secondIndex = 0;
        struct Joint {
            const Pin* first;
            const Pin* second;
        };
        std::vector<Joint> joints{};
        bool byLanes = false;
        unsigned bundle = 0;                // of bundles, by lanes
        std::vector<PairVote> sitePairs{};  // own is first, else
    };

    // A terminal may have the index of a block; beyond them indexes do not matter.
    unsigned indexOf(const Pin& pin) const { return std::min(pin.getBlockIndex(), t.numBlocks); }

    void groupPairs() {
        std::map<std::array<unsigned, 4>, unsigned> groupOf;
        hasLanes.resize(netlist.pins.size(), false);
        for (const Net& net : netlist.nets) {
            if (!isPair(net)) {
                continue;
            }
            const Pin* first = net.getPins()[0];
            const Pin* second = net.getPins()[1];
            if (indexOf(*first) != indexOf(*second) && bodyOf(*second) < bodyOf(*first)) {
                std::swap(first, second);
            }
            if (bodyOf(*first) == t.unplacedBody() || bodyOf(*second) == t.unplacedBody()) {
                continue;
            }
            PairGroup group{bodyOf(*first), bodyOf(*second), indexOf(*first), indexOf(*second)};
            const auto [found, isNew] = groupOf.emplace(
                std::array{group.first, group.second, group.firstIndex, group.secondIndex},
                size(groups));
            if (isNew) {
                groups.push_back(std::move(group));
            }
            groups[found->second].joints.push_back({first, second});
        }
        groupsOfBody.resize(t.terminalBody() + 1);
        for (unsigned number = 0; number < groups.size(); ++number) {
            PairGroup& group = groups[number];
            groupsOfBody[group.first].push_back(number);
            if (group.second != group.first) {
                groupsOfBody[group.second].push_back(number);
            }
            group.byLanes = isCheaperByLanes(group);
            for (const auto& [first, second] : group.joints) {
                hasLanes[pinNumber(*first)] = group.byLanes;
                hasLanes[pinNumber(*second)] = group.byLanes;
            }
        }
    }

    // What tells apart the pins of a body.
    static Point placeOf(const Pin& pin) {
        return pin.isTerminal() ? pin.getCoord() : pin.getOffset();
    }
    static float along(Point place, unsigned family) { return family == 0 ? place.x : place.y; }

    // Finding a step in a list takes longer than asking a few. Lists are not made of places that
    // cannot be put in order.
    static bool isCheaperByLanes(const PairGroup& group) {
        constexpr std::size_t kFew = 16;
        std::vector<std::array<float, 4>> distinct;
        for (const auto& [first, second] : group.joints) {
            const Point a = placeOf(*first);
            const Point b = placeOf(*second);
            const std::array<float, 4> places = {a.x, a.y, b.x, b.y};
            if (std::find(distinct.begin(), distinct.end(), places) != distinct.end()) {
                continue;
            }
            distinct.push_back(places);
            if (distinct.size() > kFew) {
                return isOrderly(group);
            }
        }
        return false;
    }

    static bool isOrderly(const PairGroup& group) {
        constexpr float kFar = 1e30F;
        const auto isNear = [](const Pin& pin) {
            const Point n = pin.placeInBlock(Orient::N);
            const Point s = pin.placeInBlock(Orient::S);
            return std::fabs(n.x) < kFar && std::fabs(n.y) < kFar && std::fabs(s.x) < kFar &&
                   std::fabs(s.y) < kFar;
        };
        return std::all_of(group.joints.begin(), group.joints.end(), [&](const auto& joint) {
            return isNear(*joint.first) && isNear(*joint.second);
        });
    }

    // Lanes and sites for the distinct places of the body's pins.
    void buildBody(unsigned body) {
        Body entry{};
        entry.index = body < t.numBlocks ? netlist.blocks[body].getIndex() : -1;
        for (unsigned family = 0; family < kFamilies; ++family) {
            entry.lanes[family] = numberLanes(body, family);
            entry.reach = std::max(entry.reach, reachOf(body, family, entry.lanes[family]));
        }
        entry.sites = numberSites(body);
        t.bodies.push_back(entry);
    }

    Range numberLanes(unsigned body, unsigned family) {
        std::vector<float> places;
        for (const Pin* pin : bodyPins[body]) {
            if (hasLanes[pinNumber(*pin)]) {
                places.push_back(along(placeOf(*pin), family));
            }
        }
        sortUnique(places);
        const Range range = appendTo(t.laneOffsetsByDirection, places.size());
        for (const Pin* pin : bodyPins[body]) {
            if (!hasLanes[pinNumber(*pin)]) {
                continue;
            }
            const unsigned lane = range.begin + rankIn(places, along(placeOf(*pin), family));
            PinPlace& kept = t.pinPlaces[pinNumber(*pin)];
            kept.body = body;
            kept.lanes[family] = lane;
            t.laneOffsetsByDirection[0][lane] = along(pin->placeInBlock(Orient::N), family);
            t.laneOffsetsByDirection[1][lane] = along(pin->placeInBlock(Orient::S), family);
        }
        return range;
    }

    Range numberSites(unsigned body) {
        std::vector<std::pair<float, float>> places;
        for (const Pin* pin : bodyPins[body]) {
            if (!hasLanes[pinNumber(*pin)]) {
                places.emplace_back(placeOf(*pin).x, placeOf(*pin).y);
            }
        }
        sortUnique(places);
        const Range range = appendTo(t.siteOffsetsByOrient, places.size());
        for (const Pin* pin : bodyPins[body]) {
            if (hasLanes[pinNumber(*pin)]) {
                continue;
            }
            const unsigned site =
                range.begin + rankIn(places, std::pair(placeOf(*pin).x, placeOf(*pin).y));
            t.pinPlaces[pinNumber(*pin)] = {body, site, {0, 0}};
            for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
                t.siteOffsetsByOrient[o][site] = quadOf(pin->placeInBlock(static_cast<Orient>(o)));
            }
        }
        return range;
    }

    static void sortUnique(auto& values) {
        std::sort(values.begin(), values.end());
        values.erase(std::unique(values.begin(), values.end()), values.end());
    }
    static unsigned rankIn(const auto& sorted, const auto& value) {
        return static_cast<unsigned>(std::lower_bound(sorted.begin(), sorted.end(), value) -
                                     sorted.begin());
    }
    static Range appendTo(auto& offsetLists, std::size_t number) {
        const Range range{size(offsetLists[0]),
                          static_cast<unsigned>(offsetLists[0].size() + number)};
        for (auto& offsets : offsetLists) {
            offsets.resize(range.end);
        }
        return range;
    }

    float reachOf(unsigned body, unsigned family, Range lanes) const {
        float furthest = 0.0F;
        for (unsigned i = lanes.begin; i < lanes.end; ++i) {
            furthest = std::max(furthest, std::fabs(t.laneOffsetsByDirection[0][i]));
        }
        return furthest + std::fabs(t.extents[family][body]);
    }

    const PinPlace& keptAt(const Pin& pin) const { return t.pinPlaces[pinNumber(pin)]; }

    void buildBundle(PairGroup& group) {
        group.bundle = size(t.bundles);
        t.bundles.push_back({group.first, group.second, {}});
        for (unsigned first = 0; first < kFamilies; ++first) {
            for (unsigned second = 0; second < kFamilies; ++second) {
                buildLists(group, first, second);
            }
        }
    }

    // One list with both bodies as they are and one with the second reversed; when both are turned
    // by half, what was the largest gap is the smallest.
    void buildLists(const PairGroup& group, unsigned first, unsigned second) {
        std::vector<std::pair<unsigned, unsigned>> lanes;
        for (const auto& [a, b] : group.joints) {
            lanes.emplace_back(keptAt(*a).lanes[first], keptAt(*b).lanes[second]);
        }
        std::sort(lanes.begin(), lanes.end());
        const unsigned turn = turnOf(first, false);
        for (const bool isReversed : {false, true}) {
            const unsigned secondTurn = turnOf(second, isReversed);
            const std::vector<SortedPair> list = sortedPairs(lanes, isReversed);
            Bundle& bundle = t.bundles[group.bundle];
            bundle.list(turn, secondTurn) = append(list, false);
            bundle.list(oppositeTurn(turn), oppositeTurn(secondTurn)) = append(list, true);
        }
    }

    // `lanes` in order. In place of the weight before a pair its own.
    std::vector<SortedPair> sortedPairs(const std::vector<std::pair<unsigned, unsigned>>& lanes,
                                        bool isReversed) const {
        const std::vector<float>& offsets = t.laneOffsetsByDirection[0];
        std::vector<SortedPair> list;
        for (const auto& [a, b] : lanes) {
            if (!list.empty() && list.back().first == a && list.back().second == b) {
                ++list.back().weightBefore;
                continue;
            }
            const float gap = (isReversed ? -offsets[b] : offsets[b]) - offsets[a];
            list.push_back({gap, 1, a, b});
        }
        std::sort(list.begin(), list.end(),
                  [](const SortedPair& a, const SortedPair& b) { return a.gap < b.gap; });
        return list;
    }

    Range append(const std::vector<SortedPair>& list, bool isBackward) {
        Range range{size(t.sortedPairs), 0};
        unsigned weight = 0;
        double gaps = 0.0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            SortedPair pair = list[isBackward ? list.size() - 1 - i : i];
            pair.gap = isBackward ? -pair.gap : pair.gap;
            t.gapsBefore.push_back(gaps);
            gaps += double{pair.gap} * pair.weightBefore;
            weight += std::exchange(pair.weightBefore, weight);
            t.sortedPairs.push_back(pair);
        }
        t.gapsBefore.push_back(gaps);
        t.sortedPairs.push_back({0.0F, weight, 0, 0});
        range.end = size(t.sortedPairs);
        return range;
    }

    void buildSitePairs(PairGroup& group) const {
        std::map<std::pair<unsigned, unsigned>, std::int32_t> weights;
        for (const auto& [first, second] : group.joints) {
            ++weights[{keptAt(*first).site, keptAt(*second).site}];
        }
        for (const auto& [sites, weight] : weights) {
            group.sitePairs.push_back({sites.first, sites.second, weight});
        }
    }

    // Nets whose votes and lengths depend on how many of their pins are placed.
    void findOtherNets() {
        otherNetsOfBlock.resize(t.numBlocks);
        for (const Net& net : netlist.nets) {
            if (!isPair(net)) {
                otherNets.push_back(&net);
            }
        }
        for (unsigned block = 0; block < t.numBlocks; ++block) {
            for (const unsigned index : netlist.blocks[block].getNetsIndexes()) {
                if (!isPair(netlist.nets[index])) {
                    otherNetsOfBlock[block].push_back(&netlist.nets[index]);
                }
            }
        }
    }

    void findDependents() {
        t.dependentBlocks.resize(t.numBlocks + 1);
        t.partnersOfAsker.resize(t.numBlocks + 1);
        for (unsigned block = 0; block < t.numBlocks; ++block) {
            for (const unsigned number : groupsOfBody[block]) {
                addDependent(groups[number].first, block);
                addDependent(groups[number].second, block);
            }
            for (const Net* net : otherNetsOfBlock[block]) {
                for (const Pin* pin : net->getPins()) {
                    addDependent(bodyOf(*pin), block);
                }
            }
            t.partnersOfAsker[t.terminalBody()].push_back(block);
        }
    }
    // Blocks come in their order.
    void addDependent(unsigned body, unsigned block) {
        if (body == t.unplacedBody()) {
            return;
        }
        std::vector<unsigned>& dependents = t.dependentBlocks[body];
        if (dependents.empty() || dependents.back() != block) {
            dependents.push_back(block);
            if (body != t.terminalBody()) {
                t.partnersOfAsker[block].push_back(body);
            }
        }
    }

    Ballot openBallot() const {
        Ballot ballot;
        ballot.bundles.begin = size(t.bundleVotes);
        ballot.pairs.begin = size(t.pairVotes);
        ballot.nets.begin = size(t.netVotes);
        return ballot;
    }
    Ballot closed(Ballot ballot) const {
        ballot.bundles.end = size(t.bundleVotes);
        ballot.pairs.end = size(t.pairVotes);
        ballot.nets.end = size(t.netVotes);
        return ballot;
    }

    Ballot blockBallot(unsigned placed, unsigned block) {
        Ballot ballot = openBallot();
        for (const unsigned number : groupsOfBody[block]) {
            const PairGroup& group = groups[number];
            if (!isPlaced(group.first, placed) || !isPlaced(group.second, placed)) {
                continue;
            }
            if (group.firstIndex == block || group.secondIndex == block) {
                addGroup(ballot, group, group.firstIndex == block);
            } else {
                ballot.stays += static_cast<std::int32_t>(group.joints.size());
            }
        }
        const auto isOwn = [block](const Pin& pin) { return pin.getBlockIndex() == block; };
        for (const Net* net : otherNetsOfBlock[block]) {
            if (isPlacedAsPair(*net, placed)) {
                addAsPair(ballot, *net, isOwn);
            } else if (countPlaced(*net, placed) >= 2) {
                addNet(ballot, *net, placed, isOwn);
            }
        }
        return closed(ballot);
    }

    Ballot terminalBallot(unsigned placed) {
        Ballot ballot = openBallot();
        for (const unsigned number : groupsOfBody[t.terminalBody()]) {
            const PairGroup& group = groups[number];
            const bool ownIsFirst = group.first != t.terminalBody();
            const unsigned own = ownIsFirst ? group.first : group.second;
            if (own != t.terminalBody() && isPlaced(own, placed)) {
                addGroup(ballot, group, ownIsFirst);
            }
        }
        const auto isOwn = [](const Pin& pin) { return !pin.isTerminal(); };
        for (const Net* net : otherNets) {
            const unsigned placedPins = countPlaced(*net, placed);
            if (net->getTermNum() == 0 || placedPins < 2 || placedPins == net->getTermNum()) {
                continue;
            }
            if (isPlacedAsPair(*net, placed)) {
                addAsPair(ballot, *net, isOwn);
            } else {
                addNet(ballot, *net, placed, isOwn);
            }
        }
        return closed(ballot);
    }

    void addGroup(Ballot& ballot, const PairGroup& group, bool ownIsFirst) {
        if (group.byLanes) {
            t.bundleVotes.push_back({group.bundle, !ownIsFirst});
            unsigned mostPairs = 0;
            for (const Range list : t.bundles[group.bundle].lists) {
                mostPairs = std::max(mostPairs, list.end - list.begin);
            }
            ballot.mostVotes += mostPairs;
        }
        for (const auto& [first, second, weight] : group.sitePairs) {
            t.pairVotes.push_back(ownIsFirst ? PairVote{first, second, weight}
                                             : PairVote{second, first, weight});
            ++ballot.mostVotes;
        }
    }

    void addAsPair(Ballot& ballot, const Net& net, const auto& isOwn) {
        const Pin& first = *net.getPins()[0];
        const Pin& second = *net.getPins()[1];
        if (!isOwn(first) && !isOwn(second)) {
            ++ballot.stays;
            return;
        }
        const bool ownIsFirst = isOwn(first);
        t.pairVotes.push_back({keptAt(ownIsFirst ? first : second).site,
                               keptAt(ownIsFirst ? second : first).site, 1});
        ++ballot.mostVotes;
    }

    // Pins that are not placed are left out; a net without other pins advises nothing.
    void addNet(Ballot& ballot, const Net& net, unsigned placed, const auto& isOwn) {
        const unsigned begin = size(t.scanLists);
        std::size_t number = begin;  // where that of the pins at hand stands
        t.scanLists.push_back(0);
        bool wasOwn = false;
        bool hasOther = false;
        for (const Pin* pin : net.getPins()) {
            if (!isPlaced(bodyOf(*pin), placed)) {
                continue;
            }
            if (isOwn(*pin) != wasOwn) {
                wasOwn = !wasOwn;
                number = t.scanLists.size();
                t.scanLists.push_back(0);
            }
            ++t.scanLists[number];
            t.scanLists.push_back(keptAt(*pin).site);
            hasOther = hasOther || !wasOwn;
        }
        if (hasOther) {
            t.netVotes.push_back({begin, size(t.scanLists)});
            ++ballot.mostVotes;
        }
    }

    Fill fullestNet(unsigned placed) const {
        Fill fullest{1, 0};
        for (const Net* net : otherNets) {
            const Fill fill{net->getDeclaredDegree(), countPlaced(*net, placed)};
            if (fill.placedPins > fill.degree && fullest.placedPins <= fullest.degree) {
                fullest = fill;
            }
        }
        return fullest;
    }

    // A part of the sum over all nets: nets of two pins, or one other net.
    struct LengthPart {
        unsigned placed;   // how many blocks have to be for the run to count
        LengthRun run;     // of pairs
        const Net* other;  // or a net whose run depends on what is placed
    };

    void buildPairLengths() {
        for (const Net& net : netlist.nets) {
            if (!isPair(net)) {
                lengthParts.push_back({0, {}, &net});
                continue;
            }
            const Pin* first = net.getPins()[0];
            const Pin* second = net.getPins()[1];
            if (first->getBlockIndex() != second->getBlockIndex() &&
                bodyOf(*first) != t.unplacedBody() && bodyOf(*second) != t.unplacedBody()) {
                addPairLength(*first, *second);
            }
        }
    }

    // Goes on with the last part if it can.
    void addPairLength(const Pin& first, const Pin& second) {
        if (bodyOf(second) < bodyOf(first)) {
            return addPairLength(second, first);
        }
        LengthRun run{};
        if (hasLanes[pinNumber(first)]) {
            const unsigned joint = size(t.laneJoints);
            t.laneJoints.push_back({});
            std::copy_n(keptAt(first).lanes, kFamilies, t.laneJoints.back().lanes[0]);
            std::copy_n(keptAt(second).lanes, kFamilies, t.laneJoints.back().lanes[1]);
            run = {Length::Lanes, bodyOf(first), bodyOf(second), {joint, joint + 1}};
        } else {
            const unsigned pair = size(t.sitePairs);
            t.sitePairs.push_back({keptAt(first).site, keptAt(second).site});
            run = {Length::Sites, 0, 0, {pair, pair + 1}};
        }
        const unsigned placed = placedFrom(first, second);
        if (!lengthParts.empty()) {
            auto& [lastPlaced, last, other] = lengthParts.back();
            if (other == nullptr && lastPlaced == placed && last.kind == run.kind &&
                last.first == run.first && last.second == run.second &&
                last.items.end - last.items.begin < kLongestRun) {
                ++last.items.end;
                return;
            }
        }
        lengthParts.push_back({placed, run, nullptr});
    }

    // The number of placed blocks from which on both pins are placed.
    unsigned placedFrom(const Pin& first, const Pin& second) const {
        unsigned placed = 0;
        for (const unsigned body : {bodyOf(first), bodyOf(second)}) {
            placed = std::max(placed, body == t.terminalBody() ? 0 : body + 1);
        }
        return placed;
    }

    // The nets whose length is known when that many blocks are placed.
    Range lengthRuns(unsigned placed) {
        Range runs;
        runs.begin = size(t.lengthRuns);
        for (const auto& [from, run, other] : lengthParts) {
            if (other != nullptr) {
                addOtherLength(*other, placed);
            } else if (from <= placed) {
                t.lengthRuns.push_back(run);
            }
        }
        runs.end = size(t.lengthRuns);
        return runs;
    }

    // Nets between pins of the same index have no length.
    Range lengthBundles(unsigned placed) {
        Range bundles;
        bundles.begin = size(t.lengthBundles);
        for (const PairGroup& group : groups) {
            if (group.byLanes && group.firstIndex != group.secondIndex &&
                isPlaced(group.first, placed) && isPlaced(group.second, placed)) {
                t.lengthBundles.push_back(group.bundle);
            }
        }
        bundles.end = size(t.lengthBundles);
        return bundles;
    }

    void addOtherLength(const Net& net, unsigned placed) {
        if (!isSpread(net, placed)) {
            return;
        }
        LengthRun run{};
        if (isPlacedAsPair(net, placed)) {
            run.kind = Length::Sites;
            run.items = {size(t.sitePairs), size(t.sitePairs) + 1};
            t.sitePairs.push_back({keptAt(*net.getPins()[0]).site, keptAt(*net.getPins()[1]).site});
        } else {
            run.items.begin = size(t.siteLists);
            for (const Pin* pin : net.getPins()) {
                if (isPlaced(bodyOf(*pin), placed)) {
                    t.siteLists.push_back(keptAt(*pin).site);
                }
            }
            run.items.end = size(t.siteLists);
        }
        t.lengthRuns.push_back(run);
    }

    // At least two pins are placed, and not all on one block. Of a terminal that comes first only
    // the index counts, on purpose.
    bool isSpread(const Net& net, unsigned placed) const {
        const Pin* first = nullptr;
        for (const Pin* pin : net.getPins()) {
            if (!isPlaced(bodyOf(*pin), placed)) {
                continue;
            }
            if (first == nullptr) {
                first = pin;
            } else if (pin->getBlockIndex() != first->getBlockIndex() ||
                       (pin->isTerminal() && !isPlacedAsPair(net, placed))) {
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
    std::vector<std::vector<const Pin*>> bodyPins;
    std::vector<bool> hasLanes;  // by pin
    std::vector<PairGroup> groups;
    std::vector<std::vector<unsigned>> groupsOfBody;
    std::vector<const Net*> otherNets;  // all but pairs
    std::vector<std::vector<const Net*>> otherNetsOfBlock;
    std::vector<LengthPart> lengthParts;  // in the order of the nets
};

AlignmentTables::AlignmentTables(const Netlist& netlist, unsigned numBlocks)
    : numBlocks(numBlocks) {
    Builder(*this, netlist).build();
}

void AlignmentTables::checkPlacedCounts(unsigned placed) const {
    Net::checkPlacedNum(fullestNets[placed].degree, fullestNets[placed].placedPins);
}

}  // namespace korvel
