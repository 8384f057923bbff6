// A value that may be written while other threads read it without a lock. Reads may be stale; each
// use says why that is harmless. Nothing else is ordered by it.
#pragma once

#include <atomic>

namespace korvel {

template <typename T>
class Relaxed {
public:
    explicit Relaxed(T value) : value(value) {}

    T load() const { return value.load(std::memory_order_relaxed); }
    void store(T next) { value.store(next, std::memory_order_relaxed); }

private:
    std::atomic<T> value;
};

}  // namespace korvel
