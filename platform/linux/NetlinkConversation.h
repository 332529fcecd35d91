// Questions to the kernel over netlink, and its answers.
#pragma once

#include "platform/linux/Netlink.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace tarnwick {

/// One message, made piece by piece. Its parts are few and small; what has no room is left out.
class NetlinkQuestion {
public:
    /// With `NLM_F_DUMP` among the `flags` it asks for all that there is.
    explicit NetlinkQuestion(std::uint16_t type, std::uint16_t flags = 0);
    NetlinkQuestion(const NetlinkQuestion&) = delete;
    NetlinkQuestion& operator=(const NetlinkQuestion&) = delete;
    ~NetlinkQuestion() = default;

    /// The fixed part of such messages, before their attributes.
    template<class Structure>
    void put(const Structure& fixedPart) {
        std::memcpy(::mnl_nlmsg_put_extra_header(header_, sizeof fixedPart), &fixedPart, sizeof fixedPart);
    }

    void add(std::uint16_t attribute, Netlink::Bytes value);
    void add(std::uint16_t attribute, std::uint32_t value);

private:
    friend class NetlinkConversation;

    static constexpr std::size_t size = 256;

    alignas(nlmsghdr) std::array<std::byte, size> buffer_{};
    nlmsghdr* header_ = ::mnl_nlmsg_put_header(buffer_.data());
};

/// One question after the other. Any thread, one at a time.
class NetlinkConversation {
public:
    enum class Outcome {
        answered,
        refused, ///< the kernel says that there is no such thing, or no such question
        silent,  ///< the kernel can't be asked
    };

    using Visit = std::function<void(const nlmsghdr& header, Netlink::Bytes content)>;

    /// With `NETLINK_ROUTE` or another protocol.
    explicit NetlinkConversation(int protocol);

    /// Calls `visit` with each message of the answer. Waits for nothing but the lock that the kernel may hold
    /// while it makes the answer.
    Outcome ask(NetlinkQuestion& question, const Visit& visit);

    /// The descriptor of its socket. Call it after an answer.
    [[nodiscard]] int descriptor() const { return ::mnl_socket_get_fd(socket_.get()); }

private:
    Netlink::Socket socket_;
    std::uint32_t sequence_ = 0;
};

} // namespace tarnwick
