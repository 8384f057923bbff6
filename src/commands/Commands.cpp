#include "commands/Commands.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "commands/Command.h"
#include "report/Report.h"

namespace korvel {

namespace {

constexpr std::array<std::string_view, 6> kFirstWords{"place", "check",  "draw",
                                                      "help",  "--help", "--version"};

constexpr const char* kClassicInterface =
    "Without one of these words the classic interface takes over: korvel -h tells of it.";

// The command that was asked for on the line, or the program if it came to none.
const CLI::App& askedFor(const CLI::App& program) {
    const auto commands = program.get_subcommands();
    return commands.empty() ? program : *commands.front();
}

std::string usageFailure(const CLI::App* program, const CLI::Error& error) {
    const CLI::App& command = askedFor(*program);
    const std::string words = &command == program ? "korvel" : "korvel " + command.get_name();
    return words + ": " + error.what() + "\n" + words + " --help tells how it is used.\n";
}

void addCommands(CLI::App& program, CommandOutput& output) {
    addPlace(program, output);
    addCheck(program, output);
    addDraw(program, output);
    addCommand(program, "help", "Tell about the program, or about the command that follows");
}

// `help` and `help check` are other words for `--help` and `check --help`.
std::vector<const char*> withoutHelpCommand(int argc, const char* const argv[]) {
    std::vector<const char*> words(argv, argv + argc);
    if (std::string_view(words[1]) == "help") {
        words.erase(words.begin() + 1);
        words.push_back("--help");
    }
    return words;
}

int parseAndRun(CLI::App& program, CommandOutput& output, const std::vector<const char*>& words) {
    try {
        program.parse(static_cast<int>(words.size()), words.data());
        return output.status;
    } catch (const CLI::ParseError& end) {
        return program.exit(end, output.out, output.err) == 0 ? kLegal : kWrongUsage;
    }
}

}  // namespace

bool isCommand(int argc, const char* const argv[]) {
    return argc > 1 &&
           std::find(kFirstWords.begin(), kFirstWords.end(), argv[1]) != kFirstWords.end();
}

int runCommand(int argc, const char* const argv[], std::ostream& out, std::ostream& err) {
    CommandOutput output{out, err};
    CLI::App program("Korvel places dies on an interposer.", "korvel");
    program.set_version_flag("--version", programVersion(), "Print the version and end");
    program.set_help_flag("--help", "Print this help and end");
    program.require_subcommand(1);
    program.failure_message(usageFailure);
    addCommands(program, output);
    program.footer(kClassicInterface);
    const int status = parseAndRun(program, output, withoutHelpCommand(argc, argv));
    if (!out.flush()) {
        err << "korvel: cannot write to standard output\n";
        return kNotWritten;
    }
    return status;
}

}  // namespace korvel
