// The placement engine: one object for the whole run. It owns the parameters, the netlist, the
// tables of estimates and the run's flags; the reader fills it, run() places the benchmark.
//
// Everything runs on the main thread but the workers of a search, which live only inside BandB(),
// and the timer of a limited run. While workers live, nothing of the engine changes but its stop
// flags and its report stream, see SearchState.
//
// The sources follow the groups below: Placer.cpp (state and driver), PlacerTables.cpp (with
// PairTrials and TerminalTrials), PlacerSearch.cpp (with the room search/), PlacerPlot.cpp.
#pragma once

#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "classic/Params.h"
#include "classic/netlist/Netlist.h"
#include "classic/search/Search.h"

namespace korvel {

class Placer {
public:
    // --- State -------------------------------------------------------------------------------

    // `initWL` is the wirelength that the first search has to beat; 0 means none. Reports go to
    // `out`, which must outlive the engine.
    explicit Placer(float initWL, std::ostream& out = std::cout);

    Params params;
    Netlist netlist;

    std::ostream& report() { return out; }

    void setNumThreads(unsigned number) { numThreads = number; }
    void setStatistics() { statistics = true; }
    void setPlot() { plot = true; }
    // A line about each search goes to `out`, which must outlive the engine.
    void setStats(std::ostream& to) { statsOut = &to; }
    // The run stops as if requestStop() were called after that many seconds; 0 means no limit.
    void setSecondsToRun(double seconds) { secondsToRun = seconds; }
    bool wantsStatistics() const { return statistics; }
    bool wantsPlot() const { return plot; }

    // The counts that the benchmark declares.
    void setBlockNum(unsigned number) { numBlocks = number; }
    void setTermNum(unsigned number) { numTerms = number; }
    void setNetNum(unsigned number) { netNum = number; }
    void setPinNum(unsigned number) { pinNum = number; }
    unsigned getBlockNum() const { return numBlocks; }
    unsigned getTermNum() const { return numTerms; }
    unsigned getNetNum() const { return netNum; }
    unsigned getPinNum() const { return pinNum; }

    // Must outlive the engine; none without it. Set it before run().
    void setObserver(SearchObserver& watcher) { observer = &watcher; }

    // Makes the order of the blocks whole also for a netlist in separate pieces, by faint
    // connections between all blocks. The order of a connected one stays what it is.
    void setJoinPieces() { joinPieces = true; }

    // The run places the blocks in stages.
    bool isStaged() const { return stageMode; }

    // Asks the running search, and all that would follow, to stop; from any thread. The run goes
    // on with the best node found so far.
    void requestStop() { stop.run.store(true); }

    // --- Driver ------------------------------------------------------------------------------

    // Places the benchmark and reports; 0 always.
    int run();

    // One pass on the first numBlocks blocks: tables, then search.
    void place();

    // Puts the blocks into the order in which they are placed and renumbers them.
    void ordering();

    // --- Tables: estimates of what is to come, rebuilt by every pass --------------------------

    void calcMinDistancesCombined();
    void minimalOrintationalPairsCalc();
    void calcMinTermDistCombined();
    void updateRemainingDistances();
    const BoundTables& getTables() const { return tables; }

    // --- Search -------------------------------------------------------------------------------

    // One branch-and-bound on the current tables, with all workers.
    void BandB();

    // What the last search found, as it was reported, and its counters.
    const BBNode& getBestNode() const { return bestNode; }
    const std::optional<SearchCounters>& getSearchCounters() const { return searchCounters; }

    // Single steps of a search on the current tables; see NodeEstimator and Branching.
    bool estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const;
    void branch(NodeStack& stack, float bestWL, SearchWorker& worker) const;
    static auto sortThreeNodes(const std::array<float, 4>& keys) {
        return Branching::sortThreeNodes(keys);
    }
    static auto sortFourNodes(const std::array<float, 4>& keys) {
        return Branching::sortFourNodes(keys);
    }

    // --- Plot ---------------------------------------------------------------------------------

    // Draws the node's blocks as the netlist places them into outputName_suffix.png, through
    // gnuplot.
    void plotUncomPlacementBlueGrayOrange(const BBNode& node, const std::string& suffix);
    void writePlotScript(const BBNode& node, const std::string& suffix, std::ostream& script,
                         std::ostream& data) const;

private:
    Area area() const { return {params.getDieWidth(), params.getDieHight()}; }
    void banner(const std::string& text);

    // Driver.
    void runMode();
    void printUtilization();
    void runStages();
    void runInitialAndMain();
    void writeStatistics(const std::string& text);

    // Search.
    const SearchTables& prepareTables();
    SearchSetting searchSetting() const;
    void runSearch(Search& search);
    void finishSearch(const AlignmentTables& alignment);
    void reportSearch();

    std::ostream& out;
    SearchObserver* observer = nullptr;

    // Options.
    unsigned numThreads;
    bool statistics = false;
    bool plot = false;
    std::ostream* statsOut = nullptr;
    double secondsToRun = 0.0;
    bool joinPieces = false;

    // The benchmark.
    unsigned numBlocks = 0;  // from the benchmark, then those that the current pass places
    unsigned numTerms = 0;
    unsigned netNum = 0;
    unsigned pinNum = 0;

    // The run.
    StopFlags stop;
    bool initialPlacement = true;
    bool stageMode = false;
    PreviousStage previousStage;
    float initWL;
    BoundTables tables;
    std::unique_ptr<const SearchTables> searchTables;  // of the last search
    BBNode bestNode;
    std::optional<SearchCounters> searchCounters;
};

}  // namespace korvel
