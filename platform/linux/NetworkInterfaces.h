// The network interfaces of this machine. The calls do not wait for the lock that drivers hold while they
// bring one up, as a netlink dump of the links would.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::NetworkInterfaces {

/// The names of at most `most`, in the kernel's order.
[[nodiscard]] std::vector<std::string> names(std::size_t most);

// `socket` is the descriptor of any socket.
[[nodiscard]] std::optional<unsigned> indexOf(int socket, const std::string& name);
[[nodiscard]] std::optional<std::string> nameOf(int socket, unsigned index);

[[nodiscard]] bool isUpAndNotLoopback(int socket, const std::string& name);

} // namespace tarnwick::NetworkInterfaces
