#include "core/Pinger/Resolve.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tarnwick {

namespace {

/// Roomy enough for any numeric address with its scope, as the C library documents.
constexpr std::size_t longestHostText = 1025;

struct FreeAddressList {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

/// While it lives, the C library reads this thread's texts as UTF-8, whatever the user's locale.
class Utf8Thread {
public:
    Utf8Thread() : locale_(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (locale_ != nullptr) {
            before_ = ::uselocale(locale_);
        }
    }

    Utf8Thread(const Utf8Thread&) = delete;
    Utf8Thread& operator=(const Utf8Thread&) = delete;

    ~Utf8Thread() {
        if (locale_ != nullptr) {
            ::uselocale(before_);
            ::freelocale(locale_);
        }
    }

private:
    locale_t locale_;
    locale_t before_ = nullptr;
};

bool isAscii(const std::string& text) {
    return std::ranges::all_of(text, [](unsigned char byte) { return byte < 0x80; });
}

/// Name servers know a name beyond ASCII in a form of ASCII letters ("xn--..."): the C library translates it,
/// for which it loads libidn2.
int askFor(const std::string& host, addrinfo hints, addrinfo** found) {
    if (isAscii(host)) {
        return ::getaddrinfo(host.c_str(), nullptr, &hints, found);
    }
    const Utf8Thread utf8;
    hints.ai_flags |= AI_IDN;
    return ::getaddrinfo(host.c_str(), nullptr, &hints, found);
}

std::string numericText(const addrinfo& entry) {
    std::array<char, longestHostText> buffer{};
    getnameinfo(entry.ai_addr, entry.ai_addrlen, buffer.data(), buffer.size(), nullptr, 0, NI_NUMERICHOST);
    return {buffer.data()};
}

ResolvedAddress addressOf(const addrinfo& entry) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(entry.ai_addr);
    return {entry.ai_family, {bytes, bytes + entry.ai_addrlen}, numericText(entry)};
}

bool isUsable(const addrinfo& entry) {
    return (entry.ai_family == AF_INET || entry.ai_family == AF_INET6) && entry.ai_addr != nullptr;
}

} // namespace

Resolution resolve(const std::string& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    const int code = askFor(host, hints, &found);
    const std::unique_ptr<addrinfo, FreeAddressList> list(found);
    if (code != 0 || !list) {
        return PingError::resolution(gai_strerror(code));
    }
    std::vector<ResolvedAddress> addresses;
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
        if (!isUsable(*entry)) {
            continue;
        }
        ResolvedAddress address = addressOf(*entry);
        if (std::ranges::find(addresses, address) == addresses.end()) {
            addresses.push_back(std::move(address));
        }
    }
    if (addresses.empty()) {
        return PingError::resolution("no IPv4 or IPv6 address");
    }
    return addresses;
}

} // namespace tarnwick
