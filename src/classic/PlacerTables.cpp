// The pre-calculation: what two blocks, or a block and the terminals, cost at the least. Trials
// place blocks in the netlist, ask the nets for the best shift and measure; every trial ends with
// all nets unplaced, and the block positions that it leaves mean nothing.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "base/Invariant.h"
#include "classic/Placer.h"
#include "classic/alignment/StepVotes.h"
#include "classic/netlist/BoundingBox.h"

namespace korvel {

namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr unsigned kFewBlocks = 8;
constexpr std::array<Orient, kUnmirroredOrients> kOrients = {Orient::N, Orient::E, Orient::S,
                                                             Orient::W};
constexpr std::array<Topology, 4> kTopologies = {Topology::L, Topology::R, Topology::A,
                                                 Topology::B};

std::vector<unsigned> terminalNets(const Netlist& netlist, unsigned block) {
    std::vector<unsigned> termNets;
    for (const unsigned index : netlist.blocks[block].getNetsIndexes()) {
        if (netlist.nets[index].getTermNum() != 0) {
            termNets.push_back(index);
        }
    }
    return termNets;
}

// How many blocks have a pin on each net.
std::vector<unsigned> countBlocks(const std::vector<Net>& nets) {
    std::vector<unsigned> counts;
    std::vector<unsigned> blocks;
    for (const Net& net : nets) {
        blocks.clear();
        for (const Pin* pin : net.getPins()) {
            if (!pin->isTerminal()) {
                blocks.push_back(pin->getBlockIndex());
            }
        }
        std::sort(blocks.begin(), blocks.end());
        counts.push_back(
            static_cast<unsigned>(std::unique(blocks.begin(), blocks.end()) - blocks.begin()));
    }
    return counts;
}

// Trials of two blocks side by side. Only their common nets matter, and of these only the pins on
// the two blocks. But the very first shift is still looked for among all that the pass before has
// left in place, on purpose.
class PairTrials {
public:
    PairTrials(Netlist& netlist, unsigned numBlocks, bool initialPlacement)
        : netlist(netlist),
          numBlocks(numBlocks),
          initialPlacement(initialPlacement),
          netBlocks(countBlocks(netlist.nets)),
          pinBlocks(netlist.pins.size(), kNoBlock) {
        for (unsigned block = 0; block < netlist.blocks.size(); ++block) {
            for (const Pin* pin : netlist.blocks[block].getPins()) {
                pinBlocks[pin - netlist.pins.data()] = block;
            }
        }
    }

    // The next pair is the first of all.
    bool isFirst() const { return !isCleared; }

    // The pair that the following trials are about: i left of j.
    void start(unsigned i, unsigned j) {
        first = i;
        second = j;
        pins.clear();
        nets.clear();
        for (const unsigned index : commonNets(netlist.blocks[i], netlist.blocks[j])) {
            addNet(netlist.nets[index]);
        }
    }

    // No common net goes on to other blocks, so none is discounted.
    bool isWhole() const {
        return std::all_of(nets.begin(), nets.end(),
                           [](const CommonNet& net) { return net.isComplete; });
    }

    // The cost of the first block immediately left of the second one, which is shifted to where
    // their common nets want it.
    float cost(Orient leftOrient, Orient rightOrient) {
        spots[kLeftBlock] = {{}, orientIndex(leftOrient)};
        spots[kRightBlock] = {{}, orientIndex(rightOrient)};
        const float shift = wantedShift();
        if (!isCleared) {
            netlist.unplaceAllNets();
            isCleared = true;
            start(first, second);
        }
        // Neither block gets a negative coordinate.
        const Block& left = netlist.blocks[first];
        const float width = keepsWidthHorizontal(leftOrient) ? left.getWidth() : left.getHeight();
        spots[kLeftBlock].corner = {0.0F, shift < 0 ? -shift : 0.0F};
        spots[kRightBlock].corner = {width, shift < 0 ? 0.0F : shift};
        float sum = 0.0F;
        for (const CommonNet& net : nets) {
            sum += costOf(net);
        }
        return sum;
    }

private:
    static constexpr unsigned kNoBlock = ~0U;

