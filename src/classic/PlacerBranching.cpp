// Branching: a kept node's children. A block gets its orientation first, then its relation to each
// earlier block, one per level. Children are tested before they are made, so that one that the
// bound cuts costs a table look-up, and one without room little more.

#include <algorithm>
#include <cstdlib>

#include "base/Invariant.h"
#include "classic/Placer.h"

namespace korvel {

namespace {

constexpr unsigned kMostChildren = 4;
constexpr float kLeastShare = 1e-30F;

// The children of one node, before they are made: what is chosen, and where they belong in the
// order of exploration.
template <typename Choice>
struct Children {
    unsigned num = 0;
    std::array<Choice, kMostChildren> choices;
    std::array<float, kMostChildren> wirelengths;
    std::array<float, kMostChildren> keys;
    std::array<bool, kMostChildren> rejected;  // has its place in the order, but is not made
    unsigned rejectedNum = 0;

    void add(Choice choice, float wirelength, float key, bool isRejected = false) {
        choices[num] = choice;
        wirelengths[num] = wirelength;
        keys[num] = key;
        rejected[num] = isRejected;
        rejectedNum += isRejected ? 1 : 0;
        ++num;
    }
    unsigned madeNum() const { return num - rejectedNum; }
    void rejectAll() {
        rejected.fill(true);
        rejectedNum = num;
    }

    // What each gets of the node's share of the tree. Nothing where it would be next to nothing:
    // the smallest numbers of all are slow to reckon with.
    float shareOfEach(float share) const {
        return share > kLeastShare ? share / static_cast<float>(num) : 0.0F;
    }
    // Part of the node's share that no child is left for.
    float closedShare(float share) const {
        return num == 0 ? share : shareOfEach(share) * static_cast<float>(rejectedNum);
    }

    // Puts the children in the place of the top node, the smallest key topmost; `make` makes each
    // out of a copy of the node.
    template <typename Make>
    void replaceTop(NodeStack& stack, const Make& make) const {
        if (madeNum() == 0) {
            stack.pop();
            return;
        }
        const std::array<unsigned, kMostChildren> order = explorationOrder();
        stack.multiplyTop(madeNum());
        unsigned depth = 0;
        for (unsigned i = 0; i < num; ++i) {
            if (!rejected[order[i]]) {
                BBNode& child = stack.fromTop(depth++);
                child.wirelength = wirelengths[order[i]];
                make(child, choices[order[i]]);
            }
        }
    }

private:
    std::array<unsigned, kMostChildren> explorationOrder() const {
        std::array<unsigned, kMostChildren> order{0, 1, 2, 3};
        switch (num) {
            case 2:
                if (keys[1] <= keys[0]) {
                    order = {1, 0};
                }
                break;
            case 3: {
                const auto three = Placer::sortThreeNodes(keys);
                std::copy(three.begin(), three.end(), order.begin());
                break;
            }
            case 4:
                order = Placer::sortFourNodes(keys);
                break;
            default:
                break;
        }
        return order;
    }
};

// Counts children that estimateNode would reject for certain, whatever the best wirelength is by
// then, as if it had. They are not made: most children have no room, and what costs most about them
// is to copy and take a node.
void countRejected(SearchCounters& counters, unsigned level, unsigned number, unsigned sorted) {
    counters.expandedNodes += number;
    counters.prunedByBound[level - 1] += number;
    counters.sortedNodes += sorted;
}

}  // namespace

void Placer::branch(NodeStack& stack, float bestWL, SearchWorker& worker) const {
    const BBNode& node = stack.top();
    if (node.isBlockComplete()) {
        branchOrientations(stack, bestWL, worker.counters);
    } else if (node.definedNodes > node.numBlocks - 1) {
        std::cout << "ERROR: Inadmissible value curBlockTotal or curBlockDef // Placer::branchingBB"
                  << std::endl
                  << "false numBlocks: " << numBlocks << std::endl;
        std::exit(0);
    } else {
        branchTopologies(stack, bestWL, worker);
    }
}

// In staged mode the levels that the previous stage covered follow its best node, where it has an
// answer.
bool Placer::isSteered(const BBNode& node) const {
    return prevNumBlocks != 0 && node.blockLevel <= prevLevels;
}

std::optional<Orient> Placer::steeredOrient(const BBNode& node, unsigned block) const {
    if (isSteered(node) && block < prevBestNode.numBlocks) {
        return prevBestNode.findPrepOrient(block);
    }
    return std::nullopt;
}

std::optional<Topology> Placer::steeredTopology(const BBNode& node, unsigned a, unsigned b) const {
    if (isSteered(node) && a < prevBestNode.numBlocks) {
        return prevBestNode.findPrepTopology(a, b);
    }
    return std::nullopt;
}

// The least that the relations of block `next`, and all later blocks, add when it takes `orient`.
float Placer::remainingDistance(const BBNode& node, unsigned next, Orient orient) const {
    float sum = tables.remainingAfter(next);
    for (unsigned j = next; j-- > 0;) {
        sum += tables.minOrientPairDist(next, j, orient, node.blocksOrients[j]);
    }
    return sum;
}

void Placer::branchOrientations(NodeStack& stack, float bestWL, SearchCounters& counters) const {
    const BBNode& node = stack.top();
    const unsigned next = node.numBlocks;
    const std::optional<Orient> steered = steeredOrient(node, next);
    Children<Orient> children;
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        const auto orient = static_cast<Orient>(o);
        if (steered && *steered != orient) {
            continue;
        }
        const float termDist = tables.minTermDist[kUnmirroredOrients * next + o];
        if (next != 0 && bestWL < termDist + remainingDistance(node, next, orient)) {
            continue;
        }
        const float wirelength = numTerms != 0 ? node.wirelength + termDist : node.wirelength;
        children.add(orient, wirelength, wirelength);
    }
    counters.closedShare += children.closedShare(node.share);
    const float share = children.shareOfEach(node.share);
    children.replaceTop(stack, [&](BBNode& child, Orient orient) {
        child.addBlock(orient, netlist);
        ++child.blockLevel;
        child.definedNodes = 0;
        child.share = share;
    });
}

