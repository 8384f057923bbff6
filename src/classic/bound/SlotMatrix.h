// A float for every two slots of a few, in rows of whole quads. Slots number the bodies of a
// partial placement: first the terminals, then the blocks in their order.
#pragma once

#include <vector>

#include "base/Quad.h"

namespace korvel {

class SlotMatrix {
public:
    // Makes room for that many slots; nothing that was there before is kept. Allocates nothing
    // when there was as much room before.
    void resize(unsigned number) {
        slotNum = number;
        quadNum = quadsFor(number);
        quads.resize(std::size_t{number} * quadNum);
    }
    static unsigned quadsFor(unsigned slots) { return (slots + kLanes - 1) / kLanes; }

    unsigned getSlotNum() const { return slotNum; }
    unsigned getQuadNum() const { return quadNum; }

    // The row of slot `to`, by slots `from`. What the last quad has too much belongs to no slot.
    Quad* rowTo(unsigned to) { return quads.data() + std::size_t{to} * quadNum; }
    const Quad* rowTo(unsigned to) const { return quads.data() + std::size_t{to} * quadNum; }

    float* lanesTo(unsigned to) { return lanes() + cell(0, to); }
    const float* lanesTo(unsigned to) const { return lanes() + cell(0, to); }

    std::size_t cell(unsigned from, unsigned to) const {
        return std::size_t{to} * quadNum * kLanes + from;
    }
    std::size_t cellNum() const { return quads.size() * kLanes; }
    float& at(unsigned from, unsigned to) { return lanes()[cell(from, to)]; }
    float at(unsigned from, unsigned to) const { return lanes()[cell(from, to)]; }
    float at(std::size_t cellAt) const { return lanes()[cellAt]; }

private:
    // Vectors may be read by their elements.
    float* lanes() { return reinterpret_cast<float*>(quads.data()); }
    const float* lanes() const { return reinterpret_cast<const float*>(quads.data()); }

    unsigned slotNum = 0;
    unsigned quadNum = 0;
    std::vector<Quad> quads;
};

}  // namespace korvel
