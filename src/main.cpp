#include "IO.h"
#include "Placer.h"
#include "ProcessEnd.h"

int main(int argc, char* argv[]) {
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
