// The branch-and-bound search. Work is shared on demand: nodes of the first levels go through the
// shared stack, so that all workers find work early; from then on a worker keeps its subtree to
// itself, without locks, and hands over all its open nodes when another one has run out.

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <sstream>
#include <system_error>
#include <thread>
#include <vector>

#include "base/Invariant.h"
#include "classic/Placer.h"
#include "classic/SearchStats.h"

namespace korvel {

namespace {

constexpr unsigned kSharedLevels = 3;
constexpr double kNoBound = 0.0001;
constexpr long kIdleWaitNanoseconds = 100'000;
// Nodes between two words to the observer: a rare look at the clock, and no long wait for a stop.
constexpr std::uint64_t kNodesBetweenWords = 512;

void sleepIdle() {
    const timespec wait{0, kIdleWaitNanoseconds};
    nanosleep(&wait, nullptr);
}

void countIn(SearchState& state) {
    const std::lock_guard lock(state.activeMutex);
    state.activeWorkers.store(state.activeWorkers.load() + 1);
}

void countOut(SearchState& state) {
    const std::lock_guard lock(state.activeMutex);
    state.activeWorkers.store(state.activeWorkers.load() - 1);
}

void requestShare(SearchState& state, bool wanted) {
    if (state.shareRequest.load() != wanted) {
        const std::lock_guard lock(state.flagMutex);
        state.shareRequest.store(wanted);
    }
}

// Conversion to float may round the bound up, and then it would be none.
float roundDown(double bound) {
    return std::nextafter(static_cast<float>(bound), 0.0F);
}

// Strictly better bounds only: a tie cannot improve the best placement.
bool isBetter(float wirelength, float remaining, float bestWL) {
    return bestWL > remaining + wirelength;
}

bool isOver(SearchState& state) {
    if (state.activeWorkers.load() != 0) {
        return false;
    }
    const std::lock_guard lock(state.stackMutex);
    return state.sharedStack.empty() && state.activeWorkers.load() == 0;
}

// Hands all of a worker's open nodes over, unless others still have some to take.
void shareOwnStack(SearchState& state, NodeStack& ownStack) {
    {
        const std::lock_guard lock(state.stackMutex);
        if (state.sharedStack.empty()) {
            state.sharedStack.swap(ownStack);
            state.sharedStackEmpty.store(false);
        }
    }
    requestShare(state, false);
}

// As many as asked for, or as the system allows; at least one.
template <typename Work>
std::vector<std::thread> startWorkers(const Work& work, unsigned number) {
    std::vector<std::thread> workers;
    try {
        while (workers.size() < number) {
            workers.emplace_back(work);
        }
    } catch (const std::system_error&) {
        if (workers.empty()) {
            throw;
        }
    }
    return workers;
}

}  // namespace

void SearchCounters::add(const SearchCounters& other) {
    expandedNodes += other.expandedNodes;
    sortedNodes += other.sortedNodes;
    closedShare += other.closedShare;
    for (std::size_t level = 0; level < prunedByBound.size(); ++level) {
        prunedByBound[level] += other.prunedByBound[level];
        cutAtBranching[level] += other.cutAtBranching[level];
    }
}

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
    SearchState state(numBlocks * (numBlocks + 1) / 2,
                      hasBound ? initWL : std::numeric_limits<float>::max(), stop);
    search(state, shared);
    bestNode = state.bestNode;
    searchCounters = state.counters;

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

void Placer::search(SearchState& state, const SearchTables& shared) {
    if (observer != nullptr) {
        observer->searchBegins();
    }
    const auto start = std::chrono::steady_clock::now();
    state.sharedStack.push(BBNode());
    state.sharedStackEmpty.store(false);
    for (std::thread& worker : startWorkers([&] { BBcore(state, shared); }, numThreads)) {
        worker.join();
    }
    if (statsOut != nullptr) {
        const std::string pass = stageMode          ? std::to_string(numBlocks) + " blocks"
                                 : initialPlacement ? "initial"
                                                    : "main";
        printSearchStats(*statsOut, pass, state.counters, std::chrono::steady_clock::now() - start);
    }
}

void Placer::BBcore(SearchState& state, const SearchTables& shared) {
    SearchWorker worker(shared, tables, state.levelCount);
    while (takeNode(state, worker.node)) {
        if (worker.node.blockLevel < kSharedLevels) {
            expandShared(state, worker);
        } else {
            worker.ownStack.push(worker.node);
            workOwnStack(state, worker);
        }
        countOut(state);
    }
    tellObserver(state.stop, worker);
    const std::lock_guard lock(state.countersMutex);
    state.counters.add(worker.counters);
}

// Waits for a node on the shared stack; false at the end of the search. A worker that gets one is
// counted in.
bool Placer::takeNode(SearchState& state, BBNode& node) {
    while (!state.stop.isSet()) {
        if (!state.sharedStackEmpty.load()) {
            countIn(state);
            {
                const std::lock_guard lock(state.stackMutex);
                if (!state.sharedStack.empty()) {
                    state.sharedStack.popInto(node);
                    state.sharedStackEmpty.store(state.sharedStack.empty());
                    return true;
                }
            }
            countOut(state);
        } else if (isOver(state)) {
            return false;
        } else {
            requestShare(state, true);
            sleepIdle();
        }
    }
    return false;
}

void Placer::expandShared(SearchState& state, SearchWorker& worker) {
    if (isKept(state, worker, worker.node)) {
        const std::lock_guard lock(state.stackMutex);
        state.sharedStack.push(worker.node);
        branch(state.sharedStack, state.bestWL.load(), worker);
        state.sharedStackEmpty.store(state.sharedStack.empty());
    }
}

// Works on the own stack until it is empty, or handed over to a worker that waits. A single node
// is not worth handing over.
void Placer::workOwnStack(SearchState& state, SearchWorker& worker) {
    while (!worker.ownStack.empty() && !state.stop.isSet()) {
        if (state.shareRequest.load() && worker.ownStack.size() != 1) {
            shareOwnStack(state, worker.ownStack);
            continue;
        }
        if (isKept(state, worker, worker.ownStack.top())) {
            branch(worker.ownStack, state.bestWL.load(), worker);
        } else {
            worker.ownStack.pop();
        }
    }
}

// Tests a node. A complete one that passes may be the best, and is not branched.
bool Placer::isKept(SearchState& state, SearchWorker& worker, BBNode& node) {
    ++worker.counters.expandedNodes;
    if (worker.counters.expandedNodes - worker.toldNodes >= kNodesBetweenWords) {
        tellObserver(state.stop, worker);
    }
    if (!estimateNode(node, state.bestWL.load(), worker)) {
        ++worker.counters.prunedByBound[node.blockLevel - 1];
        worker.counters.closedShare += node.share;
        return false;
    }
    if (node.blockLevel == state.levelCount) {
        updateBest(state, node, worker.placement);
        worker.counters.closedShare += node.share;
        return false;
    }
    return true;
}

void Placer::tellObserver(StopFlags& stop, SearchWorker& worker) {
    const std::uint64_t nodes = worker.counters.expandedNodes - worker.toldNodes;
    const double share = worker.counters.closedShare - worker.toldShare;
    worker.toldNodes += nodes;
    worker.toldShare += share;
    if (observer != nullptr && !observer->worked(nodes, share)) {
        stop.pass.store(true);
    }
}

void Placer::updateBest(SearchState& state, const BBNode& node, const WorkingPlacement& placement) {
    {
        const std::lock_guard lock(state.bestMutex);
        if (!(state.bestWL.load() > node.wirelength)) {
            return;
        }
        state.bestNode = node;
        state.bestWL.store(node.wirelength);
        out << "best solution is updated, bestWL (w/o one-die nets): " << node.wirelength
            << std::endl;
    }
    // Without the lock: others need not wait, and the observer may take locks of its own.
    if (observer != nullptr) {
        observer->improved(node, placement);
    }
}

bool Placer::estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const {
    // 1. Nothing to measure before two blocks are related.
    if (node.numBlocks < 2 || node.definedNodes == 0) {
        return true;
    }
    if (node.definedNodes > node.numBlocks - 1) {
        std::cout << "ERROR: Inadmissible value definedNodes or numBlocks // Placer::estimateNode"
                  << std::endl
                  << "definedNodes: " << node.definedNodes << std::endl
                  << "numBlocks: " << node.numBlocks << std::endl;
        std::exit(0);
    }

    // 2. Cheap tests first: a cycle in either graph, then the area.
    if (!node.sortGraphs()) {
        return false;
    }
    const bool complete = node.isBlockComplete();
    if (complete) {
        ++worker.counters.sortedNodes;
    }
    if (complete || params.getAreaConst()) {
        node.findCoords();
    }
    if (params.getAreaConst()) {
        node.updateSizes();
        if (node.width > params.getDieWidth() || node.height > params.getDieHight()) {
            return false;
        }
    }

    // 3. Only block-complete nodes pay for alignment and wirelength, and of these not the ones
    // that no alignment can save.
    const auto isTooLong = [&](float wirelength) {
        return !isBetter(wirelength, node.remaining, bestWL);
    };
    if (complete) {
        if (isHopeless(node, node.remaining, bestWL, worker)) {
            return false;
        }
        node.placeAndAlign(worker.placement, params.getAreaConst(), area());
        node.wirelength = worker.placement.partialHPWL(isTooLong);
    }
    return !isTooLong(node.wirelength);
}

bool Placer::isHopeless(const BBNode& node, float remaining, float bestWL,
                        SearchWorker& worker) const {
    if (bestWL == std::numeric_limits<float>::max() || !params.getAreaConst()) {
        return false;
    }
    const double enough = 1.0001 * (double{bestWL} - remaining);
    const LengthBound& bound = worker.tables.lengthBound;
    const float least = roundDown(bound.leastLength(node, worker.boundSpace, enough));
    return !isBetter(least, remaining, bestWL);
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
        prevBestNode = bestNode;
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
