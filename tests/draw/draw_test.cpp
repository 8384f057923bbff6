// Pictures of placements: what they gather, how names fit, and that the SVG is sound.

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "draw/Bundles.h"
#include "draw/Label.h"
#include "draw/Picture.h"
#include "draw/Svg.h"

namespace korvel::test {
namespace {

// --- SVG, as far as it is written here -------------------------------------------------------

struct Tag {
    std::string name;
    std::map<std::string, std::string> attributes;

    double number(const std::string& attribute) const {
        return std::stod(attributes.at(attribute));
    }
};

// The tags that open, in order. Fails on what is no well-formed XML.
std::vector<Tag> tagsOf(const std::string& svg) {
    static const std::regex tagForm(R"re(<(/?)([a-z]+)((?: [a-zA-Z0-9-]+="[^"<>]*")*)(/?)>)re");
    static const std::regex attributeForm(R"re(([a-zA-Z0-9-]+)="([^"]*)")re");
    static const std::regex entityForm("&(amp|lt|gt|quot);");
    std::vector<Tag> tags;
    std::vector<std::string> open;
    for (std::size_t at = svg.find_first_of("<&"); at != std::string::npos;
         at = svg.find_first_of("<&", at + 1)) {
        const auto from = svg.begin() + static_cast<std::ptrdiff_t>(at);
        std::smatch match;
        const auto is = [&](const std::regex& form) {
            return std::regex_search(from, svg.end(), match, form,
                                     std::regex_constants::match_continuous);
        };
        if (is(entityForm)) {
            continue;
        }
        if (!is(tagForm)) {
            ADD_FAILURE() << "no tag: " << svg.substr(at, 40);
            return tags;
        }
        const std::string name = match[2];
        if (match[1].length() > 0) {
            EXPECT_EQ(open.empty() ? "" : open.back(), name);
            open.pop_back();
            continue;
        }
        tags.push_back({name, {}});
        const std::string attributes = match[3];
        for (std::sregex_iterator one(attributes.begin(), attributes.end(), attributeForm), end;
             one != end; ++one) {
            tags.back().attributes[(*one)[1]] = (*one)[2];
        }
        if (match[4].length() == 0) {
            open.push_back(name);
        }
    }
    EXPECT_TRUE(open.empty());
    return tags;
}

// The corners of a rectangle, line or polygon.
std::vector<Spot> spotsOf(const Tag& tag) {
    if (tag.name == "rect") {
        const Spot corner{tag.number("x"), tag.number("y")};
        return {corner, {corner.x + tag.number("width"), corner.y + tag.number("height")}};
    }
    if (tag.name == "line") {
        return {{tag.number("x1"), tag.number("y1")}, {tag.number("x2"), tag.number("y2")}};
    }
    std::vector<Spot> spots;
    if (tag.name == "polygon") {
        std::istringstream in(tag.attributes.at("points"));
        char comma = 0;
        for (Spot spot; in >> spot.x >> comma >> spot.y;) {
            spots.push_back(spot);
        }
    }
    return spots;
}

// --- Designs ---------------------------------------------------------------------------------

struct Placed {
    Design design;
    Region region;
    Placement placement;
};

// Dies anywhere, some outside the region, in a unit of which `unit` make one.
Placed randomPlaced(unsigned seed, double unit) {
    std::mt19937 random(seed);
    const auto upTo = [&](double most) {
        return unit * std::uniform_real_distribution<>(0.0, most)(random);
    };
    Placed placed;
    placed.region = {unit * 10, unit * 8};
    const auto dieNum = static_cast<unsigned>(3 + random() % 60);
    for (unsigned die = 0; die < dieNum; ++die) {
        placed.design.dies.push_back({"die<&\">" + std::to_string(die), {upTo(4), upTo(4)}});
        placed.placement.push_back(
            {{upTo(12) - 2 * unit, upTo(8)}, static_cast<Orient>(random() % 8)});
    }
    for (unsigned terminal = 0; terminal < 5; ++terminal) {
        placed.design.terminals.push_back({"t&", {upTo(11), -upTo(1)}});
    }
    for (unsigned net = 0; net < 100; ++net) {
        placed.design.nets.emplace_back();
        for (unsigned pin = 0; pin < random() % 5; ++pin) {
            const auto body = static_cast<unsigned>(random() % (dieNum + 5));
            const Extent size = body < dieNum ? placed.design.dies[body].size : Extent{};
            placed.design.nets.back().pins.push_back({body, {size.width / 3, size.height}});
        }
    }
    return placed;
}

std::string svgOf(const Design& design, Region region, const Placement& placement,
                  const Ruled* ruled = nullptr) {
    return drawSvg(design, region, placement, judge(design, region, placement), ruled);
}

TEST(Picture, IsSoundAndHoldsEverythingInAnyUnit) {
    for (const double unit : {1e-6, 1.0, 6000.0, 1e12}) {
        const auto [design, region, placement] = randomPlaced(static_cast<unsigned>(unit), unit);
        const std::string svg = svgOf(design, region, placement);
        const std::vector<Tag> tags = tagsOf(svg);
        const double width = tags.front().number("width");
        const double height = tags.front().number("height");
        EXPECT_EQ(tags.front().attributes.at("viewBox"),
                  svgNumber(0) + " 0 " + svgNumber(width) + " " + svgNumber(height));
        EXPECT_LE(width, 1000);
        EXPECT_LE(height, 1100);
        std::size_t rectNum = 0;
        for (const Tag& tag : tags) {
            if (tag.attributes.count("id") > 0 && tag.attributes.at("id") == "names") {
                break;  // and the legend, which is drawn where it is not
            }
            rectNum += tag.name == "rect" && tag.attributes.count("stroke") > 0 ? 1 : 0;
            if (tag.attributes.count("x") + tag.attributes.count("x1") +
                    tag.attributes.count("points") ==
                0) {
                continue;
            }
            for (const Spot spot : spotsOf(tag)) {
                EXPECT_GE(spot.x, 0);
                EXPECT_LE(spot.x, width);
                EXPECT_GE(spot.y, 0);
                EXPECT_LE(spot.y, height);
            }
        }
        EXPECT_EQ(rectNum, 1 + design.dies.size() + design.terminals.size());
    }
}

// The mark is where the lower left corner has gone. In a square of which the mark shows the corner
// only, a mirrored die shows by the longer leg.
TEST(Picture, MarksTheCornerOfTheOrientation) {
    struct Case {
        Orient orient;
        double x, y;          // of the corner, in parts of the die, y upward
        double longX, longY;  // where the longer leg leads
    };
    const Case cases[] = {
        {Orient::N, 0, 0, 1, 0},  {Orient::E, 0, 1, 0, -1},  {Orient::S, 1, 1, -1, 0},
        {Orient::W, 1, 0, 0, 1},  {Orient::FN, 1, 0, -1, 0}, {Orient::FE, 0, 0, 0, 1},
        {Orient::FS, 0, 1, 1, 0}, {Orient::FW, 1, 1, 0, -1},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(OrientConverter::OrientToString(expected.orient));
        Design design;
        design.dies = {{"d", {4, 2}}};
        std::vector<Spot> die;
        std::vector<Spot> mark;
        for (const Tag& tag : tagsOf(svgOf(design, {10, 10}, {{{3, 3}, expected.orient}}))) {
            if (tag.name == "polygon") {
                mark = spotsOf(tag);
            } else if (tag.name == "rect" && tag.attributes.at("fill") == "#d3e6f5") {
                die = spotsOf(tag);
            }
        }
        ASSERT_EQ(mark.size(), 3U);
        ASSERT_EQ(die.size(), 2U);
        EXPECT_NEAR(mark[0].x, expected.x == 0 ? die[0].x : die[1].x, 0.02);
        EXPECT_NEAR(mark[0].y, expected.y == 0 ? die[1].y : die[0].y, 0.02);
        const Spot longer{mark[1].x - mark[0].x, mark[0].y - mark[1].y};
        const double length = std::hypot(longer.x, longer.y);
        EXPECT_NEAR(longer.x / length, expected.longX, 0.01);
        EXPECT_NEAR(longer.y / length, expected.longY, 0.01);
        EXPECT_GT(length, 1.2 * std::hypot(mark[2].x - mark[0].x, mark[2].y - mark[0].y));
    }
}

TEST(Picture, ShowsWhichDiesAreAtFault) {
    Design design;
    design.dies = {{"a", {4, 2}}, {"b", {4, 2}}, {"c", {4, 2}}, {"d", {4, 2}}};
    const std::string svg = svgOf(design, {10, 10}, {{{0, 0}}, {{3, 1}}, {{7, 5}}, {{0, 5}}});
    std::size_t dashed = 0;
    for (const Tag& tag : tagsOf(svg)) {
        dashed += tag.attributes.count("stroke-dasharray") > 0 &&
                          tag.attributes.at("stroke-dasharray") != "none"
                      ? 1
                      : 0;
    }
    EXPECT_EQ(dashed, 3U);
    EXPECT_NE(svg.find("overlaps b"), std::string::npos);
    EXPECT_NE(svg.find("is not legal: 1 overlap, 1 die outside"), std::string::npos);
}

// Where a rectangle or line of the design's plane comes to lie, from the rectangle of the area.
struct Plane {
    Region region;
    std::vector<Spot> area;  // in pixels

    Spot at(Spot spot) const {
        const double scale = (area[1].x - area[0].x) / region.width;
        return {area[0].x + scale * spot.x, area[1].y - scale * spot.y};
    }
};

TEST(Picture, ShowsRulesAndWhatBreaksThem) {
    Design design;
    design.dies = {{"a", {4, 2}}, {"b", {2, 2}}};
    design.nets = {{{{0, {0, 0}}, {1, {2, 2}}}}, {{{0, {4, 0}}, {1, {0, 0}}}}};
    const Region region{20, 10};
    const Placement placement{{{1, 1}}, {{6, 2}, Orient::S}};
    Rules rules;
    rules.spacing = 2;
    rules.edge = {2, 0, 1, 0};
    rules.keepouts = {{{15, -5}, {18, 3}}, {{30, 0}, {40, 1}}};
    rules.dies.resize(2);
    rules.dies[1].at = Spot{6, 2};
    rules.nets = {{1, 6}, {1, 9}};  // as long as 6 and 6
    const RuleJudgement judgement = judgeRules(design, region, rules, placement, 0);
    const Ruled ruled{rules, judgement};
    const std::string svg = svgOf(design, region, placement, &ruled);

    Plane plane{region, {}};
    std::map<std::string, std::vector<Tag>> byFill;
    std::size_t circleNum = 0;
    std::size_t reachNum = 0;
    for (const Tag& tag : tagsOf(svg)) {
        circleNum += tag.name == "circle" ? 1 : 0;
        reachNum += tag.name == "g" && tag.attributes.count("class") > 0 &&
                            tag.attributes.at("class") == "reach"
                        ? 1
                        : 0;
        if (tag.name == "rect" && tag.attributes.at("fill") == "#f7f6f2") {
            plane.area = spotsOf(tag);
        } else if (tag.name == "rect") {
            byFill[tag.attributes.at("fill")].push_back(tag);
        }
    }
    const auto expectBox = [&](const std::string& fill, std::size_t number, Spot low, Spot high) {
        SCOPED_TRACE(fill);
        ASSERT_EQ(byFill[fill].size(), number);
        const std::vector<Spot> spots = spotsOf(byFill[fill].front());
        EXPECT_NEAR(spots[0].x, plane.at(low).x, 0.02);
        EXPECT_NEAR(spots[0].y, plane.at(high).y, 0.02);
        EXPECT_NEAR(spots[1].x, plane.at(high).x, 0.02);
        EXPECT_NEAR(spots[1].y, plane.at(low).y, 0.02);
    };
    // Each with its sign in the legend; the keep-out outside the area is not drawn.
    expectBox("url(#keepout)", 2, {15, 0}, {18, 3});
    expectBox("none", 1, {2, 0}, {19, 10});
    expectBox("#b3261e", 2, {5, 2}, {6, 3});
    EXPECT_EQ(circleNum, 4U);
    EXPECT_EQ(reachNum, 0U);
    for (const char* text :
         {"keep-out 1\n", "a \u2013 b\ngap of 1, 2 needed", "is 1 from the area's side (left), 2",
          "is not legal: 1 gap too small, 1 die too near a side<", "Rules: spacing 2, edge 2 at"}) {
        EXPECT_NE(svg.find(text), std::string::npos) << text;
    }
}

TEST(Picture, ShowsNetsBeyondTheirReach) {
    const auto [design, region, placement] = randomPlaced(1, 1.0);
    Rules rules;
    rules.nets.resize(design.nets.size(), {1, 9});
    rules.dies.resize(design.dies.size());
    rules.dies[0].at = Spot{1, 1};
    rules.dies[1].within = Rectangle{{0, 0}, {1, 1}};
    rules.dies[2].orients = {};
    rules.edge = {4, 4, 4, 4};
    rules.keepouts = {{{0, 0}, {9, 8}}};
    const RuleJudgement judgement = judgeRules(design, region, rules, placement, 0);
    const Ruled ruled{rules, judgement};
    std::size_t reachNum = 0;
    for (const Tag& tag : tagsOf(svgOf(design, region, placement, &ruled))) {
        reachNum += tag.attributes.count("class") > 0 && tag.attributes.at("class") == "reach";
    }
    EXPECT_GT(reachNum, 0U);
    EXPECT_EQ(reachNum, judgement.reaches.size());
}

TEST(Picture, StaysOfASizeWithManyDiesOnManyNets) {
    Placed placed;
    placed.region = {100, 100};
    std::mt19937 random(3);
    for (unsigned die = 0; die < 400; ++die) {
        placed.design.dies.push_back({"d", {4, 4}});
        placed.placement.push_back({{5.0 * (die % 20), 5.0 * (die / 20)}});
        for (unsigned net = 0; net < 10; ++net) {
            placed.design.nets.push_back(
                {{{die, {2, 2}}, {static_cast<unsigned>(random() % 400), {}}}});
        }
    }
    const std::string svg = svgOf(placed.design, placed.region, placed.placement);
    EXPECT_LT(svg.size(), 1'000'000U);
    EXPECT_NE(svg.find("bundles not drawn"), std::string::npos);
}

// --- Parts -----------------------------------------------------------------------------------

TEST(Svg, HoldsAnyName) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},
        {"<a & \"b\">", "&lt;a &amp; &quot;b&quot;&gt;"},
        {"\x01 \n\t\x1B", "\uFFFD \n\t\uFFFD"},
        {"caf\u00e9 \u82af \U0001F600", "caf\u00e9 \u82af \U0001F600"},
        {"\x80\xC3", "\uFFFD\uFFFD"},                      // stray, and cut off
        {"\xC0\xAF", "\uFFFD\uFFFD"},                      // too long a form
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},            // half of a pair
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last
        {"\xEF\xBF\xBF", "\uFFFD"},
    };
    for (const auto& [text, xml] : cases) {
        EXPECT_EQ(xmlText(text), xml);
    }
}

