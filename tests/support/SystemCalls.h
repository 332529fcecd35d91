// System calls of the code under test that a test watches, or lets another process get ahead of. Included by
// one source file of a test program.
#pragma once

#include <functional>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace tarnwick::test {

/// How often a file was flushed to the disk.
inline int flushes = 0;

/// Runs before the next lock is asked for.
inline std::function<void()> beforeLocking;

} // namespace tarnwick::test

// In place of those of the C library.

extern "C" int fdatasync(int descriptor) {
    ++tarnwick::test::flushes;
    return static_cast<int>(::syscall(SYS_fdatasync, descriptor));
}

/// By another name here: a structure has the same one.
extern "C" int lockFile(int descriptor, int operation) noexcept __asm__("flock");

extern "C" int lockFile(int descriptor, int operation) noexcept {
    if (const auto act = std::exchange(tarnwick::test::beforeLocking, {})) {
        act();
    }
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
