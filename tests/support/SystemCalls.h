// System calls of the code under test that a test watches, or lets another process get ahead of. Included by
// one source file of a test program.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tarnwick::test {

/// What was asked of the file system, in order: "flush NAME" and "rename NAME", each without the folder.
inline std::vector<std::string> diskCalls;

/// Runs before the next lock is asked for.
inline std::function<void()> beforeLocking;

/// The error with which the next lock is refused.
inline int lockError = 0;

/// The error with which hard links are refused; 0: they are made.
inline int linkError = 0;

/// How many of the next calls a signal interrupts before anything is read or written.
inline int interruptedReads = 0;
inline int interruptedWrites = 0;

/// False, with the error set, when `error` is one.
inline bool succeeds(int error) {
    errno = error != 0 ? error : errno;
    return error == 0;
}

inline void noteFlush(int descriptor) {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
    diskCalls.push_back("flush " + path.filename().string());
}

} // namespace tarnwick::test

// In place of those of the C library.

extern "C" int fdatasync(int descriptor) {
    tarnwick::test::noteFlush(descriptor);
    return static_cast<int>(::syscall(SYS_fdatasync, descriptor));
}

extern "C" int fsync(int descriptor) {
    tarnwick::test::noteFlush(descriptor);
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int rename(const char* from, const char* to) noexcept {
    tarnwick::test::diskCalls.push_back("rename " + std::filesystem::path(from).filename().string());
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

/// By another name here: a structure has the same one.
extern "C" int lockFile(int descriptor, int operation) noexcept __asm__("flock");

extern "C" int lockFile(int descriptor, int operation) noexcept {
    if (const auto act = std::exchange(tarnwick::test::beforeLocking, {})) {
        act();
    }
    if (!tarnwick::test::succeeds(std::exchange(tarnwick::test::lockError, 0))) {
        return -1;
    }
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

extern "C" int link(const char* from, const char* to) noexcept {
    return tarnwick::test::succeeds(tarnwick::test::linkError) ? ::linkat(AT_FDCWD, from, AT_FDCWD, to, 0)
                                                               : -1;
}

extern "C" ssize_t read(int descriptor, void* buffer, size_t size) {
    if (tarnwick::test::interruptedReads > 0) {
        --tarnwick::test::interruptedReads;
        errno = EINTR;
        return -1;
    }
    return ::syscall(SYS_read, descriptor, buffer, size);
}

extern "C" ssize_t write(int descriptor, const void* buffer, size_t size) {
    if (tarnwick::test::interruptedWrites > 0) {
        --tarnwick::test::interruptedWrites;
        errno = EINTR;
        return -1;
    }
    return ::syscall(SYS_write, descriptor, buffer, size);
}
