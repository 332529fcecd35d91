#include "platform/bundle/TrialGuard.h"

#include "core/FileDescriptor.h"
#include "platform/bundle/BundleTrial.h"
#include "platform/linux/RunningProgram.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnwick {

namespace {

/// Seconds beyond the trial, for a start on a busy machine.
constexpr double patienceWithStart = 15;

/// Closed where another program takes its place. The C library's function can't be called from this language
/// before version 2.37.
int thisProcess() {
    return static_cast<int>(::syscall(SYS_pidfd_open, ::getpid(), 0));
}

/// A child of nobody: the new version does not have to look after it.
bool isLeftBehind() {
    const pid_t child = ::fork();
    if (child > 0) {
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
        return false;
    }
    if (child == 0 && ::fork() != 0) {
        ::_exit(EXIT_SUCCESS);
    }
    return child == 0;
}

/// The session may end it, as any process.
void takeSignals() {
    sigset_t none{};
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool endsWithin(const FileDescriptor& process, double seconds) {
    pollfd watched{.fd = process.get(), .events = POLLIN, .revents = 0};
    constexpr double msPerSecond = 1000;
    return ::poll(&watched, 1, static_cast<int>(seconds * msPerSecond)) == 1;
}

} // namespace

std::filesystem::path programOf(const std::filesystem::path& bundle) {
    return bundle / "bin" / "tarnwick";
}

std::optional<ReleaseVersion> startOnTrial(
    const UpdateFolder& folder, const std::vector<std::string>& arguments) {
    const FileDescriptor newVersion(thisProcess());
    if (!isLeftBehind()) {
        becomeProgram(programOf(folder.bundle()), arguments);
        ::_exit(EXIT_FAILURE);
    }
    takeSignals();
    if (!newVersion.isOpen() || !endsWithin(newVersion, BundleTrial::length + patienceWithStart)) {
        return std::nullopt;
    }
    const auto record = folder.record();
    if (!record || record->phase == UpdateRecord::Phase::ended) {
        return std::nullopt; // it has passed
    }
    // A start in the meantime brings the old version back itself. Two exchanges would undo each other.
    const auto lock = folder.lock();
    return lock ? bringBack(folder) : std::nullopt;
}

} // namespace tarnwick
