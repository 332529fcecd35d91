// What is sent to a name server, and what comes back, as bytes.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tarnwick::NameMessage {

/// More than any query, and the beginning of any answer that is looked at.
inline constexpr std::size_t largest = 512;

/// Asks for the name's address of that family (AF_INET or AF_INET6). Nothing for a text that is no name of
/// the name system as it stands: one beyond ASCII, one without a dot, to which the resolver adds a domain,
/// and one below ".local", which the machines of the network tell each other.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> query(
    std::uint16_t id, const std::string& name, std::int32_t family);

/// What a message says to the query; nothing if it is no answer to it: another id, another question. One that
/// was cut counts as `found`: there was that much to say. So the message may have been cut here as well.
[[nodiscard]] std::optional<NameServerEvidence::Answer> answer(
    std::span<const std::uint8_t> message, std::span<const std::uint8_t> query);

} // namespace tarnwick::NameMessage
