#include "platform/linux/SignalWatch.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

bool isIgnoredHangup(int signal) {
    struct sigaction present{};
    return signal == SIGHUP && sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

sigset_t signalSet(std::initializer_list<int> signals) {
    sigset_t set{};
    sigemptyset(&set);
    for (const int signal : signals) {
        // A blocked signal would be reported even if it is ignored.
        if (!isIgnoredHangup(signal)) {
            sigaddset(&set, signal);
        }
    }
    return set;
}

/// Reaches the main thread only before a watch has blocked the signal there.
void endOrPassOn(int signal) {
    const pid_t mainThread = getpid();
    if (gettid() == mainThread) {
        ::_exit(EXIT_SUCCESS);
    }
    const int error = errno;
    tgkill(getpid(), mainThread, signal);
    errno = error;
}

} // namespace

void SignalWatch::block(std::initializer_list<int> signals) {
    const sigset_t set = signalSet(signals);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void SignalWatch::endProcessUntilWatched(std::initializer_list<int> signals) {
    struct sigaction action{};
    action.sa_handler = endOrPassOn;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    for (const int signal : signals) {
        if (!isIgnoredHangup(signal)) {
            sigaction(signal, &action, nullptr);
        }
    }
}

SignalWatch::SignalWatch(RunLoop& loop, std::initializer_list<int> signals, std::function<void(int)> onSignal)
    : onSignal_(std::move(onSignal)) {
    const sigset_t set = signalSet(signals);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    descriptor_ = FileDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (descriptor_.isOpen()) {
        watch_ = loop.watchReadable(descriptor_.get(), [this] { readAvailable(); });
    }
    if (!watch_) {
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
}

void SignalWatch::readAvailable() {
    signalfd_siginfo info{};
    if (::read(descriptor_.get(), &info, sizeof info) == sizeof info) {
        onSignal_(static_cast<int>(info.ssi_signo));
    }
}

} // namespace tarnwick
