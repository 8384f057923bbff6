// The line about a search that `--stats` asks for.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

#include "classic/SearchState.h"

namespace korvel {

// One line on `out`: the counters of a finished search, its speed, and the largest memory that the
// process has had so far. `pass` names the search.
void printSearchStats(std::ostream& out, const std::string& pass, const SearchCounters& counters,
                      std::chrono::duration<double> time);

}  // namespace korvel
