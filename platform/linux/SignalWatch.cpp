#include "platform/linux/SignalWatch.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

sigset_t signalSet(std::initializer_list<int> signals) {
    sigset_t set{};
    sigemptyset(&set);
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
    return set;
}

} // namespace

void SignalWatch::block(std::initializer_list<int> signals) {
    const sigset_t set = signalSet(signals);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
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
