#include "platform/linux/NameServers.h"

#include "platform/linux/NumericAddress.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sstream>

namespace tarnwick::NameServers {

namespace {

/// The C library asks no more.
constexpr std::size_t mostNameServers = 3;

struct FreeNumericAddress {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

bool isThisMachine(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        const auto host = ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr);
        return host >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET || host == INADDR_ANY;
    }
    const in6_addr& host = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
    return IN6_IS_ADDR_LOOPBACK(&host) || IN6_IS_ADDR_UNSPECIFIED(&host);
}

enum class Whose { others, anyones };

/// The address in a text; empty for a text that is none, and for this machine where it does not count.
std::string serverIn(const std::string& text, Whose whose) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(text.c_str(), nullptr, &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, FreeNumericAddress> address(found);
    const bool counts = whose == Whose::anyones || !isThisMachine(*address->ai_addr);
    return counts ? numericAddress(address->ai_addr, address->ai_addrlen) : std::string();
}

std::vector<std::string> serversIn(const std::filesystem::path& path, Whose whose) {
    std::vector<std::string> servers;
    std::ifstream file(path);
    for (std::string line; servers.size() < mostNameServers && std::getline(file, line);) {
        std::istringstream words(line);
        std::string keyword;
        std::string text;
        if (!(words >> keyword >> text) || keyword != "nameserver") {
            continue;
        }
        const std::string server = serverIn(text, whose);
        if (!server.empty() && std::ranges::find(servers, server) == servers.end()) {
            servers.push_back(server);
        }
    }
    return servers;
}

} // namespace

std::vector<std::filesystem::path> systemFiles() {
    return {
        "/etc/resolv.conf", "/run/systemd/resolve/resolv.conf", "/run/NetworkManager/no-stub-resolv.conf"};
}

std::vector<std::string> present(const std::vector<std::filesystem::path>& files) {
    for (const std::filesystem::path& file : files) {
        std::vector<std::string> servers = serversIn(file, Whose::others);
        if (!servers.empty()) {
            return servers;
        }
    }
    return {};
}

std::vector<std::string> asked(const std::vector<std::filesystem::path>& files) {
    std::vector<std::string> others = present(files);
    if (others.empty() && !files.empty()) {
        others = serversIn(files.front(), Whose::anyones);
    }
    return others;
}

} // namespace tarnwick::NameServers
