#include "classic/search/NodeEstimator.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace korvel {

namespace {

// The bound on the length is worked out up to this much more than is enough, since it is rounded.
constexpr double kMoreThanEnough = 1.0001;

// Conversion to float may round the bound up, and then it would be none.
float roundDown(double bound) {
    return std::nextafter(static_cast<float>(bound), 0.0F);
}

// Strictly better bounds only: a tie cannot improve the best placement.
bool isBetter(float wirelength, float remaining, float bestWL) {
    return bestWL > remaining + wirelength;
}

[[noreturn]] void endOnInadmissible(const BBNode& node) {
    std::cout << "ERROR: Inadmissible value definedNodes or numBlocks // Placer::estimateNode"
              << std::endl
              << "definedNodes: " << node.definedNodes << std::endl
              << "numBlocks: " << node.numBlocks << std::endl;
    std::exit(0);
}

}  // namespace

bool NodeEstimator::estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const {
    // 1. Nothing to measure before two blocks are related.
    if (node.numBlocks < 2 || node.definedNodes == 0) {
        return true;
    }
    if (node.definedNodes > node.numBlocks - 1) {
        endOnInadmissible(node);
    }

    // 2. Cheap tests first: a cycle in either graph, then the area.
    if (!node.sortGraphs()) {
        return false;
    }
    const bool isComplete = node.isBlockComplete();
    if (isComplete) {
        ++worker.counters.sortedNodes;
    }
    if (!hasRoom(node, isComplete)) {
        return false;
    }

    // 3. Only block-complete nodes pay for alignment and wirelength, and of these not the ones
    // that no alignment can save.
    const auto isTooLong = [&](float wirelength) {
        return !isBetter(wirelength, node.remaining, bestWL);
    };
    if (isComplete) {
        if (isHopeless(node, node.remaining, bestWL, worker)) {
            return false;
        }
        node.placeAndAlign(worker.placement, areaConst, area);
        node.wirelength = worker.placement.partialHPWL(isTooLong);
    }
    return !isTooLong(node.wirelength);
}

// Finds the coordinates where they are needed: for the area, and for the wirelength.
bool NodeEstimator::hasRoom(BBNode& node, bool isComplete) const {
    if (isComplete || areaConst) {
        node.findCoords();
    }
    if (!areaConst) {
        return true;
    }
    node.updateSizes();
    return !(node.width > area.width || node.height > area.height);
}

bool NodeEstimator::isHopeless(const BBNode& node, float remaining, float bestWL,
                               SearchWorker& worker) const {
    if (bestWL == std::numeric_limits<float>::max() || !areaConst) {
        return false;
    }
    const double enough = kMoreThanEnough * (double{bestWL} - remaining);
    const LengthBound& bound = worker.tables.lengthBound;
    const float least = roundDown(bound.leastLength(node, worker.boundSpace, enough));
    return !isBetter(least, remaining, bestWL);
}

}  // namespace korvel
