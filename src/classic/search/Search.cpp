#include "classic/search/Search.h"

#include <system_error>
#include <thread>
#include <vector>

namespace korvel {

namespace {

// Nodes below this level are expanded on the shared stack.
constexpr unsigned kSharedLevels = 3;
// Nodes between two words to the observer: a rare look at the clock, and no long wait for a stop.
constexpr std::uint64_t kNodesBetweenWords = 512;

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

Search::Search(const SearchSetting& setting, const SearchTables& tables, float bestWL,
               StopFlags& stop, SearchObserver* observer, std::ostream& report)
    : tables(tables),
      estimator(setting.areaConst, setting.area),
      branching(setting),
      observer(observer),
      report(report),
      state(setting.numBlocks * (setting.numBlocks + 1) / 2, bestWL, stop) {}

void Search::run(unsigned numThreads) {
    for (std::thread& worker : startWorkers([this] { BBcore(); }, numThreads)) {
        worker.join();
    }
}

void Search::BBcore() {
    SearchWorker worker(tables, state.levelCount);
    while (state.takeNode(worker.node)) {
        if (worker.node.blockLevel < kSharedLevels) {
            expandShared(worker);
        } else {
            worker.ownStack.push(worker.node);
            workOwnStack(worker);
        }
        state.countOut();
    }
    tellObserver(worker);
    state.addCounters(worker.counters);
}

void Search::expandShared(SearchWorker& worker) {
    if (isKept(worker, worker.node)) {
        state.branchShared(worker.node, [&](NodeStack& sharedStack) {
            branching.branch(sharedStack, state.getBestWL(), worker);
        });
    }
}

// Works on the own stack until it is empty, or handed over to a worker that waits. A single node
// is not worth handing over.
void Search::workOwnStack(SearchWorker& worker) {
    while (!worker.ownStack.empty() && !state.stop.isSet()) {
        if (state.isShareRequested() && worker.ownStack.size() != 1) {
            state.shareOwnStack(worker.ownStack);
            continue;
        }
        if (isKept(worker, worker.ownStack.top())) {
            branching.branch(worker.ownStack, state.getBestWL(), worker);
        } else {
            worker.ownStack.pop();
        }
    }
}

// Tests a node. A complete one that passes may be the best, and is not branched.
bool Search::isKept(SearchWorker& worker, BBNode& node) {
    ++worker.counters.expandedNodes;
    if (worker.counters.expandedNodes - worker.toldNodes >= kNodesBetweenWords) {
        tellObserver(worker);
    }
    if (!estimator.estimateNode(node, state.getBestWL(), worker)) {
        ++worker.counters.prunedByBound[node.blockLevel - 1];
        worker.counters.closedFraction += node.treeFraction;
        return false;
    }
    if (node.blockLevel == state.levelCount) {
        updateBest(node, worker.placement);
        worker.counters.closedFraction += node.treeFraction;
        return false;
    }
    return true;
}

// No lock is held while the observer is called: others need not wait, and it may take locks of its
// own.
void Search::updateBest(const BBNode& node, const WorkingPlacement& placement) {
    if (state.improve(node, report) && observer != nullptr) {
        observer->improved(node, placement);
    }
}

void Search::tellObserver(SearchWorker& worker) {
    const std::uint64_t nodes = worker.counters.expandedNodes - worker.toldNodes;
    const double fraction = worker.counters.closedFraction - worker.toldFraction;
    worker.toldNodes += nodes;
    worker.toldFraction += fraction;
    if (observer != nullptr && !observer->worked(nodes, fraction)) {
        state.stop.pass.store(true);
    }
}

}  // namespace korvel
