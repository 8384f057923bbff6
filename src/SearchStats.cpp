#include "SearchStats.h"

#include <sys/resource.h>

#include <iomanip>
#include <numeric>
#include <ostream>
#include <sstream>

namespace korvel {

namespace {

std::uint64_t sum(const std::vector<std::uint64_t>& byLevel) {
    return std::accumulate(byLevel.begin(), byLevel.end(), std::uint64_t{0});
}

double peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

}  // namespace

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
