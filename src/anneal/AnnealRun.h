// One run of the annealer: layouts from random or given starts, cooled down, and the best of them
// worked on. Its result depends on its starts, its random stream and the shares of the schedule
// that it is given, nothing else. Owned and used by one thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "anneal/AnnealLevel.h"
#include "anneal/Cooling.h"
#include "anneal/Moves.h"
#include "anneal/SlidLayout.h"
#include "anneal/Start.h"

namespace korvel {

class AnnealRun {
public:
    // Told of every placement that is shorter than all before it in this run, with coordinates
    // that are best for its relations.
    using Notice = std::function<void(const Placement&, double length)>;

    // The level must outlive the run. Starts, if any, are the best ones first; the first cooling
    // down, which teaches, is too hot to keep much of one, those after it begin with one each.
    AnnealRun(const AnnealLevel& level, RandomStream stream, Cooling::Plan plan, Notice notice,
              std::vector<Start> starts = {});

    // Goes on by that many moves. `share` is how much of the schedule is over, from 0 to 1.
    void advance(unsigned moves, double share);
    // Works out what is found and not yet told.
    void finish();
    // Ends the run: what its starts were cooled down to, the shortest first; legal layouts only. If
    // there is none, the shortest legal one on the way.
    std::vector<Start> outcomes();

private:
    void begin(unsigned number);
    void scramble();
    void startFrom(const Start& start);
    void judgeAnew();
    void noteOutcome();
    void move();
    void judge(double allowance);
    void adaptPenalty(double part);
    void noteBest();
    bool isNew();
    std::uint64_t perWorkOut() const;
    void workOut();
    std::optional<Placement> exactly(const SequencePair& orders, const Placement& placement) const;
    // Something of the order of the wirelength, even if there are no nets.
    double scale() const { return length + level.region.width + level.region.height; }

    const AnnealLevel& level;
    RandomStream random;
    Notice notice;
    const std::vector<Start> starts;
    SlidLayout layout;
    Moves moves;
    Cooling cooling;

    double typicalChange = 0.0;  // that random changes make of random layouts
    double heat = 0.0;
    double length = 0.0;       // of the layout as it is kept
    double excess = 0.0;       // likewise
    double penalty = 0.0;      // of one region's side too much, in wirelength
    double hope = 0.0;         // how much wirelength a move that needs more room may save
    double slidingHope = 0.0;  // how much sliding may save
    unsigned stage = 0;
    std::uint64_t moveNum = 0;
    std::uint64_t nextWorkOut = 0;
    std::array<std::uint64_t, 4096> workedOut{};  // hashes of layouts, by themselves

    struct Outcome {
        double length;
        Start layout;
    };
    std::vector<Outcome> ended;

    double onOneDie;      // length of the nets that no layout counts
    double shortest;      // legal, of all layouts
    double toldShortest;  // wirelength, of all nets
    SequencePair bestOrders;
    Placement best;
    bool isTold = true;  // whether `best` is worked out
};

}  // namespace korvel
