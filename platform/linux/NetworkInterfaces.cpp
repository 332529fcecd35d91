#include "platform/linux/NetworkInterfaces.h"

#include <fstream>
#include <net/if.h>
#include <sys/ioctl.h>

namespace tarnwick::NetworkInterfaces {

namespace {

constexpr const char* listPath = "/proc/net/dev";

ifreq requestFor(const std::string& name) {
    ifreq request{};
    name.copy(&request.ifr_name[0], sizeof request.ifr_name - 1);
    return request;
}

} // namespace

std::vector<std::string> names(std::size_t most) {
    std::vector<std::string> result;
    std::ifstream list(listPath);
    for (std::string line; result.size() < most && std::getline(list, line);) {
        const std::size_t start = line.find_first_not_of(' ');
        const std::size_t end = line.find(':');
        if (end != std::string::npos && start < end) { // the heading has no colon
            result.push_back(line.substr(start, end - start));
        }
    }
    return result;
}

std::optional<unsigned> indexOf(int socket, const std::string& name) {
    ifreq request = requestFor(name);
    return ::ioctl(socket, SIOCGIFINDEX, &request) == 0
               ? std::optional(static_cast<unsigned>(request.ifr_ifindex))
               : std::nullopt;
}

std::optional<std::string> nameOf(int socket, unsigned index) {
    ifreq request{};
    request.ifr_ifindex = static_cast<int>(index);
    return ::ioctl(socket, SIOCGIFNAME, &request) == 0 ? std::optional<std::string>(&request.ifr_name[0])
                                                       : std::nullopt;
}

bool isUpAndNotLoopback(int socket, const std::string& name) {
    ifreq request = requestFor(name);
    return ::ioctl(socket, SIOCGIFFLAGS, &request) == 0
           && (static_cast<unsigned short>(request.ifr_flags) & (IFF_UP | IFF_LOOPBACK)) == IFF_UP;
}

} // namespace tarnwick::NetworkInterfaces
