#include "proof/Prover.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

#include "base/Infinity.h"
#include "base/Tolerances.h"
#include "exact/ExactCoordinates.h"
#include "proof/NodeBounder.h"
#include "proof/ProofPool.h"

namespace korvel {

namespace {

// Nodes that a thread works off before it hands the rest back: few enough to keep the lower bound
// rising, many enough to keep the threads off the lock.
constexpr unsigned kTurnLength = 256;

// The die with the most nets comes first, then always the one with the most nets to those before.
std::vector<unsigned> orderOf(const NetModel& model) {
    std::vector<unsigned> order;
    std::vector<bool> isIn(model.dieNum() + 1, false);
    while (order.size() < model.dieNum()) {
        // By body: weight to those before, and to all.
        std::vector<std::pair<double, double>> weights(model.dieNum() + 1, {0.0, 0.0});
        for (const auto& [a, b, weight] : model.bundles()) {
            weights[a].first += isIn[b] ? weight : 0.0;
            weights[b].first += isIn[a] ? weight : 0.0;
            weights[a].second += weight;
            weights[b].second += weight;
        }
        unsigned best = model.ground();
        for (unsigned die = 0; die < model.dieNum(); ++die) {
            if (!isIn[die] && (best == model.ground() || weights[die] > weights[best])) {
                best = die;
            }
        }
        isIn[best] = true;
        order.push_back(best);
    }
    return order;
}

// A tree and what all threads that work on it share.
struct Tree {
    Tree(const Design& design, const NetModel& nets, Region region, unsigned threads)
        : model(design, nets, region),
          order(orderOf(nets)),
          symmetry(model, order),
          pool(NodeBounder(model).root(), threads) {}

    const ProofModel model;
    const std::vector<unsigned> order;
    const Symmetry symmetry;
    ProofPool pool;
    std::mutex mutex;
    double closedBound =
        kInfiniteLength;  // mutex; the lowest bound of what was given up as no better
};

// What is to be done, for all trees; refers to what `prove` was given.
struct Task {
    const Design& design;
    const CoordinateSolver& coordinates;
    const ProofOptions& options;
    Incumbent& incumbent;
    const std::stop_token& stop;
    bool anyWillDo;  // to know of one placement is enough

    // No placement as long as this, or longer, is looked for.
    double limit() const {
        return incumbent.wirelength() * (1.0 - std::max(options.gap, options.tolerance));
    }
    bool isOver() const {
        return stop.stop_requested() || (anyWillDo && incumbent.wirelength() < kInfiniteLength);
    }
};

class ProofWorker {
public:
    ProofWorker(const Task& task, Tree& tree, ProofProgress& progress, unsigned number)
        : task(task),
          tree(tree),
          progress(progress),
          bounder(tree.model, &tree.symmetry),
          number(number) {}

    void run();

private:
    void explore(const ProofNode& from);
    void handIn();
    void report();
    void visit(const ProofNode& node);
    void tryLeaf(const ProofNode& node);
    void branchOnTurn(const ProofNode& node, unsigned die);
    void branchOnPair(const ProofNode& node, unsigned low, unsigned high);
    void pushChildren(const ProofNode& node, unsigned branches);
    void close(double bound, double share);
    std::optional<std::pair<unsigned, unsigned>> uncountedPair(const ProofNode& node) const;
    std::optional<std::pair<unsigned, unsigned>> overlappingPair(const ProofNode& node,
                                                                 double tolerance) const;
    std::optional<unsigned> nextDie(const ProofNode& node) const;

