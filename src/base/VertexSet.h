// A read-only view of a set of vertices kept as bits, lowest vertex first. It points into the graph
// that gave it and is valid as long as that graph is not changed.
#pragma once

#include <bit>
#include <cstdint>

namespace korvel {

class VertexSet {
public:
    static constexpr unsigned kWordBits = 64;

    // One word at least.
    VertexSet(const std::uint64_t* words, unsigned wordNum) : words(words), wordNum(wordNum) {}

    struct End {};
    class Iterator {
    public:
        Iterator(const std::uint64_t* words, unsigned wordNum)
            : words(words), wordNum(wordNum), rest(words[0]) {
            skipEmptyWords();
        }
        unsigned operator*() const {
            return word * kWordBits + static_cast<unsigned>(std::countr_zero(rest));
        }
        Iterator& operator++() {
            rest &= rest - 1;
            skipEmptyWords();
            return *this;
        }
        bool operator!=(End /*end*/) const { return rest != 0; }

    private:
        void skipEmptyWords() {
            while (rest == 0 && ++word < wordNum) {
                rest = words[word];
            }
        }

        const std::uint64_t* words;
        unsigned word = 0;
        unsigned wordNum;
        std::uint64_t rest;
    };

    Iterator begin() const { return {words, wordNum}; }
    static End end() { return {}; }

    bool contains(unsigned vertex) const {
        return (words[vertex / kWordBits] >> (vertex % kWordBits) & 1U) != 0;
    }
    std::uint64_t word(unsigned number) const { return words[number]; }
    bool empty() const { return !(begin() != end()); }

private:
    const std::uint64_t* words;
    unsigned wordNum;
};

}  // namespace korvel
