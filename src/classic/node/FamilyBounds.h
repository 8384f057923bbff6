// What the tables say about the relations of a partial placement's newest block. All nodes of a
// family have that in common, and the search works on a family until it is done with it, so it is
// gathered once for each.
//
// Belongs to one worker. Allocates nothing once it has seen a node of each size.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "classic/node/BBNode.h"
#include "classic/node/BoundTables.h"

namespace korvel {

class FamilyBounds {
public:
    // What one relation of the newest block costs.
    struct RelationBounds {
        std::array<float, static_cast<unsigned>(Topology::LAST)> distances;  // by topology
        float remaining;  // the least that later relations, and all later blocks, still add
    };

    // `tables` must outlive it.
    FamilyBounds(const BoundTables& tables, unsigned numBlocks)
        : tables(tables), families(numBlocks + 1) {}

    // Of the relation that the node gets next. For a node that lacks one.
    const RelationBounds& nextRelation(const BBNode& node) {
        Family& family = families[node.numBlocks];
        if (family.name != node.family) {
            gather(node, family);
        }
        return family.relations[node.definedNodes];
    }

private:
    struct Family {
        std::uint64_t name = 0;
        std::vector<RelationBounds> relations;  // by earlier block
    };

    void gather(const BBNode& node, Family& family) const;

    const BoundTables& tables;
    std::vector<Family> families;  // by number of placed blocks
};

}  // namespace korvel
