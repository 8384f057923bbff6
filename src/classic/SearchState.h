// What the workers of one search share. Every member names its guard, and a thread that holds one
// of these mutexes takes no other, so there is no order of locking to remember. What is read
// without its guard is Relaxed, and says why a stale value does no harm.
//
// Outside of this struct the workers share only what they do not change (SearchTables, and the
// engine's netlist, tables and settings), the engine's report stream (bestMutex), the counter of
// families in BBNode.cpp (atomic) and the observer, which guards itself and is called without a
// lock.
//
// Open nodes are on the shared stack or in the hands of a worker that is counted in activeWorkers:
// a worker counts itself before it takes a node and takes itself off after its children are on the
// shared stack. So whoever finds the shared stack empty and nobody counted, with the stack locked,
// knows that the search is over.
#pragma once

#include <cstdint>
#include <limits>
#include <mutex>
#include <vector>

#include "base/Relaxed.h"
#include "classic/node/BBNode.h"
#include "classic/node/NodeStack.h"

namespace korvel {

// Counters of a search, kept by each worker for itself and added up when it ends.
struct SearchCounters {
    explicit SearchCounters(unsigned levelCount)
        : prunedByBound(levelCount, 0), cutAtBranching(levelCount, 0) {}

    // Nodes taken from any stack, or rejected before they were put on one.
    std::uint64_t expandedNodes = 0;
    std::uint64_t sortedNodes = 0;              // of them, block-complete ones without a cycle
    double closedShare = 0.0;                   // of the tree: the shares of nodes without children
    std::vector<std::uint64_t> prunedByBound;   // nodes rejected, by level - 1
    std::vector<std::uint64_t> cutAtBranching;  // children cut by their bound, by parent level - 1

    void add(const SearchCounters& other);
};

// Requests to end a search before its tree is exhausted. Any thread may read and set them, without
// a lock: who reads a stale false works on one more node.
struct StopFlags {
    Relaxed<bool> run{false};   // the run is to end; never cleared
    Relaxed<bool> pass{false};  // the pass is to end; the main thread clears it before the next one

    bool isSet() const { return run.load() || pass.load(); }
};

struct SearchState {
    // The flags, which outlive the search, are the engine's.
    SearchState(unsigned levelCount, float bestWL, StopFlags& stop)
        : levelCount(levelCount), stop(stop), bestWL(bestWL), counters(levelCount) {}

    // Depth of the complete nodes: a decision per block for its orientation and one for its
    // relation to each earlier block.
    const unsigned levelCount;

    StopFlags& stop;

    // Wirelength of the best complete node, or what is to be beaten. Written under bestMutex; read
    // freely as a bound: a stale value is larger and only prunes less.
    Relaxed<float> bestWL;
    BBNode bestNode;  // bestMutex; empty until a complete node is found
    std::mutex bestMutex;

    NodeStack sharedStack;  // stackMutex
    // Written under stackMutex; read freely to see whether locking it is worth while.
    Relaxed<bool> sharedStackEmpty{true};
    std::mutex stackMutex;

    // Workers that hold or are about to take nodes. Written under activeMutex; read freely, and
    // once more with the stack locked to find the end.
    Relaxed<unsigned> activeWorkers{0};
    std::mutex activeMutex;

    // A worker waits for nodes. Written under flagMutex; read freely: a stale value only delays the
    // sharing.
    Relaxed<bool> shareRequest{false};
    std::mutex flagMutex;

    SearchCounters counters;  // countersMutex; complete after the join
    std::mutex countersMutex;
};

}  // namespace korvel
