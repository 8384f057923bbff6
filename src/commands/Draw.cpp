// `korvel draw`: a placement as a picture.
#include "commands/Command.h"
#include "draw/Picture.h"

namespace korvel {

namespace {

struct DrawOptions {
    PlacedDesignPaths paths;
    Region region;
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

int draw(const DrawOptions& options, CommandOutput& output) {
    const auto placed = readPlacedDesign(options.paths, options.region, output.err);
    if (!placed || !isWhole(*placed, options.paths.placement, output.err)) {
        return kWrongInput;
    }
    const Placement placement = *placed->placement.whole();
    const Judgement judgement = judge(placed->design, options.region, placement,
                                      touchingLength(options.region, kTouchingInFiles));
    const std::string picture = drawSvg(placed->design, options.region, placement, judgement);
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
    command.add_option("-o,--output", options->picturePath, "The picture; - for standard output")
        ->type_name("FILE.svg")
        ->required();
    command.footer(
        "Exit status: 0 drawn, legal or not, 2 wrong usage, 3 wrong input, 4 the picture "
        "could not be written.");
    command.callback([options, &output] { output.status = draw(*options, output); });
}

}  // namespace korvel
