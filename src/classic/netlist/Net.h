// A net: pins that are to be joined, with a running count of those that are placed, its wirelength
// (half the perimeter of the pins' bounding box) and its advice about moving blocks. For the
// main thread only.
//
// The wirelength operations reset the net for the next placement: they clear the marks of its
// placed pins and set the count back to the terminals. So place all blocks first, then ask each
// net once.
#pragma once

#include <vector>

#include "classic/netlist/BoundingBox.h"
#include "classic/netlist/NetAdvice.h"
#include "classic/netlist/Pin.h"

namespace korvel {

class Net {
public:
    Net() = default;
    Net(unsigned index, unsigned degree) : nIndex(index), declaredDegree(degree) {}

    void reservePins(std::size_t number) { pins.reserve(number); }
    // A terminal pin counts as placed from the start.
    void addPin(Pin* pin);

    unsigned getIndex() const { return nIndex; }
    // The pins that are there; the degree that the file declares is getDeclaredDegree.
    unsigned getNetDegree() const { return static_cast<unsigned>(pins.size()); }
    unsigned getDeclaredDegree() const { return declaredDegree; }
    unsigned getPlacedPinsNum() const { return placedPinsNum; }
    unsigned getTermNum() const { return termNum; }
    Point getPinCoord(unsigned i) const { return pins[i]->getCoord(); }
    const std::vector<Pin*>& getPins() const { return pins; }

    // Ends the process when more pins are placed than the net declares.
    static void checkPlacedNum(unsigned netDegree, unsigned placedPinsNum);

    void incrementPlacedPins() { ++placedPinsNum; }
    void unplacePins();

    // Wirelength of the placed pins.
    float calcCompleteHPWL();

    // Wirelength of the placed pins, terminals included, for a trial of one block against the
    // terminals; times `factor` if the net still has unplaced pins.
    float calcTermFCHPWL(float factor);

    // Advice about moving all placed block pins together toward the placed terminals.
    offsetCalcReturn combinedOffsetsToTerms() const;

private:
    // Both pins of a two-pin net are placed: its box is found without a scan.
    bool isPlacedPair() const {
        return placedPinsNum == 2 && declaredDegree == 2 && pins.size() >= 2;
    }
    float pairLength() const;
    BoundingBox placedBox() const;

    unsigned nIndex = 0;
    unsigned declaredDegree = 0;
    unsigned placedPinsNum = 0;
    unsigned termNum = 0;
    std::vector<Pin*> pins;
};

}  // namespace korvel
