// A pass's search from the engine's side: what it is given, and what becomes of its result.

#include <chrono>
#include <cmath>
#include <limits>
#include <sstream>

#include "classic/Placer.h"

namespace korvel {

namespace {

constexpr double kNoBound = 0.0001;

}  // namespace

void Placer::BandB() {
    banner("==   Start B&B   ==");
    // Stages are not bounded by the one before, which placed a block less.
    const bool hasBound = !stageMode && std::fabs(initWL) > kNoBound;
    if (hasBound) {
        out << "Initial WL: " << initWL << std::endl << std::endl;
    }
    out << numThreads << " concurrent threads are used" << std::endl << std::endl;

    netlist.unplaceAllNets();
    const SearchTables& shared = prepareTables();
    Search search(searchSetting(), shared, hasBound ? initWL : std::numeric_limits<float>::max(),
                  stop, observer, out);
    runSearch(search);
    bestNode = search.getBestNode();
    searchCounters = search.getCounters();

    finishSearch(shared.alignment);
    reportSearch();
    banner("===   End B&B   ===");
}

// The order of the blocks does not change from the initial to the main pass.
const SearchTables& Placer::prepareTables() {
    if (searchTables == nullptr || searchTables->alignment.numBlocks != numBlocks) {
        searchTables = std::make_unique<const SearchTables>(netlist, numBlocks, area());
    }
    return *searchTables;
}

SearchSetting Placer::searchSetting() const {
    return {.netlist = netlist,
            .numBlocks = numBlocks,
            .bounds = tables,
            .previous = previousStage,
            .hasTerminals = numTerms != 0,
            .areaConst = params.getAreaConst(),
            .area = area()};
}

void Placer::runSearch(Search& search) {
    const auto start = std::chrono::steady_clock::now();
    search.run(numThreads);
    if (statsOut != nullptr) {
        const std::string pass = stageMode          ? std::to_string(numBlocks) + " blocks"
                                 : initialPlacement ? "initial"
                                                    : "main";
        printSearchStats(*statsOut, pass, search.getCounters(),
                         std::chrono::steady_clock::now() - start);
    }
}

bool Placer::estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const {
    return NodeEstimator(params.getAreaConst(), area()).estimateNode(node, bestWL, worker);
}

void Placer::branch(NodeStack& stack, float bestWL, SearchWorker& worker) const {
    Branching(searchSetting()).branch(stack, bestWL, worker);
}

// Brings the netlist to the best placement, and measures it.
void Placer::finishSearch(const AlignmentTables& alignment) {
    bestNode.updateSizes();
    WorkingPlacement placement(alignment);
    bestNode.placeAndAlign(placement, params.getAreaConst(), area());
    placement.applyTo(netlist);
    if (initialPlacement) {
        return;  // keeps the wirelength of the search, without the nets on one die
    }
    if (plot) {
        plotUncomPlacementBlueGrayOrange(bestNode, "bestnode");
    }
    bestNode.wirelength = 0.0F;
    for (Net& net : netlist.nets) {
        bestNode.wirelength += net.calcCompleteHPWL();
    }
}

void Placer::reportSearch() {
    // A stage that was ended too early to find anything leaves the decisions of the one before.
    if (stageMode && (bestNode.numBlocks != 0 || !stop.isSet())) {
        previousStage.bestNode = bestNode;
    }
    out << std::endl
        << (initialPlacement ? "initWL found (w/o one-die nets): " : "bestBBNode WL (all nets): ")
        << bestNode.wirelength << std::endl
        << std::endl
        << "bestBBNode width: " << bestNode.width << std::endl
        << "bestBBNode hight: " << bestNode.height << std::endl;
    bestNode.printPlacement(netlist, out);

    // What was to be beaten is so still, if nothing was found.
    if (initialPlacement && bestNode.numBlocks != 0) {
        initWL = bestNode.wirelength;
    }
    std::ostringstream piece;
    piece << (initialPlacement ? " || initWL: " : " || bestWL: ") << bestNode.wirelength;
    writeStatistics(piece.str());
}

}  // namespace korvel
