#include "platform/linux/SystemAddressNames.h"

#include <algorithm>
#include <array>
#include <memory>
#include <netdb.h>

namespace tarnwick {

namespace {

/// Letters and digits of the name system, so that nothing else reaches a terminal or a window: whoever owns
/// the address chooses its name.
bool isHostName(const std::string& name) {
    constexpr std::size_t longestName = 253;
    const auto isOfNames = [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z')
               || (letter >= '0' && letter <= '9') || letter == '-' || letter == '.';
    };
    return name.size() <= longestName && std::ranges::all_of(name, isOfNames);
}

} // namespace

std::string SystemAddressNames::lookUp(const std::string& address) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), nullptr, &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> list(found, ::freeaddrinfo);
    std::array<char, NI_MAXHOST> buffer{};
    const int code =
        ::getnameinfo(list->ai_addr, list->ai_addrlen, buffer.data(), buffer.size(), nullptr, 0, NI_NAMEREQD);
    const std::string name = code == 0 ? buffer.data() : "";
    return isHostName(name) ? name : "";
}

void SystemAddressNames::ask(const std::string& address, Answer answer) {
    const auto report =
        lifeline_.guarded([answer = std::move(answer)](const std::string& name) { answer(name); });
    const bool isUnderWay = loop_.detach([lookup = lookup_, address, report]() -> RunLoop::Task {
        return [report, name = lookup(address)] { report(name); };
    });
    if (!isUnderWay) {
        loop_.post([report] { report(std::string()); });
    }
}

} // namespace tarnwick
