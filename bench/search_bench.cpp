// What the search spends its time on, call by call. Each function works on nodes that a real search
// comes by, in the order in which it does, so that times are means over what a search asks for.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "support/designs.h"

namespace korvel::test {
namespace {

constexpr std::size_t kMostNodes = 256;  // of a kind; few, as a search's open nodes stay in caches
constexpr unsigned kBetweenNodes = 7;    // so that samples are not all siblings

// Dies joined by bundles of two-pin nets, each from a grid of pins on one die to one on the other.
Design bundledDesign(unsigned seed, unsigned dies, unsigned netsPerBundle) {
    constexpr unsigned kPinsPerRow = 16;
    Design design = randomDesign(seed, {dies, 4, 0});
    std::mt19937 random(seed);
    for (unsigned i = 1; i < dies; ++i) {
        const std::string from = design.dies[i].name;
        const std::string to = design.dies[random() % i].name;
        for (unsigned net = 0; net < netsPerBundle; ++net) {
            const float x = 2.0F * static_cast<float>(net % kPinsPerRow);
            const float y = 2.0F * static_cast<float>(net / kPinsPerRow);
            design.nets.push_back({{from, 48 - x, y - 20}, {to, x - 48, y - 10}});
        }
    }
    for (const Terminal& terminal : design.terminals) {
        design.nets.push_back({{terminal.name}, {design.dies[random() % dies].name, 50, 50}});
    }
    return design;
}

// An engine after its first pass.
struct SearchedEngine : Engine {
    explicit SearchedEngine(const Design& design) : Engine(design) {
        placer.ordering();
        placer.place();
        netlist.unplaceAllNets();
    }
};

// A search that knows the best placement of its first pass and has yet to rule out the rest.
struct Search {
    explicit Search(const Design& design) : engine(design), area(design.area) {}

    SearchWorker makeWorker() const { return {tables, levelCount}; }
    // Inside the area and without a cycle, with all relations of its newest block.
    bool isPlaceable(BBNode& node) const {
        return node.numBlocks > 1 && node.isBlockComplete() && node.sortGraphs() &&
               node.width <= area.width && node.height <= area.height;
    }

    SearchedEngine engine;
    Area area;
    const Placer& placer = engine.placer;
    unsigned blockNum = placer.getBlockNum();
    unsigned levelCount = blockNum * (blockNum + 1) / 2;
    float bestWL = placer.getBestNode().wirelength;
    SearchTables tables{engine.netlist, blockNum, area};
};

struct Sample : Search {
    explicit Sample(const Design& design) : Search(design) {
        SearchWorker worker = makeWorker();
        worker.ownStack.push(BBNode());
        for (unsigned count = 0; !worker.ownStack.empty() && !isFull(); ++count) {
            takeNode(worker, count % kBetweenNodes == 0);
        }
    }

    std::vector<BBNode> taken;      // from the stack, as they lay there
    std::vector<BBNode> kept;       // to be branched
    std::vector<BBNode> placeable;  // with coordinates

private:
    bool isFull() const {
        return std::min({taken.size(), kept.size(), placeable.size()}) == kMostNodes;
    }

    void takeNode(SearchWorker& worker, bool isSample) {
        const auto note = [isSample](std::vector<BBNode>& nodes, const BBNode& node) {
            if (isSample && nodes.size() < kMostNodes) {
                nodes.push_back(node);
            }
        };
        BBNode& node = worker.node;
        worker.ownStack.popInto(node);
        note(taken, node);
        const bool isKept = placer.estimateNode(node, bestWL, worker);
        if (isPlaceable(node)) {
            note(placeable, node);
        }
        if (isKept && node.blockLevel < levelCount) {
            note(kept, node);
            worker.ownStack.push(node);
            placer.branch(worker.ownStack, bestWL, worker);
        }
    }
};

const Sample& multiPin() {
    static const Sample sample(randomDesign(1, {7, 8, 50}));
    return sample;
}

const Sample& bundles() {
    static const Sample sample(bundledDesign(5, 6, 400));
    return sample;
}

// The functions use nodes up, so each batch gets its own, outside the measured time.
template <typename Work>
void onCopies(benchmark::State& state, const std::vector<BBNode>& nodes, const Work& work) {
    std::vector<BBNode> copies;
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(nodes.size()))) {
        state.PauseTiming();
        copies = nodes;
        state.ResumeTiming();
        for (BBNode& node : copies) {
            work(node);
        }
    }
}

void estimateNode(benchmark::State& state, const Sample& (*sample)()) {
    const Sample& search = sample();
    SearchWorker worker = search.makeWorker();
    onCopies(state, search.taken, [&](BBNode& node) {
        benchmark::DoNotOptimize(search.placer.estimateNode(node, search.bestWL, worker));
    });
}

void branch(benchmark::State& state, const Sample& (*sample)()) {
    const Sample& search = sample();
    SearchWorker worker = search.makeWorker();
    onCopies(state, search.kept, [&](BBNode& node) {
        worker.ownStack.push(node);
        search.placer.branch(worker.ownStack, search.bestWL, worker);
        while (!worker.ownStack.empty()) {
            worker.ownStack.pop();
        }
    });
}

void placeAndAlign(benchmark::State& state, const Sample& (*sample)()) {
    const Sample& search = sample();
    WorkingPlacement placement(search.tables.alignment);
    onCopies(state, search.placeable,
             [&](BBNode& node) { node.placeAndAlign(placement, true, search.area); });
}

void leastLength(benchmark::State& state, const Sample& (*sample)()) {
    const Sample& search = sample();
    SearchWorker worker = search.makeWorker();
    onCopies(state, search.placeable, [&](BBNode& node) {
        const double enough = search.bestWL - node.remaining;
        benchmark::DoNotOptimize(
            search.tables.lengthBound.leastLength(node, worker.boundSpace, enough));
    });
}

// Of the best placement, which has all blocks.
void partialHPWL(benchmark::State& state, const Sample& (*sample)()) {
    const Sample& search = sample();
    WorkingPlacement placement(search.tables.alignment);
    search.placer.getBestNode().placeAndAlign(placement, true, search.area);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(placement.partialHPWL([](float) { return false; }));
    }
}

// clang-format off
#define KORVEL_BENCHMARK(function)                 \
    BENCHMARK_CAPTURE(function, multiPin, multiPin); \
    BENCHMARK_CAPTURE(function, bundles, bundles)
// clang-format on

KORVEL_BENCHMARK(estimateNode);
KORVEL_BENCHMARK(branch);
KORVEL_BENCHMARK(leastLength);
KORVEL_BENCHMARK(placeAndAlign);
KORVEL_BENCHMARK(partialHPWL);

}  // namespace
}  // namespace korvel::test
