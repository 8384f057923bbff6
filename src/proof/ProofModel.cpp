#include "proof/ProofModel.h"

#include <algorithm>
#include <limits>

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The body of a pin; all terminals are the ground.
unsigned bodyOf(const Design& design, const Design::Pin& pin) {
    return std::min<unsigned>(pin.body, static_cast<unsigned>(design.dies.size()));
}

void coverPin(const Design& design, const Design::Pin& pin, std::array<PinRange, kTurns>& ranges) {
    if (!design.isDie(pin.body)) {
        const Spot at = design.terminalOf(pin.body).at;
        ranges[0].cover(at.x);
        ranges[1].cover(at.y);
        return;
    }
    for (unsigned turn = 0; turn < kTurns; ++turn) {
        const Extent size = design.dies[pin.body].size;
        ranges[turn].cover(turned(pin.offset, size, static_cast<Orient>(turn)).x);
    }
}

}  // namespace

ProofModel::ProofModel(const Design& design, Region region)
    : dieNum(static_cast<unsigned>(design.dies.size())),
      region(region),
      bundleIndex((dieNum + 1) * (dieNum + 1), -1) {
    for (const Design::Die& die : design.dies) {
        extents.push_back({die.size.width, die.size.height});
    }
    for (const Design::Net& net : design.nets) {
        addNet(design, net);
    }
    for (Bundle& bundle : bundles) {
        for (auto& row : bundle.costs) {
            for (BundleCost& cost : row) {
                cost.finish();
            }
        }
        bundle.netNum = bundle.costs[0][0].getNetNum();
    }
    settlePairs();
    settleGround();
}

void ProofModel::addNet(const Design& design, const Design::Net& net) {
    WideNet gathered;
    for (const Design::Pin& pin : net.pins) {
        const unsigned body = bodyOf(design, pin);
        auto part = std::find_if(gathered.parts.begin(), gathered.parts.end(),
                                 [&](const WideNet::Part& other) { return other.body == body; });
        if (part == gathered.parts.end()) {
            part = gathered.parts.insert(part, {body, {}});
        }
        coverPin(design, pin, part->ranges);
    }
    for (const WideNet::Part& part : gathered.parts) {
        terminalNets = terminalNets || part.body == ground();
    }
    if (gathered.parts.size() == 1) {
        const auto& ranges = gathered.parts[0].ranges;
        fixedLength += (ranges[0].high - ranges[0].low) + (ranges[1].high - ranges[1].low);
    } else if (gathered.parts.size() == 2) {
        addToBundle(gathered);
    } else if (!gathered.parts.empty()) {
        wideNets.push_back(std::move(gathered));
        ++netNum;
    }
}

void ProofModel::addToBundle(const WideNet& net) {
    const bool ordered = net.parts[0].body < net.parts[1].body;
    const WideNet::Part& a = net.parts[ordered ? 0 : 1];
    const WideNet::Part& b = net.parts[ordered ? 1 : 0];
    Bundle& bundle = bundleFor(a.body, b.body);
    for (unsigned turnA = 0; turnA < kTurns; ++turnA) {
        for (unsigned turnB = 0; turnB < kTurns; ++turnB) {
            // The ground has no turns but 0 and 1.
            const unsigned seen = b.body == ground() ? turnB % kAxisNum : turnB;
            bundle.costs[turnA][turnB].add(a.ranges[turnA], b.ranges[seen]);
        }
    }
    ++netNum;
}

ProofModel::Bundle& ProofModel::bundleFor(unsigned a, unsigned b) {
    int& index = bundleIndex[a * (dieNum + 1) + b];
    if (index < 0) {
        index = static_cast<int>(bundles.size());
        bundles.push_back({a, b, {}, 0});
    }
    return bundles[index];
}

const ProofModel::Bundle* ProofModel::bundleOf(unsigned a, unsigned b) const {
    const int index = bundleIndex[std::min(a, b) * (dieNum + 1) + std::max(a, b)];
    return index < 0 ? nullptr : &bundles[index];
}

