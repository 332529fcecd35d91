// The system's own resolver, asked for what it answers without a network.
#include "core/Pinger/Resolve.h"

#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>

namespace tarnwick {
namespace {

using namespace test;
using Addresses = std::vector<ResolvedAddress>;
using testing::SizeIs;

Addresses addressesOf(const std::string& host) {
    const Resolution resolution = resolve(host);
    const auto* addresses = std::get_if<Addresses>(&resolution);
    return addresses != nullptr ? *addresses : Addresses();
}

class Literal : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Resolve, Literal, testing::Values("127.0.0.1", "192.0.2.7", "::1", "2001:db8::9", "fe80::1%lo"));

TEST_P(Literal, GivesExactlyOneAddressThatReadsTheSame) {
    const Addresses addresses = addressesOf(GetParam());
    ASSERT_THAT(addresses, SizeIs(1));
    EXPECT_EQ(addresses[0].display, GetParam());
}

TEST(Resolve, GivesAnIpv4LiteralAsASocketAddressToSendTo) {
    const Addresses addresses = addressesOf("192.0.2.7");
    ASSERT_THAT(addresses, SizeIs(1));
    EXPECT_EQ(addresses[0].family, AF_INET);
    sockaddr_in address{};
    ASSERT_THAT(addresses[0].sockaddr, SizeIs(sizeof address));
    std::memcpy(&address, addresses[0].sockaddr.data(), sizeof address);
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(ntohl(address.sin_addr.s_addr), 0xC0000207);
}

TEST(Resolve, KeepsTheScopeOfALinkLocalAddress) {
    const Addresses addresses = addressesOf("fe80::1%1");
    ASSERT_THAT(addresses, SizeIs(1));
    EXPECT_EQ(addresses[0].family, AF_INET6);
    sockaddr_in6 address{};
    ASSERT_THAT(addresses[0].sockaddr, SizeIs(sizeof address));
    std::memcpy(&address, addresses[0].sockaddr.data(), sizeof address);
    EXPECT_EQ(address.sin6_scope_id, 1U);
}

TEST(Resolve, FindsTheLoopbackAddressOfLocalhostOnce) {
    const Addresses addresses = addressesOf("localhost");
    const auto isLoopback = [](const ResolvedAddress& address) { return address.display == "127.0.0.1"; };
    EXPECT_EQ(std::ranges::count_if(addresses, isLoopback), 1);
}

// None of these is ever asked of a name server: they are no names.
class NoHost : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Resolve, NoHost, testing::Values("1:2:3", "fe80::1%no-such-interface", "a..b"));

TEST_P(NoHost, FailsInTheSystemsWords) {
    addrinfo* list = nullptr;
    const int code = getaddrinfo(GetParam(), nullptr, nullptr, &list);
    ASSERT_NE(code, 0);

    const Resolution resolution = resolve(GetParam());
    const auto* error = std::get_if<PingError>(&resolution);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(*error, PingError::resolution(gai_strerror(code)));
    EXPECT_EQ(error->message(), std::string("Could not resolve host: ") + gai_strerror(code));
}

TEST(Resolve, FailsForANameThatIsTooLongForAnyHost) {
    EXPECT_TRUE(std::holds_alternative<PingError>(resolve(std::string(5000, 'a'))));
}

TEST(Resolve, GivesBothFamiliesOfANameInTheResolversOrder) {
    const test::TemporaryFolder folder;
    writeFile(folder.path() / "hosts", "192.0.2.1 both.test\n2001:db8::1 both.test\n192.0.2.2 both.test\n");
    const std::optional<int> status = exitStatusOf([&folder] {
        if (!havePrivateMounts() || !putInPlace(folder.path() / "hosts", "/etc/hosts")) {
            return noMounts;
        }
        addrinfo hints{};
        hints.ai_socktype = SOCK_DGRAM;
        addrinfo* list = nullptr;
        if (getaddrinfo("both.test", nullptr, &hints, &list) != 0) {
            return 2;
        }
        std::vector<int> order;
        for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
            order.push_back(entry->ai_family);
        }
        freeaddrinfo(list);
        std::vector<int> resolved;
        for (const ResolvedAddress& address : addressesOf("both.test")) {
            resolved.push_back(address.family);
        }
        return resolved.size() == 3 && resolved == order ? 0 : 1;
    });
    if (status == noMounts) {
        TARNWICK_CANNOT_RUN("no hosts file of its own here");
    }
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace tarnwick