    const Task& task;
    Tree& tree;
    ProofProgress& progress;
    NodeBounder bounder;
    unsigned number;
    std::vector<ProofNode> open;
    std::vector<ProofNode> children;
    double closedBound = kInfiniteLength;
    double shareDone = 0.0;
    unsigned nodes = 0;
};

void ProofWorker::run() {
    while (const auto node = tree.pool.take(number)) {
        explore(*node);
        // In this order, or for a moment nothing would stand for what was closed.
        handIn();
        tree.pool.giveBack(number, open);
        report();
        if (task.isOver()) {
            tree.pool.close();
        }
    }
}

void ProofWorker::explore(const ProofNode& from) {
    open.assign(1, from);
    nodes = 0;
    const bool toTheEnd = tree.pool.isCrowded();
    while (!open.empty() && (toTheEnd || nodes < kTurnLength) && !task.isOver()) {
        const ProofNode node = open.back();
        open.pop_back();
        if (node.bound >= task.limit()) {
            close(node.bound, node.share);
        } else {
            visit(node);
        }
    }
}

void ProofWorker::handIn() {
    progress.nodes += nodes;
    progress.shareDone += shareDone;
    shareDone = 0.0;
    const std::lock_guard lock(tree.mutex);
    tree.closedBound = std::min(tree.closedBound, closedBound);
}

void ProofWorker::report() {
    const std::lock_guard lock(tree.mutex);
    const double bound =
        std::min({tree.pool.lowestOpen(), tree.closedBound, task.incumbent.wirelength()});
    if (bound > progress.lowerBound && bound < kInfiniteLength) {
        progress.lowerBound = bound;
    }
}

void ProofWorker::close(double bound, double share) {
    closedBound = std::min(closedBound, bound);
    shareDone += share;
}

void ProofWorker::visit(const ProofNode& node) {
    if (const auto pair = uncountedPair(node)) {
        branchOnPair(node, pair->first, pair->second);
    } else if (const auto apart = overlappingPair(node, kTouching)) {
        branchOnPair(node, apart->first, apart->second);
    } else if (const auto die = nextDie(node)) {
        branchOnTurn(node, *die);
    } else {
        tryLeaf(node);
    }
}

// The positions are legal but for roundings. If the exact ones are no longer than the bound says,
// the node is done; if they should be, it is divided until all relations are decided.
void ProofWorker::tryLeaf(const ProofNode& node) {
    Placement placement(tree.model.dieNum());
    std::vector<Orient> orients;
    for (unsigned die = 0; die < placement.size(); ++die) {
        orients.push_back(orientOf(node.turn[die]));
        placement[die] = {{node.at[kX][die], node.at[kY][die]}, orients[die]};
    }
    const Relations relations = Relations::of(task.design, placement);
    if (const auto exact = task.coordinates.solve(relations, orients)) {
        task.incumbent.offer(*exact, "proof");
    }
    const auto undecided = overlappingPair(node, -kInfiniteLength);
    if (node.bound >= task.limit() || !undecided) {
        close(node.bound, node.share);
    } else {
        branchOnPair(node, undecided->first, undecided->second);
    }
}

void ProofWorker::branchOnTurn(const ProofNode& node, unsigned die) {
    children.clear();
    for (const unsigned turn : tree.symmetry.turnsOf(die)) {
        if (const auto child = bounder.withTurn(node, die, turn, task.limit())) {
            children.push_back(*child);
        }
    }
    pushChildren(node, kUnmirroredOrients);
}

void ProofWorker::branchOnPair(const ProofNode& node, unsigned low, unsigned high) {
    children.clear();
    const Whereabouts where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kTopologyNum; ++bit) {
        if ((where >> bit & 1) != 0) {
            if (const auto child = bounder.withRelation(node, low, high, static_cast<Topology>(bit),
                                                        task.limit())) {
                children.push_back(*child);
            }
        }
    }
    pushChildren(node, kTopologyNum);
}

// The most promising one is pushed last, so it is taken first.
void ProofWorker::pushChildren(const ProofNode& node, unsigned branches) {
    nodes += branches;
    std::sort(children.begin(), children.end(),
              [](const ProofNode& a, const ProofNode& b) { return a.bound > b.bound; });
    if (children.empty()) {
        shareDone += node.share;
    }
    for (ProofNode& child : children) {
        child.share = node.share / static_cast<double>(children.size());
        if (child.bound >= task.limit()) {
            close(child.bound, child.share);
        } else {
            open.push_back(child);
        }
    }
}

std::optional<std::pair<unsigned, unsigned>> ProofWorker::uncountedPair(
    const ProofNode& node) const {
    std::optional<std::pair<unsigned, unsigned>> best;
    double most = 0.0;
    for (const std::size_t bundle : tree.model.nets().bundlesInNetOrder()) {
        const auto& [a, b, weight] = tree.model.nets().bundles()[bundle];
        if (b != tree.model.ground() && node.isTurned(a) && node.isTurned(b) &&
            !node.counted[pairIndex(a, b)] && weight > most) {
            most = weight;
            best = {a, b};
        }
    }
    return best;
}

std::optional<std::pair<unsigned, unsigned>> ProofWorker::overlappingPair(const ProofNode& node,
                                                                          double tolerance) const {
    std::optional<std::pair<unsigned, unsigned>> best;
    double deepest = tolerance * tree.model.limits().longerSide();
    for (unsigned high = 1; high < tree.model.dieNum(); ++high) {
        for (unsigned low = 0; low < high && node.isTurned(high); ++low) {
            if (!node.isTurned(low) || isDecided(node.where[pairIndex(low, high)])) {
                continue;
            }
            const double depth = bounder.overlap(node, low, high);
            if (depth > deepest) {
                deepest = depth;
                best = {low, high};
            }
        }
    }
    return best;
}

std::optional<unsigned> ProofWorker::nextDie(const ProofNode& node) const {
    const auto next = std::find_if(tree.order.begin(), tree.order.end(),
                                   [&](unsigned die) { return !node.isTurned(die); });
    return next == tree.order.end() ? std::nullopt : std::optional(*next);
}

// All threads until the tree is exhausted, or the task over.
void work(const Task& task, Tree& tree, ProofProgress& progress) {
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < task.options.threads; ++i) {
        threads.emplace_back([&, i] { ProofWorker(task, tree, progress, i).run(); });
    }
}

