// `korvel draw`: a placement as a picture.
#include "commands/Command.h"

namespace korvel {

void addDraw(CLI::App& program, CommandRun&) {
    addCommand(program, "draw", "Draw a placement as SVG");
}

}  // namespace korvel