    // What a pin moves with. All else stays where it is.
    enum Side : unsigned { kElsewhere, kLeftBlock, kRightBlock, kSides };
    struct Spot {
        Point corner;
        unsigned orient = 0;
    };
    struct CommonPin {
        Side side;
        bool shifted;                                  // goes by the index of the shifted block
        std::array<Point, kUnmirroredOrients> places;  // from the corner
    };
    struct CommonNet {
        std::size_t begin;  // of pins
        std::size_t end;
        bool isPair;  // of two pins
        bool isComplete;
        double discount;  // of a net that goes on to other blocks
        float divisor;    // of one that does not
    };

    Side sideOf(const Pin& pin) const {
        const unsigned block = pinBlocks[&pin - netlist.pins.data()];
        return block == first ? kLeftBlock : block == second ? kRightBlock : kElsewhere;
    }

    void addNet(const Net& net) {
        const std::size_t begin = pins.size();
        const unsigned degree = net.getDeclaredDegree();
        unsigned placed = net.getPlacedPinsNum();  // terminals included
        for (const Pin* pin : net.getPins()) {
            const Side side = sideOf(*pin);
            if (side != kElsewhere) {
                addPin(*pin, side);
                ++placed;
            } else if (pin->isPlaced() && !pin->isTerminal()) {
                addPin(*pin, side);
            }
        }
        if (isCleared) {
            Net::checkPlacedNum(degree, placed);
        }
        const bool isComplete = placed >= degree;
        nets.push_back({begin, pins.size(), placed == 2 && degree == 2, isComplete,
                        isComplete ? 1.0 : discountOf(net),
                        static_cast<float>(net.getTermNum() + 1)});
    }

    void addPin(const Pin& pin, Side side) {
        CommonPin& known = pins.emplace_back();
        known.side = side;
        known.shifted = pin.getBlockIndex() == second;
        for (const Orient orient : kOrients) {
            known.places[orientIndex(orient)] =
                side == kElsewhere ? pin.getCoord() : pin.placeInBlock(orient);
        }
    }

    // A net that goes on to other blocks counts in part: they will pay for it too. The factors are
    // tuned.
    double discountOf(const Net& net) const {
        const unsigned mean = (netBlocks[net.getIndex()] + first) / 2;  // rounded down, on purpose
        double exponent = mean;
        if (numBlocks <= kFewBlocks) {
            exponent *= 10.0 / numBlocks;
        }
        return std::pow(net.getTermNum() != 0 ? 0.7 : 0.75, exponent);
    }

    Point coordOf(const CommonPin& pin) const {
        const auto& [corner, orient] = spots[pin.side];
        const Point place = pin.places[orient];
        return {corner.x + place.x, corner.y + place.y};
    }

    // How far up the second block should go.
    float wantedShift() {
        votes.clear(nets.size());
        for (const CommonNet& net : nets) {
            if (net.isPair) {
                votes.add(adviceOfPair(net));
            } else {
                votes.addWithFree(adviceOfOther(net));
            }
        }
        return votes.step(kY, Middle::Lower);
    }

    offsetCalcReturn adviceOfPair(const CommonNet& net) const {
        const CommonPin& a = pins[net.begin];
        const CommonPin& b = pins[net.begin + 1];
        const Quad offset = quadOf(coordOf(b)) - quadOf(coordOf(a));
        return a.shifted || b.shifted ? adviceForPair(a.shifted ? offset : -offset)
                                      : adviceToStay();
    }

    offsetCalcReturn adviceOfOther(const CommonNet& net) const {
        NetScan scan;
        bool hasOther = false;
        for (std::size_t p = net.begin; p < net.end; ++p) {
            if (pins[p].shifted) {
                scan.addOwn(quadOf(coordOf(pins[p])));
            } else {
                scan.addOther(quadOf(coordOf(pins[p])));
                hasOther = true;
            }
        }
        return hasOther ? scan.advice() : offsetCalcReturn{};
    }

