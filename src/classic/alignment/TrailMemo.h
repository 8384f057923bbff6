// Answers that depend only on where some bodies stand, kept for when they are asked again.
// Different relations often put the blocks at the same places, so the alignment of a node repeats
// much of what those of the last nodes have found.
//
// Belongs to one thread; allocates nothing after its construction.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/BasicStructs.h"

namespace korvel {

// How a body came to where it stands along one axis. Equal trails put all of its pins at equal
// positions, to the bit; equal positions of the body would not, as each pin rounds every move.
class Trail {
public:
    Trail() = default;
    Trail(Orient orient, float start);

    void add(float move);
    // Whether it holds every move; longer ones cannot be told apart.
    bool isWhole() const { return moveNum <= moves.size(); }

    std::uint64_t getHash() const { return hash; }
    bool operator==(const Trail&) const = default;

private:
    void mix(std::uint32_t bits);

    std::uint64_t hash = 0;
    float start = 0.0F;
    std::array<float, 4> moves{};  // one of all blocks together, three of alignment
    Orient orient = Orient::Undefined;
    std::uint32_t moveNum = 0;
};

class TrailMemo {
public:
    explicit TrailMemo(std::size_t mostTrails);

    // Begins a question: its number, then add() for each trail that the answer depends on, always
    // in the same order. The trails must not change until known() and keep() are done. `effort` is
    // how many votes or nets it takes to find the answer. False when that is less than the number
    // of trails, since finding it is then cheaper than remembering it: no trails need to be added,
    // and nothing is known or kept.
    bool ask(std::uint32_t question, std::size_t effort, std::size_t trailNum);
    void add(const Trail& trail);

    // The answer kept for it, or none.
    const float* known();
    // Keeps the answer that was not known, for another one.
    void keep(float answer);

private:
    static constexpr std::uint32_t kNothing = ~0U;

    struct Entry {
        std::uint64_t hash = 0;
        std::uint32_t question = kNothing;
        float answer = 0.0F;
    };
    Trail* trailsOf(std::size_t entry) { return trails.data() + entry * mostTrails; }

    std::size_t mostTrails;
    std::vector<Entry> entries;
    std::vector<Trail> trails;  // of each entry
    // The question at hand, and the entry that it belongs to.
    std::uint32_t asked = kNothing;
    std::uint64_t hash = 0;
    bool isAnswerable = false;
    std::vector<const Trail*> askedTrails;
    std::size_t entryAt = 0;
};

}  // namespace korvel
