// The placement engine: one object for the whole run. It owns the parameters, the netlist, the
// tables of lower bounds and the run's flags; the reader fills it, run() places the benchmark.
//
// Everything runs on the main thread but the workers of a search, which live only inside BandB(),
// and the timer of a limited run. Each worker has its own placement to work on; netlist, tables and
// flags are only read while they live.
//
// The sources follow the groups below: Placer.cpp (state and driver), PlacerTables.cpp,
// PlacerSearch.cpp, PlacerBranching.cpp, PlacerPlot.cpp.
#pragma once

#include <array>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "classic/Params.h"
#include "classic/SearchObserver.h"
#include "classic/SearchWorker.h"
#include "classic/netlist/Netlist.h"
#include "classic/node/BBNode.h"
#include "classic/node/BoundTables.h"

namespace korvel {

// By the orientations of both blocks.
using PairCosts = std::array<std::array<float, kUnmirroredOrients>, kUnmirroredOrients>;

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

    // --- Tables: lower bounds, rebuilt by every pass ------------------------------------------

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

    // Tests a node: cycles, area, bound. True keeps it, with its wirelength when all relations of
    // its newest block are fixed: then its blocks are placed and aligned in the worker's placement.
    bool estimateNode(BBNode& node, float bestWL, SearchWorker& worker) const;

    // --- Branching ----------------------------------------------------------------------------

    // Puts the children of the kept node on top of `stack` into its place, the most promising
    // topmost. Counts what the bound cuts, and as rejected what estimateNode would reject for
    // certain: neither is made.
    void branch(NodeStack& stack, float bestWL, SearchWorker& worker) const;

    // Indexes of the keys in ascending order; the comparisons fix the order of equal keys.
    static std::array<unsigned, 3> sortThreeNodes(const std::array<float, 4>& keys);
    static std::array<unsigned, 4> sortFourNodes(const std::array<float, 4>& keys);

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
    void calcUtilization();
    void runStages();
    void runInitialAndMain();
    void runPlain();
    void writeStatistics(const std::string& text);

    // Search.
    const SearchTables& prepareTables();
    void search(SearchState& state, const SearchTables& shared);
    void BBcore(SearchState& state, const SearchTables& shared);
    static bool takeNode(SearchState& state, BBNode& node);
    void expandShared(SearchState& state, SearchWorker& worker);
    void workOwnStack(SearchState& state, SearchWorker& worker);
    bool isKept(SearchState& state, SearchWorker& worker, BBNode& node);
    void updateBest(SearchState& state, const BBNode& node, const WorkingPlacement& placement);
    void tellObserver(StopFlags& stop, SearchWorker& worker);
    // Whether no alignment saves the node, nor any that it becomes by further relations of its
    // newest block: with what later blocks add at least (`remaining`) its wirelength is too long.
    // Takes nodes inside the area, with their coordinates found.
    bool isHopeless(const BBNode& node, float remaining, float bestWL, SearchWorker& worker) const;
    void finishSearch(const AlignmentTables& alignment);
    void reportSearch();

    // Branching.
    std::optional<Orient> steeredOrient(const BBNode& node, unsigned block) const;
    std::optional<Topology> steeredTopology(const BBNode& node, unsigned a, unsigned b) const;
    bool isSteered(const BBNode& node) const;
    float remainingDistance(const BBNode& node, unsigned next, Orient orient) const;
    void branchOrientations(NodeStack& stack, float bestWL, SearchCounters& counters) const;
    void branchTopologies(NodeStack& stack, float bestWL, SearchWorker& worker) const;

    std::ostream& out;
    unsigned numBlocks = 0;  // from the benchmark, then those that the current pass places
    unsigned numTerms = 0;
    unsigned netNum = 0;
    unsigned pinNum = 0;
    unsigned numThreads;
    BoundTables tables;
    float initWL;
    float levelCutFactor = 0.0F;
    float utilization = 0.0F;
    bool stageMode = false;
    unsigned prevNumBlocks = 0;
    unsigned prevLevels = 0;
    BBNode prevBestNode;  // of the previous stage
    bool initialPlacement = true;
    bool statistics = false;
    bool plot = false;
    std::ostream* statsOut = nullptr;
    double secondsToRun = 0.0;
    BBNode bestNode;
    std::optional<SearchCounters> searchCounters;
    std::unique_ptr<const SearchTables> searchTables;  // of the last search
    // Of pairs of blocks whose cost no pass changes.
    std::map<std::pair<unsigned, unsigned>, PairCosts> knownPairCosts;
    StopFlags stop;
    SearchObserver* observer = nullptr;
    bool joinPieces = false;
};

}  // namespace korvel
