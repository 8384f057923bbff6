// How code around the engine follows its searches and ends them. The engine holds no lock while it
// calls its observer.
#pragma once

#include <cstdint>

#include "classic/alignment/WorkingPlacement.h"
#include "classic/node/BBNode.h"

namespace korvel {

class SearchObserver {
public:
    SearchObserver() = default;
    SearchObserver(const SearchObserver&) = delete;
    SearchObserver& operator=(const SearchObserver&) = delete;
    virtual ~SearchObserver() = default;

    // A pass that places the first blocks of the order begins, or has ended. Main thread.
    virtual void passBegins(unsigned /*blocks*/) {}
    virtual void passEnds() {}

    // A new best node of the pass, and where it is aligned; both are the calling worker's and last
    // for the call. From any worker and several at a time, so a longer node may come after a
    // shorter one.
    virtual void improved(const BBNode& /*node*/, const WorkingPlacement& /*placement*/) {}

    // From every worker now and then, several at a time: the nodes that it has taken since its last
    // call, and the fraction of the search tree that these have closed. All fractions of a
    // finished search add up to one, but for rounding. False ends the pass.
    virtual bool worked(std::uint64_t /*nodes*/, double /*fraction*/) { return true; }
};

}  // namespace korvel
