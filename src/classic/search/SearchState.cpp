#include "classic/search/SearchState.h"

#include <ctime>
#include <ostream>

namespace korvel {

namespace {

constexpr long kIdleWaitNanoseconds = 100'000;

void sleepIdle() {
    const timespec wait{0, kIdleWaitNanoseconds};
    nanosleep(&wait, nullptr);
}

}  // namespace

SearchState::SearchState(unsigned levelCount, float bestWL, StopFlags& stop)
    : levelCount(levelCount), stop(stop), bestWL(bestWL), counters(levelCount) {
    sharedStack.push(BBNode());
}

bool SearchState::improve(const BBNode& node, std::ostream& report) {
    const std::lock_guard lock(bestMutex);
    if (!(bestWL.load() > node.wirelength)) {
        return false;
    }
    bestNode = node;
    bestWL.store(node.wirelength);
    report << "best solution is updated, bestWL (w/o one-die nets): " << node.wirelength
           << std::endl;
    return true;
}

bool SearchState::takeNode(BBNode& node) {
    while (!stop.isSet()) {
        if (!sharedStackEmpty.load()) {
            countIn();
            if (popShared(node)) {
                return true;
            }
            countOut();
        } else if (isOver()) {
            return false;
        } else {
            requestShare(true);
            sleepIdle();
        }
    }
    return false;
}

void SearchState::countIn() {
    const std::lock_guard lock(activeMutex);
    activeWorkers.store(activeWorkers.load() + 1);
}

void SearchState::countOut() {
    const std::lock_guard lock(activeMutex);
    activeWorkers.store(activeWorkers.load() - 1);
}

bool SearchState::popShared(BBNode& node) {
    const std::lock_guard lock(stackMutex);
    if (sharedStack.empty()) {
        return false;
    }
    sharedStack.popInto(node);
    sharedStackEmpty.store(sharedStack.empty());
    return true;
}

bool SearchState::isOver() {
    if (activeWorkers.load() != 0) {
        return false;
    }
    const std::lock_guard lock(stackMutex);
    return sharedStack.empty() && activeWorkers.load() == 0;
}

void SearchState::requestShare(bool wanted) {
    if (shareRequest.load() != wanted) {
        const std::lock_guard lock(flagMutex);
        shareRequest.store(wanted);
    }
}

void SearchState::shareOwnStack(NodeStack& ownStack) {
    {
        const std::lock_guard lock(stackMutex);
        if (sharedStack.empty()) {
            sharedStack.swap(ownStack);
            sharedStackEmpty.store(false);
        }
    }
    requestShare(false);
}

void SearchState::addCounters(const SearchCounters& ofWorker) {
    const std::lock_guard lock(countersMutex);
    counters.add(ofWorker);
}

}  // namespace korvel
