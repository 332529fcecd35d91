// What an ICMP error says of an echo request.
#pragma once

#include "core/Prober/ProbeNetwork.h"

#include <cstdint>
#include <optional>

namespace tarnwick::RouterError {

// By the error's type and code. Nothing for errors of other kinds, and for codes that mean nothing.
[[nodiscard]] std::optional<ProbeAnswer::Kind> kindOf4(std::uint8_t type, std::uint8_t code);
[[nodiscard]] std::optional<ProbeAnswer::Kind> kindOf6(std::uint8_t type, std::uint8_t code);

} // namespace tarnwick::RouterError
