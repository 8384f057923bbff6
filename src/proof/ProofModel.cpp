#include "proof/ProofModel.h"

#include <algorithm>

namespace korvel {

namespace {

bool joinsTerminal(const Design& design, const Design::Net& net) {
    return std::any_of(net.pins.begin(), net.pins.end(),
                       [&](const Design::Pin& pin) { return !design.isDie(pin.body); });
}

}  // namespace

ProofModel::ProofModel(const Design& design, const NetModel& nets, Region region)
    : model(nets),
      dieLimits(DieLimits::generous(design, region)),
      bundleIndex((dieNum() + 1) * (dieNum() + 1), -1),
      terminalNets(std::any_of(design.nets.begin(), design.nets.end(), [&](const Design::Net& net) {
          return joinsTerminal(design, net);
      })) {
    for (std::size_t bundle = 0; bundle < nets.bundles().size(); ++bundle) {
        const auto& [a, b, weight] = nets.bundles()[bundle];
        bundleIndex[a * (dieNum() + 1) + b] = static_cast<int>(bundle);
    }
    settlePairs();
    settleGround();
}

std::optional<std::size_t> ProofModel::bundleOf(unsigned a, unsigned b) const {
    const int index = bundleIndex[std::min(a, b) * (dieNum() + 1) + std::max(a, b)];
    return index < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(index));
}

void ProofModel::settlePairs() {
    relatedLeasts.resize(dieNum() * dieNum());
    anyRelationLeasts.resize(dieNum() * dieNum());
    for (auto& byTurns : anyRelationLeasts) {
        for (auto& row : byTurns) {
            row.fill(kInfiniteLength);
        }
    }
    for (unsigned a = 0; a < dieNum(); ++a) {
        for (unsigned b = a + 1; b < dieNum(); ++b) {
            for (unsigned turnA = 0; turnA < kUnmirroredOrients; ++turnA) {
                for (unsigned turnB = 0; turnB < kUnmirroredOrients; ++turnB) {
                    for (unsigned where = 0; where < kTopologyNum; ++where) {
                        relatedLeasts[a * dieNum() + b][turnA][turnB][where] =
                            leastAt(a, b, turnA, turnB, static_cast<Topology>(where));
                    }
                }
            }
            settleAnyRelation(a, b);
        }
    }
}

void ProofModel::settleAnyRelation(unsigned a, unsigned b) {
    auto& ofA = anyRelationLeasts[a * dieNum() + b];
    auto& ofB = anyRelationLeasts[b * dieNum() + a];
    for (unsigned turnA = 0; turnA < kUnmirroredOrients; ++turnA) {
        for (unsigned turnB = 0; turnB < kUnmirroredOrients; ++turnB) {
            const auto& byWhere = relatedLeasts[a * dieNum() + b][turnA][turnB];
            const double least = *std::min_element(byWhere.begin(), byWhere.end());
            ofA[turnB][turnA] = ofB[turnA][turnB] = least;
            double& anyOfB = ofA[kUnmirroredOrients][turnA];
            double& anyOfA = ofB[kUnmirroredOrients][turnB];
            anyOfB = std::min(anyOfB, least);
            anyOfA = std::min(anyOfA, least);
        }
    }
}

// The axes do not depend on one another once the relation is known: along its axis the dies keep
// their least distance, along the other one only the region binds them.
double ProofModel::leastAt(unsigned a, unsigned b, unsigned turnA, unsigned turnB,
                           Topology where) const {
    const auto bundle = bundleOf(a, b);
    double sum = 0.0;
    for (const Axis axis : {kX, kY}) {
        const DieLimits::Range ofA = cornerRange(a, axis, turnA);
        const DieLimits::Range ofB = cornerRange(b, axis, turnB);
        double least = ofA.low - ofB.high;
        double most = ofA.high - ofB.low;
        if (where == firstAlong(axis)) {
            most = std::min(most, -leastDistance(a, b, axis, turnA));
        } else if (where == converse(firstAlong(axis))) {
            least = std::max(least, leastDistance(b, a, axis, turnB));
        }
        if (least > most) {
            return kInfiniteLength;
        }
        if (bundle) {
            sum += cost(*bundle, axis, turnA, turnB).leastWithin(least, most);
        }
    }
    return sum;
}

void ProofModel::settleGround() {
    groundLeasts.resize(dieNum());
    for (unsigned die = 0; die < dieNum(); ++die) {
        const auto bundle = bundleOf(die, ground());
        for (unsigned turn = 0; turn < kUnmirroredOrients; ++turn) {
            double& least = groundLeasts[die][turn];
            for (const Axis axis : {kX, kY}) {
                const DieLimits::Range range = cornerRange(die, axis, turn);
                if (range.isEmpty()) {
                    least = kInfiniteLength;
                } else if (bundle) {
                    least += cost(*bundle, axis, turn, 0).leastWithin(range.low, range.high);
                }
            }
        }
    }
}

double ProofModel::leastLength() const {
    double sum = model.fixedLength();
    for (const std::size_t bundle : model.bundlesInNetOrder()) {
        const auto& [a, b, weight] = model.bundles()[bundle];
        double least = kInfiniteLength;
        for (unsigned turnA = 0; turnA < kUnmirroredOrients; ++turnA) {
            if (b == ground()) {
                least = std::min(least, groundLeast(a, turnA));
                continue;
            }
            for (const auto& byWhere : relatedLeasts[a * dieNum() + b][turnA]) {
                least = std::min(least, *std::min_element(byWhere.begin(), byWhere.end()));
            }
        }
        sum += least;
    }
    return sum * (1.0 - kBoundError);
}

}  // namespace korvel
