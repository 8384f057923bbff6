#include "classic/search/Branching.h"

#include <algorithm>
#include <cstdlib>

namespace korvel {

namespace {

constexpr unsigned kMostChildren = 4;
constexpr float kLeastFraction = 1e-30F;

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

    // What each gets of the node's fraction of the tree. Nothing where it would be next to nothing:
    // the smallest floats of all are slow to calculate with.
    float fractionOfEach(float fraction) const {
        return fraction > kLeastFraction ? fraction / static_cast<float>(num) : 0.0F;
    }
    // What of the node's fraction no child is left for.
    float closedFraction(float fraction) const {
        return num == 0 ? fraction : fractionOfEach(fraction) * static_cast<float>(rejectedNum);
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
                const auto three = Branching::sortThreeNodes(keys);
                std::copy(three.begin(), three.end(), order.begin());
                break;
            }
            case 4:
                order = Branching::sortFourNodes(keys);
                break;
            default:
                break;
        }
        return order;
    }
};

// Counts children that the estimator would reject for certain, whatever the best wirelength is by
// then, as if it had. They are not made: most children have no room, and what costs most about them
// is to copy and take a node.
void countRejected(SearchCounters& counters, unsigned level, unsigned number, unsigned sorted) {
    counters.expandedNodes += number;
    counters.prunedByBound[level - 1] += number;
    counters.sortedNodes += sorted;
}

}  // namespace

Branching::Branching(const SearchSetting& setting)
    : setting(setting),
      estimator(setting.areaConst, setting.area),
      levelCutFactor(static_cast<float>(1.0 / (setting.numBlocks + 1))) {}

void Branching::branch(NodeStack& stack, float bestWL, SearchWorker& worker) const {
    const BBNode& node = stack.top();
    if (node.isBlockComplete()) {
        branchOrientations(stack, bestWL, worker.counters);
    } else if (node.definedNodes > node.numBlocks - 1) {
        std::cout << "ERROR: Inadmissible value curBlockTotal or curBlockDef // Placer::branchingBB"
                  << std::endl
                  << "false numBlocks: " << setting.numBlocks << std::endl;
        std::exit(0);
    } else {
        branchTopologies(stack, bestWL, worker);
    }
}

// The least that the relations of the block to blocks from `firstEarlier` on, and all later blocks,
// add when it takes `orient`.
float Branching::remainingDistance(const BBNode& node, unsigned block, Orient orient,
                                   unsigned firstEarlier) const {
    float sum = setting.bounds.remainingAfter(block);
    for (unsigned j = block; j-- > firstEarlier;) {
        sum += setting.bounds.minOrientPairDist(block, j, orient, node.blocksOrients[j]);
    }
    return sum;
}

void Branching::branchOrientations(NodeStack& stack, float bestWL, SearchCounters& counters) const {
    const BBNode& node = stack.top();
    const unsigned next = node.numBlocks;
    const std::optional<Orient> decided = setting.previous.orientFor(node, next);
    Children<Orient> children;
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        const auto orient = static_cast<Orient>(o);
        if (decided && *decided != orient) {
            continue;
        }
        const float termDist = setting.bounds.minTermDist[kUnmirroredOrients * next + o];
        if (next != 0 && bestWL < termDist + remainingDistance(node, next, orient, 0)) {
            continue;
        }
        const float wirelength =
            setting.hasTerminals ? node.wirelength + termDist : node.wirelength;
        children.add(orient, wirelength, wirelength);
    }
    counters.closedFraction += children.closedFraction(node.treeFraction);
    const float fraction = children.fractionOfEach(node.treeFraction);
    children.replaceTop(stack, [&](BBNode& child, Orient orient) {
        child.addBlock(orient, setting.netlist);
        ++child.blockLevel;
        child.definedNodes = 0;
        child.treeFraction = fraction;
    });
}

void Branching::branchTopologies(NodeStack& stack, float bestWL, SearchWorker& worker) const {
    const BBNode& node = stack.top();
    const unsigned a = node.numBlocks - 1;
    const unsigned b = node.definedNodes;
    const Orient orient = node.blocksOrients[a];
    const float remaining = remainingDistance(node, a, orient, b + 1);
    const bool completes = b + 1 == a;
    const std::optional<Topology> decided = setting.previous.topologyFor(node, a, b);
    Children<Topology> children;
    for (unsigned t = 0; t < static_cast<unsigned>(Topology::LAST); ++t) {
        // 1. A stage repeats what the one before has decided.
        const auto topology = static_cast<Topology>(t);
        if (decided && *decided != topology) {
            continue;
        }
        // 2. What the tables say alone: too long, or much longer than the alternatives.
        const float distance =
            setting.bounds.getMinDistances(a, b, orient, node.blocksOrients[b], topology);
        if (isCut(node, distance, remaining, bestWL, worker.counters)) {
            continue;
        }
        // 3. What the graphs say: a cycle, or no room.
        const float wirelength = node.wirelength + distance;
        const bool cyclic = node.closesCycle(a, b, topology);
        const bool rejected = cyclic || estimator.leavesArea(node, a, b, topology);
        children.add(topology, wirelength, remaining + wirelength, rejected);
        if (rejected) {
            countRejected(worker.counters, node.blockLevel + 1, 1, completes && !cyclic ? 1 : 0);
        }
    }
    // 4. One look at what the last relations of a block have in common may do for all of them.
    if (completes && children.madeNum() > 1 &&
        estimator.isHopeless(node, remaining, bestWL, worker)) {
        countRejected(worker.counters, node.blockLevel + 1, children.madeNum(), children.madeNum());
        children.rejectAll();
    }
    // 5. Only what is left is made.
    worker.counters.closedFraction += children.closedFraction(node.treeFraction);
    const float fraction = children.fractionOfEach(node.treeFraction);
    children.replaceTop(stack, [&](BBNode& child, Topology topology) {
        child.relate(a, b, topology);
        ++child.definedNodes;
        ++child.blockLevel;
        child.remaining = remaining;
        child.treeFraction = fraction;
    });
}

bool Branching::isCut(const BBNode& node, float distance, float remaining, float bestWL,
                      SearchCounters& counters) const {
    if (distance + node.wirelength + remaining > bestWL) {
        ++counters.cutAtBranching[node.blockLevel - 1];
        return true;
    }
    // A relation that costs much more than the level's cheapest one is given up, although its
    // bound may still be below the best: on purpose, this is what makes the search fast.
    const float cheapest = setting.bounds.levelMinDistance[node.blockLevel - 1];
    return distance - cheapest > bestWL * levelCutFactor;
}

std::array<unsigned, 3> Branching::sortThreeNodes(const std::array<float, 4>& keys) {
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

std::array<unsigned, 4> Branching::sortFourNodes(const std::array<float, 4>& keys) {
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
