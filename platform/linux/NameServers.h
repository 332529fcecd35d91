// The name servers that this machine asks.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tarnwick::NameServers {

/// Where the system writes them. A file of a local forwarder that names only itself is followed by the files
/// in which those forwarders write whom they ask.
[[nodiscard]] std::vector<std::filesystem::path> systemFiles();

/// Those of the first file that names any beside this machine itself: `NetworkServers::nameServers`.
[[nodiscard]] std::vector<std::string> present(
    const std::vector<std::filesystem::path>& files = systemFiles());

/// `present`; where that names none, the forwarder on this machine itself.
[[nodiscard]] std::vector<std::string> asked(const std::vector<std::filesystem::path>& files = systemFiles());

} // namespace tarnwick::NameServers