TEST(Svg, WritesNumbersShort) {
    const std::pair<double, const char*> cases[] = {
        {0, "0"}, {-0.001, "0"}, {12.345, "12.35"}, {-7.5, "-7.5"}, {1e6, "1000000"}};
    for (const auto& [number, text] : cases) {
        EXPECT_EQ(svgNumber(number), text);
    }
}

TEST(Label, FitsIntoItsBoxOrIsLeftOut) {
    struct Case {
        const char* text;
        Extent box;
        bool isThere, isVertical;
    };
    const Case cases[] = {
        {"cpu", {300, 200}, true, false}, {"memory", {40, 400}, true, true},
        {"cpu", {20, 9}, false, false},   {"a_very_long_name_indeed", {60, 60}, false, false},
        {"", {300, 200}, false, false},   {"x", {1e6, 1e6}, true, false},
        {"cpu", {0, 0}, false, false},
    };
    for (const auto& [text, box, isThere, isVertical] : cases) {
        SCOPED_TRACE(text);
        const auto label = fitLabel(text, box);
        ASSERT_EQ(label.has_value(), isThere);
        if (label) {
            EXPECT_EQ(label->isVertical, isVertical);
            EXPECT_LT(label->fontSize * textWidth(text), isVertical ? box.height : box.width);
            EXPECT_LT(label->fontSize, isVertical ? box.width : box.height);
        }
    }
}

