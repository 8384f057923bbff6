// The open parts of a tree, shared by all threads that work on it: the most promising one is handed
// out first, so the lower bound of the whole rises. Any thread may call anything: `mutex` guards
// all members.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

#include "proof/ProofNode.h"

namespace korvel {

class ProofPool {
public:
    ProofPool(const ProofNode& root, unsigned workers);

    // The open node with the lowest bound; waits while there is none but others may hand some back.
    // Nothing when the tree is exhausted or closed.
    std::optional<ProofNode> take(unsigned worker);
    // Ends what was taken: the nodes are what is still open of it.
    void giveBack(unsigned worker, const std::vector<ProofNode>& nodes);

    // Sends everybody home.
    void close();

    // No open node is below this; infinity if there is none.
    double lowestOpen() const;
    // Whether so much is open that what is taken had better be finished than handed back.
    bool isCrowded() const;

private:
    static bool comesLater(const ProofNode& a, const ProofNode& b) { return a.bound > b.bound; }

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<ProofNode> open;  // a heap
    std::vector<double> busy;     // by worker: bound of what it works on; infinity: nothing
    bool closed = false;
};

}  // namespace korvel
