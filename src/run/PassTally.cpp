#include "run/PassTally.h"

#include <algorithm>

namespace korvel {

bool PassTally::improved(float length) {
    const std::lock_guard lock(mutex);
    if (bestLength && *bestLength <= length) {
        return false;
    }
    bestLength = length;
    ++improvements;
    return true;
}

void PassTally::worked(std::uint64_t moreNodes, double moreShare) {
    nodes += moreNodes;
    share += moreShare;
}

// The sum of all shares is one but for rounding.
RunProgress::Gauge PassTally::gauge() const {
    return {.count = nodes, .share = std::min(share.load(), 1.0)};
}

PassFigures PassTally::figures(bool exhausted) const {
    PassFigures pass;
    pass.name = name;
    pass.dies = dies;
    pass.seconds = std::chrono::duration<double>(RunClock::now() - began).count();
    pass.nodes = nodes;
    pass.share = exhausted ? 1.0 : std::min(share.load(), 1.0);
    pass.exhausted = exhausted;
    pass.improvements = improvements;
    pass.length = bestLength;
    return pass;
}

}  // namespace korvel
