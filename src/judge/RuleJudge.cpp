#include "judge/RuleJudge.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "base/Invariant.h"

namespace korvel {

namespace {

using Side = RuleJudgement::Side;

constexpr std::array kSides{Side::kLeft, Side::kBottom, Side::kRight, Side::kTop};

// By side, how far one rectangle is inside of another; negative by how far it reaches beyond.
std::array<double, 4> insets(const Rectangle& inner, const Rectangle& outer) {
    return {inner.low.x - outer.low.x, inner.low.y - outer.low.y, outer.high.x - inner.high.x,
            outer.high.y - inner.high.y};
}

double lengthOf(const Design& design, const Placement& placement, const Design::Net& net) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Rectangle box{{kInfinity, kInfinity}, {-kInfinity, -kInfinity}};
    for (const Design::Pin& pin : net.pins) {
        const Spot at = placeOf(design, placement, pin);
        box.low = {std::min(box.low.x, at.x), std::min(box.low.y, at.y)};
        box.high = {std::max(box.high.x, at.x), std::max(box.high.y, at.y)};
    }
    return net.pins.empty() ? 0.0 : box.size().width + box.size().height;
}

// A die where it lies.
struct Lying {
    unsigned die;
    Rectangle box;
};

class RuleJudge {
public:
    RuleJudge(const Design& design, Region region, const Rules& rules, const Placement& placement,
              double tolerance)
        : design(design),
          region(region),
          rules(rules),
          placement(placement),
          tolerance(tolerance) {}
    RuleJudgement judge();

private:
    std::vector<Lying> whereDiesLie() const;
    void findGaps(std::vector<Lying> dies);
    void judgeGap(const Lying& a, const Lying& b);
    void judgeEdge(const Lying& die);
    void judgeKeepouts(const Lying& die);
    void judgePlace(const Lying& die);
    void judgeWithin(const Lying& die);
    void judgeNets();
    void sortWorstFirst();

