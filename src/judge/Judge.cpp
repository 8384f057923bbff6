#include "judge/Judge.h"

#include <algorithm>
#include <cmath>

#include "base/Infinity.h"
#include "base/Invariant.h"

namespace korvel {

namespace {

// A die where it lies.
struct Lying {
    unsigned die;
    Box box;
};

bool isFinite(const PlacedDie& placed) {
    return std::isfinite(placed.at.x) && std::isfinite(placed.at.y);
}

// Those with finite coordinates.
std::vector<Lying> whereDiesLie(const Design& design, const Placement& placement) {
    std::vector<Lying> lying;
    for (unsigned die = 0; die < placement.size(); ++die) {
        const PlacedDie& placed = placement[die];
        if (isFinite(placed)) {
            const Extent size = turned(design.dies[die].size, placed.orient);
            const Spot high{placed.at.x + size.width, placed.at.y + size.height};
            lying.push_back({die, {placed.at, high}});
        }
    }
    return lying;
}

bool isOnOneBody(const Design::Net& net) {
    return std::all_of(net.pins.begin(), net.pins.end(), [&net](const Design::Pin& pin) {
        return pin.body == net.pins.front().body;
    });
}

void measureNets(const Design& design, const Placement& placement, Judgement& judgement) {
    for (const Design::Net& net : design.nets) {
        const double length = netLength(design, placement, net);
        judgement.wirelength += length;
        judgement.wirelengthBetweenDies += isOnOneBody(net) ? 0.0 : length;
    }
}

void measureDies(const Design& design, Region region, const std::vector<Lying>& lying,
                 Judgement& judgement) {
    double area = 0.0;
    for (const Design::Die& die : design.dies) {
        area += die.size.width * die.size.height;
    }
    judgement.utilization = area / (region.width * region.height);
    Box all;
    for (const Lying& die : lying) {
        all.add(die.box.low);
        all.add(die.box.high);
    }
    if (!all.isEmpty()) {
        judgement.low = all.low;
        judgement.extent = all.size();
    }
}

void findOutside(Region region, const std::vector<Lying>& lying, Judgement& judgement) {
    const auto beyond = [&judgement](double length) {
        return length > judgement.tolerance ? length : 0.0;
    };
    for (const auto& [die, box] : lying) {
        const Judgement::Outside outside{die, beyond(-box.low.x), beyond(box.high.x - region.width),
                                         beyond(-box.low.y), beyond(box.high.y - region.height)};
        if (std::max({outside.left, outside.right, outside.below, outside.above}) > 0.0) {
            judgement.outside.push_back(outside);
        }
    }
}

// No comparison finds fault with a coordinate that is no number.
void findNowhere(const Placement& placement, Judgement& judgement) {
    for (unsigned die = 0; die < placement.size(); ++die) {
        if (!isFinite(placement[die])) {
            judgement.outside.push_back(
                {die, kInfiniteLength, kInfiniteLength, kInfiniteLength, kInfiniteLength});
        }
    }
}

void findMirrored(const Placement& placement, Judgement& judgement) {
    for (unsigned die = 0; die < placement.size(); ++die) {
        if (orientIndex(placement[die].orient) >= kUnmirroredOrients) {
            judgement.mirrored.push_back(die);
        }
    }
}

void note(const Lying& a, const Lying& b, Extent shared, Judgement& judgement) {
    const Judgement::Overlap overlap{std::min(a.die, b.die), std::max(a.die, b.die), shared};
    ++judgement.overlapNum;
    judgement.overlapArea += overlap.area();
    if (judgement.overlaps.size() < kMostOverlaps) {
        judgement.overlaps.push_back(overlap);
    }
}

// A sweep from left to right: a die can only meet those that begin before it ends.
void findOverlaps(std::vector<Lying> lying, Judgement& judgement) {
    std::sort(lying.begin(), lying.end(), [](const Lying& a, const Lying& b) {
        return a.box.low.x != b.box.low.x ? a.box.low.x < b.box.low.x : a.die < b.die;
    });
    for (auto a = lying.begin(); a != lying.end(); ++a) {
        const double lastBegin = a->box.high.x - judgement.tolerance;
        for (auto b = a + 1; b != lying.end() && b->box.low.x < lastBegin; ++b) {
            const double width = std::min(a->box.high.x, b->box.high.x) - b->box.low.x;
            const double height =
                std::min(a->box.high.y, b->box.high.y) - std::max(a->box.low.y, b->box.low.y);
            if (width > judgement.tolerance && height > judgement.tolerance) {
                note(*a, *b, {width, height}, judgement);
            }
        }
    }
    std::stable_sort(judgement.overlaps.begin(), judgement.overlaps.end(),
                     [](const auto& a, const auto& b) { return a.area() > b.area(); });
}

}  // namespace

double touchingLength(Region region, double part) {
    return part * std::max(region.width, region.height);
}

Judgement judge(const Design& design, Region region, const Placement& placement, double tolerance) {
    KORVEL_INVARIANT(placement.size() == design.dies.size(), "a place for each die");
    Judgement judgement;
    judgement.tolerance = tolerance;
    const std::vector<Lying> lying = whereDiesLie(design, placement);
    measureNets(design, placement, judgement);
    measureDies(design, region, lying, judgement);
    findOutside(region, lying, judgement);
    findNowhere(placement, judgement);
    findMirrored(placement, judgement);
    findOverlaps(lying, judgement);
    return judgement;
}

Judgement judge(const Design& design, Region region, const Placement& placement) {
    return judge(design, region, placement, touchingLength(region));
}

}  // namespace korvel
