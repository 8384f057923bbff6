#include "classic/Placer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <thread>

#include "base/CallAfter.h"
#include "classic/node/Graphs.h"

namespace korvel {

namespace {

constexpr unsigned kMostBlocksInOnePass = 99;
constexpr unsigned kFirstStageBlocks = 7;
// Less than any sum of the weights of connections notices.
constexpr float kFaintConnection = 1e-30F;

using Clock = std::chrono::system_clock;

std::string runtimeText(std::int64_t milliseconds) {
    std::ostringstream text;
    text << milliseconds / 60'000 << " min " << milliseconds % 60'000 / 1'000 << " sec";
    return text.str();
}

std::int64_t millisecondsSince(Clock::time_point start) {
    const auto nanoseconds =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
    return nanoseconds / 1'000'000;
}

void printRuntime(std::ostream& out, std::int64_t milliseconds) {
    out << "Total runtime: " << milliseconds << " ms (" << runtimeText(milliseconds) << ")"
        << std::endl;
}

// The part behind the last slash.
std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

// Shared nets times the mean of the two half perimeters.
float connectionWeight(const Block& a, const Block& b) {
    const float halfPerimeters = a.getWidth() + a.getHeight() + b.getWidth() + b.getHeight();
    return halfPerimeters * static_cast<float>(commonNets(a, b).size()) * 0.5F;
}

}  // namespace

Placer::Placer(float initWL, std::ostream& out)
    : out(out), numThreads(std::max(1U, std::thread::hardware_concurrency())), initWL(initWL) {}

void Placer::banner(const std::string& text) {
    out << std::endl << text << std::endl << std::endl;
}

int Placer::run() {
    std::jthread timer;
    if (secondsToRun > 0.0) {
        timer = callAfter(std::chrono::duration<double>(secondsToRun), [this] { requestStop(); });
    }
    runMode();
    return 0;
}

void Placer::runMode() {
    if (params.getAreaConst()) {
        printUtilization();
    }
    if (numBlocks > kMostBlocksInOnePass) {
        runStages();
    } else {
        runInitialAndMain();
    }
}

void Placer::printUtilization() {
    float blockArea = 0.0F;
    for (const Block& block : netlist.blocks) {
        blockArea += block.getArea();
    }
    const float utilization = blockArea / (params.getDieWidth() * params.getDieHight());
    out << std::endl << "Utilization: " << utilization << std::endl;
}

// Each stage places one block more than the last, and follows the last one's best node for the
// levels that it covers; only the first blocks are ordered, so that later ones keep their places.
void Placer::runStages() {
    const unsigned allBlocks = numBlocks;
    numBlocks = kFirstStageBlocks;
    stageMode = true;
    banner("===   Blocks placement six  ===");
    const Clock::time_point start = Clock::now();
    ordering();
    while (allBlocks >= numBlocks && !stop.run.load()) {
        banner("===   Blocks placement for " + std::to_string(numBlocks) + " blocks  ===");
        place();
        banner("===   End   ===");
        previousStage.numBlocks = numBlocks;
        previousStage.levels = numBlocks * (numBlocks + 1) >> 1U;
        ++numBlocks;
    }
    printRuntime(out, millisecondsSince(start));
}

void Placer::runInitialAndMain() {
    std::ostringstream head;
    head << baseName(params.getInputName());
    if (params.getAreaConst()) {
        head << " || area: " << params.getDieWidth() << " x " << params.getDieHight();
    }
    writeStatistics(head.str());

    banner("===   Initial placement   ===");
    const Clock::time_point start = Clock::now();
    ordering();
    place();
    initialPlacement = false;
    banner("===   Main placement   ===");
    writeStatistics("");
    place();
    banner("===   End   ===");

    const std::int64_t milliseconds = millisecondsSince(start);
    printRuntime(out, milliseconds);
    writeStatistics(" || runtime: " + runtimeText(milliseconds) + "\n");
}

// The pieces of one run, appended one by one, make one line.
void Placer::writeStatistics(const std::string& text) {
    if (!statistics) {
        return;
    }
    std::ofstream file("statistics.txt", std::ios::out | std::ios::app);
    if (!file) {
        // The text names another file, on purpose.
        out << "ERROR: results.txt file could not be opened successfully" << std::endl;
    }
    file << text;
}

void Placer::place() {
    stop.pass.store(false);
    if (observer != nullptr) {
        observer->passBegins(numBlocks);
    }
    banner("==   Pre-Calculations for B&B   ==");
    calcMinDistancesCombined();
    minimalOrintationalPairsCalc();
    if (numTerms != 0) {
        calcMinTermDistCombined();
        updateRemainingDistances();
    }
    BandB();
    if (observer != nullptr) {
        observer->passEnds();
    }
}

void Placer::ordering() {
    out << "Perform ordering ..." << std::endl << std::endl;
    std::vector<Block>& blocks = netlist.blocks;
    UndirectedGraph graph(numBlocks);
    for (unsigned i = 1; i < numBlocks; ++i) {
        for (unsigned j = 0; j < i; ++j) {
            const float weight = connectionWeight(blocks[i], blocks[j]);
            graph.addEdge(i, j, joinPieces ? std::max(weight, kFaintConnection) : weight);
        }
    }
    const std::vector<unsigned> order = graph.findOrder();
    for (unsigned k = 0; k < numBlocks; ++k) {
        blocks[order[k]].updateOrderIndex(k);
    }
    // Equal indexes come from netlists in separate pieces.
    std::stable_sort(blocks.begin(), blocks.end());

    out << "New order:" << std::endl;
    for (const Block& block : blocks) {
        out << block.getName() << "(" << block.getIndex() << ")" << std::setw(8);
    }
    out << std::setw(0) << std::endl << "Previous indexes:" << std::endl;
    for (const Block& block : blocks) {
        out << block.getOrigIndex() << "\t";
    }
    out << std::endl;
}

}  // namespace korvel
