#include <iostream>

#include "classic/IO.h"
#include "classic/Placer.h"
#include "classic/ProcessEnd.h"
#include "commands/Commands.h"

int main(int argc, char* argv[]) {
    if (korvel::isCommand(argc, argv)) {
        return korvel::runCommand(argc, argv, std::cout, std::cerr);
    }
    try {
        korvel::Placer placer(0.0F);
        korvel::IO io(placer);
        io.parseCommandLineParams(argc, argv);
        io.parseInput();
        return placer.run();
    } catch (const korvel::ProcessEnd& end) {
        return end.status;
    }
}
