#include "run/ClassicEngine.h"

#include <algorithm>

#include "run/ClassicNetlist.h"

namespace korvel {

namespace {

// The search works in single precision: a bound that is to be beaten must not be cut.
constexpr double kRoundUp = 1.0 + 1e-6;

// The start's length as the search measures, which leaves out what no placement changes.
float lengthToBeat(const Design& design, const std::optional<Placement>& start) {
    if (!start) {
        return 0.0F;
    }
    Design betweenDies = design;
    std::erase_if(betweenDies.nets, [&](const Design::Net& net) {
        return std::all_of(net.pins.begin(), net.pins.end(), [&](const Design::Pin& pin) {
            return design.isDie(pin.body) && pin.body == net.pins.front().body;
        });
    });
    return static_cast<float>(kRoundUp * wirelength(betweenDies, *start));
}

}  // namespace

ClassicEngine::ClassicEngine(const Design& design, Region region, const RunOptions& options,
                             LegalResults& results, RunProgress& progress)
    : design(design),
      results(results),
      progress(progress),
      placer(lengthToBeat(design, options.start), silence) {
    loadDesign(placer, design, region);
    placer.setNumThreads(options.threads);
    placer.setJoinPieces();
    placer.setObserver(*this);
}

std::vector<PassFigures> ClassicEngine::run(std::optional<RunClock::time_point> runDeadline,
                                            const std::stop_token& stopToken) {
    deadline = runDeadline;
    stop = stopToken;
    const std::stop_callback stopping(stop, [this] { placer.requestStop(); });
    placer.run();
    return passes;
}

std::string ClassicEngine::passName(unsigned blocks) const {
    if (placer.isStaged()) {
        return "stage of " + std::to_string(blocks) + " dies";
    }
    return passes.empty() ? "initial pass" : "main pass";
}

void ClassicEngine::passBegins(unsigned blocks) {
    PassFigures pass;
    pass.name = passName(blocks);
    pass.dies = blocks;
    passes.push_back(pass);
    passBegan = RunClock::now();
    passNodes = 0;
    passShare = 0.0;
    passEndedEarly = false;
    if (deadline && placer.isStaged()) {
        passDeadline = passBegan + shareOfStage(blocks);
    }
    phase.emplace(progress, passes.back().name, "nodes", [this] { return gauge(); });
}

void ClassicEngine::searchBegins() {
    leastTime = RunClock::now() - passBegan;
}

// A stage's work grows with the square of its dies: its tables do, and the decisions of the stage
// before that it repeats. So does its share of the time.
RunClock::duration ClassicEngine::shareOfStage(unsigned blocks) const {
    const auto dies = static_cast<unsigned>(design.dies.size());
    const unsigned step = nextStage(blocks) - blocks;
    double weights = 0.0;
    const auto weightOf = [](unsigned stage) { return static_cast<double>(stage) * stage; };
    for (unsigned stage = blocks; stage < dies; stage += step) {
        weights += weightOf(stage);
    }
    weights += weightOf(dies);
    const std::chrono::duration<double> left = *deadline - passBegan;
    return clockSpan(left.count() * weightOf(blocks) / weights);
}

// How many stages there is time for, if half of the time is left for searching.
unsigned ClassicEngine::stagesAfter(unsigned blocks) const {
    const auto left = static_cast<unsigned>(design.dies.size()) - blocks;
    if (!deadline || left == 0) {
        return left;
    }
    using Seconds = std::chrono::duration<double>;
    const double growth = static_cast<double>(design.dies.size()) / blocks;
    // Over the stages to come, the square of their dies is on average a third of the last one's.
    const double cost = Seconds(leastTime).count() * growth * growth / 3.0;
    const double available = Seconds(*deadline - RunClock::now()).count() / 2.0;
    return static_cast<unsigned>(std::clamp(available / cost, 1.0, static_cast<double>(left)));
}

unsigned ClassicEngine::nextStage(unsigned blocks) const {
    const auto left = static_cast<unsigned>(design.dies.size()) - blocks;
    const unsigned stages = std::max(1U, stagesAfter(blocks));
    // What a small stage takes says little of the large ones: no step is a large one.
    return blocks + std::clamp((left + stages - 1) / stages, 1U, blocks / 2);
}

void ClassicEngine::passEnds() {
    phase.reset();
    PassFigures& pass = passes.back();
    pass.seconds = std::chrono::duration<double>(RunClock::now() - passBegan).count();
    pass.nodes = passNodes;
    pass.exhausted = !passEndedEarly && !stop.stop_requested();
    // The sum of all shares is one but for rounding.
    pass.share = pass.exhausted ? 1.0 : std::min(passShare.load(), 1.0);
}

RunProgress::Gauge ClassicEngine::gauge() const {
    return {.count = passNodes, .share = std::min(passShare.load(), 1.0)};
}

bool ClassicEngine::worked(std::uint64_t nodes, double share) {
    passNodes += nodes;
    passShare += share;
    if (passDeadline && RunClock::now() >= *passDeadline) {
        passEndedEarly = true;
    }
    return !passEndedEarly;
}

void ClassicEngine::improved(const BBNode& node, const WorkingPlacement& placement) {
    PassFigures& pass = passes.back();
    {
        const std::lock_guard lock(bestMutex);
        if (pass.length && *pass.length <= node.wirelength) {
            return;  // another worker's shorter node came first
        }
        if (++pass.improvements == 1) {
            leastTime = RunClock::now() - passBegan;
        }
        pass.length = node.wirelength;
    }
    if (node.numBlocks == design.dies.size()) {
        const Placement draft = draftOf(node, placement);
        results.offer(relationsOf(node, draft), draft, "classic search, " + pass.name);
    }
}

Placement ClassicEngine::draftOf(const BBNode& node, const WorkingPlacement& placement) const {
    Placement draft(node.numBlocks);
    for (unsigned i = 0; i < node.numBlocks; ++i) {
        const auto die = static_cast<std::size_t>(placer.netlist.blocks[i].getOrigIndex());
        draft[die] = {{placement.edge(kX, i), placement.edge(kY, i)}, node.blocksOrients[i]};
    }
    return draft;
}

// A pair that the search has left without a relation gets the one that its coordinates suggest.
Relations ClassicEngine::relationsOf(const BBNode& node, const Placement& draft) const {
    Relations relations = Relations::of(design, draft);
    for (unsigned a = 1; a < node.numBlocks; ++a) {
        for (unsigned b = 0; b < a; ++b) {
            if (const auto topology = node.relationOf(a, b)) {
                const auto dieOf = [this](unsigned block) {
                    return static_cast<unsigned>(placer.netlist.blocks[block].getOrigIndex());
                };
                relations.set(dieOf(a), dieOf(b), *topology);
            }
        }
    }
    return relations;
}

}  // namespace korvel
