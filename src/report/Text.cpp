#include "report/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "report/FaultList.h"

namespace korvel {

namespace {

// In characters of a terminal, if none is wider than one.
std::size_t widthOf(const std::string& text) {
    const auto isContinuation = [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    };
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

std::string sizeText(Extent size) {
    return numberText(size.width) + " x " + numberText(size.height);
}

std::string reachText(const Judgement::Outside& outside) {
    std::string text;
    const auto add = [&text](double length, const char* side) {
        if (length > 0.0) {
            text += (text.empty() ? "by " : ", ") + numberText(length) + " " + side;
        }
    };
    add(outside.left, "at the left");
    add(outside.right, "at the right");
    add(outside.below, "below");
    add(outside.above, "above");
    return text;
}

}  // namespace

std::string numberText(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.10g", number);
    return text.data();
}

std::string percentText(double part, int decimals) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f %%", decimals, 100.0 * part);
    return text.data();
}

std::string percentText(double part) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g %%", 100.0 * part);
    return text.data();
}

std::string countText(std::size_t number, const std::string& one, const std::string& many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string aligned(const Rows& rows, const std::string& sides) {
    std::vector<std::size_t> widths(sides.size());
    for (const auto& row : rows) {
        for (std::size_t at = 0; at < row.size(); ++at) {
            widths[at] = std::max(widths[at], widthOf(row[at]));
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t at = 0; at < row.size(); ++at) {
            const std::string blanks(widths[at] - widthOf(row[at]), ' ');
            line +=
                (at == 0 ? "" : "  ") + (sides[at] == 'r' ? blanks + row[at] : row[at] + blanks);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

Rows designRows(const Design& design, Region region) {
    return {
        {"Design", design.name},
        {"", countText(design.dies.size(), "die", "dies") + ", " +
                 countText(design.terminals.size(), "terminal", "terminals") + ", " +
                 countText(design.nets.size(), "net", "nets")},
        {"Area", sizeText({region.width, region.height})},
    };
}

Rows summaryRows(const Design& design, Region region, const Judgement& judgement) {
    Rows rows = designRows(design, region);
    rows.push_back({"Utilization", percentText(judgement.utilization, 1)});
    rows.push_back({"Wirelength", numberText(judgement.wirelength) + " (HPWL)"});
    if (judgement.wirelengthBetweenDies < judgement.wirelength) {
        rows.push_back(
            {"", numberText(judgement.wirelengthBetweenDies) + " without nets on one die"});
    }
    rows.push_back({"Extent", sizeText(judgement.extent) + " from (" + numberText(judgement.low.x) +
                                  ", " + numberText(judgement.low.y) + ")"});
    return rows;
}

std::string diesTable(const Design& design, const Placement& placement) {
    Rows rows{{"Die", "x", "y", "Orientation", "Width", "Height"}};
    for (std::size_t die = 0; die < placement.size(); ++die) {
        const PlacedDie& placed = placement[die];
        const Extent size = turned(design.dies[die].size, placed.orient);
        rows.push_back({design.dies[die].name, numberText(placed.at.x), numberText(placed.at.y),
                        OrientConverter::OrientToString(placed.orient), numberText(size.width),
                        numberText(size.height)});
    }
    return aligned(rows, "lrrlrr");
}

std::string faultCounts(const Judgement& judgement) {
    std::string text;
    const auto add = [&text](std::size_t number, const char* one, const char* many) {
        if (number > 0) {
            text += (text.empty() ? "" : ", ") + countText(number, one, many);
        }
    };
    add(judgement.overlapNum, "overlap", "overlaps");
    add(judgement.outside.size(), "die outside", "dies outside");
    add(judgement.mirrored.size(), "die mirrored", "dies mirrored");
    return text;
}

std::string faultsText(const Design& design, const Placement& placement,
                       const Judgement& judgement) {
    const auto nameOf = [&design](unsigned die) { return design.dies[die].name; };
    return faultList("Overlapping dies, the largest overlap first:", judgement.overlaps,
                     judgement.overlapNum,
                     [&](const Judgement::Overlap& overlap) -> Row {
                         return {nameOf(overlap.first), nameOf(overlap.second),
                                 "area " + numberText(overlap.area()), sizeText(overlap.size)};
                     }) +
           faultList("Dies outside the area:", judgement.outside,
                     [&](const Judgement::Outside& outside) -> Row {
                         return {nameOf(outside.die), reachText(outside)};
                     }) +
           faultList(
               "Dies that are mirrored, while they can only be turned:", judgement.mirrored,
               [&](unsigned die) -> Row {
                   return {nameOf(die), OrientConverter::OrientToString(placement[die].orient)};
               });
}

}  // namespace korvel
