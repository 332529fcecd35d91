// How strong the radio signal of a Wi-Fi interface is.
#pragma once

#include "platform/linux/Netlink.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tarnwick::WirelessSignal {

/// dBm, averaged by the driver where it does that. Nothing while the interface is not connected, or where
/// neither of the kernel's two ways tells. The driver may ask the hardware for it.
[[nodiscard]] std::optional<int> present(unsigned interface, const std::string& name);

/// Reads the content of an answer about a family of messages: the number by which it is asked.
[[nodiscard]] std::optional<std::uint16_t> parseFamily(Netlink::Bytes content);

/// Reads the content of an answer about the station that the interface is connected to.
[[nodiscard]] std::optional<int> parseStation(Netlink::Bytes content);

/// Reads the older way's table.
[[nodiscard]] std::optional<int> fromTable(const std::filesystem::path& table, const std::string& name);

} // namespace tarnwick::WirelessSignal