TEST(Bundles, GatherNetsByTheirBodies) {
    Design design;
    design.dies = {{"a", {2, 2}}, {"b", {2, 2}}, {"c", {2, 2}}};
    design.terminals = {{"t", {30, 0}}};
    design.nets = {
        {{{0, {1, 1}}, {1, {1, 1}}}},
        {{{1, {0, 0}}, {0, {0, 0}}, {0, {2, 0}}}},  // two pins on a, whose middle is (1, 0)
        {{{0, {}}, {1, {}}, {2, {}}}},
        {{{0, {}}, {2, {1, 1}}, {3, {}}}},  // to the terminal from c, which is nearer
        {{{2, {}}, {2, {1, 1}}}},           // on one die
        {},
    };
    const Bundles bundles = bundlesOf(design, {{{0, 0}}, {{10, 0}}, {{20, 0}}});
    ASSERT_EQ(bundles.betweenDies.size(), 3U);
    const Bundle& heaviest = bundles.betweenDies.front();
    EXPECT_EQ(heaviest.first, 0U);
    EXPECT_EQ(heaviest.second, 1U);
    EXPECT_EQ(heaviest.netNum, 3U);
    EXPECT_EQ(heaviest.fartherNetNum, 1U);
    EXPECT_DOUBLE_EQ(heaviest.weight, 2.0 + 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(heaviest.from.x, 2.0 / heaviest.weight);
    EXPECT_DOUBLE_EQ(heaviest.to.x, 10.0 + 1.0 / heaviest.weight);
    ASSERT_EQ(bundles.toTerminals.size(), 1U);
    EXPECT_EQ(bundles.toTerminals[0].first, 2U);
    EXPECT_DOUBLE_EQ(bundles.toTerminals[0].from.x, 21);
    EXPECT_DOUBLE_EQ(bundles.toTerminals[0].to.x, 30);
}

TEST(Bundles, LeaveOutNetsOverVeryManyDies) {
    Design design;
    design.nets.resize(1);
    for (unsigned die = 0; die <= kMostBundledDies; ++die) {
        design.dies.push_back({"d", {1, 1}});
        design.nets[0].pins.push_back({die, {}});
    }
    const Bundles bundles = bundlesOf(design, Placement(design.dies.size()));
    EXPECT_TRUE(bundles.betweenDies.empty());
    EXPECT_EQ(bundles.wideNetNum, 1U);
}

}  // namespace
}  // namespace korvel::test
