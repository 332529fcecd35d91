#include "core/Prober/RouterError.h"

#include <netinet/icmp6.h>
#include <netinet/ip_icmp.h>

namespace tarnwick::RouterError {

namespace {

using Kind = ProbeAnswer::Kind;

std::optional<Kind> kindOfUnreachable4(std::uint8_t code) {
    switch (code) {
    case ICMP_NET_ANO:
    case ICMP_HOST_ANO:
    case ICMP_PKT_FILTERED:
        return Kind::forbidden;
    case ICMP_FRAG_NEEDED:
        return std::nullopt;
    default:
        return code <= NR_ICMP_UNREACH ? std::optional(Kind::unreachable) : std::nullopt;
    }
}

/// A wrong source address (5) is no rule: routers at home tell of it when their own way out has gone.
std::optional<Kind> kindOfUnreachable6(std::uint8_t code) {
    constexpr std::uint8_t lastCode = 8; // of all that are assigned
    if (code == ICMP6_DST_UNREACH_ADMIN) {
        return Kind::forbidden;
    }
    return code <= lastCode ? std::optional(Kind::unreachable) : std::nullopt;
}

} // namespace

std::optional<Kind> kindOf4(std::uint8_t type, std::uint8_t code) {
    if (type == ICMP_TIME_EXCEEDED && code == ICMP_EXC_TTL) {
        return Kind::timeExceeded;
    }
    return type == ICMP_DEST_UNREACH ? kindOfUnreachable4(code) : std::nullopt;
}

std::optional<Kind> kindOf6(std::uint8_t type, std::uint8_t code) {
    if (type == ICMP6_TIME_EXCEEDED && code == ICMP6_TIME_EXCEED_TRANSIT) {
        return Kind::timeExceeded;
    }
    return type == ICMP6_DST_UNREACH ? kindOfUnreachable6(code) : std::nullopt;
}

} // namespace tarnwick::RouterError
