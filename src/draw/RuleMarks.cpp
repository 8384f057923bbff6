#include "draw/RuleMarks.h"

#include <algorithm>
#include <cmath>

#include "draw/Svg.h"
#include "report/RuleText.h"
#include "report/Text.h"

namespace korvel {

namespace {

constexpr const char* kHatchFill = "url(#keepout)";
constexpr const char* kEdgeDashes = "7 4";
constexpr const char* kStyle = "<style>.reach:hover{stroke-width:4}</style>\n";
constexpr double kFixedRadius = 6.5;
constexpr double kReachWidth = 1.6;

std::string hatchPattern() {
    const std::string line = svgElement("line", {{"x1", 0.0},
                                                 {"y1", 0.0},
                                                 {"x2", 0.0},
                                                 {"y2", 8.0},
                                                 {"stroke", colour::kQuietText},
                                                 {"stroke-width", 2.2}});
    const std::string pattern = svgElement("pattern",
                                           {{"id", "keepout"},
                                            {"width", 8.0},
                                            {"height", 8.0},
                                            {"patternUnits", "userSpaceOnUse"},
                                            {"patternTransform", "rotate(45)"}},
                                           line);
    return svgElement("defs", {}, pattern);
}

Rectangle cut(const Rectangle& rectangle, Region region) {
    return {{std::max(rectangle.low.x, 0.0), std::max(rectangle.low.y, 0.0)},
            {std::min(rectangle.high.x, region.width), std::min(rectangle.high.y, region.height)}};
}

std::string keepoutTitle(std::size_t number, const Rectangle& keepout) {
    const Extent size = keepout.size();
    return "keep-out " + std::to_string(number) + "\n" + numberText(size.width) + " \u00d7 " +
           numberText(size.height) + " at (" + numberText(keepout.low.x) + ", " +
           numberText(keepout.low.y) + ")";
}

std::string drawKeepout(std::size_t number, const Rectangle& keepout, Region region,
                        const View& view) {
    const Rectangle seen = cut(keepout, region);
    const Extent size = view.sizeOf(seen.size());
    if (size.width <= 0.0 || size.height <= 0.0) {
        return "";
    }
    const Spot corner = view.spotOf({seen.low.x, seen.high.y});
    return svgElement("rect",
                      {{"x", corner.x},
                       {"y", corner.y},
                       {"width", size.width},
                       {"height", size.height},
                       {"fill", kHatchFill},
                       {"stroke", colour::kQuietText},
                       {"stroke-width", 1.2}},
                      svgTitle(keepoutTitle(number, keepout)));
}

std::string drawEdge(const Rules::Edge& edge, Region region, const View& view) {
    const Extent size = view.sizeOf(
        {region.width - edge.left - edge.right, region.height - edge.bottom - edge.top});
    if (std::max({edge.left, edge.bottom, edge.right, edge.top}) == 0.0) {
        return "";
    }
    const Spot corner = view.spotOf({edge.left, region.height - edge.top});
    return svgElement("rect", {{"x", corner.x},
                               {"y", corner.y},
                               {"width", size.width},
                               {"height", size.height},
                               {"fill", "none"},
                               {"stroke", colour::kRegionEdge},
                               {"stroke-width", 1.2},
                               {"stroke-dasharray", kEdgeDashes}});
}

std::string fixedMark(Spot centre, double radius) {
    const auto circle = [centre](double r, const char* fill) {
        return svgElement("circle", {{"cx", centre.x}, {"cy", centre.y}, {"r", r}, {"fill", fill}});
    };
    return circle(radius, colour::kDieEdge) + circle(0.4 * radius, "#ffffff");
}

std::string redBox(Spot corner, Extent size, const std::string& title) {
    return svgElement("rect",
                      {{"x", corner.x},
                       {"y", corner.y},
                       {"width", size.width},
                       {"height", size.height},
                       {"fill", colour::kFault},
                       {"fill-opacity", 0.45},
                       {"stroke", colour::kFault},
                       {"stroke-width", 2.5}},
                      title);
}

Rectangle lying(const Design& design, const Placement& placement, unsigned die) {
    const auto& [at, orient] = placement[die];
    const Extent size = turned(design.dies[die].size, orient);
    return {at, {at.x + size.width, at.y + size.height}};
}

// Along an axis the stretch that two dies share, or that lies between them.
std::pair<double, double> between(const Rectangle& a, const Rectangle& b, Axis axis) {
    const double low = std::max(a.from(axis), b.from(axis));
    const double high = std::min(a.to(axis), b.to(axis));
    return std::minmax({low, high});
}

std::string drawGap(const Design& design, const Placement& placement, const RuleJudgement::Gap& gap,
                    const View& view) {
    const Rectangle a = lying(design, placement, gap.first);
    const Rectangle b = lying(design, placement, gap.second);
    const auto [left, right] = between(a, b, kX);
    const auto [bottom, top] = between(a, b, kY);
    const std::string title = design.dies[gap.first].name + " \u2013 " +
                              design.dies[gap.second].name + "\ngap of " + numberText(gap.found) +
                              ", " + numberText(gap.needed) + " needed";
    return redBox(view.spotOf({left, top}), view.sizeOf({right - left, top - bottom}),
                  svgTitle(title));
}

std::string drawGaps(const Design& design, const Placement& placement,
                     const RuleJudgement& judgement, const View& view) {
    constexpr std::size_t kMostGaps = 2000;
    std::string gaps;
    for (std::size_t at = 0; at < std::min(judgement.gaps.size(), kMostGaps); ++at) {
        gaps += drawGap(design, placement, judgement.gaps[at], view);
    }
    return svgElement("g", {{"id", "gaps"}}, gaps);
}

// From each pin to the middle of them all, which is one line if there are two.
std::string drawReach(const Design& design, const Placement& placement,
                      const RuleJudgement::Reach& reach, const View& view) {
    const Design::Net& net = design.nets[reach.net];
    Spot middle;
    for (const Design::Pin& pin : net.pins) {
        const Spot at = placeOf(design, placement, pin);
        const auto pinNum = static_cast<double>(net.pins.size());
        middle = {middle.x + at.x / pinNum, middle.y + at.y / pinNum};
    }
    const Spot to = view.spotOf(middle);
    std::string lines;
    for (const Design::Pin& pin : net.pins) {
        const Spot from = view.spotOf(placeOf(design, placement, pin));
        lines += svgElement("line", {{"x1", from.x}, {"y1", from.y}, {"x2", to.x}, {"y2", to.y}});
    }
    const std::string title = "net " + std::to_string(reach.net + 1) + "\n" +
                              numberText(reach.length) + " long, reach " +
                              numberText(reach.allowed);
    return svgElement("g", {{"class", "reach"}}, svgTitle(title) + lines);
}

std::string drawReaches(const Design& design, const Placement& placement,
                        const RuleJudgement& judgement, const View& view) {
    std::string nets;
    for (std::size_t at = 0; at < std::min(judgement.reaches.size(), kMostReachesDrawn); ++at) {
        nets += drawReach(design, placement, judgement.reaches[at], view);
    }
    return svgElement("g",
                      {{"id", "reaches"},
                       {"stroke", colour::kFault},
                       {"stroke-width", kReachWidth},
                       {"stroke-opacity", 0.8}},
                      nets);
}

}  // namespace

std::string drawGround(const Rules& rules, Region region, const View& view) {
    std::string keepouts;
    for (std::size_t at = 0; at < rules.keepouts.size(); ++at) {
        keepouts += drawKeepout(at + 1, rules.keepouts[at], region, view);
    }
    return (rules.keepouts.empty() ? "" : hatchPattern()) +
           svgElement("g", {{"id", "rules"}}, keepouts + drawEdge(rules.edge, region, view));
}

std::string drawFixed(const Design& design, const Rules& rules, const Placement& placement,
                      const View& view) {
    std::string marks;
    for (unsigned die = 0; die < rules.dies.size(); ++die) {
        if (!rules.die(die).at) {
            continue;
        }
        const auto& [at, orient] = placement[die];
        const Extent size = design.dies[die].size;
        const double side = view.lengthOf(std::min(size.width, size.height));
        const double radius = std::min(kFixedRadius, side / 12.0);
        const double inset = 1.8 * radius / view.lengthOf(1.0);
        const Spot from = turned(Spot{size.width - inset, size.height - inset}, size, orient);
        marks += fixedMark(view.spotOf({at.x + from.x, at.y + from.y}), radius);
    }
    return svgElement("g", {{"id", "fixed"}, {"pointer-events", "none"}}, marks);
}

std::string drawRuleFaults(const Design& design, const Placement& placement,
                           const RuleJudgement& judgement, const View& view) {
    return kStyle + drawReaches(design, placement, judgement, view) +
           drawGaps(design, placement, judgement, view);
}

std::vector<std::string> ruleFaultsOfDies(const Design& design, const RuleJudgement& judgement) {
    std::vector<std::string> faults(design.dies.size());
    for (const auto& [die, side, found, needed] : judgement.edges) {
        faults[die] += "\nis " + numberText(found) + " from the area's side (" + sideText(side) +
                       "), " + numberText(needed) + " needed";
    }
    for (const auto& [die, keepout, size] : judgement.keepouts) {
        faults[die] += "\nis in keep-out " + std::to_string(keepout + 1);
    }
    for (const auto& [die, by] : judgement.moved) {
        faults[die] += "\nis not where it is fixed";
    }
    for (const unsigned die : judgement.turned) {
        faults[die] += "\nis in an orientation that is not allowed";
    }
    for (const auto& [die, side, beyond] : judgement.within) {
        faults[die] +=
            "\nis beyond its rectangle (" + sideText(side) + ") by " + numberText(beyond);
    }
    return faults;
}

std::string keepoutSign(double width) {
    return svgElement("rect", {{"x", -width / 2},
                               {"y", -6.0},
                               {"width", width},
                               {"height", 12.0},
                               {"fill", kHatchFill},
                               {"stroke", colour::kQuietText}});
}

std::string edgeSign(double width) {
    return svgElement("line", {{"x1", -width / 2},
                               {"x2", width / 2},
                               {"stroke", colour::kRegionEdge},
                               {"stroke-width", 1.2},
                               {"stroke-dasharray", kEdgeDashes}});
}

std::string fixedSign() {
    return fixedMark({0.0, 0.0}, kFixedRadius);
}

std::string gapSign() {
    return redBox({-3.0, -6.0}, {6.0, 12.0}, "");
}

std::string reachSign(double width) {
    return svgElement("line", {{"x1", -width / 2},
                               {"x2", width / 2},
                               {"stroke", colour::kFault},
                               {"stroke-width", kReachWidth}});
}

}  // namespace korvel
