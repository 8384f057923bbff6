#include "run/SignalWatch.h"

#include <unistd.h>

namespace korvel {

namespace {

bool isIgnored(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    // Which member of the union holds is for the flags to say.
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN;
}

[[noreturn]] void endBySignal(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t only{};
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    std::raise(signal);
    _exit(128 + signal);
}

// Wakes the watcher from its waiting when the watch is over.
int farewell() {
    return SIGRTMIN;
}

void watch(const sigset_t& watched, const std::function<void()>& first,
           const std::stop_token& over) {
    for (bool asked = false;;) {
        int signal = 0;
        sigwait(&watched, &signal);
        if (over.stop_requested()) {
            return;
        }
        if (signal == farewell()) {
            continue;  // sent by somebody else
        }
        if (asked) {
            endBySignal(signal);
        }
        asked = true;
        first();
    }
}

}  // namespace

SignalWatch::SignalWatch(const std::function<void()>& first) {
    sigset_t watched{};
    sigemptyset(&watched);
    sigaddset(&watched, farewell());
    for (const int signal : {SIGINT, SIGTERM}) {
        if (!isIgnored(signal)) {
            sigaddset(&watched, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &watched, &maskBefore);
    watcher = std::jthread(
        [watched, first](const std::stop_token& over) { watch(watched, first, over); });
}

SignalWatch::~SignalWatch() {
    watcher.request_stop();
    pthread_kill(watcher.native_handle(), farewell());
    watcher.join();
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

}  // namespace korvel
