// A stack of search nodes that keeps the memory of the nodes taken from it for those that come, so
// that a search allocates only while a stack grows beyond its largest size so far. No locks.
#pragma once

#include <utility>
#include <vector>

#include "BBNode.h"

namespace korvel {

class NodeStack {
public:
    bool empty() const { return count == 0; }
    std::size_t size() const { return count; }

    // Puts a copy of `node` on top and returns it, to be changed in place.
    BBNode& push(const BBNode& node) {
        if (count == slots.size()) {
            slots.emplace_back();
        }
        BBNode& slot = slots[count++];
        slot = node;
        return slot;
    }

    // The same, but `node` itself goes onto the stack; what it then holds is not defined.
    BBNode& pushInstead(BBNode& node) {
        if (count == slots.size()) {
            slots.emplace_back();
        }
        BBNode& slot = slots[count++];
        std::swap(slot, node);
        return slot;
    }

    // The top node, which may be changed in place, until the next push; there must be one.
    BBNode& top() { return slots[count - 1]; }
    void pop() { --count; }
    // Exchanges the top node with `node` and takes it off.
    void popInto(BBNode& node) {
        std::swap(node, top());
        pop();
    }

    void swap(NodeStack& other) {
        slots.swap(other.slots);
        std::swap(count, other.count);
    }

private:
    std::vector<BBNode> slots;
    std::size_t count = 0;
};

}  // namespace korvel
