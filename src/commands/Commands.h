// The front door: `korvel place`, `check`, `draw`, with their help. It reads, judges, shows and
// saves; what it runs stands in the rooms below. The classic command
// line is not touched by it.
#pragma once

#include <ostream>

namespace korvel {

// Whether the first argument is one of the front door's words, which the classic command line has
// no meaning for.
bool isCommand(int argc, const char* const argv[]);

// Runs the command and returns the exit status (Command.h). Results go to `out`; messages to `err`.
int runCommand(int argc, const char* const argv[], std::ostream& out, std::ostream& err);

}  // namespace korvel
