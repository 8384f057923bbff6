// A hard rectangle to be placed (a die), or a fixed terminal. A block knows its pins, which the
// netlist owns, and the nets that they belong to.
#pragma once

#include <string>
#include <vector>

#include "base/BasicStructs.h"

namespace korvel {

class Pin;

class Block {
public:
    Block(int index, std::string name, float width, float height, Point coord, Orient orient,
          bool isFlipped);
    // At the origin, in orientation N.
    Block(int index, std::string name, float width, float height)
        : Block(index, std::move(name), width, height, {}, Orient::N, false) {}

    // Place in the search order (rewritten by updateOrderIndex), and in the input.
    int getIndex() const { return bIndex; }
    int getOrigIndex() const { return origIndex; }
    const std::string& getName() const { return bName; }
    float getWidth() const { return bWidth; }
    float getHeight() const { return bHeight; }
    float getArea() const { return bArea; }
    // Lower-left corner.
    Point getCoord() const { return bCoord; }
    Orient getOrient() const { return bOrient; }
    const std::vector<Pin*>& getPins() const { return pins; }
    // Ascending, without duplicates; filled by findNetsIndexes.
    const std::vector<unsigned>& getNetsIndexes() const { return netsIndexes; }

    // Extent along x and y in the current orientation. A mirrored or undefined orientation is
    // reported and ends the process with status 0.
    float getWidthOriented() const;
    float getHeightOriented() const;

    // Puts the block and its pins into place and counts each pin in its net as placed: a net with
    // two pins here counts two. Call it once per placement; the nets' wirelength resets the count.
    void updateBlockState(Point coord, Orient orient, bool isFlipped);
    void updateBlockPins();

    // Carries the block and its pins along; marks and counts stay.
    void moveBlock(Point distance);

    void updateOrderIndex(unsigned index);
    void addPin(Pin* pin) { pins.push_back(pin); }

    // To be called once, when all pins are there; a second call warns on `out`.
    void findNetsIndexes(std::ostream& out = std::cout);

    void printParams(std::ostream& out = std::cout) const;

    bool operator<(const Block& other) const { return bIndex < other.bIndex; }

private:
    int bIndex;
    int origIndex;
    std::string bName;
    float bWidth;
    float bHeight;
    float bArea;
    std::vector<Pin*> pins;
    std::vector<unsigned> netsIndexes;
    Point bCoord;
    Orient bOrient;
    bool isFlipped;
};

// The nets that both blocks are on, ascending.
std::vector<unsigned> commonNets(const Block& a, const Block& b);

}  // namespace korvel
