#include "platform/dns/DirectNameServerCheck.h"

#include "platform/dns/NameMessage.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <netdb.h>
#include <random>
#include <sys/socket.h>
#include <utility>

namespace tarnwick {

namespace {

using NameAnswer = NameServerEvidence::Answer;

struct FreeServerAddress {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

/// Takes answers from the server alone; closed where the system can't send there.
FileDescriptor connectedTo(const std::string& server, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(server.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, FreeServerAddress> address(found);
    FileDescriptor socket(::socket(address->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool isConnected =
        socket.isOpen() && ::connect(socket.get(), address->ai_addr, address->ai_addrlen) == 0;
    return isConnected ? std::move(socket) : FileDescriptor();
}

} // namespace

DirectNameServerCheck::DirectNameServerCheck(
    RunLoop& loop, Servers servers, double patience, std::uint16_t port)
    : loop_(loop), servers_(std::move(servers)), patience_(patience), port_(port) {
}

void DirectNameServerCheck::ask(const std::string& host, std::int32_t family, Answer answer) {
    answer_ = std::move(answer);
    asked_.clear();
    std::random_device random;
    for (const std::string& server : servers_()) {
        auto query = NameMessage::query(static_cast<std::uint16_t>(random()), host, family);
        if (query) {
            asked_.push_back({.evidence = {.address = server}, .query = *std::move(query)});
        }
    }
    end_ = loop_.after(patience_, [this] { finish(); });
    for (Asked& asked : asked_) {
        send(asked);
    }
    finishWhenAllAreSettled();
}

void DirectNameServerCheck::send(Asked& asked) {
    asked.socket = connectedTo(asked.evidence.address, port_);
    asked.sentAt = loop_.now();
    const auto size = static_cast<ssize_t>(asked.query.size());
    if (asked.socket.isOpen()
        && ::send(asked.socket.get(), asked.query.data(), asked.query.size(), 0) == size) {
        asked.watch = loop_.watchReadable(asked.socket.get(), [this, &asked] { receive(asked); });
    }
}

/// One message a turn.
void DirectNameServerCheck::receive(Asked& asked) {
    std::array<std::uint8_t, NameMessage::largest> buffer{};
    const ssize_t size = ::recv(asked.socket.get(), buffer.data(), buffer.size(), 0);
    if (size >= 0) {
        const auto message = std::span(buffer).first(static_cast<std::size_t>(size));
        if (const auto answer = NameMessage::answer(message, asked.query)) {
            asked.evidence.ms = (loop_.now() - asked.sentAt) * 1000;
            settle(asked, *answer);
        }
    } else if (errno == ECONNREFUSED) {
        settle(asked, NameAnswer::refused); // the machine is there, and says that it is no name server
    } else if (errno != EAGAIN && errno != EINTR) {
        settle(asked, NameAnswer::none);
    }
}

void DirectNameServerCheck::settle(Asked& asked, NameServerEvidence::Answer answer) {
    asked.evidence.answer = answer;
    asked.watch.reset();
    finishWhenAllAreSettled();
}

void DirectNameServerCheck::finishWhenAllAreSettled() {
    if (std::ranges::all_of(asked_, [](const Asked& asked) { return !asked.watch; })) {
        end_ = loop_.after(0, [this] { finish(); });
    }
}

void DirectNameServerCheck::finish() {
    end_.reset();
    std::vector<NameServerEvidence> evidence;
    for (Asked& asked : std::exchange(asked_, {})) {
        evidence.push_back(std::move(asked.evidence));
    }
    const Answer answer = std::move(answer_);
    answer(evidence); // which may end this object
}

} // namespace tarnwick
