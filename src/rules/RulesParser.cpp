#include "rules/RulesParser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <system_error>
#include <unordered_map>

#include "rules/NamePattern.h"

namespace korvel {

namespace {

using Kind = YamlNode::Kind;

constexpr const char* kLengthExpected = "a length of 0 or more";
constexpr const char* kEdgeExpected = "a length of 0 or more, or [left, bottom, right, top]";
constexpr const char* kNumberExpected = "a number of 0 or more";
constexpr const char* kSpotExpected = "[x, y]";
constexpr const char* kRectangleExpected = "[x, y, width, height], the last two above 0";
constexpr const char* kTurnExpected = "N, E, S or W";
constexpr const char* kTurnsExpected = "a list of one or more of N, E, S, W";
constexpr const char* kNamesExpected = "the names or patterns of two dies as [name, name]";

// A key that a map may have, and what reads its value.
struct Key {
    const char* name;
    std::function<void(const YamlNode&)> read;
};

std::string listed(const std::vector<Key>& keys) {
    std::string text;
    for (std::size_t at = 0; at < keys.size(); ++at) {
        text += (at == 0 ? "" : at + 1 == keys.size() ? " or " : ", ") + std::string(keys[at].name);
    }
    return text;
}

std::string nearestOf(const std::vector<Key>& keys, const std::string& word) {
    std::vector<std::string_view> names;
    names.reserve(keys.size());
    for (const Key& key : keys) {
        names.emplace_back(key.name);
    }
    return std::string(nearestTo(word, names));
}

// A finite decimal number that is the whole text.
std::optional<double> numberIn(const YamlNode& node) {
    const std::string& text = node.text;
    const char* const begin = text.data() + (text.starts_with('+') ? 1 : 0);
    const char* const end = text.data() + text.size();
    double number = 0.0;
    const auto [rest, fault] = std::from_chars(begin, end, number);
    const bool isNumber = node.is(Kind::kText) && fault == std::errc{} && rest == end;
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<double> lengthIn(const YamlNode& node) {
    const std::optional<double> number = numberIn(node);
    return number.value_or(-1.0) >= 0.0 ? number : std::nullopt;
}

// Exactly so many numbers in a list; none if it is anything else.
std::optional<std::vector<double>> numbersIn(const YamlNode& node, std::size_t howMany) {
    std::vector<double> numbers;
    for (const YamlNode& item : node.items) {
        if (const auto number = numberIn(item)) {
            numbers.push_back(*number);
        }
    }
    const bool isWhole =
        node.is(Kind::kList) && node.items.size() == howMany && numbers.size() == howMany;
    return isWhole ? std::optional(numbers) : std::nullopt;
}

std::optional<Spot> spotIn(const YamlNode& node) {
    const auto numbers = numbersIn(node, 2);
    return numbers ? std::optional(Spot{(*numbers)[0], (*numbers)[1]}) : std::nullopt;
}

std::optional<Rectangle> rectangleIn(const YamlNode& node) {
    const auto numbers = numbersIn(node, 4);
    if (!numbers) {
        return std::nullopt;
    }
    const Spot low{(*numbers)[0], (*numbers)[1]};
    const Spot high{low.x + (*numbers)[2], low.y + (*numbers)[3]};
    // Also when a width is lost beside a large coordinate, or the sum is infinite.
    const bool isUsable =
        high.x > low.x && high.y > low.y && std::isfinite(high.x) && std::isfinite(high.y);
    return isUsable ? std::optional(Rectangle{low, high}) : std::nullopt;
}

std::optional<Rules::Edge> edgeIn(const YamlNode& node) {
    if (const auto all = lengthIn(node)) {
        return Rules::Edge{*all, *all, *all, *all};
    }
    const auto sides = numbersIn(node, 4);
    if (!sides || *std::min_element(sides->begin(), sides->end()) < 0.0) {
        return std::nullopt;
    }
    return Rules::Edge{(*sides)[0], (*sides)[1], (*sides)[2], (*sides)[3]};
}

std::optional<OrientSet> turnIn(const YamlNode& node) {
    for (const Orient orient : kEveryTurn) {
        if (node.is(Kind::kText) && node.text == OrientConverter::OrientToString(orient)) {
            OrientSet set;
            set.add(orient);
            return set;
        }
    }
    return std::nullopt;
}

std::optional<OrientSet> turnsIn(const YamlNode& node) {
    OrientSet set;
    for (const YamlNode& item : node.items) {
        const auto turn = turnIn(item);
        if (!turn) {
            return std::nullopt;
        }
        set = set | *turn;
    }
    return set.isEmpty() || !node.is(Kind::kList) ? std::nullopt : std::optional(set);
}

// A value for a message: a list of texts in full, as what is wrong is inside.
std::string foundText(const YamlNode& node) {
    if (!node.is(Kind::kList)) {
        return described(node);
    }
    std::string text;
    for (const YamlNode& item : node.items) {
        text += (text.empty() ? "" : ", ") + (item.is(Kind::kText) ? item.text : described(item));
    }
    return shown("[" + text + "]");
}

class RulesParser {
public:
    RulesParser(const std::string& file, Diagnostics& diagnostics) : diagnostics(diagnostics) {
        draft.file = file;
    }
    RulesDraft parse(const YamlNode& root);

private:
    void parseKeepouts(const YamlNode& node);
    void parseDies(const YamlNode& node);
    void parseDie(const YamlNode& name, const YamlNode& node);
    void parsePairs(const YamlNode& node);
    void parsePair(const YamlNode& node);
    void parseNames(const YamlNode& node, const std::string& subject,
                    std::array<std::string, 2>& names);

    // Goes through a map whose keys are known. Nothing is an empty map here, and an empty list: its
    // entries may be commented out.
    void parseMap(const YamlNode& node, const std::string& subject, const std::vector<Key>& keys);
    // Goes through any map, without keys that are no text or come again.
    void forEachMember(const YamlNode& node, const std::string& subject,
                       const std::function<void(const YamlNode&, const YamlNode&)>& read);
    void forEachItem(const YamlNode& node, const std::string& subject, const char* expected,
                     const std::function<void(const YamlNode&)>& read);

    // A key whose value is read by that function, or is an error.
    template <typename T>
    Key key(const char* name, const std::string& subject,
            std::optional<T> (*valueIn)(const YamlNode&), const char* expected,
            RulesDraft::Maybe<T>& target);
    void mistaken(const YamlNode& node, const std::string& subject, const char* expected);
    void error(const YamlNode& node, const std::string& text) {
        diagnostics.error(draft.file, node.line, text);
    }

    RulesDraft draft;
    Diagnostics& diagnostics;
};

RulesDraft RulesParser::parse(const YamlNode& root) {
    parseMap(root, "",
             {key("spacing", "", lengthIn, kLengthExpected, draft.spacing),
              key("edge", "", edgeIn, kEdgeExpected, draft.edge),
              {"keepouts", [this](const YamlNode& node) { parseKeepouts(node); }},
              {"dies", [this](const YamlNode& node) { parseDies(node); }},
              {"pairs", [this](const YamlNode& node) { parsePairs(node); }}});
    return std::move(draft);
}

void RulesParser::parseKeepouts(const YamlNode& node) {
    forEachItem(node, "keepouts: ", "a list of [x, y, width, height]", [this](const YamlNode& one) {
        if (const auto rectangle = rectangleIn(one)) {
            draft.keepouts.push_back({*rectangle, one.line});
        } else {
            mistaken(one, "keepouts: ", kRectangleExpected);
        }
    });
}

void RulesParser::parseDies(const YamlNode& node) {
    forEachMember(node, "dies: ", [this](const YamlNode& name, const YamlNode& rules) {
        parseDie(name, rules);
    });
}

void RulesParser::parseDie(const YamlNode& name, const YamlNode& node) {
    const std::string subject = "die " + shown(name.text) + ": ";
    RulesDraft::DieEntry entry{name.text, name.line, {}, {}, {}, {}};
    RulesDraft::Maybe<OrientSet> turn;
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    parseMap(node, subject,
             {key("at", subject, spotIn, kSpotExpected, entry.at),
              key("turn", subject, turnIn, kTurnExpected, turn),
              key("turns", subject, turnsIn, kTurnsExpected, entry.orients),
              key("within", subject, rectangleIn, kRectangleExpected, entry.within),
              key("spacing", subject, lengthIn, kLengthExpected, entry.spacing)});
    if (turn && entry.orients) {
        diagnostics.error(draft.file, turn->line,
                          subject + "found both turn and turns, expected one of them");
    }
    entry.orients = turn ? turn : entry.orients;
    if (!entry.orients && diagnostics.getErrorNum() > errorsBefore) {
        // It may have a turn that could not be read: no second error that it has none.
        entry.orients = {OrientSet::all(), name.line};
    }
    draft.dies.push_back(std::move(entry));
}

void RulesParser::parsePairs(const YamlNode& node) {
    forEachItem(node, "pairs: ", "a list of maps", [this](const YamlNode& one) { parsePair(one); });
}

void RulesParser::parsePair(const YamlNode& node) {
    const std::string subject = "pairs: ";
    RulesDraft::PairEntry entry{{}, node.line, {}, {}, {}};
    bool hasNames = false;
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    parseMap(node, subject,
             {{"dies",
               [&](const YamlNode& names) {
                   hasNames = true;
                   parseNames(names, subject + "dies: ", entry.names);
               }},
              key("spacing", subject, lengthIn, kLengthExpected, entry.spacing),
              key("weight", subject, lengthIn, kNumberExpected, entry.weight),
              key("reach", subject, lengthIn, kLengthExpected, entry.reach)});
    const bool isSound = diagnostics.getErrorNum() == errorsBefore;
    if (isSound && !hasNames) {
        error(node, subject + "found no dies, expected " + kNamesExpected);
    } else if (isSound && !entry.spacing && !entry.weight && !entry.reach) {
        error(node, subject + "found dies alone, expected spacing, weight or reach as well");
    }
    if (!entry.names[0].empty()) {
        draft.pairs.push_back(std::move(entry));
    }
}

void RulesParser::parseNames(const YamlNode& node, const std::string& subject,
                             std::array<std::string, 2>& names) {
    const bool isPair = node.is(Kind::kList) && node.items.size() == 2 &&
                        node.items[0].is(Kind::kText) && node.items[1].is(Kind::kText);
    if (!isPair) {
        mistaken(node, subject, kNamesExpected);
    } else {
        names = {node.items[0].text, node.items[1].text};
    }
}

void RulesParser::parseMap(const YamlNode& node, const std::string& subject,
                           const std::vector<Key>& keys) {
    forEachMember(node, subject, [&](const YamlNode& name, const YamlNode& value) {
        const auto known = std::find_if(keys.begin(), keys.end(),
                                        [&](const Key& one) { return name.text == one.name; });
        if (known == keys.end()) {
            error(name, subject + "found the key " + shown(name.text) + ", expected " +
                            listed(keys) + "; the nearest is " + nearestOf(keys, name.text));
        } else {
            known->read(value);
        }
    });
}

void RulesParser::forEachMember(const YamlNode& node, const std::string& subject,
                                const std::function<void(const YamlNode&, const YamlNode&)>& read) {
    if (!node.is(Kind::kMap) && !node.is(Kind::kNothing)) {
        mistaken(node, subject, "keys with their values");
        return;
    }
    std::unordered_map<std::string, unsigned> lines;
    for (std::size_t at = 0; at + 1 < node.items.size(); at += 2) {
        const YamlNode& name = node.items[at];
        if (!name.is(Kind::kText)) {
            mistaken(name, subject, "a key that is a word");
            continue;
        }
        const auto [first, isNew] = lines.try_emplace(name.text, name.line);
        if (isNew) {
            // Nothing lies anywhere behind its key.
            const YamlNode& value = node.items[at + 1];
            read(name, value.is(Kind::kNothing) ? YamlNode{value.kind, name.line, {}, {}} : value);
        } else {
            error(name, subject + "found " + shown(name.text) +
                            " again, expected it once (first on line " +
                            std::to_string(first->second) + ")");
        }
    }
}

void RulesParser::forEachItem(const YamlNode& node, const std::string& subject,
                              const char* expected,
                              const std::function<void(const YamlNode&)>& read) {
    if (!node.is(Kind::kList) && !node.is(Kind::kNothing)) {
        mistaken(node, subject, expected);
        return;
    }
    for (const YamlNode& item : node.items) {
        read(item);
    }
}

template <typename T>
Key RulesParser::key(const char* name, const std::string& subject,
                     std::optional<T> (*valueIn)(const YamlNode&), const char* expected,
                     RulesDraft::Maybe<T>& target) {
    return {name, [=, this, &target](const YamlNode& node) {
                if (const auto value = valueIn(node)) {
                    target = RulesDraft::Stated<T>{*value, node.line};
                } else {
                    mistaken(node, subject + name + ": ", expected);
                }
            }};
}

void RulesParser::mistaken(const YamlNode& node, const std::string& subject, const char* expected) {
    if (!node.is(Kind::kUnusable)) {
        error(node, subject + "found " + foundText(node) + ", expected " + expected);
    }
}

}  // namespace

RulesDraft parseRules(const YamlNode& root, const std::string& file, Diagnostics& diagnostics) {
    return RulesParser(file, diagnostics).parse(root);
}

}  // namespace korvel
