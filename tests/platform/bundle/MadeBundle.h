// Bundles for tests: their programs are scripts.
#pragma once

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace tarnwick::test {

inline std::string informationOf(const std::string& version) {
    return R"({"version":")" + version + R"(","checkInterval":86400})";
}

/// Replaces what is there.
inline void makeBundle(
    const std::filesystem::path& folder, const std::string& version, const std::string& script = "exit 0\n") {
    std::filesystem::remove_all(folder);
    writeFile(folder / "Information.json", informationOf(version));
    const auto program = folder / "bin" / "tarnwick";
    writeFile(program, "#!/bin/sh\n" + script);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
}

} // namespace tarnwick::test
