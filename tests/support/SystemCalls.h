// System calls of the code under test that a test watches, or lets another process get ahead of. Included by
// one source file of a test program.
#pragma once

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
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
