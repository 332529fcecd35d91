// Netlink messages, byte by byte, as the kernel would send them.
#pragma once

#include <linux/rtnetlink.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarnwick::test {

using Content = std::vector<std::byte>;

template<class Structure>
Content bytesOf(const Structure& structure) {
    const auto bytes = std::as_bytes(std::span(&structure, 1));
    return {bytes.begin(), bytes.end()};
}

inline Content operator+(Content front, const Content& back) {
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

inline Content attribute(unsigned short type, Content value) {
    const rtattr header{
        .rta_len = static_cast<unsigned short>(sizeof(rtattr) + value.size()), .rta_type = type};
    value.resize((value.size() + 3) / 4 * 4);
    return bytesOf(header) + value;
}

inline Content message(std::uint16_t type, const Content& content) {
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(sizeof header + content.size());
    header.nlmsg_type = type;
    return bytesOf(header) + content;
}

inline Content ipv4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    return {std::byte{a}, std::byte{b}, std::byte{c}, std::byte{d}};
}

} // namespace tarnwick::test
