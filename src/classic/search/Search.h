// One branch-and-bound over partial placements: workers, each on a thread of its own, that take
// nodes, test them and put their children in their place, until no node is left or the search is
// told to stop. How they share nodes and what they share: SearchState.
#pragma once

#include <iosfwd>

#include "classic/search/Branching.h"
#include "classic/search/SearchObserver.h"
#include "classic/search/SearchState.h"

namespace korvel {

class Search {
public:
    // Improvements are reported to `report` and told to the observer, if there is one. All that is
    // passed must outlive the search. Only what is shorter than `bestWL` is looked for.
    Search(const SearchSetting& setting, const SearchTables& tables, float bestWL, StopFlags& stop,
           SearchObserver* observer, std::ostream& report);

    // With so many workers, or as many as the system allows; returns when all have ended. Once.
    void run(unsigned numThreads);

    // What it found; empty if nothing.
    const BBNode& getBestNode() const { return state.getBestNode(); }
    const SearchCounters& getCounters() const { return state.getCounters(); }

private:
    void BBcore();
    void expandShared(SearchWorker& worker);
    void workOwnStack(SearchWorker& worker);
    bool isKept(SearchWorker& worker, BBNode& node);
    void updateBest(const BBNode& node, const WorkingPlacement& placement);
    void tellObserver(SearchWorker& worker);

    const SearchTables& tables;
    NodeEstimator estimator;
    Branching branching;
    SearchObserver* observer;
    std::ostream& report;
    SearchState state;
};

}  // namespace korvel
