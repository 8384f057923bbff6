#include "run/SignalWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>

#include "base/Invariant.h"

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

}  // namespace

SignalWatch::SignalWatch(std::function<void()> first) : first(std::move(first)) {
    sigemptyset(&watched);
    for (const int signal : {SIGINT, SIGTERM}) {
        if (!isIgnored(signal)) {
            sigaddset(&watched, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &watched, &maskBefore);
    signals = signalfd(-1, &watched, SFD_CLOEXEC);
    farewell = eventfd(0, EFD_CLOEXEC);
    KORVEL_INVARIANT(signals >= 0 && farewell >= 0, "signals >= 0 && farewell >= 0");
    watcher = std::thread([this] { watch(); });
}

SignalWatch::~SignalWatch() {
    eventfd_write(farewell, 1);
    watcher.join();
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    close(signals);
    close(farewell);
}

void SignalWatch::watch() {
    std::array<pollfd, 2> sources{pollfd{signals, POLLIN, 0}, pollfd{farewell, POLLIN, 0}};
    for (bool asked = false;;) {
        poll(sources.data(), sources.size(), -1);
        if (sources[1].revents != 0) {
            return;
        }
        signalfd_siginfo signal{};
        if (sources[0].revents == 0 || read(signals, &signal, sizeof signal) != sizeof signal) {
            continue;  // woken for nothing
        }
        if (asked) {
            endBySignal(static_cast<int>(signal.ssi_signo));
        }
        asked = true;
        first();
    }
}

}  // namespace korvel
