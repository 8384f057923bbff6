// What is asked of a run, and what it says in the end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "results/Incumbent.h"

namespace korvel {

enum class Engine { Auto, Classic };

struct RunOptions {
    Engine engine = Engine::Auto;
    std::optional<double> timeLimit;  // seconds
    unsigned threads = 1;
    std::optional<Placement> start;  // legal, as far as a file can say; the bound to beat

    // Of the automatic engine.
    std::uint64_t seed = 1;
    std::optional<std::uint64_t> iterations;  // of annealing, instead of a time
    bool prove = false;                       // the time is the proof's
    double gap = 0.0;                         // to the lower bound, which is enough
};

enum class Ending {
    Done,         // nothing was left to do: the search is exhausted, the iterations are made
    TimeLimit,    // of the user, or of the run itself
    Interrupted,  // from outside
    Proved,       // nothing shorter exists
    NoPlacement,  // nothing legal exists
    GapReached,
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
    std::optional<double> length = std::nullopt;
};

struct RunResult {
    std::optional<Found> best;
    Ending ending = Ending::Done;
    double seconds = 0.0;
    std::optional<double> timeLimit;  // that was in force
    std::uint64_t nodes = 0;          // of search trees
    std::uint64_t moves = 0;          // of annealing
    // No legal placement is shorter; infinity if there is none.
    std::optional<double> lowerBound;
    double proofTolerance = 0.0;  // what "proved" leaves open, in parts of the wirelength
    std::vector<PassFigures> passes;
};

}  // namespace korvel