    float costOf(const CommonNet& net) const {
        const float length = lengthOf(net);
        if (net.isComplete) {
            return length / net.divisor;
        }
        const double discounted = length * net.discount;
        return static_cast<float>(initialPlacement ? discounted * 2.4 : discounted);
    }

    float lengthOf(const CommonNet& net) const {
        if (net.isPair) {
            const Point a = coordOf(pins[net.begin]);
            const Point b = coordOf(pins[net.begin + 1]);
            return std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
        }
        BoundingBox box;
        for (std::size_t p = net.begin; p < net.end; ++p) {
            box.add(coordOf(pins[p]));
        }
        return box.widthPlusHeight();
    }

    Netlist& netlist;
    unsigned numBlocks;
    bool initialPlacement;
    bool isCleared = false;
    std::vector<unsigned> netBlocks;  // blocks with a pin on the net, by net
    std::vector<unsigned> pinBlocks;  // by pin of the netlist
    unsigned first = 0;
    unsigned second = 0;
    std::array<Spot, kSides> spots;
    std::vector<CommonPin> pins;
    std::vector<CommonNet> nets;
    StepVotes votes;
};

// Trials of one block against the terminals.
class TerminalTrials {
public:
    TerminalTrials(Netlist& netlist, unsigned numBlocks, bool areaConst, Area area)
        : netlist(netlist), numBlocks(numBlocks), areaConst(areaConst), area(area) {}

    // The cost of block b at the origin, moved to where its nets to terminals want it.
    float cost(unsigned b, Orient orient, const std::vector<unsigned>& termNets) {
        Block& block = netlist.blocks[b];
        block.updateBlockState({}, orient, false);
        Point shift = shiftOf(b, termNets);
        if (areaConst) {
            shift = keepInArea(shift, block);
        }
        if (std::fabs(shift.x) > 0.001 || std::fabs(shift.y) > 0.001) {
            block.moveBlock(shift);
        }
        // Later blocks find more of their nets completed by others.
        const float factor =
            b == 0 ? 0.6F : static_cast<float>(std::pow(0.6, (10.0 / numBlocks) * (b + 1)));
        float sum = 0.0F;
        for (const unsigned index : termNets) {
            sum += netlist.nets[index].calcTermFCHPWL(factor);
        }
        netlist.unplaceAllNets();
        return sum;
    }

private:
    Point shiftOf(unsigned b, const std::vector<unsigned>& termNets) {
        votes.clear(termNets.size());
        for (const unsigned index : termNets) {
            const Net& net = netlist.nets[index];
            const unsigned placed = net.getPlacedPinsNum();
            // Of a late block only complete nets take part.
            if (placed > 1 && placed != net.getTermNum() &&
                (placed == net.getDeclaredDegree() || b < 0.4 * numBlocks)) {
                votes.addWithFree(net.combinedOffsetsToTerms());
            }
        }
        return votes.step(Middle::Upper);
    }

    // Cuts a shift at the area's right and top edges; a shift left and down is dropped. A cut shift
    // is not looked at again.
    Point keepInArea(Point shift, const Block& block) const {
        if (shift.x < 0 && shift.y < 0) {
            return {};
        }
        return {keepInside(shift.x, block.getWidthOriented(), area.width),
                keepInside(shift.y, block.getHeightOriented(), area.height)};
    }

    static float keepInside(float shift, float extent, float areaExtent) {
        if (shift < 0) {
            return 0.0F;
        }
        return shift + extent > areaExtent ? areaExtent - extent : shift;
    }

