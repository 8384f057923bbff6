#include "rules/FixedDiesCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "design/DesignDraft.h"
#include "design/Numeral.h"

namespace korvel {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Where a net's pins on a die lie from its lower-left corner; low above high if there are none.
Rectangle pinBox(const Design& design, const Design::Net& net, unsigned die, Orient orient) {
    Rectangle box{{kInfinity, kInfinity}, {-kInfinity, -kInfinity}};
    for (const Design::Pin& pin : net.pins) {
        if (pin.body == die) {
            const Spot at = turned(pin.offset, design.dies[die].size, orient);
            box.low = {std::min(box.low.x, at.x), std::min(box.low.y, at.y)};
            box.high = {std::max(box.high.x, at.x), std::max(box.high.y, at.y)};
        }
    }
    return box;
}

// Whether no turn of the die changes what it covers or where a net leaves it.
bool isTheSameInEveryTurn(const Design& design, unsigned die) {
    const Extent size = design.dies[die].size;
    const double slack = kRuleSlack * size.width;
    const auto isNear = [slack](double a, double b) { return a == b || std::abs(a - b) <= slack; };
    const auto isSame = [&](const Rectangle& a, const Rectangle& b) {
        return isNear(a.low.x, b.low.x) && isNear(a.low.y, b.low.y) && isNear(a.high.x, b.high.x) &&
               isNear(a.high.y, b.high.y);
    };
    const auto isUnchanged = [&](const Design::Net& net) {
        const Rectangle box = pinBox(design, net, die, Orient::N);
        return std::all_of(std::begin(kEveryTurn), std::end(kEveryTurn), [&](Orient orient) {
            return isSame(pinBox(design, net, die, orient), box);
        });
    };
    return size.width == size.height &&
           std::all_of(design.nets.begin(), design.nets.end(), isUnchanged);
}

// A fixed die and the orientations that nothing has been found against.
struct FixedDie {
    unsigned die;
    Spot at;
    OrientSet possible;
};

std::string foundAt(const FixedDie& fixed) {
    return "at: found [" + numeral(fixed.at.x) + ", " + numeral(fixed.at.y) + "]";
}

class FixedDiesCheck {
public:
    FixedDiesCheck(const MergedRules& merged, Diagnostics& diagnostics)
        : merged(merged), diagnostics(diagnostics) {}
    void run();

private:
    std::vector<FixedDie> fixedDies() const;
    void checkTurn(const FixedDie& fixed);
    bool checkPlace(FixedDie& fixed);
    bool checkKeepouts(FixedDie& fixed);
    void checkGap(const FixedDie& first, const FixedDie& second);

    // Leaves the orientations in which that holds of where the die lies; whether there are any.
    template <typename Holds>
    bool leave(FixedDie& fixed, Holds holds) const;
    double widestGap(const FixedDie& first, const FixedDie& second) const;
    Rectangle lying(const FixedDie& fixed, Orient orient) const;
    // About where the die is fixed.
    void error(const FixedDie& fixed, const std::string& text);
    const std::string& nameOf(const FixedDie& fixed) const {
        return merged.design.dies[fixed.die].name;
    }