void Placer::branchTopologies(NodeStack& stack, float bestWL, SearchWorker& worker) const {
    const BBNode& node = stack.top();
    const unsigned a = node.numBlocks - 1;
    const unsigned b = node.definedNodes;
    const FamilyBounds::RelationBounds& bounds = worker.familyBounds.nextRelation(node);
    const bool completes = b + 1 == a;
    const std::optional<Topology> steered = steeredTopology(node, a, b);
    Children<Topology> children;
    for (unsigned t = 0; t < static_cast<unsigned>(Topology::LAST); ++t) {
        const auto topology = static_cast<Topology>(t);
        if (steered && *steered != topology) {
            continue;
        }
        const float distance = bounds.distances[t];
        if (distance + node.wirelength + bounds.remaining > bestWL) {
            ++worker.counters.cutAtBranching[node.blockLevel - 1];
            continue;
        }
        // A relation that costs much more than the level's cheapest one is given up, although its
        // bound may still be below the best: on purpose, this is what makes the search fast.
        if (distance - tables.levelMinDistance[node.blockLevel - 1] > bestWL * levelCutFactor) {
            continue;
        }
        const float wirelength = node.wirelength + distance;
        const bool cyclic = node.closesCycle(a, b, topology);
        const bool rejected =
            cyclic || (params.getAreaConst() && node.leavesArea(a, b, topology, area()));
        children.add(topology, wirelength, bounds.remaining + wirelength, rejected);
        if (rejected) {
            countRejected(worker.counters, node.blockLevel + 1, 1, completes && !cyclic ? 1 : 0);
        }
    }
    // One look at what they have in common may do for all.
    if (completes && children.madeNum() > 1 && isHopeless(node, bounds.remaining, bestWL, worker)) {
        countRejected(worker.counters, node.blockLevel + 1, children.madeNum(), children.madeNum());
        children.rejectAll();
    }
    worker.counters.closedShare += children.closedShare(node.share);
    const float share = children.shareOfEach(node.share);
    children.replaceTop(stack, [&](BBNode& child, Topology topology) {
        child.relate(a, b, topology);
        ++child.definedNodes;
        ++child.blockLevel;
        child.remaining = bounds.remaining;
        child.share = share;
    });
}

std::array<unsigned, 3> Placer::sortThreeNodes(const std::array<float, 4>& keys) {
    const bool swapped = keys[0] > keys[1];
    const unsigned lo = swapped ? 1 : 0;
    const unsigned hi = swapped ? 0 : 1;
    if (keys[hi] > keys[2]) {
        if (keys[lo] > keys[2]) {
            return {2, lo, hi};
        }
        return {lo, 2, hi};
    }
    return {lo, hi, 2};
}

std::array<unsigned, 4> Placer::sortFourNodes(const std::array<float, 4>& keys) {
    const unsigned lo01 = keys[1] > keys[0] ? 0 : 1;
    const unsigned hi01 = 1 - lo01;
    const unsigned lo23 = keys[3] > keys[2] ? 2 : 3;
    const unsigned hi23 = 5 - lo23;
    const bool firstFrom01 = keys[lo23] > keys[lo01];
    const unsigned first = firstFrom01 ? lo01 : lo23;
    const unsigned x = firstFrom01 ? lo23 : lo01;
    const bool lastFrom01 = keys[hi01] > keys[hi23];
    const unsigned last = lastFrom01 ? hi01 : hi23;
    const unsigned y = lastFrom01 ? hi23 : hi01;
    if (keys[y] > keys[x]) {
        return {first, x, y, last};
    }
    return {first, y, x, last};
}

}  // namespace korvel
