// A read-only view of a set of vertices kept as bits, lowest vertex first. It points into the graph
// that gave it and is valid as long as that graph is not changed.
#pragma once

#include <bit>
#include <cstdint>

namespace korvel {

class VertexSet {
public:
    static constexpr unsigned kWordBits = 64;

    VertexSet(const std::uint64_t* words, unsigned wordNum) : words(words), wordNum(wordNum) {}

    class Iterator {
    public:
        Iterator(const std::uint64_t* words, unsigned word, unsigned wordNum)
            : words(words), word(word), wordNum(wordNum), rest(word < wordNum ? words[word] : 0) {
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
        bool operator!=(const Iterator& other) const {
            return word != other.word || rest != other.rest;
        }

    private:
        void skipEmptyWords() {
            while (rest == 0 && word < wordNum) {
                ++word;
                rest = word < wordNum ? words[word] : 0;
            }
        }

        const std::uint64_t* words;
        unsigned word;
        unsigned wordNum;
        std::uint64_t rest;
    };

    Iterator begin() const { return {words, 0, wordNum}; }
    Iterator end() const { return {words, wordNum, wordNum}; }

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
