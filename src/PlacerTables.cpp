// The pre-calculation: what two blocks, or a block and the terminals, cost at the least. Trials
// place blocks in the netlist, ask the nets for the best shift and measure; every trial ends with
// all nets unplaced, and the block positions that it leaves mean nothing.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <set>

#include "Invariant.h"
#include "Placer.h"
#include "StepVotes.h"

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

// How many blocks have a pin on the net.
unsigned countBlocks(const Net& net) {
    std::set<unsigned> blocks;
    for (const Pin* pin : net.getPins()) {
        if (!pin->isTerminal()) {
            blocks.insert(pin->getBlockIndex());
        }
    }
    return static_cast<unsigned>(blocks.size());
}

// Trials of two blocks side by side.
class PairTrials {
public:
    PairTrials(Netlist& netlist, unsigned numBlocks, bool initialPlacement)
        : netlist(netlist), numBlocks(numBlocks), initialPlacement(initialPlacement) {
        for (const Net& net : netlist.nets) {
            netBlocks.push_back(countBlocks(net));
        }
    }

    // The cost of block i immediately left of block j, which is shifted to where their common nets
    // want it.
    float cost(unsigned i, unsigned j, Orient oi, Orient oj, const std::vector<unsigned>& common) {
        Block& left = netlist.blocks[i];
        Block& right = netlist.blocks[j];
        left.updateBlockState({}, oi, false);
        right.updateBlockState({}, oj, false);
        const float shift = shiftOf(j, common);
        unplace(left, right);

        // Neither block gets a negative coordinate.
        left.updateBlockState({0.0F, shift < 0 ? -shift : 0.0F}, oi, false);
        right.updateBlockState({left.getWidthOriented(), shift < 0 ? 0.0F : shift}, oj, false);
        float sum = 0.0F;
        for (const unsigned index : common) {
            sum += netCost(netlist.nets[index], i);
        }
        unplace(left, right);
        return sum;
    }

private:
    // A trial touches no other nets; only the first one may find some placed, by the last pass.
    void unplace(const Block& left, const Block& right) {
        if (!clean) {
            netlist.unplaceAllNets();
            clean = true;
            return;
        }
        for (const Block* block : {&left, &right}) {
            for (const unsigned index : block->getNetsIndexes()) {
                netlist.nets[index].unplacePins();
            }
        }
    }

    float shiftOf(unsigned j, const std::vector<unsigned>& common) {
        votes.clear(common.size());
        for (const unsigned index : common) {
            const Net& net = netlist.nets[index];
            if (net.getPlacedPinsNum() > 1) {
                votes.addWithFree(net.combinedOffsetsFC(j));
            }
        }
        return votes.step(kY, Middle::Lower);
    }

    // A net that goes on to other blocks counts in part: they will pay for it too. The factors are
    // tuned.
    float netCost(Net& net, unsigned i) const {
        const float length = net.calcHPWLFwdCheck();
        float cost = length;
        if (net.getPlacedPinsNum() < net.getDeclaredDegree()) {
            const unsigned mean = (netBlocks[net.getIndex()] + i) / 2;  // rounded down, on purpose
            double exponent = mean;
            if (numBlocks <= kFewBlocks) {
                exponent *= 10.0 / numBlocks;
            }
            double discounted = length * std::pow(net.getTermNum() != 0 ? 0.7 : 0.75, exponent);
            if (initialPlacement) {
                discounted *= 2.4;
            }
            cost = static_cast<float>(discounted);
        } else if (net.getTermNum() != 0) {
            cost = length / static_cast<float>(net.getTermNum() + 1);
        }
        net.resetPlacedPinsNum();
        return cost;
    }

    Netlist& netlist;
    unsigned numBlocks;
    bool initialPlacement;
    bool clean = false;               // no net is placed but by the trial at hand
    std::vector<unsigned> netBlocks;  // blocks with a pin on the net, by net
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

}  // namespace

void Placer::calcMinDistancesCombined() {
    out << "Forward Wirelength Checking:\tCalculation of minimal pairwise blocks distances"
        << std::endl;
    const std::vector<Block>& blocks = netlist.blocks;
    PairTrials trials(netlist, numBlocks, initialPlacement);
    tables.resize(numBlocks);
    for (unsigned i = 1; i < numBlocks; ++i) {
        tables.levelMinDistance.push_back(0.0F);  // for the terminal distance
        for (unsigned j = 0; j < i; ++j) {
            if (isStopped()) {
                tables.levelMinDistance.push_back(0.0F);  // no search will ask
                continue;
            }
            const std::vector<unsigned> common = commonNets(blocks[i], blocks[j]);
            float best = kLargest;
            for (const Orient oi : kOrients) {
                for (const Orient oj : kOrients) {
                    const float distance = trials.cost(i, j, oi, oj, common);
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
