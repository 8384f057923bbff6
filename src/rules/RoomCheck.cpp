#include "rules/RoomCheck.h"

#include <algorithm>
#include <iterator>

#include "design/DesignDraft.h"
#include "design/Numeral.h"

namespace korvel {

namespace {

bool hasAnyPlace(const MergedRules& merged, unsigned die) {
    return std::any_of(std::begin(kEveryTurn), std::end(kEveryTurn), [&](Orient orient) {
        return merged.rules.die(die).orients.has(orient) &&
               merged.rules.hasPlace(merged.design, merged.region, die, orient);
    });
}

// As in "10 x 4 or 4 x 10".
std::string sizesOf(const MergedRules& merged, unsigned die) {
    const Extent size = merged.design.dies[die].size;
    const OrientSet allowed = merged.rules.die(die).orients;
    const std::string upright = times(size);
    const std::string lying = times(turned(size, Orient::E));
    const bool isUpright = allowed.has(Orient::N) || allowed.has(Orient::S);
    const bool isLying = allowed.has(Orient::E) || allowed.has(Orient::W);
    const bool isBoth = isUpright && isLying && upright != lying;
    return isBoth ? upright + " or " + lying : isUpright ? upright : lying;
}

// The line of the rule that leaves the die the least: its rectangle, else its turns, else the edge.
unsigned lineFor(const MergedRules& merged, unsigned die) {
    if (!merged.entries.empty()) {
        const RulesDraft::DieEntry& entry = merged.entries[die];
        if (entry.within || entry.orients) {
            return entry.within ? entry.within->line : entry.orients->line;
        }
    }
    return merged.draft.edge ? merged.draft.edge->line : 0;
}

// Whether the edge leaves an area; where not, that is the only error.
bool checkEdge(const MergedRules& merged, Diagnostics& diagnostics) {
    const auto& [left, bottom, right, top] = merged.rules.edge;
    const bool hasArea = left + right < merged.region.width && bottom + top < merged.region.height;
    if (!hasArea) {
        const unsigned line = merged.draft.edge ? merged.draft.edge->line : 0;
        diagnostics.error(merged.fileOf(line), line,
                          "edge: found [" + numeral(left) + ", " + numeral(bottom) + ", " +
                              numeral(right) + ", " + numeral(top) +
                              "], expected some of the area of " + times(merged.region) +
                              " to be left");
    }
    return hasArea;
}

}  // namespace

void checkRoom(const MergedRules& merged, Diagnostics& diagnostics) {
    if (!checkEdge(merged, diagnostics)) {
        return;
    }
    for (unsigned die = 0; die < merged.design.dies.size(); ++die) {
        const Rules::Die& ruled = merged.rules.die(die);
        if (ruled.at || hasAnyPlace(merged, die)) {
            continue;
        }
        const Extent room = merged.rules.room(merged.region, die).size();
        const Extent left{std::max(0.0, room.width), std::max(0.0, room.height)};
        const unsigned line = lineFor(merged, die);
        diagnostics.error(merged.fileOf(line), line,
                          "die " + shown(merged.design.dies[die].name) + ": found room of " +
                              times(left) + (ruled.within ? " in its rectangle" : " in the area") +
                              ", expected " + sizesOf(merged, die) + " for an allowed orientation");
    }
}

}  // namespace korvel
