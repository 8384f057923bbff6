#include "classic/bound/CycleSearch.h"

#include <algorithm>

namespace korvel {

namespace {

constexpr std::int32_t kNone = -1;

}  // namespace

// Cycles are looked for after every round, since most are found long before the last one.
const std::vector<unsigned>& CycleSearch::find(const BodyMatrix& gains) {
    const unsigned bodyNum = gains.getBodyNum();
    clear(bodyNum);
    for (unsigned round = 0; round < bodyNum; ++round) {
        const unsigned last = relaxAll(gains);
        if (last == bodyNum || leadsToCycle(last, bodyNum)) {
            break;
        }
    }
    return cycle;
}

void CycleSearch::clear(unsigned bodyNum) {
    potentials.resize(BodyMatrix::quadsFor(bodyNum));
    successors.resize(potentials.size());
    std::fill(potentials.begin(), potentials.end(), allLanes(0.0F));
    std::fill(successors.begin(), successors.end(), allLanes(kNone));
    cycle.clear();
}

// Returns the last body that made a path better; the number of bodies if none did.
unsigned CycleSearch::relaxAll(const BodyMatrix& gains) {
    const unsigned quadNum = gains.getQuadNum();
    unsigned last = gains.getBodyNum();
    for (unsigned to = 0; to < gains.getBodyNum(); ++to) {
        const float onward = potentials[to / kLanes][to % kLanes];
        const Quad* row = gains.rowTo(to);
        for (unsigned q = 0; q < quadNum; ++q) {
            const Quad path = allLanes(onward) + row[q];
            const QuadMask better = path > potentials[q];
            if (anyLane(better)) {
                last = to;
                potentials[q] = larger(path, potentials[q]);
                successors[q] = better ? allLanes(static_cast<std::int32_t>(to)) : successors[q];
            }
        }
    }
    return last;
}

// After as many steps as there are bodies, a path that has not ended is on a cycle.
bool CycleSearch::leadsToCycle(unsigned body, unsigned bodyNum) {
    for (unsigned i = 0; i < bodyNum; ++i) {
        if (successor(body) == kNone) {
            return false;
        }
        body = static_cast<unsigned>(successor(body));
    }
    const unsigned first = body;
    do {
        cycle.push_back(body);
        body = static_cast<unsigned>(successor(body));
    } while (body != first);
    return true;
}

}  // namespace korvel
