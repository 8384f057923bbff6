// The alignment and the partial wirelength written down plainly: pins through pointers, marks and
// counts, lists that are sorted, every vote of every round. The fast path has to agree to the bit.
#pragma once

#include "support/helpers.h"

namespace korvel::test {

// One net's advice along one axis; "forward" is right or up.
struct PlainAdvice {
    bool forward = false, backward = false, stay = false, inside = false;
    float offset = 0, freeForward = 0, freeBackward = 0;
};

class PlainAlignment {
public:
    PlainAlignment(const BBNode& node, Netlist& netlist, Area area)
        : node(node), blocks(netlist.blocks), nets(netlist.nets), area(area) {}

    void run() {
        for (unsigned i = 0; i < node.numBlocks; ++i) {
            blocks[i].updateBlockState(
                {node.horizontalGraph.returnCoord(i), node.verticalGraph.returnCoord(i)},
                node.blocksOrients[i], false);
        }
        alignToTerminals();
        for (unsigned round = 0; round < 3; ++round) {
            for (unsigned block = 0; block < node.numBlocks; ++block) {
                align(block);
            }
        }
    }

    // Unplaces the nets.
    float partialLength() {
        float sum = 0;
        for (Net& net : nets) {
            sum += lengthOf(net);
            net.unplacePins();
        }
        return sum;
    }

private:
    static float along(Point p, bool isX) { return isX ? p.x : p.y; }

    static PlainAdvice adviceForPair(float offset) {
        PlainAdvice advice;
        advice.offset = offset;
        advice.forward = std::fabs(offset) > 0.01 && offset > 0.01;
        advice.backward = std::fabs(offset) > 0.01 && offset < -0.01;
        advice.stay = !(std::fabs(offset) > 0.01);
        return advice;
    }

    template <typename IsOwn>
    static PlainAdvice adviceOfNet(const Net& net, bool isX, const IsOwn& isOwn) {
        const auto& pins = net.getPins();
        if (net.getPlacedPinsNum() == 2 && net.getDeclaredDegree() == 2) {
            const float first = along(pins[0]->getCoord(), isX);
            const float second = along(pins[1]->getCoord(), isX);
            PlainAdvice stay;
            stay.stay = true;
            return isOwn(*pins[0])   ? adviceForPair(second - first)
                   : isOwn(*pins[1]) ? adviceForPair(first - second)
                                     : stay;
        }
        constexpr float kMost = std::numeric_limits<float>::max();
        float ownMin = kMost, ownMax = 0, otherMin = kMost, otherMax = 0;
        bool low = false, high = false;
        unsigned others = 0;
        for (const Pin* pin : pins) {
            const float p = along(pin->getCoord(), isX);
            if (!pin->isPlaced()) {
                continue;
            }
            if (isOwn(*pin)) {
                if (p < ownMin) {
                    ownMin = p;
                    low = low || otherMin >= p;
                }
                if (p > ownMax) {
                    high = high || p >= otherMax;
                    ownMax = p;
                }
                continue;
            }
            ++others;
            if (p < otherMin) {
                otherMin = p;
                low = low && !(p < ownMin && ownMin - p > 0.1);
            }
            if (p > otherMax) {
                otherMax = p;
                high = high && !(p > ownMax && p - ownMax > 0.1);
            }
        }
        PlainAdvice advice;
        if (others == 0) {
            return advice;
        }
        const bool wider = otherMax - otherMin > ownMax - ownMin;
        if (!low && !high) {
            advice.inside = true;
            advice.freeForward = otherMax - ownMax;
            advice.freeBackward = ownMin - otherMin;
        } else if (low && high) {
            advice.inside = true;
            advice.freeForward = otherMin - ownMin;
            advice.freeBackward = ownMax - otherMax;
        } else if (low) {
            advice.forward = true;
            advice.offset = wider ? otherMin - ownMin : otherMax - ownMax;
        } else {
            advice.backward = true;
            advice.offset = wider ? otherMax - ownMax : otherMin - ownMin;
        }
        advice.stay = std::fabs(otherMax - ownMax) < 0.01 && std::fabs(otherMin - ownMin) < 0.01;
        return advice;
    }

    static float stepOf(const std::vector<PlainAdvice>& votes, bool upper) {
        std::vector<float> steps[2], free[2];
        int stays = 0;
        for (const PlainAdvice& vote : votes) {
            if (vote.forward) {
                steps[0].push_back(vote.offset);
            }
            if (vote.backward) {
                steps[1].push_back(-vote.offset);
            }
            stays += vote.stay ? 1 : 0;
            if (vote.inside) {
                free[0].push_back(vote.freeForward);
                free[1].push_back(vote.freeBackward);
            }
        }
        const int winner = steps[0].size() > steps[1].size() ? 0 : 1;
        const int k = static_cast<int>(steps[winner].size()) -
                      static_cast<int>(steps[1 - winner].size()) - stays;
        if (k < 1) {
            return 0;
        }
        std::vector<float>& o = steps[winner];
        std::vector<float>& d = free[winner];
        std::sort(o.begin(), o.end());
        std::sort(d.begin(), d.end());
        const float step = selected(o, d, k, upper);
        return winner == 0 ? step : -step;
    }

