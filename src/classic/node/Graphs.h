// The graphs of the placer, which speak of vertices and weights only.
//
// ConsraintGraphList (the spelling is the system's own) holds the relations of a partial placement
// along one axis: an edge a -> b says that a lies entirely before b. Longest paths turn them into
// coordinates. UndirectedGraph finds the order in which the blocks are placed.
#pragma once

#include <cstdint>
#include <iostream>
#include <vector>

#include "base/VertexSet.h"

namespace korvel {

// Why it is kept up to date instead of being computed anew: a node of the search has one edge or
// one vertex more than its parent. Relations are bits: per vertex its successors, its predecessors
// and all that it reaches, itself as well. An edge from a to b closes a cycle exactly when b
// reaches a, which is one test. It moves only b and what b reaches, so coordinates are updated from
// the new edges alone. They have the same bits as those of a fresh longest-path computation, since
// float addition and maximum are monotone: both give the least coordinates that satisfy all edges.
// The longest path from each vertex on is kept as well, so that an edge can be judged before it is
// added.
//
// Copying a graph into one that was as large before allocates nothing. One thread at a time.
class ConsraintGraphList {
public:
    // Adds one vertex, or sets their number; a new one has weight 0, coordinate 0 and no edges.
    // It does not count as a change: until an edge is added and the graph is sorted again, it
    // keeps coordinate 0 and does not count towards the length.
    void addVert() { addVert(numVert + 1); }
    void addVert(unsigned int n);

    // a -> b; adding it again does nothing more. Cycles are noticed by topologicalSort.
    void addEdge(unsigned int from, unsigned int to);
    // Whether that edge would close a cycle.
    bool closesCycle(unsigned int from, unsigned int to) const {
        return reached(to).contains(from);
    }
    // Length of the longest path through that edge, were it added, but for rounding; it must close
    // no cycle. 0 if any weight is negative, since the graph may then be shorter than its longest
    // path. For a graph with its coordinates found.
    float lengthThrough(unsigned int from, unsigned int to) const {
        return hasNegative ? 0.0F : spans[from].coord + spans[from].weight + spans[to].tail;
    }
    // Extent of the vertex along the axis. Set it before the vertex gets its first edge.
    void addWeight(unsigned int node, float weight);

    unsigned getVertNum() const { return numVert; }
    float getWeight(unsigned int node) const { return spans[node].weight; }
    float returnCoord(unsigned int node) const { return spans[node].coord; }
    // Largest end of a vertex without successors ever seen by findCoord: it never falls.
    float getLength() const { return length; }
    // In ascending order, which is the order of insertion in the search.
    VertexSet getOutcomingEdges(unsigned int node) const { return {row(node, kOut), rowWords}; }
    VertexSet getIncomingEdges(unsigned int node) const { return {row(node, kIn), rowWords}; }

    // False when the edges close a cycle; true at once when no edge has come since the last sort.
    bool topologicalSort();
    // Coordinates and length for the edges sorted since the last call.
    void findCoord();
    void calcConstraintGraph();

    void printCoordinates(std::ostream& out = std::cout) const;

private:
    enum RowKind : unsigned { kOut, kIn, kReached, kRowKinds };

    // The first row is of no vertex: it has the tails of the edges that findCoord has not yet
    // followed.
    static std::size_t rowNumber(unsigned vertices) {
        return 1 + std::size_t{vertices} * kRowKinds;
    }
    std::uint64_t* unsettled() { return rows.data(); }
    std::uint64_t* row(unsigned vertex, RowKind kind) {
        return rows.data() + (rowNumber(vertex) + kind) * rowWords;
    }
    const std::uint64_t* row(unsigned vertex, RowKind kind) const {
        return rows.data() + (rowNumber(vertex) + kind) * rowWords;
    }
    VertexSet reached(unsigned vertex) const { return {row(vertex, kReached), rowWords}; }
    void widenRows(unsigned words);
    void noteReached(unsigned from, unsigned to);
    void lengthenTail(unsigned vertex, float behind);
    void settle(unsigned from);
    void noteEnd(unsigned vertex);

    struct Span {
        float weight;
        float coord;
        float tail;  // length of the longest path from its beginning on
    };

    unsigned numVert = 0;
    unsigned rowWords = 1;
    bool changed = false;  // edges have come since the last successful sort
    bool cyclic = false;
    bool hasNegative = false;  // a weight
    bool sorted = false;       // a sort waits for findCoord
    unsigned measured = 0;     // vertices that findCoord has seen
    float length = 0.0F;
    std::vector<std::uint64_t> rows;
    std::vector<Span> spans;
};

class UndirectedGraph {
public:
    UndirectedGraph() = default;
    explicit UndirectedGraph(unsigned n) : numVert(n), adjacency(n), ordered(n, false) {}

    void addEdge(unsigned from, unsigned to, float weight);

    // Greedy order: first the vertex with the heaviest edges in all, then always the one with the
    // heaviest edges to those already chosen; the lowest number wins a tie. When nothing is
    // connected to the chosen ones, the last choice is repeated, on purpose: a netlist in separate
    // pieces thus repeats a vertex and leaves another one out. Call it once.
    std::vector<unsigned> findOrder();

private:
    struct ListPair {
        unsigned vertex;
        float weight;
    };
    float score(unsigned vertex, bool toOrderedOnly) const;

    unsigned numVert = 0;
    std::vector<std::vector<ListPair>> adjacency;
    std::vector<bool> ordered;
};

}  // namespace korvel
