#include "draw/Caption.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "draw/Label.h"
#include "draw/Svg.h"
#include "report/RuleText.h"
#include "report/Text.h"

namespace korvel {

namespace {

constexpr double kNameFont = 20.0;
constexpr double kFiguresFont = 14.0;
constexpr double kLegendFont = 12.0;
// Of the lines of text, below the caption's top.
constexpr double kNameLine = 16.0;
constexpr double kFiguresLine = 39.0;
constexpr double kLegendLine = 64.0;

// A line of text, smaller if it would not fit otherwise.
std::string textLine(const std::string& text, double fontSize, double line, const char* ink,
                     const View& view) {
    const double fitting = std::min(fontSize, view.captionWidth() / textWidth(text));
    return svgElement("text",
                      {{"x", View::kMargin},
                       {"y", view.captionTop() + line},
                       {"font-size", fitting},
                       {"fill", ink}},
                      xmlText(text));
}

std::string allFaultCounts(const CaptionFacts& facts) {
    const std::string faults = faultCounts(facts.judgement);
    const std::string ofRules =
        facts.ruled == nullptr ? "" : ruleFaultCounts(facts.ruled->judgement);
    return faults + (faults.empty() || ofRules.empty() ? "" : ", ") + ofRules;
}

std::string figuresText(const CaptionFacts& facts) {
    const Judgement& judgement = facts.judgement;
    const double percent = std::round(1000.0 * judgement.utilization) / 10.0;
    const bool isWeighted = facts.ruled != nullptr && facts.ruled->rules.hasWeights();
    return "HPWL " + numberText(judgement.wirelength) +
           (isWeighted ? ", weighted " + numberText(facts.ruled->judgement.weightedWirelength)
                       : "") +
           " \u00b7 area " + numberText(facts.region.width) + " \u00d7 " +
           numberText(facts.region.height) + ", " + numberText(percent) + " % used \u00b7 " +
           countText(facts.design.dies.size(), "die", "dies") + ", " +
           countText(facts.design.nets.size(), "net", "nets");
}

// A sign and what it means.
struct LegendEntry {
    std::string sign;  // SVG, in a box of kSignWidth around the origin
    std::string meaning;
};
constexpr double kSignWidth = 26.0;
constexpr double kGap = 8.0;

std::string stroke(double width, const char* ink) {
    return svgElement("line", {{"x1", -kSignWidth / 2},
                               {"x2", kSignWidth / 2},
                               {"stroke", ink},
                               {"stroke-width", width}});
}

std::vector<LegendEntry> legendOf(const CaptionFacts& facts) {
    std::vector<LegendEntry> legend{
        {svgElement("path", {{"d", "M-8 5L8 5L-8 -5Z"}, {"fill", colour::kDieEdge}}),
         "lower left corner in orientation N"}};
    if (!facts.bundles.betweenDies.empty()) {
        legend.push_back({stroke(7.0, colour::kBundle),
                          "nets between two dies, up to " +
                              numberText(std::round(facts.bundles.betweenDies.front().weight))});
    }
    if (!facts.design.terminals.empty()) {
        legend.push_back(
            {stroke(1.2, colour::kTerminal) + terminalSign({0.0, 0.0}), "terminal and its nets"});
    }
    if (facts.bundles.wideNetNum > 0) {
        legend.push_back({"", countText(facts.bundles.wideNetNum, "net", "nets") + " of over " +
                                  std::to_string(kMostBundledDies) + " dies not drawn"});
    }
    if (facts.hiddenBundleNum > 0) {
        legend.push_back(
            {"", "the thinnest " + std::to_string(facts.hiddenBundleNum) + " bundles not drawn"});
    }
    return legend;
}

std::vector<LegendEntry> ruleLegendOf(const Ruled& ruled) {
    const auto& [rules, judgement] = ruled;
    const auto& [left, bottom, right, top] = rules.edge;
    std::vector<LegendEntry> legend;
    const auto add = [&legend](bool isThere, const std::string& sign, const std::string& meaning) {
        if (isThere) {
            legend.push_back({sign, meaning});
        }
    };
    add(!rules.keepouts.empty(), keepoutSign(kSignWidth), "keep-out");
    add(std::max({left, bottom, right, top}) > 0.0, edgeSign(kSignWidth), "edge");
    add(std::any_of(rules.dies.begin(), rules.dies.end(),
                    [](const Rules::Die& die) { return die.at.has_value(); }),
        fixedSign(), "fixed");
    add(judgement.gapNum > 0, gapSign(), "gap too small");
    const std::size_t reachNum = judgement.reaches.size();
    const std::string worst = " (the worst " + std::to_string(kMostReachesDrawn) + ")";
    add(reachNum > 0, reachSign(kSignWidth),
        "net beyond its reach" + (reachNum > kMostReachesDrawn ? worst : ""));
    return legend;
}

double widthOf(const LegendEntry& entry) {
    return (entry.sign.empty() ? 0.0 : kSignWidth + kGap) + kLegendFont * textWidth(entry.meaning) +
           kGap;
}

// One line of entries or none, smaller if it would not fit otherwise.
std::string drawLegend(const std::vector<LegendEntry>& legend, double line, const View& view) {
    std::string entries;
    double x = 0.0;
    for (const LegendEntry& entry : legend) {
        const double textStart = x + (entry.sign.empty() ? 0.0 : kSignWidth + kGap);
        entries += svgElement("g",
                              {{"transform", "translate(" + svgNumber(x + kSignWidth / 2) + " " +
                                                 svgNumber(-kLegendFont / 3) + ")"}},
                              entry.sign);
        entries += svgElement("text", {{"x", textStart}}, xmlText(entry.meaning));
        x += widthOf(entry);
    }
    if (legend.empty()) {
        return "";
    }
    const double scale = std::min(1.0, view.captionWidth() / x);
    return svgElement("g",
                      {{"transform", "translate(" + svgNumber(View::kMargin) + " " +
                                         svgNumber(view.captionTop() + line) + ") scale(" +
                                         svgNumber(scale) + ")"},
                       {"font-size", kLegendFont},
                       {"fill", colour::kQuietText}},
                      entries);
}

std::string drawRules(const CaptionFacts& facts, const View& view) {
    if (facts.ruled == nullptr) {
        return "";
    }
    const double line = kLegendLine + View::kLegendLine;
    return textLine("Rules: " + rulesText(facts.ruled->rules), kLegendFont, line,
                    colour::kQuietText, view) +
           drawLegend(ruleLegendOf(*facts.ruled), line + View::kLegendLine, view);
}

}  // namespace

std::string terminalSign(Spot centre) {
    constexpr double kSide = 7.0;
    return svgElement("rect", {{"x", centre.x - kSide / 2},
                               {"y", centre.y - kSide / 2},
                               {"width", kSide},
                               {"height", kSide},
                               {"fill", colour::kTerminal},
                               {"stroke", "#ffffff"}});
}

std::string drawCaption(const CaptionFacts& facts, const View& view) {
    const std::string faults = allFaultCounts(facts);
    const bool isLegal = faults.empty();
    const std::string verdict = isLegal ? "" : " is not legal: " + faults;
    const char* const ink = isLegal ? colour::kText : colour::kFault;
    return textLine(facts.design.name + verdict, kNameFont, kNameLine, ink, view) +
           textLine(figuresText(facts), kFiguresFont, kFiguresLine, colour::kText, view) +
           drawLegend(legendOf(facts), kLegendLine, view) + drawRules(facts, view);
}

}  // namespace korvel