    const Design& design;
    const Region region;
    const Rules& rules;
    const Placement& placement;
    const double tolerance;
    RuleJudgement judgement;
};

RuleJudgement RuleJudge::judge() {
    const std::vector<Lying> dies = whereDiesLie();
    findGaps(dies);
    for (const Lying& die : dies) {
        judgeEdge(die);
        judgeKeepouts(die);
        judgePlace(die);
        judgeWithin(die);
    }
    judgeNets();
    sortWorstFirst();
    return std::move(judgement);
}

// Those with finite coordinates.
std::vector<Lying> RuleJudge::whereDiesLie() const {
    std::vector<Lying> dies;
    for (unsigned die = 0; die < placement.size(); ++die) {
        const auto& [at, orient] = placement[die];
        if (std::isfinite(at.x) && std::isfinite(at.y)) {
            const Extent size = korvel::turned(design.dies[die].size, orient);
            dies.push_back({die, {at, {at.x + size.width, at.y + size.height}}});
        }
    }
    return dies;
}

// A sweep from left to right: a die is only too near to those that begin before it ends, or behind
// its end by less than a gap.
void RuleJudge::findGaps(std::vector<Lying> dies) {
    const double largest = rules.largestGap();
    if (largest == 0.0) {
        return;
    }
    std::sort(dies.begin(), dies.end(), [](const Lying& a, const Lying& b) {
        return a.box.low.x != b.box.low.x ? a.box.low.x < b.box.low.x : a.die < b.die;
    });
    for (auto a = dies.begin(); a != dies.end(); ++a) {
        const double lastBegin = a->box.high.x + largest;
        for (auto b = a + 1; b != dies.end() && b->box.low.x < lastBegin; ++b) {
            judgeGap(*a, *b);
        }
    }
}

void RuleJudge::judgeGap(const Lying& a, const Lying& b) {
    const Extent both = shared(a.box, b.box);
    const double gap = -std::min(both.width, both.height);
    const double needed = rules.leastGap(a.die, b.die);
    const bool isOverlap = gap < -tolerance;
    if (isOverlap || gap >= needed - tolerance) {
        return;
    }
    ++judgement.gapNum;
    if (judgement.gaps.size() < kMostOverlaps) {
        judgement.gaps.push_back(
            {std::min(a.die, b.die), std::max(a.die, b.die), std::max(0.0, gap), needed});
    }
}

// A fixed die lies where it is fixed, however near the edge. Beyond it, it is outside.
void RuleJudge::judgeEdge(const Lying& die) {
    if (rules.die(die.die).at) {
        return;
    }
    const auto& [left, bottom, right, top] = rules.edge;
    const std::array needed{left, bottom, right, top};
    const std::array found = insets(die.box, {{0.0, 0.0}, {region.width, region.height}});
    for (const Side side : kSides) {
        const auto at = static_cast<std::size_t>(side);
        if (found[at] < needed[at] - tolerance && found[at] >= -tolerance) {
            judgement.edges.push_back({die.die, side, std::max(0.0, found[at]), needed[at]});
        }
    }
}

void RuleJudge::judgeKeepouts(const Lying& die) {
    for (unsigned keepout = 0; keepout < rules.keepouts.size(); ++keepout) {
        const Extent both = shared(die.box, rules.keepouts[keepout]);
        if (both.width > tolerance && both.height > tolerance) {
            judgement.keepouts.push_back({die.die, keepout, both});
        }
    }
}

void RuleJudge::judgePlace(const Lying& die) {
    const Rules::Die& ruled = rules.die(die.die);
    if (ruled.at) {
        const Spot by{die.box.low.x - ruled.at->x, die.box.low.y - ruled.at->y};
        if (std::max(std::abs(by.x), std::abs(by.y)) > tolerance) {
            judgement.moved.push_back({die.die, by});
        }
    }
    const Orient orient = placement[die.die].orient;
    if (orientIndex(orient) < kUnmirroredOrients && !ruled.orients.has(orient)) {
        judgement.turned.push_back(die.die);
    }
}

void RuleJudge::judgeWithin(const Lying& die) {
    const auto& within = rules.die(die.die).within;
    if (!within) {
        return;
    }
    const std::array inside = insets(die.box, *within);
    for (const Side side : kSides) {
        const double beyond = -inside[static_cast<std::size_t>(side)];
        if (beyond > tolerance) {
            judgement.within.push_back({die.die, side, beyond});
        }
    }
}

void RuleJudge::judgeNets() {
    for (unsigned net = 0; net < design.nets.size(); ++net) {
        const auto& [weight, reach] = rules.net(net);
        const double length = lengthOf(design, placement, design.nets[net]);
        judgement.weightedWirelength += weight * length;
        if (length > reach + tolerance) {
            judgement.reaches.push_back({net, length, reach});
        }
    }
}

void RuleJudge::sortWorstFirst() {
    const auto sort = [](auto& faults, auto amount) {
        std::stable_sort(faults.begin(), faults.end(),
                         [amount](const auto& a, const auto& b) { return amount(a) > amount(b); });
    };
    sort(judgement.gaps, [](const auto& gap) { return gap.needed - gap.found; });
    sort(judgement.edges, [](const auto& edge) { return edge.needed - edge.found; });
    sort(judgement.keepouts, [](const auto& keepout) { return keepout.area(); });
    sort(judgement.moved, [](const auto& moved) { return std::hypot(moved.by.x, moved.by.y); });
    sort(judgement.within, [](const auto& within) { return within.beyond; });
    sort(judgement.reaches, [](const auto& reach) { return reach.length - reach.allowed; });
}

}  // namespace

RuleJudgement judgeRules(const Design& design, Region region, const Rules& rules,
                         const Placement& placement, double tolerance) {
    KORVEL_INVARIANT(placement.size() == design.dies.size(), "a place for each die");
    return RuleJudge(design, region, rules, placement, tolerance).judge();
}

}  // namespace korvel
