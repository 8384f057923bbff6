// The counters of a search, and the line about them that `--stats` asks for.
#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace korvel {

// Kept by each worker for itself and added up when it ends.
struct SearchCounters {
    explicit SearchCounters(unsigned levelCount)
        : prunedByBound(levelCount, 0), cutAtBranching(levelCount, 0) {}

    // Nodes taken from any stack, or rejected before they were put on one.
    std::uint64_t expandedNodes = 0;
    std::uint64_t sortedNodes = 0;  // of them, block-complete ones without a cycle
    double closedFraction = 0.0;    // of the tree: what nodes without children make up
    // Of the nodes taken, those rejected: by the bound, but also for a cycle or lack of room. By
    // level - 1.
    std::vector<std::uint64_t> prunedByBound;
    std::vector<std::uint64_t> cutAtBranching;  // relations cut by their bound, by parent level - 1

    void add(const SearchCounters& other);
};

// One line on `out`: the counters of a finished search, its speed, and the largest memory that the
// process has had so far. `pass` names the search.
void printSearchStats(std::ostream& out, const std::string& pass, const SearchCounters& counters,
                      std::chrono::duration<double> time);

}  // namespace korvel
