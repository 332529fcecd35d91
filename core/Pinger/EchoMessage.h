// The bytes on the wire: 24-byte echo requests and what counts as an answer to one. Knows no socket.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace tarnwick {

inline constexpr std::size_t echoMessageSize = 24;
using EchoMessage = std::array<std::uint8_t, echoMessageSize>;

/// Marks this program's own echo traffic, at offset 8 of every message.
inline constexpr std::array<std::uint8_t, 8> echoMagic{'T', 'A', 'R', 'N', 'W', 'I', 'C', 'K'};

/// An ICMP echo request for AF_INET, else an ICMPv6 one, whose checksum the system fills in.
[[nodiscard]] EchoMessage echoRequest(std::uint64_t id, std::uint16_t identifier, std::int32_t family);

/// The Internet checksum: one's complement of the one's complement sum of big-endian 16-bit words.
[[nodiscard]] std::uint16_t checksum(std::span<const std::uint8_t> bytes);

/// The ping id in an echo reply to a request made with this identifier; nothing for any other datagram. An
/// IPv4 header in front of the message is skipped. Neither sender nor checksum is examined.
[[nodiscard]] std::optional<std::uint64_t> parseReply(
    std::span<const std::uint8_t> datagram, std::int32_t family, std::uint16_t identifier);

/// What a router quotes of an echo request in its error message.
struct QuotedRequest {
    std::uint16_t sequence = 0;        ///< the id's low 16 bits
    std::optional<std::uint64_t> id{}; ///< nothing where the quotation ends before it
};

/// `quotation` begins with the ICMP header of the request. Nothing unless that is a request of ours, made
/// with this identifier, as far as it is quoted; routers need not quote more than the ICMP header.
[[nodiscard]] std::optional<QuotedRequest> parseQuotation(
    std::span<const std::uint8_t> quotation, std::int32_t family, std::uint16_t identifier);

} // namespace tarnwick
