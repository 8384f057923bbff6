#include "run/ClassicEngine.h"

#include <algorithm>

#include "base/Tolerances.h"
#include "results/ExactOffer.h"
#include "run/ClassicNetlist.h"

namespace korvel {

namespace {

// The search works in single precision: a bound that is to be beaten must not be cut.
constexpr double kRoundUp = 1.0 + kFloatError;

// The start's length as the search measures it: without nets on one die.
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
                             Incumbent& incumbent, RunProgress& progress)
    : design(design),
      solver(design, region),
      incumbent(incumbent),
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
    tally.emplace(passName(blocks), blocks);
    passCutShort = false;
    if (deadline && placer.isStaged()) {
        const auto stages = static_cast<unsigned>(design.dies.size()) - blocks + 1;
        passDeadline = tally->getBegin() + (*deadline - tally->getBegin()) / stages;
    }
    phase.emplace(progress, tally->getName(), "nodes", [this] { return tally->gauge(); });
}

void ClassicEngine::passEnds() {
    phase.reset();
    passes.push_back(tally->figures(!passCutShort && !stop.stop_requested()));
}

bool ClassicEngine::worked(std::uint64_t nodes, double share) {
    tally->worked(nodes, share);
    if (passDeadline && RunClock::now() >= *passDeadline) {
        passCutShort = true;
    }
    return !passCutShort;
}

void ClassicEngine::improved(const BBNode& node, const WorkingPlacement& placement) {
    if (tally->improved(node.wirelength) && node.numBlocks == design.dies.size()) {
        const Placement draft = draftOf(node, placement);
        offerExact(solver, relationsOf(node, draft), draft, "classic search, " + tally->getName(),
                   incumbent);
    }
}

Placement ClassicEngine::draftOf(const BBNode& node, const WorkingPlacement& placement) const {
    Placement draft(node.numBlocks);
    for (unsigned i = 0; i < node.numBlocks; ++i) {
        draft[dieOf(i)] = {{placement.edge(kX, i), placement.edge(kY, i)}, node.blocksOrients[i]};
    }
    return draft;
}

// A pair that the search has left without a relation gets the one that its coordinates suggest.
Relations ClassicEngine::relationsOf(const BBNode& node, const Placement& draft) const {
    Relations relations = Relations::of(design, draft);
    for (unsigned a = 1; a < node.numBlocks; ++a) {
        for (unsigned b = 0; b < a; ++b) {
            if (const auto topology = node.relationOf(a, b)) {
                relations.set(dieOf(a), dieOf(b), *topology);
            }
        }
    }
    return relations;
}

}  // namespace korvel
