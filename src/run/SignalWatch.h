// Ctrl-C and SIGTERM as a request instead of an end. The first one calls a function; the second one
// ends the process as if nobody had watched.
//
// Its thread shares two file descriptors with the thread that owns it, and is joined before they
// are closed; what it calls must be safe to call from another thread.
#pragma once

#include <sys/signalfd.h>

#include <csignal>
#include <functional>
#include <thread>

namespace korvel {

class SignalWatch {
public:
    // `first` is called at most once, on a thread of the watch. Create it before the threads of the
    // run, which inherit that these signals are not for them. A signal that the parent process has
    // told this one to ignore stays ignored.
    explicit SignalWatch(std::function<void()> first);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    void watch();

    std::function<void()> first;
    sigset_t watched{};
    sigset_t maskBefore{};
    int signals = -1;   // readable when a watched signal has come
    int farewell = -1;  // readable when the watch is over
    std::thread watcher;
};

}  // namespace korvel
