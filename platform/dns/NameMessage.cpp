#include "platform/dns/NameMessage.h"

#include <algorithm>
#include <arpa/nameser.h>
#include <array>
#include <cstddef>
#include <resolv.h>
#include <string_view>
#include <strings.h>
#include <sys/socket.h>

namespace tarnwick::NameMessage {

namespace {

using Said = NameServerEvidence::Answer;

// Where the header has its flags, and how many questions and answers follow.
constexpr std::size_t flagsAt = 2;
constexpr std::size_t questionsAt = 4;
constexpr std::size_t answersAt = 6;
constexpr unsigned responseFlag = 0x8000;
constexpr unsigned operationMask = 0x7800;
constexpr unsigned cutFlag = 0x0200;
constexpr unsigned recursionWantedFlag = 0x0100;
constexpr unsigned codeMask = 0x000F;

void put(std::vector<std::uint8_t>& message, unsigned number) {
    message.push_back(static_cast<std::uint8_t>(number >> 8));
    message.push_back(static_cast<std::uint8_t>(number));
}

unsigned numberAt(std::span<const std::uint8_t> message, std::size_t place) {
    return static_cast<unsigned>(message[place]) << 8 | message[place + 1];
}

bool isForServers(std::string_view name) {
    constexpr std::string_view neighbors = ".local";
    const bool isAscii = std::ranges::all_of(name, [](unsigned char one) { return one < 0x80; });
    const bool isNeighbor =
        name.size() >= neighbors.size()
        && ::strncasecmp(name.end() - neighbors.size(), neighbors.data(), neighbors.size()) == 0;
    return isAscii && !isNeighbor && name.find('.') != std::string_view::npos;
}

/// Servers need not keep the case of letters. The length of a part is below all of them.
std::uint8_t withoutCase(std::uint8_t byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<std::uint8_t>(byte - 'A' + 'a') : byte;
}

Said meaningOf(unsigned flags, unsigned answers) {
    switch (flags & codeMask) {
    case ns_r_noerror:
        // The name may exist without an address of this kind: no better than none to who looks for one.
        return answers > 0 || (flags & cutFlag) != 0 ? Said::found : Said::noSuchName;
    case ns_r_nxdomain:
        return Said::noSuchName;
    case ns_r_servfail:
        return Said::failed;
    default:
        return Said::refused;
    }
}

} // namespace

std::optional<std::vector<std::uint8_t>> query(
    std::uint16_t id, const std::string& name, std::int32_t family) {
    std::array<std::uint8_t, NS_MAXCDNAME> packed{};
    const int size =
        isForServers(name) ? ::dn_comp(name.c_str(), packed.data(), packed.size(), nullptr, nullptr) : -1;
    if (size < 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> message;
    put(message, id);
    put(message, recursionWantedFlag);
    put(message, 1);
    message.resize(NS_HFIXEDSZ);
    message.insert(message.end(), packed.begin(), packed.begin() + size);
    put(message, family == AF_INET6 ? ns_t_aaaa : ns_t_a);
    put(message, ns_c_in);
    return message;
}

std::optional<NameServerEvidence::Answer> answer(
    std::span<const std::uint8_t> message, std::span<const std::uint8_t> query) {
    if (message.size() < query.size()) {
        return std::nullopt;
    }
    const unsigned flags = numberAt(message, flagsAt);
    const bool isToIt = numberAt(message, 0) == numberAt(query, 0) && (flags & responseFlag) != 0
                        && (flags & operationMask) == 0 && numberAt(message, questionsAt) == 1;
    const bool isSameQuestion = std::ranges::equal(
        message.first(query.size()).subspan(NS_HFIXEDSZ), query.subspan(NS_HFIXEDSZ), {}, withoutCase,
        withoutCase);
    if (!isToIt || !isSameQuestion) {
        return std::nullopt;
    }
    return meaningOf(flags, numberAt(message, answersAt));
}

} // namespace tarnwick::NameMessage
