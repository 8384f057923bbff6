#include <iostream>

#include "IO.h"
#include "Placer.h"
#include "ProcessEnd.h"
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
