// Opening of the files that the user names.
#pragma once

#include <fstream>
#include <string>

#include "design/Diagnostics.h"

namespace korvel {

// Opens a file for reading; if it cannot, that is an error among the findings.
bool openInput(std::ifstream& in, const std::string& path, Diagnostics& diagnostics);

}  // namespace korvel
