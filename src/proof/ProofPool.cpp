#include "proof/ProofPool.h"

#include <algorithm>

#include "base/Infinity.h"

namespace korvel {

namespace {

// Some tens of megabytes.
constexpr std::size_t kCrowd = 100000;

}  // namespace

ProofPool::ProofPool(const ProofNode& root, unsigned workers)
    : open{root}, busy(workers, kInfiniteLength) {}

std::optional<ProofNode> ProofPool::take(unsigned worker) {
    std::unique_lock lock(mutex);
    const auto nobodyWorks = [&] {
        return std::all_of(busy.begin(), busy.end(),
                           [](double bound) { return bound == kInfiniteLength; });
    };
    changed.wait(lock, [&] { return closed || !open.empty() || nobodyWorks(); });
    if (closed || open.empty()) {
        return std::nullopt;
    }
    std::pop_heap(open.begin(), open.end(), comesLater);
    const ProofNode node = open.back();
    open.pop_back();
    busy[worker] = node.bound;
    return node;
}

void ProofPool::giveBack(unsigned worker, const std::vector<ProofNode>& nodes) {
    {
        const std::lock_guard lock(mutex);
        busy[worker] = kInfiniteLength;
        for (const ProofNode& node : nodes) {
            open.push_back(node);
            std::push_heap(open.begin(), open.end(), comesLater);
        }
    }
    changed.notify_all();
}

void ProofPool::close() {
    {
        const std::lock_guard lock(mutex);
        closed = true;
    }
    changed.notify_all();
}

double ProofPool::lowestOpen() const {
    const std::lock_guard lock(mutex);
    const double lowestBusy = *std::min_element(busy.begin(), busy.end());
    return open.empty() ? lowestBusy : std::min(lowestBusy, open.front().bound);
}

bool ProofPool::isCrowded() const {
    const std::lock_guard lock(mutex);
    return open.size() > kCrowd;
}

}  // namespace korvel
