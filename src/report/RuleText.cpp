#include "report/RuleText.h"

#include <algorithm>
#include <array>
#include <set>

#include "report/FaultList.h"

namespace korvel {

namespace {

// Parts of a line with commas between them, without those that count nothing.
class CommaList {
public:
    void add(const std::string& part) { text += (text.empty() ? "" : ", ") + part; }
    void add(std::size_t number, const char* one, const char* many) {
        if (number > 0) {
            add(countText(number, one, many));
        }
    }
    const std::string& get() const { return text; }

private:
    std::string text;
};

std::string edgeText(const Rules::Edge& edge) {
    const auto& [left, bottom, right, top] = edge;
    if (left == bottom && left == right && left == top) {
        return "edge " + numberText(left);
    }
    return "edge " + numberText(left) + " at the left, " + numberText(bottom) + " below, " +
           numberText(right) + " at the right, " + numberText(top) + " above";
}

template <typename Items, typename Holds>
std::size_t countOf(const Items& items, Holds holds) {
    return static_cast<std::size_t>(std::count_if(items.begin(), items.end(), holds));
}

// A die may be at fault at two sides.
template <typename Faults>
std::size_t dieNumOf(const Faults& faults) {
    std::set<unsigned> dies;
    for (const auto& fault : faults) {
        dies.insert(fault.die);
    }
    return dies.size();
}

std::string ofText(double found, double needed) {
    return numberText(found) + " of " + numberText(needed);
}

std::string spotText(Spot spot) {
    return "(" + numberText(spot.x) + ", " + numberText(spot.y) + ")";
}

std::string orientsText(OrientSet orients) {
    CommaList list;
    for (const Orient orient : kEveryTurn) {
        if (orients.has(orient)) {
            list.add(OrientConverter::OrientToString(orient));
        }
    }
    return list.get();
}

std::string dieNames(const Design& design, const Design::Net& net) {
    constexpr std::size_t kMostNames = 4;
    const std::vector<std::string> names = diesOf(design, net);
    CommaList list;
    for (std::size_t at = 0; at < std::min(names.size(), kMostNames); ++at) {
        list.add(names[at]);
    }
    const std::size_t more = names.size() - std::min(names.size(), kMostNames);
    return more == 0 ? list.get() : list.get() + " and " + std::to_string(more) + " more";
}

}  // namespace

std::string rulesText(const Rules& rules) {
    CommaList list;
    if (rules.largestGap() > 0.0) {
        list.add("spacing " + numberText(rules.spacing) + (rules.hasOneGap() ? "" : " and others"));
    }
    const auto& [left, bottom, right, top] = rules.edge;
    if (std::max({left, bottom, right, top}) > 0.0) {
        list.add(edgeText(rules.edge));
    }
    list.add(rules.keepouts.size(), "keep-out", "keep-outs");
    list.add(countOf(rules.dies, [](const Rules::Die& die) { return die.at.has_value(); }),
             "die fixed", "dies fixed");
    list.add(
        countOf(rules.dies,
                [](const Rules::Die& die) { return !die.at && die.orients != OrientSet::all(); }),
        "die not to be turned freely", "dies not to be turned freely");
    list.add(countOf(rules.dies, [](const Rules::Die& die) { return die.within.has_value(); }),
             "die within a rectangle", "dies within rectangles");
    list.add(countOf(rules.nets, [](const Rules::Net& net) { return net.weight != 1.0; }),
             "net weighted", "nets weighted");
    list.add(
        countOf(rules.nets, [](const Rules::Net& net) { return net.reach < Rules::kAnyReach; }),
        "net limited in reach", "nets limited in reach");
    return list.get().empty() ? "none, dies may touch" : list.get();
}

Rows weightedRows(const Rules& rules, const RuleJudgement& judgement) {
    if (!rules.hasWeights()) {
        return {};
    }
    return {
        {"Weighted", numberText(judgement.weightedWirelength) + " (HPWL times the nets' weights)"}};
}

std::string sideText(RuleJudgement::Side side) {
    static constexpr std::array kTexts{"left", "bottom", "right", "top"};
    return kTexts[static_cast<std::size_t>(side)];
}

std::vector<std::string> diesOf(const Design& design, const Design::Net& net) {
    std::set<unsigned> seen;
    std::vector<std::string> names;
    for (const Design::Pin& pin : net.pins) {
        if (design.isDie(pin.body) && seen.insert(pin.body).second) {
            names.push_back(design.dies[pin.body].name);
        }
    }
    return names;
}

std::string ruleFaultCounts(const RuleJudgement& judgement) {
    CommaList list;
    list.add(judgement.gapNum, "gap too small", "gaps too small");
    list.add(dieNumOf(judgement.edges), "die too near a side", "dies too near a side");
    list.add(dieNumOf(judgement.keepouts), "die in a keep-out", "dies in keep-outs");
    list.add(judgement.moved.size(), "fixed die moved", "fixed dies moved");
    list.add(judgement.turned.size(), "die turned wrongly", "dies turned wrongly");
    list.add(dieNumOf(judgement.within), "die beyond its rectangle",
             "dies beyond their rectangles");
    list.add(judgement.reaches.size(), "net too long", "nets too long");
    return list.get();
}

std::string ruleFaultsText(const Design& design, const Rules& rules, const Placement& placement,
                           const RuleJudgement& judgement) {
    const auto nameOf = [&design](unsigned die) { return design.dies[die].name; };
    return faultList(
               "Gaps that are too small:", judgement.gaps, judgement.gapNum,
               [&](const RuleJudgement::Gap& gap) -> Row {
                   return {nameOf(gap.first), nameOf(gap.second), ofText(gap.found, gap.needed)};
               }) +
           faultList(
               "Dies too near a side of the area:", judgement.edges,
               [&](const RuleJudgement::Edge& edge) -> Row {
                   return {nameOf(edge.die), sideText(edge.side), ofText(edge.found, edge.needed)};
               }) +
           faultList("Dies in keep-outs:", judgement.keepouts,
                     [&](const RuleJudgement::Keepout& keepout) -> Row {
                         return {nameOf(keepout.die),
                                 "keep-out " + std::to_string(keepout.keepout + 1),
                                 "area " + numberText(keepout.area()),
                                 numberText(keepout.size.width) + " x " +
                                     numberText(keepout.size.height)};
                     }) +
           faultList("Fixed dies that lie elsewhere:", judgement.moved,
                     [&](const RuleJudgement::Moved& moved) -> Row {
                         return {nameOf(moved.die), "at " + spotText(placement[moved.die].at),
                                 "fixed at " + spotText(*rules.die(moved.die).at)};
                     }) +
           faultList("Dies in an orientation that is not allowed:", judgement.turned,
                     [&](unsigned die) -> Row {
                         return {nameOf(die),
                                 OrientConverter::OrientToString(placement[die].orient),
                                 "allowed: " + orientsText(rules.die(die).orients)};
                     }) +
           faultList("Dies beyond their rectangle:", judgement.within,
                     [&](const RuleJudgement::Within& within) -> Row {
                         return {nameOf(within.die), sideText(within.side),
                                 "by " + numberText(within.beyond)};
                     }) +
           faultList("Nets beyond their reach:", judgement.reaches,
                     [&](const RuleJudgement::Reach& reach) -> Row {
                         return {"net " + std::to_string(reach.net + 1),
                                 ofText(reach.length, reach.allowed),
                                 dieNames(design, design.nets[reach.net])};
                     });
}

}  // namespace korvel
