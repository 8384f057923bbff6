#include "classic/node/FamilyBounds.h"

namespace korvel {

void FamilyBounds::gather(const BBNode& node, Family& family) const {
    const unsigned newest = node.numBlocks - 1;
    const std::vector<Orient>& orients = node.blocksOrients;
    family.name = node.family;
    family.relations.resize(newest);
    float remaining = tables.remainingAfter(newest);
    for (unsigned b = newest; b-- > 0;) {
        RelationBounds& relation = family.relations[b];
        relation.remaining = remaining;
        for (unsigned t = 0; t < relation.distances.size(); ++t) {
            relation.distances[t] = tables.getMinDistances(newest, b, orients[newest], orients[b],
                                                           static_cast<Topology>(t));
        }
        remaining += tables.minOrientPairDist(newest, b, orients[newest], orients[b]);
    }
}

}  // namespace korvel
