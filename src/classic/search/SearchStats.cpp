#include "classic/search/SearchStats.h"

#include <fstream>
#include <iomanip>
#include <numeric>
#include <ostream>
#include <sstream>

namespace korvel {

namespace {

std::uint64_t sum(const std::vector<std::uint64_t>& byLevel) {
    return std::accumulate(byLevel.begin(), byLevel.end(), std::uint64_t{0});
}

// As the kernel tells it: getrusage() would count the memory of whoever started the program, too.
double peakMegabytes() {
    const std::string mark = "VmHWM:";
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != mark) {
    }
    double kilobytes = 0.0;
    status >> kilobytes;
    return kilobytes / 1024.0;
}

}  // namespace

void SearchCounters::add(const SearchCounters& other) {
    expandedNodes += other.expandedNodes;
    sortedNodes += other.sortedNodes;
    closedFraction += other.closedFraction;
    for (std::size_t level = 0; level < prunedByBound.size(); ++level) {
        prunedByBound[level] += other.prunedByBound[level];
        cutAtBranching[level] += other.cutAtBranching[level];
    }
}

void printSearchStats(std::ostream& out, const std::string& pass, const SearchCounters& counters,
                      std::chrono::duration<double> time) {
    const double seconds = time.count();
    const double rate = static_cast<double>(counters.expandedNodes) / seconds;
    std::ostringstream line;
    line << "stats: pass " << pass << ": expanded " << counters.expandedNodes << ", sorted "
         << counters.sortedNodes << ", pruned " << sum(counters.prunedByBound) << ", cut "
         << sum(counters.cutAtBranching) << std::fixed << std::setprecision(3) << ", seconds "
         << seconds << std::setprecision(0) << ", nodes per second " << rate << std::setprecision(1)
         << ", peak memory " << peakMegabytes() << " MB\n";
    out << line.str() << std::flush;
}

}  // namespace korvel
