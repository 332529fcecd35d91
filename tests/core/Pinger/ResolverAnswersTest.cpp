// What is made of the resolver's answer, with a C library resolver of the test's own in the system's place.
#include "core/Pinger/Resolve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <deque>
#include <langinfo.h>
#include <netdb.h>
#include <netinet/in.h>

namespace tarnwick {
namespace {

/// What the C library is asked, and what it answers.
struct ScriptedResolver {
    int code = 0;
    bool canName = true;

    std::string askedHost;
    bool askedService = false;
    addrinfo askedHints{};
    std::string askedEncoding; ///< in which the C library reads the host
    int freed = 0;
    int namingFlags = -1;

    std::deque<sockaddr_storage> addresses;
    std::deque<addrinfo> entries;

    void add(int family, const char* text, int protocol = IPPROTO_UDP) {
        sockaddr_storage& address = addresses.emplace_back();
        address.ss_family = static_cast<sa_family_t>(family);
        socklen_t length = sizeof(sockaddr_in);
        if (family == AF_INET6) {
            inet_pton(family, text, &reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr);
            length = sizeof(sockaddr_in6);
        } else {
            inet_pton(AF_INET, text, &reinterpret_cast<sockaddr_in*>(&address)->sin_addr);
        }
        link(
            {.ai_flags = 0,
             .ai_family = family,
             .ai_socktype = SOCK_DGRAM,
             .ai_protocol = protocol,
             .ai_addrlen = length,
             .ai_addr = reinterpret_cast<sockaddr*>(&address),
             .ai_canonname = nullptr,
             .ai_next = nullptr});
    }

    void addWithoutAddress(int family) {
        addrinfo entry{};
        entry.ai_family = family;
        link(entry);
    }

    addrinfo* list() { return entries.empty() ? nullptr : &entries.front(); }

private:
    void link(const addrinfo& entry) {
        entries.push_back(entry);
        if (entries.size() > 1) {
            entries[entries.size() - 2].ai_next = &entries.back();
        }
    }
};

ScriptedResolver* scripted = nullptr;

} // namespace
} // namespace tarnwick

using tarnwick::scripted;

extern "C" {

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** result) {
    scripted->askedHost = host;
    scripted->askedService = service != nullptr;
    scripted->askedHints = *hints;
    scripted->askedEncoding = nl_langinfo(CODESET);
    *result = scripted->code == 0 ? scripted->list() : nullptr;
    return scripted->code;
}

void freeaddrinfo(addrinfo* list) {
    scripted->freed += list == scripted->list() ? 1 : 100;
}

int getnameinfo(
    const sockaddr* address, socklen_t, char* host, socklen_t hostLength, char*, socklen_t, int flags) {
    scripted->namingFlags = flags;
    if (!scripted->canName) {
        return EAI_FAIL;
    }
    const void* bytes =
        address->sa_family == AF_INET
            ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr)
            : &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    return inet_ntop(address->sa_family, bytes, host, hostLength) != nullptr ? 0 : EAI_FAIL;
}

} // extern "C"

namespace tarnwick {
namespace {

using testing::ElementsAre;

class ResolverAnswers : public testing::Test {
protected:
    ResolverAnswers() { scripted = &resolver; }

    ~ResolverAnswers() override { scripted = nullptr; }

    [[nodiscard]] static std::vector<std::string> displays(const std::string& host = "host.example") {
        const Resolution resolution = resolve(host);
        std::vector<std::string> texts;
        if (const auto* addresses = std::get_if<std::vector<ResolvedAddress>>(&resolution)) {
            for (const ResolvedAddress& address : *addresses) {
                texts.push_back(address.display);
            }
        }
        return texts;
    }

    [[nodiscard]] static std::optional<PingError> error() {
        const Resolution resolution = resolve("host.example");
        const auto* found = std::get_if<PingError>(&resolution);
        return found != nullptr ? std::optional(*found) : std::nullopt;
    }

