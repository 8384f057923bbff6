#include "classic/node/Graphs.h"

#include <algorithm>

#include "base/Invariant.h"

namespace korvel {

namespace {

void setBit(std::uint64_t* words, unsigned bit) {
    words[bit / VertexSet::kWordBits] |= std::uint64_t{1} << (bit % VertexSet::kWordBits);
}

}  // namespace

void ConsraintGraphList::addVert(unsigned int n) {
    const unsigned words = (n + VertexSet::kWordBits - 1) / VertexSet::kWordBits;
    if (words > rowWords) {
        widenRows(words);
    }
    rows.resize(rowNumber(n) * rowWords, 0);
    spans.resize(n, {0.0F, 0.0F, 0.0F});
    for (unsigned v = numVert; v < n; ++v) {
        setBit(row(v, kReached), v);
    }
    numVert = n;
    measured = std::min(measured, n);
}

void ConsraintGraphList::widenRows(unsigned words) {
    std::vector<std::uint64_t> wide(rowNumber(numVert) * words, 0);
    for (std::size_t i = 0; i * rowWords < rows.size(); ++i) {
        std::copy_n(rows.data() + i * rowWords, rowWords, wide.data() + i * words);
    }
    rows = std::move(wide);
    rowWords = words;
}

void ConsraintGraphList::addEdge(unsigned int from, unsigned int to) {
    KORVEL_INVARIANT((from < numVert) && (to < numVert), "(from < numVert)&&(to < numVert)");
    cyclic = cyclic || reached(to).contains(from);
    setBit(row(from, kOut), to);
    setBit(row(to, kIn), from);
    // An edge along a path is news to nobody.
    if (!cyclic && !reached(from).contains(to)) {
        noteReached(from, to);
        lengthenTail(from, spans[to].tail);
    }
    setBit(unsettled(), from);
    changed = true;
}

// Whatever reaches `from` now also reaches `to` and all behind it.
void ConsraintGraphList::noteReached(unsigned from, unsigned to) {
    const std::uint64_t* behind = row(to, kReached);
    const std::size_t step = std::size_t{kRowKinds} * rowWords;
    std::uint64_t* mine = row(0, kReached);
    for (unsigned v = 0; v < numVert; ++v, mine += step) {
        if (VertexSet(mine, rowWords).contains(from)) {
            for (unsigned w = 0; w < rowWords; ++w) {
                mine[w] |= behind[w];
            }
        }
    }
}

// Now that a path of that length follows the vertex.
void ConsraintGraphList::lengthenTail(unsigned vertex, float behind) {
    const float tail = spans[vertex].weight + behind;
    if (tail > spans[vertex].tail) {
        spans[vertex].tail = tail;
        for (const unsigned before : getIncomingEdges(vertex)) {
            lengthenTail(before, tail);
        }
    }
}

void ConsraintGraphList::addWeight(unsigned int node, float weight) {
    KORVEL_INVARIANT(node < numVert, "node < numVert");
    spans[node].weight = weight;
    spans[node].tail = weight;
    hasNegative = hasNegative || weight < 0;
}

bool ConsraintGraphList::topologicalSort() {
    if (!changed) {
        return true;
    }
    if (cyclic) {
        return false;
    }
    changed = false;
    sorted = true;
    return true;
}

void ConsraintGraphList::findCoord() {
    if (!sorted || cyclic) {
        return;
    }
    sorted = false;
    for (const unsigned from : VertexSet(unsettled(), rowWords)) {
        settle(from);
    }
    std::fill_n(unsettled(), rowWords, 0);
    for (; measured < numVert; ++measured) {
        noteEnd(measured);
    }
}

// Only an end that has moved, or is new, can be larger than all seen before.
void ConsraintGraphList::noteEnd(unsigned vertex) {
    if (getOutcomingEdges(vertex).empty()) {
        length = std::max(length, spans[vertex].coord + spans[vertex].weight);
    }
}

// Pushes the successors of `from` behind it, and theirs behind them.
void ConsraintGraphList::settle(unsigned from) {
    const float end = spans[from].coord + spans[from].weight;
    for (const unsigned to : getOutcomingEdges(from)) {
        if (end > spans[to].coord) {
            spans[to].coord = end;
            noteEnd(to);
            settle(to);
        }
    }
}

void ConsraintGraphList::calcConstraintGraph() {
    topologicalSort();
    findCoord();
}

void ConsraintGraphList::printCoordinates(std::ostream& out) const {
    out << std::endl << "Coordinates: " << std::endl;
    for (const Span& span : spans) {
        out << span.coord << ' ';
    }
    out << std::endl << std::endl;
}

void UndirectedGraph::addEdge(unsigned from, unsigned to, float weight) {
    KORVEL_INVARIANT((from < numVert) && (to < numVert), "(from < numVert)&&(to < numVert)");
    adjacency[from].push_back({to, weight});
    adjacency[to].push_back({from, weight});
}

float UndirectedGraph::score(unsigned vertex, bool toOrderedOnly) const {
    float sum = 0.0F;
    for (const ListPair& edge : adjacency[vertex]) {
        if (!toOrderedOnly || ordered[edge.vertex]) {
            sum += edge.weight;
        }
    }
    return sum;
}

std::vector<unsigned> UndirectedGraph::findOrder() {
    std::vector<unsigned> order;
    unsigned choice = 0;
    while (order.size() < numVert) {
        const bool first = order.empty();
        float best = 0.0F;
        for (unsigned v = 0; v < numVert; ++v) {
            if (ordered[v]) {
                continue;
            }
            const float connection = score(v, !first);
            if (connection > best) {
                best = connection;
                choice = v;
            }
        }
        order.push_back(choice);
        ordered[choice] = true;
    }
    return order;
}

}  // namespace korvel
