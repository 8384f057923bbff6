// The lower bound of a part of all placements, and what it says about how to divide it further.
//
// The bound is the sum of
//   - the exact optimum of the nets between turned dies and the ground, along x and y, under the
//     relations that are decided; wide nets take part with their turned bodies,
//   - for every pair of turned dies whose nets are not part of that, the least that these nets can
//     cost in the relations that are still open,
//   - for every die without a turn, the least over its turns of what its nets to the ground and to
//     the turned dies, and to dies of lower number without a turn, can cost together,
//   - the nets on one body.
// Every net is in one of them only: the bundle of two bodies goes as a whole into the first, or
// into the second or third; wide nets only into the first. Each is a minimum over more than the
// placements of the part, so the sum of minima is not above the minimum of the sum.
//
// One per thread; refers to the model.
#pragma once

#include <optional>
#include <vector>

#include "proof/AxisOptimum.h"
#include "proof/ProofModel.h"
#include "proof/ProofNode.h"
#include "proof/Symmetry.h"

namespace korvel {

class NodeBounder {
public:
    // With symmetries, placements of which another image is looked for count as none.
    explicit NodeBounder(const ProofModel& model, const Symmetry* symmetry = nullptr);

    // All placements.
    ProofNode root();

    // The node with a die turned, or with a pair's relation decided, bounded. Nothing if no
    // placement is left in it. A bound that reaches the limit need not be the best one there is.
    std::optional<ProofNode> withTurn(const ProofNode& node, unsigned die, unsigned turn,
                                      double limit);
    std::optional<ProofNode> withRelation(const ProofNode& node, unsigned low, unsigned high,
                                          Topology where, double limit);

    // How deep two turned dies overlap at the node's positions; 0 or less if they do not.
    double overlap(const ProofNode& node, unsigned a, unsigned b) const;

private:
    bool settle(ProofNode& node, std::array<bool, kAxes> changed, double limit);
    void numberBodies(const ProofNode& node);
    bool propagate(ProofNode& node, std::array<bool, kAxes>& changed);
    bool longestPaths(const ProofNode& node);
    bool narrow(ProofNode& node, unsigned low, unsigned high, std::array<bool, kAxes>& changed);
    bool countPairs(ProofNode& node, bool evenUndecided) const;
    ProofNode betterCounted(const ProofNode& node);
    double total(const ProofNode& node) const;
    void workOut(ProofNode& node, Axis axis);
    void addNets(const ProofNode& node, Axis axis);
    void addWideNets(const ProofNode& node, Axis axis);
    template <typename Take>
    void forGaps(const ProofNode& node, Axis axis, const Take& take) const;
    double outstanding(const ProofNode& node) const;
    double leastOfPair(const ProofNode& node, unsigned low, unsigned high) const;
    double leastOfDie(const ProofNode& node, unsigned die) const;
    double leastDistance(const ProofNode& node, unsigned first, unsigned second, Axis axis) const {
        return model.leastDistance(first, second, axis, node.turn[first]);
    }

    const ProofModel& model;
    const Symmetry* symmetry;
    AxisOptimum optimum;
    std::vector<unsigned> bodies;                        // that take part now; the ground last
    std::array<unsigned, kMaxProofDies + 1> numberOf{};  // of a body among those
    // How far one body is at least above another, along both axes.
    using Paths = std::array<std::array<double, kMaxProofDies + 1>, kMaxProofDies + 1>;
    std::array<Paths, kAxes> paths{};
};

}  // namespace korvel
