// Whether it is likely to pay to improve cuts for a node, by how near to its target the bound is
// already: learnt from the nodes before.
//
// Belongs to one thread.
#pragma once

#include <algorithm>
#include <array>

namespace korvel {

class RaiseOdds {
public:
    // False where that has hardly ever reached the target. Now and then it is true there as well,
    // since what is learnt at such a node serves others, and odds change.
    bool areGood(double reachedShare) {
        Record& record = recordOf(reachedShare);
        return record.tried < kFewest || record.reached * kWorstOdds >= record.tried ||
               ++record.passed % kExceptions == 0;
    }

    void note(double reachedShare, bool isReached) {
        Record& record = recordOf(reachedShare);
        ++record.tried;
        record.reached += isReached ? 1 : 0;
    }

private:
    static constexpr unsigned kFewest = 8;
    static constexpr unsigned kWorstOdds = 8;
    static constexpr unsigned kExceptions = 8;
    static constexpr unsigned kSteps = 20;  // that the share is told apart by

    struct Record {
        unsigned tried = 0;
        unsigned reached = 0;
        unsigned passed = 0;  // where the odds were bad
    };
    Record& recordOf(double share) {
        return records[static_cast<unsigned>(std::clamp(share, 0.0, 1.0) * kSteps)];
    }

    std::array<Record, kSteps + 1> records;
};

}  // namespace korvel
