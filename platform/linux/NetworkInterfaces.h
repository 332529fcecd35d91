// The network interfaces of this machine, asked for in ways that wait for no lock that drivers hold while
// they bring one up.
#pragma once

#include "core/FileDescriptor.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick::NetworkInterfaces {

/// The names of at most `most`, in the kernel's order. `socket` may be any.
[[nodiscard]] std::vector<std::string> names(std::size_t most);

[[nodiscard]] std::optional<unsigned> indexOf(const FileDescriptor& socket, const std::string& name);
[[nodiscard]] std::optional<std::string> nameOf(const FileDescriptor& socket, unsigned index);

/// Whether it is up and leads out of this machine.
[[nodiscard]] bool isUp(const FileDescriptor& socket, const std::string& name);

} // namespace tarnwick::NetworkInterfaces
