#include "classic/PairTrials.h"

#include <algorithm>
#include <cmath>

#include "classic/netlist/BoundingBox.h"

namespace korvel {

namespace {

constexpr unsigned kNoBlock = ~0U;
constexpr unsigned kFewBlocks = 8;

// How many blocks have a pin on each net.
std::vector<unsigned> countBlocks(const std::vector<Net>& nets) {
    std::vector<unsigned> counts;
    std::vector<unsigned> blocks;
    for (const Net& net : nets) {
        blocks.clear();
        for (const Pin* pin : net.getPins()) {
            if (!pin->isTerminal()) {
                blocks.push_back(pin->getBlockIndex());
            }
        }
        std::sort(blocks.begin(), blocks.end());
        counts.push_back(
            static_cast<unsigned>(std::unique(blocks.begin(), blocks.end()) - blocks.begin()));
    }
    return counts;
}

}  // namespace

PairTrials::PairTrials(Netlist& netlist, unsigned numBlocks, bool initialPlacement)
    : netlist(netlist),
      numBlocks(numBlocks),
      initialPlacement(initialPlacement),
      netBlocks(countBlocks(netlist.nets)),
      pinBlocks(netlist.pins.size(), kNoBlock) {
    for (unsigned block = 0; block < netlist.blocks.size(); ++block) {
        for (const Pin* pin : netlist.blocks[block].getPins()) {
            pinBlocks[pin - netlist.pins.data()] = block;
        }
    }
}

void PairTrials::start(unsigned i, unsigned j) {
    first = i;
    second = j;
    pins.clear();
    nets.clear();
    for (const unsigned index : commonNets(netlist.blocks[i], netlist.blocks[j])) {
        addNet(netlist.nets[index]);
    }
}

float PairTrials::cost(Orient leftOrient, Orient rightOrient) {
    spots[kLeftBlock] = {{}, orientIndex(leftOrient)};
    spots[kRightBlock] = {{}, orientIndex(rightOrient)};
    const float shift = wantedShift();
    if (!isCleared) {
        netlist.unplaceAllNets();
        isCleared = true;
        start(first, second);
    }
    // Neither block gets a negative coordinate.
    const Block& left = netlist.blocks[first];
    const float width = keepsWidthHorizontal(leftOrient) ? left.getWidth() : left.getHeight();
    spots[kLeftBlock].corner = {0.0F, shift < 0 ? -shift : 0.0F};
    spots[kRightBlock].corner = {width, shift < 0 ? 0.0F : shift};
    float sum = 0.0F;
    for (const CommonNet& net : nets) {
        sum += costOf(net);
    }
    return sum;
}

PairTrials::Side PairTrials::sideOf(const Pin& pin) const {
    const unsigned block = pinBlocks[&pin - netlist.pins.data()];
    return block == first ? kLeftBlock : block == second ? kRightBlock : kElsewhere;
}

void PairTrials::addNet(const Net& net) {
    const std::size_t begin = pins.size();
    const unsigned degree = net.getDeclaredDegree();
    unsigned placed = net.getPlacedPinsNum();  // terminals included
    for (const Pin* pin : net.getPins()) {
        const Side side = sideOf(*pin);
        if (side != kElsewhere) {
            addPin(*pin, side);
            ++placed;
        } else if (pin->isPlaced() && !pin->isTerminal()) {
            addPin(*pin, side);
        }
    }
    if (isCleared) {
        Net::checkPlacedNum(degree, placed);
    }
    const bool isComplete = placed >= degree;
    nets.push_back({begin, pins.size(), placed == 2 && degree == 2, isComplete,
                    isComplete ? 1.0 : discountOf(net), static_cast<float>(net.getTermNum() + 1)});
}

void PairTrials::addPin(const Pin& pin, Side side) {
    CommonPin& known = pins.emplace_back();
    known.side = side;
    known.shifted = pin.getBlockIndex() == second;
    for (unsigned o = 0; o < kUnmirroredOrients; ++o) {
        known.places[o] =
            side == kElsewhere ? pin.getCoord() : pin.placeInBlock(static_cast<Orient>(o));
    }
}

// A net that goes on to other blocks counts in part: they will pay for it too. The factors are
// tuned.
double PairTrials::discountOf(const Net& net) const {
    const unsigned mean = (netBlocks[net.getIndex()] + first) / 2;  // rounded down, on purpose
    double exponent = mean;
    if (numBlocks <= kFewBlocks) {
        exponent *= 10.0 / numBlocks;
    }
    return std::pow(net.getTermNum() != 0 ? 0.7 : 0.75, exponent);
}

Point PairTrials::coordOf(const CommonPin& pin) const {
    const auto& [corner, orient] = spots[pin.side];
    const Point place = pin.places[orient];
    return {corner.x + place.x, corner.y + place.y};
}

// How far up the second block should go.
float PairTrials::wantedShift() {
    votes.clear(nets.size());
    for (const CommonNet& net : nets) {
        if (net.isPair) {
            votes.add(adviceOfPair(net));
        } else {
            votes.addWithFree(adviceOfOther(net));
        }
    }
    return votes.step(kY, Middle::Lower);
}

offsetCalcReturn PairTrials::adviceOfPair(const CommonNet& net) const {
    const CommonPin& a = pins[net.begin];
    const CommonPin& b = pins[net.begin + 1];
    const Quad offset = quadOf(coordOf(b)) - quadOf(coordOf(a));
    return a.shifted || b.shifted ? adviceForPair(a.shifted ? offset : -offset) : adviceToStay();
}

offsetCalcReturn PairTrials::adviceOfOther(const CommonNet& net) const {
    NetScan scan;
    bool hasOther = false;
    for (std::size_t p = net.begin; p < net.end; ++p) {
        if (pins[p].shifted) {
            scan.addOwn(quadOf(coordOf(pins[p])));
        } else {
            scan.addOther(quadOf(coordOf(pins[p])));
            hasOther = true;
        }
    }
    return hasOther ? scan.advice() : offsetCalcReturn{};
}

float PairTrials::costOf(const CommonNet& net) const {
    const float length = lengthOf(net);
    if (net.isComplete) {
        return length / net.divisor;
    }
    const double discounted = length * net.discount;
    return static_cast<float>(initialPlacement ? discounted * 2.4 : discounted);
}

float PairTrials::lengthOf(const CommonNet& net) const {
    if (net.isPair) {
        const Point a = coordOf(pins[net.begin]);
        const Point b = coordOf(pins[net.begin + 1]);
        return std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
    }
    BoundingBox box;
    for (std::size_t p = net.begin; p < net.end; ++p) {
        box.add(coordOf(pins[p]));
    }
    return box.widthPlusHeight();
}

}  // namespace korvel