    ScriptedResolver resolver;
};

TEST_F(ResolverAnswers, AreAskedForDatagramsOfAnyFamilyAndNothingElse) {
    resolver.add(AF_INET, "192.0.2.1");
    static_cast<void>(displays());
    EXPECT_EQ(resolver.askedHost, "host.example");
    EXPECT_FALSE(resolver.askedService);
    EXPECT_EQ(resolver.askedHints.ai_socktype, SOCK_DGRAM);
    EXPECT_EQ(resolver.askedHints.ai_family, AF_UNSPEC);
    EXPECT_EQ(resolver.askedHints.ai_flags, 0);
    EXPECT_EQ(resolver.askedHints.ai_protocol, 0);
}

TEST_F(ResolverAnswers, ForANameBeyondAsciiAreAskedForInItsAsciiForm) {
    const std::string before = nl_langinfo(CODESET);
    ASSERT_NE(before, "UTF-8") << "the program's own locale must not help";
    resolver.add(AF_INET, "192.0.2.1");

    EXPECT_THAT(displays("bücher.example"), ElementsAre("192.0.2.1"));

    EXPECT_EQ(resolver.askedHost, "bücher.example");
    EXPECT_EQ(resolver.askedHints.ai_flags, AI_IDN);
    EXPECT_EQ(resolver.askedEncoding, "UTF-8");
    EXPECT_EQ(nl_langinfo(CODESET), before);
}

TEST_F(ResolverAnswers, KeepTheirOrderAcrossFamilies) {
    resolver.add(AF_INET6, "2001:db8::2");
    resolver.add(AF_INET, "192.0.2.9");
    resolver.add(AF_INET6, "2001:db8::1");
    resolver.add(AF_INET, "192.0.2.1");
    EXPECT_THAT(displays(), ElementsAre("2001:db8::2", "192.0.2.9", "2001:db8::1", "192.0.2.1"));
}

TEST_F(ResolverAnswers, AreNamedByTheirNumbers) {
    resolver.add(AF_INET, "192.0.2.1");
    static_cast<void>(displays());
    EXPECT_EQ(resolver.namingFlags, NI_NUMERICHOST);
}

TEST_F(ResolverAnswers, CountOnceHoweverOftenTheyAreRepeated) {
    resolver.add(AF_INET, "192.0.2.1", IPPROTO_UDP);
    resolver.add(AF_INET, "192.0.2.2");
    resolver.add(AF_INET, "192.0.2.1", IPPROTO_ICMP);
    EXPECT_THAT(displays(), ElementsAre("192.0.2.1", "192.0.2.2"));
}

TEST_F(ResolverAnswers, OfOtherFamiliesAreLeftOut) {
    resolver.add(AF_UNIX, "192.0.2.8");
    resolver.add(AF_INET, "192.0.2.1");
    resolver.add(AF_APPLETALK, "192.0.2.9");
    EXPECT_THAT(displays(), ElementsAre("192.0.2.1"));
}

TEST_F(ResolverAnswers, WithoutAnAddressAreLeftOut) {
    resolver.addWithoutAddress(AF_INET);
    resolver.add(AF_INET, "192.0.2.1");
    resolver.addWithoutAddress(AF_INET6);
    EXPECT_THAT(displays(), ElementsAre("192.0.2.1"));
}

TEST_F(ResolverAnswers, ThatCannotBeNamedHaveAnEmptyText) {
    resolver.add(AF_INET, "192.0.2.1");
    resolver.canName = false;
    EXPECT_THAT(displays(), ElementsAre(""));
}

TEST_F(ResolverAnswers, WithoutAnyUsableAddressAreAnError) {
    resolver.add(AF_UNIX, "192.0.2.8");
    EXPECT_EQ(error(), PingError::resolution("no IPv4 or IPv6 address"));
}

TEST_F(ResolverAnswers, WithoutAListAreAnErrorInTheSystemsWords) {
    EXPECT_EQ(error(), PingError::resolution(gai_strerror(0)));
}

class ResolverError : public ResolverAnswers, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(
    Resolve, ResolverError, testing::Values(EAI_NONAME, EAI_AGAIN, EAI_FAIL, EAI_MEMORY, EAI_SYSTEM));

TEST_P(ResolverError, IsPassedOnInTheSystemsWords) {
    resolver.code = GetParam();
    EXPECT_EQ(error(), PingError::resolution(gai_strerror(GetParam())));
}

TEST_F(ResolverAnswers, AreFreedOnce) {
    resolver.add(AF_INET, "192.0.2.1");
    resolver.add(AF_INET, "192.0.2.2");
    static_cast<void>(displays());
    EXPECT_EQ(resolver.freed, 1);
}

TEST_F(ResolverAnswers, AreFreedOnceWhenNoneIsUsable) {
    resolver.add(AF_UNIX, "192.0.2.8");
    static_cast<void>(error());
    EXPECT_EQ(resolver.freed, 1);
}

} // namespace
} // namespace tarnwick
