// A stream of random numbers that is the same on every machine; every restart has its own. The
// generator is xoshiro256** (D. Blackman, S. Vigna, "Scrambled linear pseudorandom number
// generators", 2021), seeded by splitmix64. The distributions of the standard library may differ
// between its versions, so they are done here. A value, for one thread.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace korvel {

class RandomStream {
public:
    // Streams of different numbers under one seed are independent of one another.
    RandomStream(std::uint64_t seed, std::uint64_t number) {
        std::uint64_t mixed = seed * 0x9E3779B97F4A7C15U + number * 0xD1342543DE82EF95U;
        for (std::uint64_t& word : state) {
            word = splitMix(mixed);
        }
    }

    std::uint64_t bits() {
        const std::uint64_t result = std::rotl(state[1] * 5, 7) * 9;
        const std::uint64_t shifted = state[1] << 17;
        state[2] ^= state[0];
        state[3] ^= state[1];
        state[1] ^= state[2];
        state[0] ^= state[3];
        state[2] ^= shifted;
        state[3] = std::rotl(state[3], 45);
        return result;
    }

    // From 0 to below `bound`; the bias of at most bound / 2^32 does not matter here.
    unsigned below(unsigned bound) {
        return static_cast<unsigned>(((bits() >> 32) * std::uint64_t{bound}) >> 32);
    }

    bool coin() { return (bits() >> 63) == 0; }

    // From 0 to below 1.
    double uniform() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

private:
    static std::uint64_t splitMix(std::uint64_t& from) {
        from += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = from;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }

    std::array<std::uint64_t, 4> state;
};

}  // namespace korvel
