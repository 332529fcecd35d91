// File systems that only the present process sees, for disks that are full or write-protected.
#pragma once

#include "tests/core/Required.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

namespace tarnwick::test {

/// The status of a child process that could not have mounts of its own.
inline constexpr int noMounts = 77;

/// In a changed root "/" is no mount, and what is mounted can't be made private from there; the laboratory
/// has done so.
[[nodiscard]] inline bool isPrivateAlready() {
    return errno == EINVAL && std::getenv("TARNWICK_LAB_NAMESPACE") != nullptr;
}

/// False where this machine gives none. For a child process: the mounts end with it.
[[nodiscard]] inline bool havePrivateMounts() {
    const int users = ::geteuid() == 0 ? 0 : CLONE_NEWUSER;
    return ::unshare(CLONE_NEWNS | users) == 0
           && (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 || isPrivateAlready());
}

[[nodiscard]] inline bool mountSmallDisk(const std::filesystem::path& folder, const char* size = "64k") {
    return ::mount("none", folder.c_str(), "tmpfs", 0, ("size=" + std::string(size)).c_str()) == 0;
}

[[nodiscard]] inline bool protectFromWriting(const std::filesystem::path& folder) {
    return ::mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

/// The first file is seen in the second one's place.
[[nodiscard]] inline bool putInPlace(const std::filesystem::path& file, const std::filesystem::path& place) {
    return ::mount(file.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

} // namespace tarnwick::test
