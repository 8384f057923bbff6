#include "draw/Picture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "draw/Bundles.h"
#include "draw/Caption.h"
#include "draw/Label.h"
#include "draw/Svg.h"
#include "draw/View.h"
#include "report/Text.h"

namespace korvel {

namespace {

// More would neither be seen nor be shown quickly.
constexpr std::size_t kMostBundles = 1500;

// What answers to the mouse; programs without one pass over it.
constexpr const char* kStyle =
    "<style>.die:hover rect{stroke-width:3.5}.bundle:hover{stroke-opacity:1}"
    ".wire:hover{stroke-width:3}</style>\n";

Extent sizeOf(const Design& design, const Placement& placement, unsigned die) {
    return turned(design.dies[die].size, placement[die].orient);
}

std::string nameOf(const Design& design, unsigned body) {
    return design.isDie(body) ? design.dies[body].name : design.terminalOf(body).name;
}

View viewOfAll(const Design& design, Region region, const Placement& placement,
               unsigned legendLineNum) {
    Spot low{0.0, 0.0};
    Spot high{region.width, region.height};
    const auto add = [&low, &high](Spot spot) {
        low = {std::min(low.x, spot.x), std::min(low.y, spot.y)};
        high = {std::max(high.x, spot.x), std::max(high.y, spot.y)};
    };
    for (unsigned die = 0; die < placement.size(); ++die) {
        const Spot at = placement[die].at;
        const Extent size = sizeOf(design, placement, die);
        add(at);
        add({at.x + size.width, at.y + size.height});
    }
    for (const Design::Terminal& terminal : design.terminals) {
        add(terminal.at);
    }
    return {low, high, legendLineNum};
}

std::string drawRegion(Region region, const View& view) {
    const Spot corner = view.spotOf({0.0, region.height});
    return svgElement("rect", {{"x", corner.x},
                               {"y", corner.y},
                               {"width", view.lengthOf(region.width)},
                               {"height", view.lengthOf(region.height)},
                               {"fill", colour::kRegion},
                               {"stroke", colour::kRegionEdge},
                               {"stroke-width", 1.5}});
}

// --- Dies ------------------------------------------------------------------------------------

// By die, what is wrong with it, a line each; empty if nothing is.
std::vector<std::string> faultsOfDies(const Design& design, const Judgement& judgement,
                                      const Ruled* ruled) {
    std::vector<std::string> faults = ruled != nullptr
                                          ? ruleFaultsOfDies(design, ruled->judgement)
                                          : std::vector<std::string>(design.dies.size());
    for (const Judgement::Overlap& overlap : judgement.overlaps) {
        faults[overlap.first] += "\noverlaps " + nameOf(design, overlap.second);
        faults[overlap.second] += "\noverlaps " + nameOf(design, overlap.first);
    }
    for (const Judgement::Outside& outside : judgement.outside) {
        faults[outside.die] += "\nis outside the area";
    }
    for (const unsigned die : judgement.mirrored) {
        faults[die] += "\nis mirrored";
    }
    return faults;
}

std::string titleOf(const Design::Die& die, const PlacedDie& placed) {
    const Extent size = turned(die.size, placed.orient);
    return die.name + "\n" + numberText(size.width) + " \u00d7 " + numberText(size.height) +
           " at (" + numberText(placed.at.x) + ", " + numberText(placed.at.y) + "), orientation " +
           OrientConverter::OrientToString(placed.orient);
}

// A triangle in the corner that is the lower-left one in orientation N. Its longer leg lies along
// the lower edge, so that a mirrored die shows too.
std::string drawMark(const Design::Die& die, const PlacedDie& placed, const View& view) {
    constexpr double kPart = 0.16;
    constexpr double kLongest = 16.0;
    constexpr double kSlope = 0.6;
    const double side = std::min(die.size.width, die.size.height);
    const double longLeg = std::min(kPart * side, kLongest / view.lengthOf(1.0));
    std::string points;
    for (const Spot offset : {Spot{0.0, 0.0}, Spot{longLeg, 0.0}, Spot{0.0, kSlope * longLeg}}) {
        const Spot from = turned(offset, die.size, placed.orient);
        const Spot at = view.spotOf({placed.at.x + from.x, placed.at.y + from.y});
        points += svgNumber(at.x) + "," + svgNumber(at.y) + " ";
    }
    return svgElement("polygon", {{"points", points}, {"fill", colour::kDieEdge}});
}

std::string drawDie(const Design::Die& die, const PlacedDie& placed, const std::string& faults,
                    const View& view) {
    const bool isSound = faults.empty();
    const Extent size = view.sizeOf(turned(die.size, placed.orient));
    const Spot lowerLeft = view.spotOf(placed.at);
    const std::string body =
        svgElement("rect", {{"x", lowerLeft.x},
                            {"y", lowerLeft.y - size.height},
                            {"width", size.width},
                            {"height", size.height},
                            {"fill", colour::kDie},
                            {"fill-opacity", isSound ? 1.0 : 0.7},
                            {"stroke", isSound ? colour::kDieEdge : colour::kFault},
                            {"stroke-width", isSound ? 1.2 : 2.5},
                            {"stroke-dasharray", isSound ? "none" : "7 4"}});
    return svgElement("g", {{"class", "die"}},
                      svgTitle(titleOf(die, placed) + faults) + body + drawMark(die, placed, view));
}

std::string drawDies(const Design& design, const Placement& placement,
                     const std::vector<std::string>& faults, const View& view) {
    std::string dies;
    for (unsigned die = 0; die < placement.size(); ++die) {
        dies += drawDie(design.dies[die], placement[die], faults[die], view);
    }
    return svgElement("g", {{"id", "dies"}}, dies);
}

// On a halo, as bundles may run below it.
std::string drawName(const std::string& name, const Label& label, Spot centre) {
    constexpr double kBaseline = 0.35;  // below the middle of small letters
    const std::string turn = "rotate(" + svgNumber(label.isVertical ? -90.0 : 0.0) + " " +
                             svgNumber(centre.x) + " " + svgNumber(centre.y) + ")";
    const std::string words = xmlText(name);
    const double y = centre.y + kBaseline * label.fontSize;
    return svgElement("g", {{"transform", turn}, {"font-size", label.fontSize}},
                      svgElement("text",
                                 {{"x", centre.x},
                                  {"y", y},
                                  {"stroke", colour::kDie},
                                  {"stroke-width", 0.22 * label.fontSize},
                                  {"stroke-opacity", 0.85},
                                  {"stroke-linejoin", "round"}},
                                 words) +
                          svgElement("text", {{"x", centre.x}, {"y", y}}, words));
}

std::string drawNames(const Design& design, const Placement& placement, const View& view) {
    std::string names;
    for (unsigned die = 0; die < placement.size(); ++die) {
        const Extent size = view.sizeOf(sizeOf(design, placement, die));
        const Spot lowerLeft = view.spotOf(placement[die].at);
        if (const auto label = fitLabel(design.dies[die].name, size)) {
            names += drawName(design.dies[die].name, *label,
                              {lowerLeft.x + size.width / 2, lowerLeft.y - size.height / 2});
        }
    }
    return svgElement("g",
                      {{"id", "names"},
                       {"text-anchor", "middle"},
                       {"fill", colour::kText},
                       {"pointer-events", "none"}},
                      names);
}

// --- Connections -----------------------------------------------------------------------------

std::string titleOf(const Design& design, const Bundle& bundle) {
    const std::string farther =
        bundle.fartherNetNum == 0
            ? ""
            : "\n" + std::to_string(bundle.fartherNetNum) + " of them go on to other dies";
    return nameOf(design, bundle.first) + " \u2013 " + nameOf(design, bundle.second) + "\n" +
           countText(bundle.netNum, "net", "nets") + farther;
}

std::string drawLine(const Design& design, const Bundle& bundle, const char* kind, double width,
                     const View& view) {
    const Spot from = view.spotOf(bundle.from);
    const Spot to = view.spotOf(bundle.to);
    return svgElement("line",
                      {{"class", kind},
                       {"x1", from.x},
                       {"y1", from.y},
                       {"x2", to.x},
                       {"y2", to.y},
                       {"stroke-width", width}},
                      svgTitle(titleOf(design, bundle)));
}

// Many lines are drawn lighter, so that dies are still seen behind them.
double opacityOf(std::size_t lineNum) {
    constexpr double kOfFew = 0.6;
    constexpr double kHalved = 700.0;
    return kOfFew / (1.0 + static_cast<double>(lineNum) / kHalved);
}

// A part of the narrower side of a middling die, so that bundles do not bury what they join.
double thickestBundle(const Design& design, const View& view) {
    constexpr double kPart = 0.16;
    constexpr double kLeast = 4.0;
    constexpr double kMost = 14.0;
    std::vector<double> sides;
    for (const Design::Die& die : design.dies) {
        sides.push_back(view.lengthOf(std::min(die.size.width, die.size.height)));
    }
    const auto middle = sides.begin() + static_cast<std::ptrdiff_t>(sides.size() / 2);
    std::nth_element(sides.begin(), middle, sides.end());
    return std::clamp(kPart * *middle, kLeast, kMost);
}

// Widths grow with the square root of the number of nets, so that few stay visible beside many.
// Thin bundles lie on top, where the mouse finds them.
std::string drawBundles(const Design& design, const std::vector<Bundle>& bundles,
                        const View& view) {
    constexpr double kOneNet = 1.6;
    constexpr double kThinnest = 0.5;
    if (bundles.empty()) {
        return "";
    }
    const double thickest = thickestBundle(design, view);
    const double unit = std::min(kOneNet, thickest / std::sqrt(bundles.front().weight));
    std::string lines;
    for (std::size_t at = 0; at < std::min(bundles.size(), kMostBundles); ++at) {
        const double width = std::max(kThinnest, unit * std::sqrt(bundles[at].weight));
        lines += drawLine(design, bundles[at], "bundle", width, view);
    }
    return svgElement("g",
                      {{"id", "bundles"},
                       {"stroke", colour::kBundle},
                       {"stroke-opacity", opacityOf(bundles.size())},
                       {"stroke-linecap", "round"}},
                      lines);
}

std::string drawWires(const Design& design, const std::vector<Bundle>& wires, const View& view) {
    std::string lines;
    for (const Bundle& wire : wires) {
        lines += drawLine(design, wire, "wire", 0.8, view);
    }
    return svgElement("g",
                      {{"id", "wires"},
                       {"stroke", colour::kTerminal},
                       {"stroke-opacity", opacityOf(wires.size())}},
                      lines);
}

std::string drawTerminals(const Design& design, const View& view) {
    std::string terminals;
    for (const Design::Terminal& terminal : design.terminals) {
        const std::string title = terminal.name + "\nterminal at (" + numberText(terminal.at.x) +
                                  ", " + numberText(terminal.at.y) + ")";
        terminals += svgElement("g", {}, svgTitle(title) + terminalSign(view.spotOf(terminal.at)));
    }
    return svgElement("g", {{"id", "terminals"}}, terminals);
}

}  // namespace

std::string drawSvg(const Design& design, Region region, const Placement& placement,
                    const Judgement& judgement, const Ruled* ruled) {
    const Bundles bundles = bundlesOf(design, placement);
    const View view = viewOfAll(design, region, placement, ruled != nullptr ? 3 : 1);
    const std::size_t bundleNum = bundles.betweenDies.size();
    const std::size_t hiddenNum = bundleNum - std::min(bundleNum, kMostBundles);
    const std::string background = svgElement(
        "rect", {{"width", view.width()}, {"height", view.height()}, {"fill", "#ffffff"}});
    return svgElement(
        "svg",
        {{"xmlns", "http://www.w3.org/2000/svg"},
         {"viewBox", "0 0 " + svgNumber(view.width()) + " " + svgNumber(view.height())},
         {"width", view.width()},
         {"height", view.height()},
         {"font-family", "Helvetica, Arial, 'Liberation Sans', sans-serif"}},
        "\n" + svgTitle(design.name) + "\n" + kStyle + background + drawRegion(region, view) +
            (ruled != nullptr ? drawGround(ruled->rules, region, view) : "") +
            drawDies(design, placement, faultsOfDies(design, judgement, ruled), view) +
            drawBundles(design, bundles.betweenDies, view) +
            drawWires(design, bundles.toTerminals, view) + drawTerminals(design, view) +
            (ruled != nullptr ? drawFixed(design, ruled->rules, placement, view) +
                                    drawRuleFaults(design, placement, ruled->judgement, view)
                              : "") +
            drawNames(design, placement, view) +
            drawCaption({design, region, judgement, bundles, hiddenNum, ruled}, view));
}

}  // namespace korvel