    Netlist& netlist;
    unsigned numBlocks;
    bool areaConst;
    Area area;
    StepVotes votes;
};

// The costs of a pair without discount are the same in every pass, but for that which begins a
// pass.
PairCosts costsOf(PairTrials& trials, unsigned i, unsigned j,
                  std::map<std::pair<unsigned, unsigned>, PairCosts>& known) {
    const bool isFirst = trials.isFirst();
    if (const auto found = known.find({i, j}); found != known.end() && !isFirst) {
        return found->second;
    }
    trials.start(i, j);
    PairCosts costs;
    for (const Orient oi : kOrients) {
        for (const Orient oj : kOrients) {
            costs[orientIndex(oi)][orientIndex(oj)] = trials.cost(oi, oj);
        }
    }
    if (trials.isWhole() && !isFirst) {
        known.emplace(std::pair(i, j), costs);
    }
    return costs;
}

}  // namespace

void Placer::calcMinDistancesCombined() {
    out << "Forward Wirelength Checking:\tCalculation of minimal pairwise blocks distances"
        << std::endl;
    PairTrials trials(netlist, numBlocks, initialPlacement);
    tables.resize(numBlocks);
    for (unsigned i = 1; i < numBlocks; ++i) {
        tables.levelMinDistance.push_back(0.0F);  // for the terminal distance
        for (unsigned j = 0; j < i; ++j) {
            if (stop.isSet()) {
                tables.levelMinDistance.push_back(0.0F);  // no search will ask
                continue;
            }
            const PairCosts costs = costsOf(trials, i, j, knownPairCosts);
            float best = kLargest;
            for (const Orient oi : kOrients) {
                for (const Orient oj : kOrients) {
                    const float distance = costs[orientIndex(oi)][orientIndex(oj)];
                    tables.updateMinDistances(i, j, oi, oj, distance);
                    best = std::min(best, distance);
                }
            }
            tables.levelMinDistance.push_back(best);
        }
    }
    out << "Remaining Distances:\t\tUpdate remaining distances based on Forward Checking "
           "information"
        << std::endl;
    tables.levelMinDistance.push_back(0.0F);
    tables.sumRemainingDistances();
    KORVEL_INVARIANT(tables.minLevelRemainingDist.size() == (numBlocks * (numBlocks + 1) / 2),
                     "minLevelRemainingDist.size() == (numBlocks*(numBlocks+1)/2)");
}

void Placer::minimalOrintationalPairsCalc() {
    out << "Refinement of Rem. Distances:\tCalculation of minimal distances for orientation pairs"
        << std::endl;
    for (unsigned i = 1; i < numBlocks; ++i) {
        for (unsigned j = 0; j < i; ++j) {
            for (const Orient oi : kOrients) {
                for (const Orient oj : kOrients) {
                    float least = kLargest;
                    for (const Topology topology : kTopologies) {
                        least = std::min(least, tables.getMinDistances(i, j, oi, oj, topology));
                    }
                    tables.setMinOrientPairDist(i, j, oi, oj, least);
                }
            }
        }
    }
}

void Placer::calcMinTermDistCombined() {
    out << "Terminal Handling:\t\tCalculation of minimal distance between each block and terminals"
        << std::endl;
    TerminalTrials trials(netlist, numBlocks, params.getAreaConst(), area());
    tables.minTermDist.clear();
    tables.minTermDistBlock.clear();
    netlist.unplaceAllNets();
    for (unsigned b = 0; b < numBlocks; ++b) {
        const std::vector<unsigned> termNets = terminalNets(netlist, b);
        float best = termNets.empty() ? 0.0F : kLargest;
        for (const Orient orient : kOrients) {
            const float distance = termNets.empty() ? 0.0F : trials.cost(b, orient, termNets);
            tables.minTermDist.push_back(distance);
            best = std::min(best, distance);
        }
        tables.minTermDistBlock.push_back(best);
    }
}

void Placer::updateRemainingDistances() {
    out << "Ramainig Distances:\t\tUpdate remaining distances with data from Terminal Handling"
        << std::endl;
    // Block 0 has no row: it is placed first.
    for (unsigned m = 1; m < numBlocks; ++m) {
        tables.levelMinDistance[BoundTables::rowStart(m)] = tables.minTermDistBlock[m];
    }
    tables.sumRemainingDistances();
}

}  // namespace korvel
