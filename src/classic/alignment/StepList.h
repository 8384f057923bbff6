// Steps that nets want, each with the number of nets that want it.
#pragma once

#include <cstdint>
#include <vector>

namespace korvel {

struct WeightedStep {
    float step;
    unsigned weight;
};

class StepList {
public:
    // Makes room, so that nothing is allocated as long as there are no more.
    void reserve(std::size_t most);
    void clear() { num = 0; }
    // There must be room. A step that is not wanted leaves no trace: so no branch is needed.
    void add(WeightedStep wanted, bool isWanted = true) {
        steps[num] = wanted.step;
        weights[num] = static_cast<std::int32_t>(wanted.weight);
        num += isWanted ? 1 : 0;
    }

    std::size_t size() const { return num; }
    WeightedStep operator[](std::size_t i) const {
        return {steps[i], static_cast<unsigned>(weights[i])};
    }

    // The step at `rank` in their order, each standing there as often as its weight says.
    float atRank(unsigned rank);

private:
    struct Divided {
        unsigned less;
        unsigned notMore;
    };
    Divided divideAt(float pivot) const;

    // A multiple of four, for quads; the first num count.
    std::vector<float> steps;
    std::vector<std::int32_t> weights;
    std::size_t num = 0;
};

}  // namespace korvel
