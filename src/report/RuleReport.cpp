#include "report/RuleReport.h"

#include "report/RuleText.h"

namespace korvel {

namespace {

// As many as of overlaps: with thousands of dies there are millions of pairs.
constexpr std::size_t kMostPairs = kMostOverlaps;

Json rectangleFields(const Rectangle& rectangle) {
    const Extent size = rectangle.size();
    return {{"x", rectangle.low.x},
            {"y", rectangle.low.y},
            {"width", size.width},
            {"height", size.height}};
}

Json orientFields(OrientSet orients) {
    Json fields = Json::array();
    for (const Orient orient : kEveryTurn) {
        if (orients.has(orient)) {
            fields.push_back(OrientConverter::OrientToString(orient));
        }
    }
    return fields;
}

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

// Of the dies that have any.
Json dieRules(const Design& design, const Rules& rules) {
    Json fields = Json::array();
    for (unsigned die = 0; die < rules.dies.size(); ++die) {
        const auto& [at, orients, within, spacing, group] = rules.dies[die];
        if (at || within || spacing || orients != OrientSet::all()) {
            fields.push_back({{"name", design.dies[die].name},
                              {"at", at ? Json{{"x", at->x}, {"y", at->y}} : Json()},
                              {"orientations", orientFields(orients)},
                              {"within", within ? rectangleFields(*within) : Json()},
                              {"spacing", orNull(spacing)}});
        }
    }
    return fields;
}

// Of the pairs of dies that have any.
Json pairRules(const Design& design, const Rules& rules) {
    Json fields = Json::array();
    for (unsigned a = 0; a < rules.dies.size() && !rules.pairs.empty(); ++a) {
        for (unsigned b = a + 1; b < rules.dies.size() && fields.size() < kMostPairs; ++b) {
            if (const Rules::Pair* const pair = rules.pair(a, b)) {
                fields.push_back({{"dies", {design.dies[a].name, design.dies[b].name}},
                                  {"spacing", orNull(pair->spacing)},
                                  {"weight", orNull(pair->weight)},
                                  {"reach", orNull(pair->reach)}});
            }
        }
    }
    return fields;
}

template <typename Fault, typename FieldsOf>
Json listOf(const std::vector<Fault>& faults, FieldsOf fieldsOf) {
    Json list = Json::array();
    for (const Fault& fault : faults) {
        list.push_back(fieldsOf(fault));
    }
    return list;
}

}  // namespace

Json rulesFields(const Design& design, const Rules& rules) {
    Json keepouts = Json::array();
    for (const Rectangle& keepout : rules.keepouts) {
        keepouts.push_back(rectangleFields(keepout));
    }
    const auto& [left, bottom, right, top] = rules.edge;
    return {{"spacing", rules.spacing},
            {"edge", {{"left", left}, {"bottom", bottom}, {"right", right}, {"top", top}}},
            {"keepouts", keepouts},
            {"dies", dieRules(design, rules)},
            {"pairs", pairRules(design, rules)}};
}

Json violationFields(const Design& design, const Rules& rules, const Placement& placement,
                     const RuleJudgement& judgement) {
    const auto nameOf = [&design](unsigned die) { return design.dies[die].name; };
    Json fields{{"gapNum", judgement.gapNum}};
    fields["gaps"] = listOf(judgement.gaps, [&](const RuleJudgement::Gap& gap) {
        return Json{{"dies", {nameOf(gap.first), nameOf(gap.second)}},
                    {"found", gap.found},
                    {"needed", gap.needed}};
    });
    fields["edges"] = listOf(judgement.edges, [&](const RuleJudgement::Edge& edge) {
        return Json{{"die", nameOf(edge.die)},
                    {"side", sideText(edge.side)},
                    {"found", edge.found},
                    {"needed", edge.needed}};
    });
    fields["keepouts"] = listOf(judgement.keepouts, [&](const RuleJudgement::Keepout& keepout) {
        return Json{{"die", nameOf(keepout.die)},
                    {"keepout", keepout.keepout + 1},
                    {"width", keepout.size.width},
                    {"height", keepout.size.height},
                    {"area", keepout.area()}};
    });
    fields["moved"] = listOf(judgement.moved, [&](const RuleJudgement::Moved& moved) {
        const Spot found = placement[moved.die].at;
        const Spot fixed = *rules.die(moved.die).at;
        return Json{{"die", nameOf(moved.die)},
                    {"found", {{"x", found.x}, {"y", found.y}}},
                    {"fixed", {{"x", fixed.x}, {"y", fixed.y}}}};
    });
    fields["turned"] = listOf(judgement.turned, [&](unsigned die) {
        return Json{{"die", nameOf(die)},
                    {"found", OrientConverter::OrientToString(placement[die].orient)},
                    {"allowed", orientFields(rules.die(die).orients)}};
    });
    fields["within"] = listOf(judgement.within, [&](const RuleJudgement::Within& within) {
        return Json{{"die", nameOf(within.die)},
                    {"side", sideText(within.side)},
                    {"beyond", within.beyond}};
    });
    fields["reaches"] = listOf(judgement.reaches, [&](const RuleJudgement::Reach& reach) {
        return Json{{"net", reach.net + 1},
                    {"dies", diesOf(design, design.nets[reach.net])},
                    {"length", reach.length},
                    {"reach", reach.allowed}};
    });
    return fields;
}

}  // namespace korvel
