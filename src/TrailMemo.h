// Answers that depend only on where some bodies stand, kept for when they are asked again. The
// search asks the same over and over: different relations often put the blocks at the same places,
// which is why most alignments of a node repeat what those of the last nodes have found.
//
// Belongs to one thread; allocates nothing after its construction.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "BasicStructs.h"

namespace korvel {

// How a body came to where it stands along one axis. Equal trails put all of its pins at equal
// positions, to the bit; equal positions of the body would not, as each pin rounds every move.
class Trail {
public:
    Trail() = default;
    Trail(Orient orient, float start) : start(start), orient(orient) {
        mix(static_cast<std::uint32_t>(orient));
        mix(std::bit_cast<std::uint32_t>(start));
    }

    void add(float move) {
        if (moveNum < moves.size()) {
            moves[moveNum] = move;
        }
        ++moveNum;
        mix(std::bit_cast<std::uint32_t>(move));
    }
    // Whether it tells every move; one that is too long cannot be told from others.
    bool isWhole() const { return moveNum <= moves.size(); }

    std::uint64_t getHash() const { return hash; }
    bool operator==(const Trail&) const = default;

private:
    void mix(std::uint32_t bits) {
        constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;  // 2^64 by the golden ratio
        hash = std::rotl((hash ^ bits) * kFactor, 29);
    }

    std::uint64_t hash = 0;
    float start = 0.0F;
    std::array<float, 4> moves{};  // one of all blocks together, three of alignment
    Orient orient = Orient::Undefined;
    std::uint32_t moveNum = 0;
};

template <typename Answer>
class TrailMemo {
public:
    explicit TrailMemo(std::size_t mostTrails)
        : mostTrails(std::max<std::size_t>(mostTrails, 1)),
          entries(
              std::bit_floor(std::max(kFewest, kKeptBytes / (this->mostTrails * sizeof(Trail))))),
          trails(entries.size() * this->mostTrails) {
        asked.reserve(this->mostTrails);
    }

    // A question is put by its number, then by the trails that its answer depends on, always in the
    // same order, which must stay as they are until it is answered. `effort` is how many votes or
    // nets it takes to find the answer: false when that is sooner done than remembered. Then the
    // trails need not be added, and nothing is known or kept.
    bool ask(std::uint32_t question, std::size_t effort, std::size_t trailNum) {
        number = question;
        hash = question;
        asked.clear();
        isAnswerable = effort >= kLeastEffort * trailNum;
        return isAnswerable;
    }
    void add(const Trail& trail) {
        hash = std::rotl(hash, 5) + trail.getHash();
        isAnswerable = isAnswerable && trail.isWhole();
        asked.push_back(&trail);
    }

    // The answer kept for it, or none.
    const Answer* known() {
        place = static_cast<std::size_t>(hash * kFactor >> 32U) % entries.size();
        const Entry& entry = entries[place];
        const bool same = isAnswerable && entry.hash == hash && entry.number == number &&
                          std::equal(asked.begin(), asked.end(), trailsAt(place),
                                     [](const Trail* a, const Trail& b) { return *a == b; });
        return same ? &entry.answer : nullptr;
    }

    // Keeps the answer that was not known, for another one.
    void keep(const Answer& answer) {
        if (!isAnswerable) {
            return;
        }
        entries[place] = {hash, number, answer};
        std::transform(asked.begin(), asked.end(), trailsAt(place),
                       [](const Trail* trail) { return *trail; });
    }

private:
    static constexpr std::size_t kKeptBytes = std::size_t{1} << 19;
    static constexpr std::size_t kFewest = 16;
    // By trail: less is done sooner than remembered.
    static constexpr std::size_t kLeastEffort = 1;
    static constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    static constexpr std::uint32_t kNothing = ~0U;

    struct Entry {
        std::uint64_t hash = 0;
        std::uint32_t number = kNothing;
        Answer answer{};
    };
    auto trailsAt(std::size_t entry) {
        return trails.begin() + static_cast<std::ptrdiff_t>(entry * mostTrails);
    }

    std::size_t mostTrails;
    std::vector<Entry> entries;
    std::vector<Trail> trails;  // of each entry
    // The question at hand, and the entry that it belongs to.
    std::uint32_t number = kNothing;
    std::uint64_t hash = 0;
    bool isAnswerable = false;
    std::vector<const Trail*> asked;
    std::size_t place = 0;
};

}  // namespace korvel
