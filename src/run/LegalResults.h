// The gate between engines and the incumbent: what an engine has decided passes as a legal
// placement with the best coordinates that its relations allow, or not at all.
#pragma once

#include <memory>
#include <string>

#include "design/Incumbent.h"

namespace korvel {

class CoordinateSolver;

class LegalResults {
public:
    // All must outlive it.
    LegalResults(const Design& design, Region region, Incumbent& incumbent);
    ~LegalResults();
    LegalResults(const LegalResults&) = delete;
    LegalResults& operator=(const LegalResults&) = delete;

    // Offers the best coordinates for these relations and the orientations of `draft`; the draft as
    // it is if there are none but it happens to be legal. Says whether anything legal came of it.
    // Any thread.
    bool offer(const Relations& relations, const Placement& draft, const std::string& finder);

    // Offers a placement as it is, if it is legal, and what can be won by moving its dies without
    // changing how they lie to one another.
    bool offer(const Placement& placement, const std::string& finder);

private:
    bool offerLegal(const Placement& placement, const std::string& finder);

    const Design& design;
    Region region;
    Incumbent& incumbent;
    std::unique_ptr<CoordinateSolver> solver;
};

}  // namespace korvel
