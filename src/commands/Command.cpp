#include "commands/Command.h"

#include <cmath>
#include <cstdlib>

namespace korvel {

namespace {

std::string faultOfLength(const std::string& word) {
    char* end = nullptr;
    const double length = std::strtod(word.c_str(), &end);
    const bool isNumber = !word.empty() && *end == '\0';
    const bool isLength = isNumber && std::isfinite(length) && length > 0.0;
    return isLength ? "" : "'" + word + "' is not a positive finite number";
}

}  // namespace

CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description) {
    CLI::App& command = *program.add_subcommand(name, description);
    command.set_help_flag("-h,--help", "Print this help and end");
    return command;
}

void addArea(CLI::App& command, Region& region) {
    command
        .add_option_function<std::pair<double, double>>(
            "--area",
            [&region](const std::pair<double, double>& area) {
                region = {area.first, area.second};
            },
            "Width and height of the area, in the unit of the design")
        ->type_name("W H")
        ->check(faultOfLength)
        ->required();
}

}  // namespace korvel
