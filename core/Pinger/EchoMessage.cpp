#include "core/Pinger/EchoMessage.h"

#include <algorithm>
#include <sys/socket.h>

namespace tarnwick {

namespace {

struct IcmpTypes {
    std::uint8_t request;
    std::uint8_t reply;
};

constexpr std::size_t checksumOffset = 2;
constexpr std::size_t identifierOffset = 4;
constexpr std::size_t sequenceOffset = 6;
constexpr std::size_t magicOffset = 8;
constexpr std::size_t idOffset = 16;

constexpr IcmpTypes typesOf(std::int32_t family) {
    return family == AF_INET ? IcmpTypes{.request = 8, .reply = 0} : IcmpTypes{.request = 128, .reply = 129};
}

void writeBigEndian(std::span<std::uint8_t> field, std::uint64_t value) {
    for (std::size_t at = field.size(); at-- > 0;) {
        field[at] = static_cast<std::uint8_t>(value);
        value >>= 8;
    }
}

std::uint64_t readBigEndian(std::span<const std::uint8_t> field) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : field) {
        value = value << 8 | byte;
    }
    return value;
}

/// Datagram sockets of some systems deliver the IPv4 header, others do not.
std::size_t messageOffset(std::span<const std::uint8_t> datagram, std::int32_t family) {
    if (family != AF_INET || datagram.empty() || datagram[0] >> 4 != 4) {
        return 0;
    }
    return std::size_t{datagram[0] & 0x0FU} * 4;
}

} // namespace

EchoMessage echoRequest(std::uint64_t id, std::uint16_t identifier, std::int32_t family) {
    EchoMessage message{};
    const std::span bytes(message);
    message[0] = typesOf(family).request;
    writeBigEndian(bytes.subspan(identifierOffset, 2), identifier);
    writeBigEndian(bytes.subspan(sequenceOffset, 2), id);
    std::ranges::copy(echoMagic, bytes.subspan(magicOffset).begin());
    writeBigEndian(bytes.subspan(idOffset, 8), id);
    if (family == AF_INET) {
        writeBigEndian(bytes.subspan(checksumOffset, 2), checksum(message));
    }
    return message;
}

std::uint16_t checksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const std::uint32_t low = at + 1 < bytes.size() ? bytes[at + 1] : 0;
        sum += std::uint32_t{bytes[at]} << 8 | low;
        // Folded at every step, so that no length overflows the sum.
        sum = (sum >> 16) + (sum & 0xFFFF);
    }
    return static_cast<std::uint16_t>(~sum);
}

std::optional<std::uint64_t> parseReply(
    std::span<const std::uint8_t> datagram, std::int32_t family, std::uint16_t identifier) {
    const std::size_t offset = messageOffset(datagram, family);
    if (datagram.size() < offset + echoMessageSize) {
        return std::nullopt;
    }
    const auto message = datagram.subspan(offset, echoMessageSize);
    const bool isReply = message[0] == typesOf(family).reply && message[1] == 0;
    if (!isReply || !std::ranges::equal(message.subspan(magicOffset, echoMagic.size()), echoMagic)) {
        return std::nullopt;
    }
    if (readBigEndian(message.subspan(identifierOffset, 2)) != identifier) {
        return std::nullopt;
    }
    const std::uint64_t id = readBigEndian(message.subspan(idOffset, 8));
    if (readBigEndian(message.subspan(sequenceOffset, 2)) != (id & 0xFFFF)) {
        return std::nullopt;
    }
    return id;
}

std::optional<QuotedRequest> parseQuotation(
    std::span<const std::uint8_t> quotation, std::int32_t family, std::uint16_t identifier) {
    if (quotation.size() < magicOffset || quotation[0] != typesOf(family).request || quotation[1] != 0
        || readBigEndian(quotation.subspan(identifierOffset, 2)) != identifier) {
        return std::nullopt;
    }
    const auto mark =
        quotation.subspan(magicOffset, std::min(quotation.size() - magicOffset, echoMagic.size()));
    if (!std::ranges::equal(mark, std::span(echoMagic).first(mark.size()))) {
        return std::nullopt;
    }
    QuotedRequest request{
        .sequence = static_cast<std::uint16_t>(readBigEndian(quotation.subspan(sequenceOffset, 2))),
        .id = std::nullopt};
    if (quotation.size() >= echoMessageSize) {
        request.id = readBigEndian(quotation.subspan(idOffset, 8));
        if ((*request.id & 0xFFFF) != request.sequence) {
            return std::nullopt;
        }
    }
    return request;
}

} // namespace tarnwick
