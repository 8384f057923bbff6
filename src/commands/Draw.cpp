// `korvel draw`: a placement as a picture.
#include "commands/Command.h"
#include "draw/Picture.h"
#include "judge/RuleJudge.h"

namespace korvel {

namespace {

struct DrawOptions {
    PlacedDesignPaths paths;
    Region region;
    RuleOptions rules;
    std::string picturePath;
};

// A picture of a part of the dies would pass for one of all.
bool isWhole(const PlacedDesign& placed, const std::string& file, std::ostream& err) {
    Diagnostics diagnostics;
    for (const std::string& name : placed.placement.missing(placed.design)) {
        diagnostics.error(file, 0, "found no place for " + shown(name) + ", expected all dies");
    }
    for (const auto& [name, line] : placed.placement.unknown) {
        diagnostics.warning(file, line, shown(name) + " is not in the design and is not drawn");
    }
    diagnostics.print(err);
    return !diagnostics.hasErrors();
}

std::string pictureOf(const PlacedDesign& placed, Region region) {
    const Placement placement = *placed.placement.whole();
    const double tolerance = touchingLength(region, kTouchingInFiles);
    const Judgement judgement = judge(placed.design, region, placement, tolerance);
    if (!placed.rules) {
        return drawSvg(placed.design, region, placement, judgement);
    }
    const RuleJudgement ofRules =
        judgeRules(placed.design, region, *placed.rules, placement, tolerance);
    const Ruled ruled{*placed.rules, ofRules};
    return drawSvg(placed.design, region, placement, judgement, &ruled);
}

int draw(const DrawOptions& options, CommandOutput& output) {
    const auto placed = readPlacedDesign(options.paths, options.region, options.rules, output.err);
    if (!placed || !isWhole(*placed, options.paths.placement, output.err)) {
        return kWrongInput;
    }
    const std::string picture = pictureOf(*placed, options.region);
    if (options.picturePath == "-") {
        output.out << picture;
        return kLegal;
    }
    return writeFile(options.picturePath, picture, output.err) ? kLegal : kNotWritten;
}

}  // namespace

void addDraw(CLI::App& program, CommandOutput& output) {
    CLI::App& command = addCommand(program, "draw", "Draw a placement as SVG");
    const auto options = std::make_shared<DrawOptions>();
    addPlacedDesign(command, options->paths);
    addArea(command, options->region);
    addRules(command, options->rules);
    command.add_option("-o,--output", options->picturePath, "The picture; - for standard output")
        ->type_name("FILE.svg")
        ->required();
    command.footer(
        "Exit status: 0 drawn, legal or not, 2 wrong usage, 3 wrong input, 4 the picture "
        "could not be written.");
    command.callback([options, &output] { output.status = draw(*options, output); });
}

}  // namespace korvel
