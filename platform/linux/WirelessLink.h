// How well a Wi-Fi interface hears and sends.
#pragma once

#include "platform/linux/Netlink.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tarnwick::WirelessLink {

struct Figures {
    std::optional<int> signalDbm{};   ///< averaged by the driver where it does that
    std::optional<double> rateMbit{}; ///< a second, of the latest data that it sent

    friend bool operator==(const Figures&, const Figures&) = default;
};

/// Nothing while the interface is not connected, or where neither of the kernel's two ways tells; the older
/// way tells no rate. The driver may ask the hardware for them.
[[nodiscard]] Figures present(unsigned interface, const std::string& name);

/// Reads the content of an answer about a family of messages: the number by which it is asked.
[[nodiscard]] std::optional<std::uint16_t> parseFamily(Netlink::Bytes content);

/// Reads the content of an answer about the station that the interface is connected to.
[[nodiscard]] Figures parseStation(Netlink::Bytes content);

/// Reads the older way's table: dBm.
[[nodiscard]] std::optional<int> fromTable(const std::filesystem::path& table, const std::string& name);

} // namespace tarnwick::WirelessLink
