// The pre-calculation: fills the tables of estimates by trials of two blocks, and of a block and
// the terminals.

#include <algorithm>
#include <limits>

#include "base/Invariant.h"
#include "classic/PairTrials.h"
#include "classic/Placer.h"
#include "classic/TerminalTrials.h"

namespace korvel {

namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
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
            trials.start(i, j);
            float best = kLargest;
            for (const Orient oi : kOrients) {
                for (const Orient oj : kOrients) {
                    const float distance = trials.cost(oi, oj);
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
