// Reads the kernel's netlink messages with libmnl, and never past the received bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <sys/socket.h>
#include <type_traits>
#include <utility>

namespace tarnwick::Netlink {

using Bytes = std::span<const std::byte>;

struct CloseSocket {
    void operator()(mnl_socket* socket) const { ::mnl_socket_close(socket); }
};

using Socket = std::unique_ptr<mnl_socket, CloseSocket>;

/// For routing messages, or those of another `protocol`. Null where the system offers no such socket.
[[nodiscard]] inline Socket openSocket(int protocol = NETLINK_ROUTE) {
    return Socket(::mnl_socket_open2(protocol, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

/// The structure at the start of `bytes`; nothing when they are too few.
template<class Structure>
[[nodiscard]] std::optional<Structure> structureAt(Bytes bytes) {
    static_assert(std::is_trivially_copyable_v<Structure>);
    if (bytes.size() < sizeof(Structure)) {
        return std::nullopt;
    }
    Structure structure{};
    std::memcpy(&structure, bytes.data(), sizeof structure);
    return structure;
}

/// Calls `visit(header, content)` for each message up to the first that is cut off. `bytes` are aligned for
/// `nlmsghdr`.
template<class Visit>
void forEachMessage(Bytes bytes, Visit visit) {
    const auto* message = reinterpret_cast<const nlmsghdr*>(bytes.data());
    for (int rest = static_cast<int>(bytes.size()); ::mnl_nlmsg_ok(message, rest);
         message = ::mnl_nlmsg_next(message, &rest)) {
        const auto* content = static_cast<const std::byte*>(::mnl_nlmsg_get_payload(message));
        visit(*message, Bytes(content, ::mnl_nlmsg_get_payload_len(message)));
    }
}

/// Calls `visit(type, value)` for each attribute in a row of them, up to the first that is cut off. They are
/// aligned for `nlattr`.
template<class Visit>
void forEachAttributeIn(Bytes attributes, Visit visit) {
    const auto* attribute = reinterpret_cast<const nlattr*>(attributes.data());
    const auto rest = [&] {
        return static_cast<int>(
            attributes.data() + attributes.size() - reinterpret_cast<const std::byte*>(attribute));
    };
    for (; ::mnl_attr_ok(attribute, rest()); attribute = ::mnl_attr_next(attribute)) {
        const auto* value = static_cast<const std::byte*>(::mnl_attr_get_payload(attribute));
        visit(::mnl_attr_get_type(attribute), Bytes(value, ::mnl_attr_get_payload_len(attribute)));
    }
}

/// The same for those after the fixed part of a message.
template<class FixedPart, class Visit>
void forEachAttribute(Bytes content, Visit visit) {
    constexpr std::size_t start = MNL_ALIGN(sizeof(FixedPart));
    if (content.size() >= start) {
        forEachAttributeIn(content.subspan(start), std::move(visit));
    }
}

/// A name in an attribute: up to its final null character, which may be missing.
[[nodiscard]] inline std::string textIn(Bytes value) {
    const auto end = std::ranges::find(value, std::byte{0});
    return {reinterpret_cast<const char*>(value.data()), static_cast<std::size_t>(end - value.begin())};
}

} // namespace tarnwick::Netlink