void ProofModel::settlePairs() {
    relatedLeasts.resize(dieNum * dieNum);
    anyRelationLeasts.resize(dieNum * dieNum);
    for (auto& byTurns : anyRelationLeasts) {
        for (auto& row : byTurns) {
            row.fill(kInfinity);
        }
    }
    for (unsigned a = 0; a < dieNum; ++a) {
        for (unsigned b = a + 1; b < dieNum; ++b) {
            for (unsigned turnA = 0; turnA < kTurns; ++turnA) {
                for (unsigned turnB = 0; turnB < kTurns; ++turnB) {
                    for (unsigned where = 0; where < kRelations; ++where) {
                        relatedLeasts[a * dieNum + b][turnA][turnB][where] =
                            leastAt(a, b, turnA, turnB, where);
                    }
                }
            }
            settleAnyRelation(a, b);
        }
    }
}

void ProofModel::settleAnyRelation(unsigned a, unsigned b) {
    auto& ofA = anyRelationLeasts[a * dieNum + b];
    auto& ofB = anyRelationLeasts[b * dieNum + a];
    for (unsigned turnA = 0; turnA < kTurns; ++turnA) {
        for (unsigned turnB = 0; turnB < kTurns; ++turnB) {
            const auto& byWhere = relatedLeasts[a * dieNum + b][turnA][turnB];
            const double least = *std::min_element(byWhere.begin(), byWhere.end());
            ofA[turnB][turnA] = ofB[turnA][turnB] = least;
            ofA[kTurns][turnA] = std::min(ofA[kTurns][turnA], least);
            ofB[kTurns][turnB] = std::min(ofB[kTurns][turnB], least);
        }
    }
}

// The axes do not depend on one another once the relation is known: along its axis the dies are at
// least one extent apart, along the other one only the region binds them.
double ProofModel::leastAt(unsigned a, unsigned b, unsigned turnA, unsigned turnB,
                           unsigned where) const {
    const Bundle* bundle = bundleOf(a, b);
    double sum = 0.0;
    for (unsigned axis = 0; axis < kAxisNum; ++axis) {
        double from = -room(a, axis, turnA);
        double to = room(b, axis, turnB);
        const bool isLow = where == static_cast<unsigned>(axis == 0 ? Topology::L : Topology::B);
        const bool isHigh = where == static_cast<unsigned>(axis == 0 ? Topology::R : Topology::A);
        if (isLow) {
            from = extent(a, axis, turnA);
        } else if (isHigh) {
            to = -extent(b, axis, turnB);
        }
        if (from > to) {
            return kInfinity;
        }
        if (bundle != nullptr) {
            sum += bundle->along(axis, turnA, turnB).leastWithin(from, to);
        }
    }
    return sum;
}

void ProofModel::settleGround() {
    groundLeasts.resize(dieNum);
    for (unsigned die = 0; die < dieNum; ++die) {
        const Bundle* bundle = bundleOf(die, ground());
        for (unsigned turn = 0; turn < kTurns; ++turn) {
            double& least = groundLeasts[die][turn];
            for (unsigned axis = 0; axis < kAxisNum; ++axis) {
                if (room(die, axis, turn) < 0.0) {
                    least = kInfinity;
                } else if (bundle != nullptr) {
                    least += bundle->along(axis, turn, 0).leastWithin(-room(die, axis, turn), 0.0);
                }
            }
        }
    }
}

double ProofModel::leastLength() const {
    double sum = fixedLength;
    for (const Bundle& bundle : bundles) {
        double least = kInfinity;
        for (unsigned turnA = 0; turnA < kTurns; ++turnA) {
            if (bundle.b == ground()) {
                least = std::min(least, groundLeast(bundle.a, turnA));
                continue;
            }
            for (const auto& byWhere : relatedLeasts[bundle.a * dieNum + bundle.b][turnA]) {
                least = std::min(least, *std::min_element(byWhere.begin(), byWhere.end()));
            }
        }
        sum += least;
    }
    return sum * (1.0 - kNearness);
}

}  // namespace korvel
