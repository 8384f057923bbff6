#include "run/ClassicEngine.h"

#include <algorithm>

#include "base/Tolerances.h"
#include "classic/netlist/NetlistBuilder.h"

namespace korvel {

namespace {

// The search works in single precision: a bound that is to be beaten must not be cut.
constexpr double kRoundUp = 1.0 + kFloatError;

// The start's length as the search measures it: without nets on one die.
float lengthToBeat(const Design& design, Region region, const std::optional<Placement>& start) {
    if (!start) {
        return 0.0F;
    }
    return static_cast<float>(kRoundUp * judge(design, region, *start).wirelengthBetweenDies);
}

// --- The design as the engine wants it -----------------------------------------------------------

constexpr char kBothWays = 'B';

// Files have percent from the middle, and the classic reader rounds these: taken back to them, pins
// get the same fractions to the bit.
float fraction(double offset, double extent) {
    const auto percent = static_cast<float>((offset / extent - 0.5) * 100.0);
    return static_cast<float>((percent + 50.0) / 100.0);
}

Point inSinglePrecision(Spot spot) {
    return {static_cast<float>(spot.x), static_cast<float>(spot.y)};
}

void loadBodies(Netlist& netlist, const Design& design) {
    int index = 0;
    for (const Design::Die& die : design.dies) {
        netlist.blocks.emplace_back(index++, die.name, static_cast<float>(die.size.width),
                                    static_cast<float>(die.size.height));
    }
    for (const Design::Terminal& terminal : design.terminals) {
        netlist.terminals.emplace_back(index++, terminal.name, 0.0F, 0.0F,
                                       inSinglePrecision(terminal.at), Orient::N, false);
    }
}

std::size_t countPins(const Design& design) {
    std::size_t number = 0;
    for (const Design::Net& net : design.nets) {
        number += net.pins.size();
    }
    return number;
}

void loadPin(NetlistBuilder& builder, Netlist& netlist, const Design& design,
             const Design::Pin& pin) {
    if (!design.isDie(pin.body)) {
        builder.addTerminalPin(netlist.terminals[pin.body - design.dies.size()], kBothWays);
        return;
    }
    const Extent size = design.dies[pin.body].size;
    builder.addBlockPin(netlist.blocks[pin.body], kBothWays,
                        {fraction(pin.offset.x, size.width), fraction(pin.offset.y, size.height)});
}

void loadNets(Netlist& netlist, const Design& design, std::ostream& report) {
    NetlistBuilder builder(netlist, design.nets.size(), countPins(design));
    for (const Design::Net& net : design.nets) {
        builder.addNet(static_cast<unsigned>(net.pins.size()), net.pins.size());
        for (const Design::Pin& pin : net.pins) {
            loadPin(builder, netlist, design, pin);
        }
    }
    builder.finish(report);
}

// Gives the engine, which must be new, the area and the netlist that the classic reader would have
// read from the design's files: single precision, pins as fractions of their dies. Blocks keep the
// number of their die as original index.
void loadDesign(Placer& placer, const Design& design, Region region) {
    placer.params.setDieWidth(static_cast<float>(region.width));
    placer.params.setDieHight(static_cast<float>(region.height));
    placer.params.setAreaConst();
    placer.setBlockNum(static_cast<unsigned>(design.dies.size()));
    placer.setTermNum(static_cast<unsigned>(design.terminals.size()));
    loadBodies(placer.netlist, design);
    loadNets(placer.netlist, design, placer.report());
    placer.setNetNum(static_cast<unsigned>(placer.netlist.nets.size()));
    placer.setPinNum(static_cast<unsigned>(placer.netlist.pins.size()));
}

}  // namespace

// --- A pass --------------------------------------------------------------------------------------

bool PassTally::improved(float length) {
    const std::lock_guard lock(mutex);
    if (pass.length && *pass.length <= length) {
        return false;
    }
    pass.length = length;
    ++pass.improvements;
    return true;
}

void PassTally::worked(std::uint64_t moreNodes, double moreShare) {
    nodes += moreNodes;
    share += moreShare;
}

// The sum of all shares is one but for rounding.
RunProgress::Gauge PassTally::gauge() const {
    return {.count = nodes, .share = std::min(share.load(), 1.0)};
}

PassFigures PassTally::figures(bool exhausted) const {
    PassFigures ended = pass;
    ended.seconds = std::chrono::duration<double>(RunClock::now() - began).count();
    ended.nodes = nodes;
    ended.share = exhausted ? 1.0 : std::min(share.load(), 1.0);
    ended.exhausted = exhausted;
    return ended;
}

// --- The engine ----------------------------------------------------------------------------------

ClassicEngine::ClassicEngine(const Design& design, Region region, const RunOptions& options,
                             Incumbent& incumbent, RunProgress& progress)
    : design(design),
      solver(design, region),
      incumbent(incumbent),
      progress(progress),
      placer(lengthToBeat(design, region, options.start), silence) {
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
        incumbent.offerExact(solver, relationsOf(node, draft), draft,
                             "classic search, " + tally->getName());
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