    static float selected(const std::vector<float>& o, const std::vector<float>& d, int k,
                          bool upper) {
        const auto middle = [&](double of) { return o[static_cast<std::size_t>(of)]; };
        const float first = upper ? middle((k + 1) * 0.5 - 0.49) : middle((k + 1) / 2 - 1);
        if (d.empty() || first <= d[0]) {
            return first;
        }
        if (k == 1) {
            return d[0];
        }
        for (unsigned j = 1, m = static_cast<unsigned>(k);; --m) {
            const float candidate = upper ? middle(m * 0.5 - 0.49) : middle(m / 2 - 1);
            if (d[j - 1] > candidate) {
                return d[j - 1];
            }
            if (j == d.size() || candidate <= d[j]) {
                return candidate;
            }
            if (++j == static_cast<unsigned>(k)) {
                return d[j - 1];
            }
        }
    }

    void alignToTerminals() {
        std::vector<PlainAdvice> x, y;
        const auto isOwn = [](const Pin& pin) { return !pin.isTerminal(); };
        for (const Net& net : nets) {
            if (net.getTermNum() != 0 && net.getPlacedPinsNum() > 1 &&
                net.getTermNum() != net.getPlacedPinsNum()) {
                x.push_back(adviceOfNet(net, true, isOwn));
                y.push_back(adviceOfNet(net, false, isOwn));
            }
        }
        Point step{stepOf(x, true), stepOf(y, true)};
        if (std::fabs(step.x) <= 0.001 && std::fabs(step.y) <= 0.001) {
            return;
        }
        if (area.width > 0) {
            const auto inside = [](float s, float size, float most) {
                return s < 0 ? 0 : s + size > most ? most - size : s;
            };
            step = {inside(step.x, node.width, area.width),
                    inside(step.y, node.height, area.height)};
        }
        for (unsigned i = 0; i < node.numBlocks; ++i) {
            blocks[i].moveBlock(step);
        }
    }

    void align(unsigned block) {
        std::vector<PlainAdvice> x, y;
        const auto isOwn = [&](const Pin& pin) { return pin.getBlockIndex() == block; };
        for (const unsigned index : blocks[block].getNetsIndexes()) {
            if (nets[index].getPlacedPinsNum() >= 2) {
                x.push_back(adviceOfNet(nets[index], true, isOwn));
                y.push_back(adviceOfNet(nets[index], false, isOwn));
            }
        }
        const Point wanted{stepOf(x, false), stepOf(y, false)};
        const Point step{limited(block, wanted.x, true), limited(block, wanted.y, false)};
        if (std::fabs(step.x) > 0.001 || std::fabs(step.y) > 0.001) {
            blocks[block].moveBlock(step);
        }
    }

    float limited(unsigned block, float d, bool isX) const {
        const ConsraintGraphList& graph = isX ? node.horizontalGraph : node.verticalGraph;
        const auto size = [&](unsigned b) {
            return std::trunc(isX ? blocks[b].getWidthOriented() : blocks[b].getHeightOriented());
        };
        const auto at = [&](unsigned b) { return along(blocks[b].getCoord(), isX); };
        if (std::fabs(d) <= 0.001) {
            return d;
        }
        if (d > 0) {
            float end = at(block) + d + size(block);
            for (const unsigned next : graph.getOutcomingEdges(block)) {
                if (end > at(next)) {
                    d += at(next) - end;
                    end = at(next);
                }
            }
            const float most = isX ? area.width : area.height;
            return end > most ? d + (most - end) : d;
        }
        float begin = at(block) + d;
        for (const unsigned previous : graph.getIncomingEdges(block)) {
            const float end = at(previous) + size(previous);
            if (begin < end) {
                d += end - begin;
                begin = end;
            }
        }
        return begin < 0 ? d - begin : d;
    }

    static float lengthOf(const Net& net) {
        const auto& pins = net.getPins();
        if (net.getPlacedPinsNum() <= 1) {
            return 0;
        }
        if (net.getPlacedPinsNum() == 2 && net.getDeclaredDegree() == 2) {
            const Point a = pins[0]->getCoord();
            const Point b = pins[1]->getCoord();
            return pins[0]->getBlockIndex() == pins[1]->getBlockIndex()
                       ? 0
                       : std::fabs(a.x - b.x) + std::fabs(a.y - b.y);
        }
        constexpr float kMost = std::numeric_limits<float>::max();
        constexpr float kLeast = std::numeric_limits<float>::min();
        float minX = kMost, maxX = kLeast, minY = kMost, maxY = kLeast;
        const Pin* first = nullptr;
        bool spread = false;
        for (const Pin* pin : pins) {
            if (!pin->isPlaced()) {
                continue;
            }
            spread =
                spread || (first != nullptr &&
                           (pin->isTerminal() || pin->getBlockIndex() != first->getBlockIndex()));
            first = first == nullptr ? pin : first;
            minX = std::min(minX, pin->getCoord().x);
            maxX = std::max(maxX, pin->getCoord().x);
            minY = std::min(minY, pin->getCoord().y);
            maxY = std::max(maxY, pin->getCoord().y);
        }
        return spread ? (maxX - minX) + maxY - minY : 0;
    }

    const BBNode& node;
    std::vector<Block>& blocks;
    std::vector<Net>& nets;
    Area area;
};

}  // namespace korvel::test
