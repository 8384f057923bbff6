// `korvel check`: what a placement is worth, and whether it is legal.
#include "commands/Command.h"

namespace korvel {

void addCheck(CLI::App& program, CommandRun&) {
    addCommand(program, "check", "Score and judge a placement");
}

}  // namespace korvel
