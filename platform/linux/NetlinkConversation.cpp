#include "platform/linux/NetlinkConversation.h"

#include <cerrno>
#include <optional>

namespace tarnwick {

namespace {

using Netlink::Bytes;

/// As much as the kernel puts into one piece of a long answer.
constexpr std::size_t answerPieceSize = 32UL * 1024;

/// Of one answer: hundreds of interfaces need a few dozen.
constexpr int mostAnswerPieces = 4096;

/// Nothing while more is to come.
std::optional<NetlinkConversation::Outcome> outcomeOf(const nlmsghdr& header, Bytes content, bool isLong) {
    if (header.nlmsg_type == NLMSG_ERROR) {
        const auto error = Netlink::structureAt<nlmsgerr>(content);
        return error && error->error == 0 ? NetlinkConversation::Outcome::answered
                                          : NetlinkConversation::Outcome::refused;
    }
    if (header.nlmsg_type == NLMSG_DONE || !isLong) {
        return NetlinkConversation::Outcome::answered;
    }
    return std::nullopt;
}

} // namespace

NetlinkQuestion::NetlinkQuestion(std::uint16_t type, std::uint16_t flags) {
    header_->nlmsg_type = type;
    header_->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
}

void NetlinkQuestion::add(std::uint16_t attribute, Bytes value) {
    ::mnl_attr_put_check(header_, size, attribute, value.size(), value.data());
}

void NetlinkQuestion::add(std::uint16_t attribute, std::uint32_t value) {
    ::mnl_attr_put_u32_check(header_, size, attribute, value);
}

NetlinkConversation::NetlinkConversation(int protocol) : socket_(Netlink::openSocket(protocol)) {
}

NetlinkConversation::Outcome NetlinkConversation::ask(NetlinkQuestion& question, const Visit& visit) {
    nlmsghdr& header = *question.header_;
    header.nlmsg_seq = ++sequence_;
    if (!socket_
        || ::mnl_socket_sendto(socket_.get(), &header, header.nlmsg_len) != ssize_t{header.nlmsg_len}) {
        return Outcome::silent;
    }
    const bool isLong = (header.nlmsg_flags & NLM_F_DUMP) == NLM_F_DUMP;
    alignas(nlmsghdr) std::array<std::byte, answerPieceSize> buffer{};
    for (int piece = 0; piece < mostAnswerPieces; ++piece) {
        const ssize_t size = ::mnl_socket_recvfrom(socket_.get(), buffer.data(), buffer.size());
        if (size <= 0 && errno != EINTR) {
            break;
        }
        std::optional<Outcome> outcome;
        Netlink::forEachMessage(
            Bytes(buffer).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0))),
            [&](const nlmsghdr& message, Bytes content) {
                if (message.nlmsg_seq != sequence_ || outcome) {
                    return;
                }
                outcome = outcomeOf(message, content, isLong);
                if (message.nlmsg_type != NLMSG_ERROR && message.nlmsg_type != NLMSG_DONE) {
                    visit(message, content);
                }
            });
        if (outcome) {
            return *outcome;
        }
    }
    return Outcome::silent;
}

} // namespace tarnwick
