#include "classic/node/BoundTables.h"

#include <cstdlib>

namespace korvel {

void BoundTables::resize(unsigned n) {
    numBlocks = n;
    const std::size_t cells = static_cast<std::size_t>(n) * n * kOrientPairs;
    minDistancesHor.assign(cells, 0.0F);
    minDistancesVer.assign(cells, 0.0F);
    orientPairMinima.assign(cells, 0.0F);
    levelMinDistance.clear();
    minLevelRemainingDist.clear();
    minTermDist.resize(static_cast<std::size_t>(n) * kUnmirroredOrients, 0.0F);
    minTermDistBlock.resize(n, 0.0F);
}

void BoundTables::updateMinDistances(unsigned a, unsigned b, Orient oa, Orient ob, float distance) {
    const auto turned = [](Orient o, unsigned quarterTurns) {
        return OrientConverter::rotation(o, quarterTurns);
    };
    minDistancesHor[pairCell(a, b, oa, ob)] = distance;
    minDistancesVer[pairCell(a, b, turned(oa, 1), turned(ob, 1))] = distance;
    minDistancesHor[pairCell(b, a, turned(ob, 2), turned(oa, 2))] = distance;
    minDistancesVer[pairCell(b, a, turned(ob, 3), turned(oa, 3))] = distance;
}

float BoundTables::getMinDistances(unsigned a, unsigned b, Orient oa, Orient ob,
                                   Topology topology) const {
    switch (topology) {
        case Topology::L:
            return minDistancesHor[pairCell(a, b, oa, ob)];
        case Topology::R:
            return minDistancesHor[pairCell(b, a, ob, oa)];
        case Topology::A:
            return minDistancesVer[pairCell(a, b, oa, ob)];
        case Topology::B:
            return minDistancesVer[pairCell(b, a, ob, oa)];
        case Topology::LAST:
            break;
    }
    std::cout << "Unknown topological orientation" << std::flush;
    std::exit(0);
}

void BoundTables::setMinOrientPairDist(unsigned a, unsigned b, Orient oa, Orient ob,
                                       float distance) {
    orientPairMinima[pairCell(a, b, oa, ob)] = distance;
    orientPairMinima[pairCell(b, a, ob, oa)] = distance;
}

void BoundTables::sumRemainingDistances() {
    minLevelRemainingDist = levelMinDistance;
    for (std::size_t k = minLevelRemainingDist.size(); k-- > 1;) {
        minLevelRemainingDist[k - 1] += minLevelRemainingDist[k];
    }
}

}  // namespace korvel
