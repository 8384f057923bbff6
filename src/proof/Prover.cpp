#include "proof/Prover.h"

#include <algorithm>
#include <thread>
#include <vector>

#include "exact/ExactCoordinates.h"
#include "proof/NodeBounder.h"
#include "proof/ProofPool.h"

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Nodes that a thread works off before it hands the rest back: few enough to keep the lower bound
// rising, many enough to keep the threads off the lock.
constexpr unsigned kTurnLength = 256;

// Overlaps up to this part of the region may be rounding; the exact coordinates decide.
constexpr double kTouching = 1e-9;

// What all threads of a proof share.
struct Shared {
    const Design& design;
    const ProofModel& model;
    const CoordinateSolver& coordinates;
    const ProofOptions& options;
    Incumbent& incumbent;
    const std::stop_token& stop;
    ProofProgress& progress;
    ProofPool& pool;
    std::mutex mutex;
    double closedBound = kInfinity;  // mutex; the lowest bound of what was given up as no better

    // No placement as long as this, or longer, is looked for.
    double limit() const {
        return incumbent.wirelength() * (1.0 - std::max(options.gap, options.tolerance));
    }
};

class ProofWorker {
public:
    ProofWorker(Shared& shared, unsigned number)
        : shared(shared), bounder(shared.model), number(number) {}

    void run();

private:
    void explore(const ProofNode& from);
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

    Shared& shared;
    NodeBounder bounder;
    unsigned number;
    std::vector<ProofNode> open;
    std::vector<ProofNode> children;
    double closedBound = kInfinity;
    double shareDone = 0.0;
    unsigned nodes = 0;
};

void ProofWorker::run() {
    while (const auto node = shared.pool.take(number)) {
        explore(*node);
        shared.pool.giveBack(number, open);
        report();
        if (shared.stop.stop_requested()) {
            shared.pool.close();
        }
    }
}

void ProofWorker::explore(const ProofNode& from) {
    open.assign(1, from);
    nodes = 0;
    while (!open.empty() && nodes < kTurnLength && !shared.stop.stop_requested()) {
        const ProofNode node = open.back();
        open.pop_back();
        if (node.bound >= shared.limit()) {
            close(node.bound, node.share);
        } else {
            visit(node);
        }
    }
}

void ProofWorker::report() {
    shared.progress.nodes += nodes;
    shared.progress.shareDone += shareDone;
    shareDone = 0.0;
    const std::lock_guard lock(shared.mutex);
    shared.closedBound = std::min(shared.closedBound, closedBound);
    const double bound =
        std::min({shared.pool.lowestOpen(), shared.closedBound, shared.incumbent.wirelength()});
    if (bound > shared.progress.lowerBound && bound < kInfinity) {
        shared.progress.lowerBound = bound;
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
    Placement placement(shared.model.getDieNum());
    std::vector<Orient> orients;
    for (unsigned die = 0; die < placement.size(); ++die) {
        orients.push_back(static_cast<Orient>(node.turn[die]));
        placement[die] = {{node.at[0][die], node.at[1][die]}, orients[die]};
    }
    const Relations relations = Relations::of(shared.design, placement);
    if (const auto exact = shared.coordinates.solve(relations, orients)) {
        shared.incumbent.offer(*exact, wirelength(shared.design, *exact), "proof");
    }
    const auto undecided = overlappingPair(node, -kInfinity);
    if (node.bound >= shared.limit() || !undecided) {
        close(node.bound, node.share);
    } else {
        branchOnPair(node, undecided->first, undecided->second);
    }
}

void ProofWorker::branchOnTurn(const ProofNode& node, unsigned die) {
    children.clear();
    for (unsigned turn = 0; turn < kTurns; ++turn) {
        if (const auto child = bounder.withTurn(node, die, turn)) {
            children.push_back(*child);
        }
    }
    pushChildren(node, kTurns);
}

void ProofWorker::branchOnPair(const ProofNode& node, unsigned low, unsigned high) {
    children.clear();
    const Whereabouts where = node.where[pairIndex(low, high)];
    for (unsigned bit = 0; bit < kRelations; ++bit) {
        if ((where >> bit & 1) != 0) {
            if (const auto child =
                    bounder.withRelation(node, low, high, static_cast<Topology>(bit))) {
                children.push_back(*child);
            }
        }
    }
    pushChildren(node, kRelations);
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
        if (child.bound >= shared.limit()) {
            close(child.bound, child.share);
        } else {
            open.push_back(child);
        }
    }
}

std::optional<std::pair<unsigned, unsigned>> ProofWorker::uncountedPair(
    const ProofNode& node) const {
    std::optional<std::pair<unsigned, unsigned>> best;
    int most = 0;
    for (const ProofModel::Bundle& bundle : shared.model.getBundles()) {
        if (bundle.b != shared.model.ground() && node.isTurned(bundle.a) &&
            node.isTurned(bundle.b) && !node.counted[pairIndex(bundle.a, bundle.b)] &&
            bundle.netNum > most) {
            most = bundle.netNum;
            best = {bundle.a, bundle.b};
        }
    }
    return best;
}

std::optional<std::pair<unsigned, unsigned>> ProofWorker::overlappingPair(const ProofNode& node,
                                                                          double tolerance) const {
    std::optional<std::pair<unsigned, unsigned>> best;
    double deepest = tolerance * std::max(shared.model.side(0), shared.model.side(1));
    for (unsigned high = 1; high < shared.model.getDieNum(); ++high) {
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

// The die with the most nets to those that are turned; at first the one with the most nets.
std::optional<unsigned> ProofWorker::nextDie(const ProofNode& node) const {
    std::optional<unsigned> best;
    std::pair<int, int> most{-1, -1};
    for (unsigned die = 0; die < shared.model.getDieNum(); ++die) {
        if (node.isTurned(die)) {
            continue;
        }
        std::pair<int, int> nets{0, 0};
        for (const ProofModel::Bundle& bundle : shared.model.getBundles()) {
            if (bundle.a == die || bundle.b == die) {
                const unsigned other = bundle.a == die ? bundle.b : bundle.a;
                const bool joins = other != shared.model.ground() && node.isTurned(other);
                nets.first += joins ? bundle.netNum : 0;
                nets.second += bundle.netNum;
            }
        }
        if (nets > most) {
            most = nets;
            best = die;
        }
    }
    return best;
}

}  // namespace

ProofResult prove(const Design& design, Region region, const ProofOptions& options,
                  Incumbent& incumbent, const std::stop_token& stop, ProofProgress& progress) {
    const ProofModel model(design, region);
    const CoordinateSolver coordinates(design, region);
    ProofPool pool(NodeBounder(model).root(), options.threads);
    Shared shared{design, model, coordinates, options, incumbent, stop, progress, pool, {}};
    {
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < options.threads; ++i) {
            threads.emplace_back([&shared, i] { ProofWorker(shared, i).run(); });
        }
    }
    ProofResult result;
    result.nodes = progress.nodes;
    result.lowerBound = std::min({pool.lowestOpen(), shared.closedBound, incumbent.wirelength()});
    if (pool.lowestOpen() < kInfinity) {
        return result;
    }
    const double shortest = incumbent.wirelength();
    if (shortest == kInfinity) {
        result.end = ProofEnd::NoPlacement;
    } else if (result.lowerBound >= shortest * (1.0 - options.tolerance)) {
        result.end = ProofEnd::Proved;
    } else if (result.lowerBound >= shortest * (1.0 - options.gap)) {
        result.end = ProofEnd::GapReached;
    }
    return result;
}

}  // namespace korvel
