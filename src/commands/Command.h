// What the commands have in common: their exit statuses, where they write, and the options that
// mean the same to each. A command is a function that adds itself to the program; the lines in
// Commands.cpp that call these functions are all that a new one needs beside its own file.
#pragma once

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>

#include "design/Design.h"

namespace korvel {

// Exit statuses of the front door, a promise to scripts.
enum ExitStatus : int {
    kLegal = 0,       // also: did what was asked, where legality is not the question
    kNotLegal = 1,    // or no legal placement found
    kWrongUsage = 2,  // of the command line
    kWrongInput = 3,
    kNotWritten = 4,  // a file, or standard output
};

// One run of one command. The parser fills the command's options; the command sets the status.
struct CommandRun {
    std::ostream& out;
    std::ostream& err;
    int status = kLegal;
};

// A subcommand without options but help.
CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description);

// `--area W H`, obligatory: two positive finite numbers, in the unit of the design.
void addArea(CLI::App& command, Region& region);

// `run` outlives the program's parsing; the streams are used from the calling thread only.
void addPlace(CLI::App& program, CommandRun& run);
void addCheck(CLI::App& program, CommandRun& run);
void addDraw(CLI::App& program, CommandRun& run);

}  // namespace korvel
