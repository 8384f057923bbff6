// A pin: one connection point of a block or terminal, on exactly one net. Pins live in the
// netlist's pin array; blocks and nets point to them.
#pragma once

#include "base/BasicStructs.h"

namespace korvel {

class Net;

class Pin {
public:
    // `offset` is the place inside the block as fractions 0..1 of the unrotated width and height,
    // from the lower-left corner.
    Pin(int index, char direction, Point coord, Point offset, bool terminal, float blockWidth,
        float blockHeight, unsigned blockIndex, Net* net)
        : pIndex(index),
          pDirection(direction),
          pCoord(coord),
          pOffset(offset),
          terminal(terminal),
          blockWidth(blockWidth),
          blockHeight(blockHeight),
          blockIndex(blockIndex),
          net(net) {}

    int getIndex() const { return pIndex; }
    char getDirection() const { return pDirection; }
    Point getCoord() const { return pCoord; }
    Point getOffset() const { return pOffset; }
    bool isPlaced() const { return placed; }
    bool isTerminal() const { return terminal; }
    unsigned getBlockIndex() const { return blockIndex; }
    Net* getNetPtr() const { return net; }

    void setPlaced() { placed = true; }
    void setCoord(Point coord) { pCoord = coord; }

    // Terminals are fixed: their pins stay placed.
    void unplace() { placed = terminal; }

    void updateBlockIndex(unsigned index) { blockIndex = index; }

    struct Moved {
        Net* net;
        Point from;
        Point to;
    };
    Moved move(Point distance);

    struct Updated {
        Net* net;
        Point coord;
    };
    // Moves the pin to where a block with its lower-left corner at `corner` carries it, and marks
    // it placed. An orientation that does not fit `isFlipped` (mirrored ones go with true, the
    // others with false) is reported and ends the process with status 0.
    Updated updatePinState(Point corner, Orient orient, bool isFlipped);

    // Where the pin lies relative to its block's lower-left corner; `orient` must be one of the
    // eight orientations. A terminal's pins are where they are: relative to the origin.
    Point placeInBlock(Orient orient) const;

    void printParams(std::ostream& out = std::cout) const;
    void printParamsInLine(std::ostream& out = std::cout) const;

private:
    void printFields(std::ostream& out) const;

    int pIndex;
    char pDirection;
    Point pCoord;
    Point pOffset;
    bool placed = false;
    bool terminal;
    float blockWidth;
    float blockHeight;
    unsigned blockIndex;
    Net* net;
};

}  // namespace korvel
