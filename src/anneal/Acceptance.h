// Decides which moves are kept: those that cost at most a random threshold more, which depends on
// the temperature. The cost of a layout is its wirelength and a penalty for what does not fit into
// the region. Illegal layouts are short cuts between legal ones, so the penalty adapts until half
// of the layouts are illegal; towards the end of a cooling fewer.
//
// To draw the threshold before a move is measured is the usual rule of N. Metropolis and others
// ("Equation of state calculations by fast computing machines", 1953), and lets most moves be
// rejected early: by what moves saved lately, this one cannot save enough any more.
// Owned and used by one thread.
#pragma once

#include "anneal/Layout.h"

namespace korvel {

class Acceptance {
public:
    explicit Acceptance(Region region) : region(region) {}

    // Begins anew with that layout: penalty and savings are forgotten.
    void restart(const Layout& layout);
    // Goes on from that layout, which is legal.
    void replace(const Layout& layout);
    // The same in another cooling, which a high penalty at the end of the last one would hold up.
    void reheat(const Layout& layout);
    void setTemperature(double to) { temperature = to; }

    // How much more the next move may cost.
    double drawThreshold(RandomStream& random) const;
    // Beyond these a move is sure, or almost, to be rejected. One that `slidesAnyway` is to slide
    // whatever it costs before.
    Layout::Limits limits(double threshold, bool slidesAnyway) const;
    // How much more the arranged layout costs than the kept one; remembers what it saves.
    double costOf(const Layout& arranged);
    // The arranged layout is the kept one now.
    void accept(const Layout& arranged);
    // After every move: savings that are long ago count less.
    void fade();
    // Eases or tightens the penalty, by whether the kept layout is legal. `cooled` is how much of
    // the cooling is over, from 0 to 1.
    void adaptPenalty(double cooled);

    // Of the kept layout.
    double length() const { return keptLength; }
    bool isLegal() const { return keptOverflow <= 0.0; }

private:
    // Something of the order of the wirelength, even if there are no nets.
    double scale() const { return keptLength + region.width + region.height; }

    const Region region;
    double temperature = 0.0;
    double keptLength = 0.0;
    double keptOverflow = 0.0;
    double penalty = 0.0;         // for an overflow of one region's side, in wirelength
    double overflowSaving = 0.0;  // of wirelength, by a move that needs more room
    double slidingSaving = 0.0;   // of wirelength, by sliding
};

}  // namespace korvel
