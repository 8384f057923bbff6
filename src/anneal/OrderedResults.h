// Hands on what restarts found in the order of their numbers, whichever ends first: of two equal
// results the same one is always first then.
// Any thread may call. What the results are handed to is called under the lock in here, so it must
// not come back.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "design/Placement.h"

namespace korvel {

class OrderedResults {
public:
    explicit OrderedResults(std::function<void(const Placement&)> offer)
        : offer(std::move(offer)) {}

    // What the restart found, if anything.
    void add(std::uint64_t restart, std::optional<Placement> result) {
        const std::lock_guard lock(mutex);
        waiting.emplace(restart, std::move(result));
        for (; !waiting.empty() && waiting.begin()->first == next; ++next) {
            offerFirst();
        }
    }

    // When no restart runs any more: after a stop, some before the waiting ones never began.
    void offerRest() {
        const std::lock_guard lock(mutex);
        while (!waiting.empty()) {
            offerFirst();
        }
    }

private:
    void offerFirst() {
        if (const auto& first = waiting.begin()->second) {
            offer(*first);
        }
        waiting.erase(waiting.begin());
    }

    const std::function<void(const Placement&)> offer;
    std::mutex mutex;
    std::map<std::uint64_t, std::optional<Placement>> waiting;  // mutex; by restart
    std::uint64_t next = 0;                                     // mutex; restart to be offered
};

}  // namespace korvel
