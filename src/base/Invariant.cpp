#include "base/Invariant.h"

#include <cstdlib>
#include <iostream>

namespace korvel {

void invariantBroken(const char* text, const char* file, int line, const char* function) {
    std::cout.flush();
    std::cerr << "korvel: " << file << ':' << line << ": " << function << ": Assertion `" << text
              << "' failed." << std::endl;
    std::abort();
}

}  // namespace korvel