// Whether the dies are too large for the region already by their areas.
bool isTooFull(const Design& design, Region region) {
    double area = 0.0;
    for (const Design::Die& die : design.dies) {
        area += die.size.width * die.size.height;
    }
    return area > region.width * region.height * (1.0 + 3.0 * kFitting);
}

// Looks for any placement at all. Without nets most turns are the same, and dies of equal size are,
// so the tree is far smaller than the one with them. True if there is none.
bool hasNoPlacement(Task task, Region region, ProofProgress& progress) {
    if (isTooFull(task.design, region)) {
        return true;
    }
    Design dies = task.design;
    dies.nets.clear();
    const NetModel noNets(dies);
    Tree tree(dies, noNets, region, task.options.threads);
    task.anyWillDo = true;
    ProofProgress own;
    work(task, tree, own);
    progress.nodes += own.nodes;
    return tree.pool.lowestOpen() == kInfiniteLength &&
           task.incumbent.wirelength() == kInfiniteLength;
}

}  // namespace

ProofResult prove(const Design& design, Region region, const ProofOptions& options,
                  Incumbent& incumbent, const std::stop_token& stop, ProofProgress& progress) {
    if (design.dies.size() > kMaxProofDies) {
        progress.lowerBound = ProofModel(design, NetModel(design), region).leastLength();
        return {ProofEnd::Stopped, progress.lowerBound, 0};
    }
    const CoordinateSolver coordinates(design, region);
    const Task task{design, coordinates, options, incumbent, stop, false};
    Tree tree(design, coordinates.nets(), region, options.threads);
    if (tree.pool.lowestOpen() < kInfiniteLength) {
        progress.lowerBound = tree.pool.lowestOpen();
    }
    if (incumbent.wirelength() == kInfiniteLength && hasNoPlacement(task, region, progress)) {
        progress.lowerBound = kInfiniteLength;
        progress.shareDone = 1.0;
        return {ProofEnd::NoPlacement, kInfiniteLength, progress.nodes};
    }
    work(task, tree, progress);
    const double open = tree.pool.lowestOpen();
    const double shortest = incumbent.wirelength();
    ProofResult result{ProofEnd::Stopped, std::min({open, tree.closedBound, shortest}),
                       progress.nodes};
    if (open == kInfiniteLength && shortest == kInfiniteLength) {
        result.end = ProofEnd::NoPlacement;
    } else if (open == kInfiniteLength &&
               result.lowerBound >= shortest * (1.0 - options.tolerance)) {
        result.end = ProofEnd::Proved;
    } else if (open == kInfiniteLength && result.lowerBound >= shortest * (1.0 - options.gap)) {
        result.end = ProofEnd::GapReached;
    }
    return result;
}

}  // namespace korvel
