// A stack of search nodes that keeps the memory of the nodes taken from it for those that come, so
// that a search allocates only while a stack grows beyond its largest size so far. No locks.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "classic/node/BBNode.h"

namespace korvel {

class NodeStack {
public:
    bool empty() const { return count == 0; }
    std::size_t size() const { return count; }

    // Puts a copy of `node` on top.
    void push(const BBNode& node) {
        grow(1);
        top() = node;
    }

    // The nodes from the top down, which may be changed in place; there must be as many. They stay
    // where they are until they are taken off.
    BBNode& fromTop(std::size_t depth) { return *slots[count - 1 - depth]; }
    BBNode& top() { return fromTop(0); }

    // Puts copies of the top node below it, so that there are `times` of it; once or more.
    void multiplyTop(std::size_t times) {
        const std::size_t first = count - 1;
        grow(times - 1);
        std::swap(slots[first], slots[count - 1]);
        for (std::size_t copy = first; copy + 1 < count; ++copy) {
            *slots[copy] = top();
        }
    }

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
    void grow(std::size_t number) {
        count += number;
        while (slots.size() < count) {
            slots.push_back(std::make_unique<BBNode>());
        }
    }

    std::vector<std::unique_ptr<BBNode>> slots;
    std::size_t count = 0;
};

}  // namespace korvel