    const MergedRules& merged;
    Diagnostics& diagnostics;
};

void FixedDiesCheck::run() {
    std::vector<FixedDie> sound;
    for (FixedDie fixed : fixedDies()) {
        checkTurn(fixed);
        if (checkPlace(fixed) && checkKeepouts(fixed)) {
            sound.push_back(fixed);
        }
    }
    for (auto second = sound.begin(); second != sound.end(); ++second) {
        for (auto first = sound.begin(); first != second; ++first) {
            checkGap(*first, *second);
        }
    }
}

// In the order of the file.
std::vector<FixedDie> FixedDiesCheck::fixedDies() const {
    std::vector<FixedDie> dies;
    for (unsigned die = 0; die < merged.entries.size(); ++die) {
        if (const auto& at = merged.entries[die].at) {
            dies.push_back({die, at->value, merged.rules.die(die).orients});
        }
    }
    std::stable_sort(dies.begin(), dies.end(), [this](const FixedDie& a, const FixedDie& b) {
        return merged.entries[a.die].at->line < merged.entries[b.die].at->line;
    });
    return dies;
}

void FixedDiesCheck::checkTurn(const FixedDie& fixed) {
    if (!merged.entries[fixed.die].orients && !isTheSameInEveryTurn(merged.design, fixed.die)) {
        error(fixed,
              "at: found no turn beside it, expected one, or turns, as its pins do not lie the "
              "same in each");
    }
}

bool FixedDiesCheck::checkPlace(FixedDie& fixed) {
    const double slack = merged.slack();
    const auto liesIn = [&](const Rectangle& room) {
        return [=](const Rectangle& die) {
            return die.low.x >= room.low.x - slack && die.low.y >= room.low.y - slack &&
                   die.high.x <= room.high.x + slack && die.high.y <= room.high.y + slack;
        };
    };
    if (!leave(fixed, liesIn({{0.0, 0.0}, {merged.region.width, merged.region.height}}))) {
        error(fixed, foundAt(fixed) + ", expected a place in the area of " + times(merged.region));
        return false;
    }
    const auto& within = merged.rules.die(fixed.die).within;
    if (within && !leave(fixed, liesIn(*within))) {
        error(fixed, foundAt(fixed) + ", expected a place in its rectangle");
        return false;
    }
    return true;
}

bool FixedDiesCheck::checkKeepouts(FixedDie& fixed) {
    const double slack = merged.slack();
    for (const auto& [keepout, line] : merged.draft.keepouts) {
        const bool isLeft = leave(fixed, [&, &keepout = keepout](const Rectangle& die) {
            const Extent both = shared(die, keepout);
            return both.width <= slack || both.height <= slack;
        });
        if (!isLeft) {
            error(fixed, foundAt(fixed) + ", expected a place outside the keep-out of line " +
                             std::to_string(line));
            return false;
        }
    }
    return true;
}

void FixedDiesCheck::checkGap(const FixedDie& first, const FixedDie& second) {
    const double needed = merged.rules.leastGap(first.die, second.die);
    const double found = widestGap(first, second);
    const std::string other = shown(nameOf(first)) + ", which is fixed too";
    if (found < -merged.slack()) {
        error(second, foundAt(second) + ", where it overlaps " + other + ", expected a gap of " +
                          numeral(needed));
    } else if (found < needed - merged.slack()) {
        error(second, foundAt(second) + " with a gap of " + numeral(std::max(0.0, found)) + " to " +
                          other + ", expected " + numeral(needed) + " or more");
    }
}

template <typename Holds>
bool FixedDiesCheck::leave(FixedDie& fixed, Holds holds) const {
    for (const Orient orient : kEveryTurn) {
        if (fixed.possible.has(orient) && !holds(lying(fixed, orient))) {
            fixed.possible.remove(orient);
        }
    }
    return !fixed.possible.isEmpty();
}

// Negative by how deep they overlap.
double FixedDiesCheck::widestGap(const FixedDie& first, const FixedDie& second) const {
    double widest = -kInfinity;
    for (const Orient ofFirst : kEveryTurn) {
        for (const Orient ofSecond : kEveryTurn) {
            if (first.possible.has(ofFirst) && second.possible.has(ofSecond)) {
                const Extent both = shared(lying(first, ofFirst), lying(second, ofSecond));
                widest = std::max({widest, -both.width, -both.height});
            }
        }
    }
    return widest;
}

Rectangle FixedDiesCheck::lying(const FixedDie& fixed, Orient orient) const {
    const Extent size = turned(merged.design.dies[fixed.die].size, orient);
    return {fixed.at, {fixed.at.x + size.width, fixed.at.y + size.height}};
}

void FixedDiesCheck::error(const FixedDie& fixed, const std::string& text) {
    diagnostics.error(merged.draft.file, merged.entries[fixed.die].at->line,
                      "die " + shown(nameOf(fixed)) + ": " + text);
}

}  // namespace

void checkFixedDies(const MergedRules& merged, Diagnostics& diagnostics) {
    FixedDiesCheck(merged, diagnostics).run();
}

}  // namespace korvel
