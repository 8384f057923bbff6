// What the workers of one search share, and every access to it.
//
// Work is shared on demand. Nodes of the first levels go through the shared stack, so that all
// workers find work early; from then on a worker keeps its subtree to itself, without locks. A
// worker that finds the shared stack empty asks for nodes, and the next worker that looks hands all
// of its open ones over.
//
// The end: open nodes are on the shared stack or in the hands of a worker that is counted in
// activeWorkers. A worker counts itself before it takes a node, and takes itself off after the
// children are on the shared stack. So whoever finds the shared stack empty and nobody counted,
// with the stack locked, knows that the search is over.
//
// Locks: every member names its guard, and a thread that holds one of these mutexes takes no other,
// so there is no order of locking to remember. What is read without its guard is Relaxed, and says
// why a stale value does no harm. Outside of this class workers share only what they do not change
// (SearchTables and SearchSetting), the engine's report stream (bestMutex) and the observer, which
// guards itself and is called without a lock.
#pragma once

#include <iosfwd>
#include <mutex>

#include "base/Relaxed.h"
#include "classic/node/NodeStack.h"
#include "classic/search/SearchStats.h"

namespace korvel {

// Requests to end a search before its tree is exhausted. Any thread may read and set them, without
// a lock: who reads a stale false works on one more node.
struct StopFlags {
    Relaxed<bool> run{false};   // the run is to end; never cleared
    Relaxed<bool> pass{false};  // the pass is to end; the main thread clears it before the next one

    bool isSet() const { return run.load() || pass.load(); }
};

class SearchState {
public:
    // With the root as the only open node. The flags, which outlive the search, are the engine's;
    // `bestWL` is the wirelength that is to be beaten.
    SearchState(unsigned levelCount, float bestWL, StopFlags& stop);

    // Depth of the complete nodes: a decision per block for its orientation and one for its
    // relation to each earlier block.
    const unsigned levelCount;
    StopFlags& stop;

    // --- The best node ------------------------------------------------------------------------

    // As a bound; may be stale.
    float getBestWL() const { return bestWL.load(); }
    // Takes the complete node as the best if it is shorter, and reports it; false if it is not.
    bool improve(const BBNode& node, std::ostream& report);

    // --- Open nodes ---------------------------------------------------------------------------

    // Waits for a node on the shared stack and counts the worker in; false at the end of the
    // search.
    bool takeNode(BBNode& node);
    // Puts the node on the shared stack and lets `branch` replace it there by its children.
    template <typename Branch>
    void branchShared(const BBNode& node, const Branch& branch) {
        const std::lock_guard lock(stackMutex);
        sharedStack.push(node);
        branch(sharedStack);
        sharedStackEmpty.store(sharedStack.empty());
    }
    // The worker has no open node any more.
    void countOut();

    // Another worker waits for nodes.
    bool isShareRequested() const { return shareRequest.load(); }
    // Hands all of a worker's open nodes over, unless others still have some to take.
    void shareOwnStack(NodeStack& ownStack);

    // --- Counters, and what is left after the join ---------------------------------------------

    void addCounters(const SearchCounters& ofWorker);
    const SearchCounters& getCounters() const { return counters; }
    // Empty if no complete node was found.
    const BBNode& getBestNode() const { return bestNode; }

private:
    void countIn();
    bool popShared(BBNode& node);
    bool isOver();
    void requestShare(bool wanted);

    // Wirelength of the best complete node, or what is to be beaten. Written under bestMutex; read
    // freely: a stale value is larger and only prunes less.
    Relaxed<float> bestWL;
    BBNode bestNode;  // bestMutex
    std::mutex bestMutex;

    NodeStack sharedStack;  // stackMutex
    // Written under stackMutex; read freely to see whether locking it is worth while: a stale value
    // costs one lock in vain or one short wait.
    Relaxed<bool> sharedStackEmpty{false};
    std::mutex stackMutex;

    // Workers that hold or are about to take nodes. Written under activeMutex; read freely: a
    // stale value delays the end by a wait, since it is read once more with the stack locked.
    Relaxed<unsigned> activeWorkers{0};
    std::mutex activeMutex;

    // A worker waits for nodes. Written under flagMutex; read freely: a stale value only delays the
    // sharing.
    Relaxed<bool> shareRequest{false};
    std::mutex flagMutex;

    SearchCounters counters;  // countersMutex
    std::mutex countersMutex;
};

}  // namespace korvel
