// A float for every ordered pair of bodies, in rows that are worked on four at a time. A body is a
// placed block or all terminals together: body 0 is the terminals, body b + 1 is block b.
#pragma once

#include <vector>

#include "base/Quad.h"

namespace korvel {

class BodyMatrix {
public:
    // Makes room for that many bodies; all values are undefined afterwards. Allocates only when
    // there was never as much room before.
    void resize(unsigned number) {
        bodyNum = number;
        quadNum = quadsFor(number);
        quads.resize(std::size_t{number} * quadNum);
    }
    static unsigned quadsFor(unsigned bodies) { return (bodies + kLanes - 1) / kLanes; }

    unsigned getBodyNum() const { return bodyNum; }
    unsigned getQuadNum() const { return quadNum; }  // of a row

    // The row of body `to`, by bodies `from`. The lanes of its last quad that are beyond the bodies
    // have no meaning.
    Quad* rowTo(unsigned to) { return quads.data() + std::size_t{to} * quadNum; }
    const Quad* rowTo(unsigned to) const { return quads.data() + std::size_t{to} * quadNum; }
    float* valuesTo(unsigned to) { return values() + cell(0, to); }
    const float* valuesTo(unsigned to) const { return values() + cell(0, to); }

    // Where a pair is kept, for further arrays of the same shape.
    std::size_t cell(unsigned from, unsigned to) const {
        return std::size_t{to} * quadNum * kLanes + from;
    }
    std::size_t cellNum() const { return quads.size() * kLanes; }

    float& at(unsigned from, unsigned to) { return values()[cell(from, to)]; }
    float at(unsigned from, unsigned to) const { return values()[cell(from, to)]; }
    float at(std::size_t cellAt) const { return values()[cellAt]; }

private:
    // The compiler allows to read a vector type by its elements.
    float* values() { return reinterpret_cast<float*>(quads.data()); }
    const float* values() const { return reinterpret_cast<const float*>(quads.data()); }

    unsigned bodyNum = 0;
    unsigned quadNum = 0;
    std::vector<Quad> quads;
};

}  // namespace korvel
