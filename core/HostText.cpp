#include "core/HostText.h"

#include "core/Text.h"
#include "core/Utf8.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <system_error>

namespace tarnwick {

namespace {

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isScheme(std::string_view text) {
    const auto belongs = [](char character) {
        return isLetter(character) || isDigit(character) || character == '+' || character == '-'
               || character == '.';
    };
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, belongs);
}

/// The part of a URL that names the host: user name and port are still there, the rest is gone.
std::string_view authorityOf(std::string_view text) {
    if (const std::size_t end = text.find("://");
        end != std::string_view::npos && isScheme(text.substr(0, end))) {
        text.remove_prefix(end);
        text.remove_prefix(3);
    } else if (text.starts_with("//")) {
        text.remove_prefix(2);
    }
    return text.substr(0, text.find_first_of("/?#"));
}

std::string_view withoutUser(std::string_view authority) {
    return authority.substr(authority.rfind('@') + 1); // `npos` plus one is the beginning
}

bool isPort(std::string_view text) {
    std::uint16_t port = 0;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [behind, error] = std::from_chars(begin, end, port);
    return error == std::errc{} && behind == end;
}

/// Letters of other scripts may be in a name: the resolver translates them.
bool mayBeInName(char32_t character) {
    if (character < 0x80) {
        const char ascii = static_cast<char>(character);
        return isLetter(ascii) || isDigit(ascii) || ascii == '-' || ascii == '_' || ascii == '.';
    }
    return !Text::isControl(character) && !Text::changesDirection(character)
           && character != Utf8::replacement;
}

/// The name system's. Letters of other scripts take more room there; the resolver tells of that.
constexpr std::size_t longestPart = 63;

std::optional<HostMistake> mistakeInName(std::string_view name) {
    if (name.empty()) {
        return HostMistake::noHost;
    }
    if (name.starts_with('.') || name.ends_with('.') || name.find("..") != std::string_view::npos) {
        return HostMistake::emptyPart;
    }
    if (name.starts_with('-')) {
        return HostMistake::dash;
    }
    std::size_t letters = 0; // since the last dot
    bool hasLongPart = false;
    for (std::string_view rest = name; !rest.empty();) {
        const char32_t character = Utf8::takeCharacter(rest);
        if (!mayBeInName(character)) {
            return HostMistake::character;
        }
        letters = character == U'.' ? 0 : letters + 1;
        hasLongPart = hasLongPart || letters > longestPart;
    }
    return hasLongPart ? std::optional(HostMistake::longPart) : std::nullopt;
}

/// An IPv4 address in the order of the host's bytes.
bool isOfOneMachine(in_addr_t address) {
    return address != INADDR_ANY && address != INADDR_BROADCAST && !IN_MULTICAST(address);
}

using HostOrMistake = std::variant<std::string, HostMistake>;

HostOrMistake nameOrMistake(std::string_view name) {
    // At the end of a name the dot stands for the root of the name system.
    if (name.size() > 1 && name.ends_with('.')) {
        name.remove_suffix(1);
    }
    if (const auto mistake = mistakeInName(name)) {
        return *mistake;
    }
    // As the resolver reads it: "0" is an address too.
    in_addr address{};
    if (::inet_aton(std::string(name).c_str(), &address) != 0 && !isOfOneMachine(ntohl(address.s_addr))) {
        return HostMistake::notOne;
    }
    return std::string(name);
}

/// An IPv4 address in the notation of IPv6, as "::ffff:192.0.2.1", is reached over IPv4 only.
std::string mappedAddress(const in6_addr& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &address.s6_addr[sizeof(in6_addr) - sizeof(in_addr)], text.data(), text.size());
    return {text.data()};
}

/// `otherwise` where the text is no IPv6 address, with or without a zone.
HostOrMistake addressOrMistake(std::string_view text, HostMistake otherwise) {
    const std::size_t percent = text.find('%');
    const std::string_view zone = percent != std::string_view::npos ? text.substr(percent) : "";
    in6_addr address{};
    if (::inet_pton(AF_INET6, std::string(text.substr(0, percent)).c_str(), &address) != 1) {
        return otherwise;
    }
    if (IN6_IS_ADDR_UNSPECIFIED(&address) || IN6_IS_ADDR_MULTICAST(&address)) {
        return HostMistake::notOne;
    }
    if (IN6_IS_ADDR_LINKLOCAL(&address) && zone.size() <= 1) {
        return HostMistake::noZone;
    }
    if (zone.size() == 1 || Text::printable(zone) != zone) {
        return otherwise;
    }
    return IN6_IS_ADDR_V4MAPPED(&address) ? nameOrMistake(mappedAddress(address)) : std::string(text);
}

HostOrMistake inBrackets(std::string_view text) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) {
        return HostMistake::brackets;
    }
    const std::string_view behind = text.substr(end + 1);
    if (!behind.empty() && !(behind.starts_with(':') && isPort(behind.substr(1)))) {
        return HostMistake::port;
    }
    return addressOrMistake(text.substr(1, end - 1), HostMistake::brackets);
}

HostOrMistake withoutPort(std::string_view text) {
    if (text.starts_with('[')) {
        return inBrackets(text);
    }
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return nameOrMistake(text);
    }
    if (text.find(':', colon + 1) == std::string_view::npos) {
        return isPort(text.substr(colon + 1)) ? nameOrMistake(text.substr(0, colon)) : HostMistake::port;
    }
    return addressOrMistake(text, HostMistake::notAddress);
}

} // namespace

HostOrMistake hostIn(std::string_view text) {
    text = Text::trimmed(text);
    if (text.empty()) {
        return HostMistake::empty;
    }
    const std::string_view host = withoutUser(authorityOf(text));
    if (host.size() > longestHost) {
        return HostMistake::tooLong;
    }
    return Text::hasSpace(host) ? HostMistake::blank : withoutPort(host);
}

std::string_view reason(HostMistake mistake) {
    switch (mistake) {
    case HostMistake::empty:
        break;
    case HostMistake::noHost:
        return "the host itself is missing";
    case HostMistake::tooLong:
        return "it is too long";
    case HostMistake::blank:
        return "it has a blank in it";
    case HostMistake::character:
        return "it has a character that no host name has";
    case HostMistake::emptyPart:
        return "a part of its name is empty";
    case HostMistake::dash:
        return "it begins with a dash";
    case HostMistake::longPart:
        return "a part of its name has more than 63 letters";
    case HostMistake::notOne:
        return "it is not the address of one machine";
    case HostMistake::port:
        return "what follows the colon is no port number";
    case HostMistake::brackets:
        return "its brackets do not hold an IPv6 address";
    case HostMistake::notAddress:
        return "it has colons, but is no IPv6 address";
    case HostMistake::noZone:
        return "a link-local address needs its interface, as in fe80::1%eth0";
    }
    return "it is empty";
}

} // namespace tarnwick
