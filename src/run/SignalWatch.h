// Ctrl-C and SIGTERM as a request instead of an end. The first one calls a function; the second one
// ends the process as if nobody had watched.
#pragma once

#include <csignal>
#include <functional>
#include <thread>

namespace korvel {

class SignalWatch {
public:
    // `first` is called at most once, on a thread of the watch, and must be safe to call from
    // there. Create it before the threads of the run, which inherit that these signals are not for
    // them. A signal that the parent process has told this one to ignore stays ignored.
    explicit SignalWatch(const std::function<void()>& first);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    sigset_t maskBefore{};
    std::jthread watcher;
};

}  // namespace korvel
