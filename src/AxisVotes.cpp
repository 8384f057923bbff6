#include "AxisVotes.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korvel {

void AxisVotes::clear() {
    for (Side* side : {&forward, &backward}) {
        side->votes = 0;
        side->offsets.clear();
        side->freeDistances.clear();
    }
    stays = 0;
}

float AxisVotes::step(Middle middle) {
    const bool forwardWins = forward.votes > backward.votes;
    Side& winner = forwardWins ? forward : backward;
    const Side& loser = forwardWins ? backward : forward;
    const std::int64_t k = static_cast<std::int64_t>(winner.votes) - loser.votes - stays;
    if (k < 1) {
        return 0.0F;
    }
    bool freeSorted = false;
    const auto freeOfRank = [&](unsigned rank) {
        std::vector<float>& distances = winner.freeDistances;
        if (rank == 0 && !freeSorted) {
            return *std::min_element(distances.begin(), distances.end());
        }
        if (!freeSorted) {
            std::sort(distances.begin(), distances.end());
            freeSorted = true;
        }
        return distances[rank];
    };
    const float step =
        selectStep([&](unsigned rank) { return offsetOfRank(winner.offsets, rank); }, freeOfRank,
                   winner.freeDistances.size(), static_cast<unsigned>(k), middle);
    return forwardWins ? step : -step;
}

// The offset at `rank` when each stands as often as its weight says, by selection: the whole order
// is not needed.
float AxisVotes::offsetOfRank(std::span<Wanted> offsets, unsigned rank) {
    constexpr std::size_t kFew = 12;
    while (offsets.size() > kFew) {
        const float a = offsets.front().offset;
        const float b = offsets[offsets.size() / 2].offset;
        const float c = offsets.back().offset;
        const float pivot = std::max(std::min(a, b), std::min(std::max(a, b), c));

        // Less than the pivot, equal to it, not yet looked at, greater.
        std::size_t equalBegin = 0;
        std::size_t next = 0;
        std::size_t greaterBegin = offsets.size();
        unsigned less = 0;
        unsigned equal = 0;
        while (next < greaterBegin) {
            const Wanted wanted = offsets[next];
            if (wanted.offset < pivot) {
                less += wanted.weight;
                std::swap(offsets[equalBegin++], offsets[next++]);
            } else if (wanted.offset > pivot) {
                std::swap(offsets[--greaterBegin], offsets[next]);
            } else {
                equal += wanted.weight;
                ++next;
            }
        }
        if (rank < less) {
            offsets = offsets.first(equalBegin);
        } else if (rank < less + equal) {
            return pivot;
        } else {
            rank -= less + equal;
            offsets = offsets.subspan(greaterBegin);
        }
    }
    return offsetOfRankAmongFew(offsets, rank);
}

float AxisVotes::offsetOfRankAmongFew(std::span<Wanted> offsets, unsigned rank) {
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        const Wanted wanted = offsets[i];
        std::size_t at = i;
        for (; at > 0 && wanted.offset < offsets[at - 1].offset; --at) {
            offsets[at] = offsets[at - 1];
        }
        offsets[at] = wanted;
    }
    std::size_t at = 0;
    while (rank >= offsets[at].weight) {
        rank -= offsets[at++].weight;
    }
    return offsets[at].offset;
}

}  // namespace korvel
