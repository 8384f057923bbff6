// What is asked of a run, and what it says in the end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "design/Incumbent.h"

namespace korvel {

enum class Engine { Auto, Classic };

struct RunOptions {
    Engine engine = Engine::Auto;
    std::optional<double> timeLimit;  // seconds
    unsigned threads = 1;
    std::optional<Placement> start;  // legal, as far as a file can say; the bound to beat
};

enum class Ending {
    Exhausted,    // nothing was left to do
    TimeLimit,    // of the user, or of the run itself
    Interrupted,  // from outside
};

// One pass of the classic engine.
struct PassFigures {
    std::string name;
    unsigned dies = 0;  // how many it placed
    double seconds = 0.0;
    std::uint64_t nodes = 0;
    double share = 0.0;  // of its tree that is closed
    bool exhausted = false;
    unsigned improvements = 0;
    // Of its best node, in the measure of the search: without nets on one die, before the exact
    // coordinates.
    std::optional<double> length;
};

struct RunResult {
    std::optional<Found> best;
    double foundAfter = 0.0;  // seconds
    Ending ending = Ending::Exhausted;
    double seconds = 0.0;
    std::uint64_t nodes = 0;
    std::vector<PassFigures> passes;
};

}  // namespace korvel
