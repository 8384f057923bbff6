// Anneals one level of a restart: a design, whole or coarse, through one cooling schedule. Each
// cooling of the schedule begins with a start, which is random or given, or with the best layout so
// far. Layouts that are as short as the best one, or nearly, are refined: they get exact
// coordinates. The result depends on the starts, the random stream and the progress that it is
// given, nothing else. Owned and used by one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "anneal/Acceptance.h"
#include "anneal/CoolingSchedule.h"
#include "anneal/Layout.h"
#include "anneal/MoveGenerator.h"
#include "anneal/PreparedDesign.h"
#include "anneal/RecentLayouts.h"

namespace korvel {

class LevelAnnealer {
public:
    // Told of every placement that is shorter than all before it on this level, with coordinates
    // that are best for its relations.
    using Notice = std::function<void(const Placement&)>;
    using Starts = std::vector<Layout::Snapshot>;

    // The design must outlive the annealer. Starts, if any, are the best ones first. The first
    // cooling begins with the best one too, but is so hot, if it is the one that teaches, that
    // little of it is left; so the next one begins with it again.
    LevelAnnealer(const PreparedDesign& prepared, RandomStream stream, CoolingSchedule::Kind kind,
                  Notice notice, Starts starts = {});

    // Goes on by that many moves. `progress` is how much of the schedule is over, from 0 to
    // below 1.
    void advance(unsigned moves, double progress);
    // Refines the best layout and tells of it, unless that is done.
    void reportBest();
    // Ends the annealing: what its coolings led to, the shortest first; legal layouts only. If
    // there is none, the shortest legal one on the way.
    Starts outcomes();

private:
    void beginCooling();
    void startAnywhere();
    void startFrom(const Layout::Snapshot& start);
    void arrangeAndKeep();
    void noteOutcome();
    void tryMove();
    void noteBest();
    void refineNearBest();
    void refine();
    bool makeExact(Layout::Snapshot& snapshot) const;

    const PreparedDesign& prepared;
    RandomStream random;
    const Notice notice;
    const Starts starts;
    Layout layout;
    MoveGenerator moves;
    Acceptance acceptance;
    CoolingSchedule schedule;

    double typicalChange = 0.0;  // of the length, by a random move in a random layout
    unsigned cooling = 0;        // number of the one that runs
    std::uint64_t moveNum = 0;
    const std::uint64_t movesPerProgram;
    std::uint64_t nextProgram = 0;  // the move before which none is solved for near-best layouts
    RecentLayouts refined;
    std::multimap<double, Layout::Snapshot> ended;  // coolings, by length

    // The best legal layout, and whether it is refined.
    Layout::Snapshot best;
    bool isReported = true;
    double shortest;          // the best layout's length, without nets on one die
    double reportedShortest;  // wirelength, of all nets
    double lengthOnOneDie;    // of the nets that no layout counts
};

}  // namespace korvel
