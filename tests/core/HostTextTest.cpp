// Which host stands in what a user typed or pasted, and what can be none.
#include "core/HostText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <set>

namespace tarnwick {

namespace {

using HostOrMistake = std::variant<std::string, HostMistake>;

HostOrMistake host(const std::string& text) {
    return text;
}

struct Understood {
    std::string text;
    std::string host;

    friend void PrintTo(const Understood& param, std::ostream* out) { *out << '"' << param.text << '"'; }
};

class UnderstoodHost : public testing::TestWithParam<Understood> {};

TEST_P(UnderstoodHost, IsFreedFromWhatStandsAroundIt) {
    EXPECT_EQ(hostIn(GetParam().text), host(GetParam().host));
}

INSTANTIATE_TEST_SUITE_P(
    AsItIs, UnderstoodHost,
    testing::Values(
        Understood{"one.example", "one.example"}, Understood{"One-2_x.Example", "One-2_x.Example"},
        Understood{"localhost", "localhost"}, Understood{"1.1.1.1", "1.1.1.1"},
        Understood{"bücher.example", "bücher.example"}, Understood{"例え.テスト", "例え.テスト"},
        Understood{"2606:4700::1111", "2606:4700::1111"}, Understood{"::1", "::1"},
        Understood{"::1:443", "::1:443"}, Understood{"fe80::1%eth0", "fe80::1%eth0"},
        Understood{"64:ff9b::192.0.2.1", "64:ff9b::192.0.2.1"}));

INSTANTIATE_TEST_SUITE_P(
    WhiteSpace, UnderstoodHost,
    testing::Values(Understood{" \tone.example\r\n", "one.example"}, Understood{"\u00A0::1\u3000", "::1"}));

INSTANTIATE_TEST_SUITE_P(
    Url, UnderstoodHost,
    testing::Values(
        Understood{"https://one.example/x", "one.example"}, Understood{"http://one.example", "one.example"},
        Understood{"//one.example/x", "one.example"}, Understood{"one.example/", "one.example"},
        Understood{"one.example/a b?c=https://two.example/#d", "one.example"},
        Understood{"one.example?x", "one.example"}, Understood{"one.example#x", "one.example"},
        Understood{"git+ssh://me@one.example:22/x", "one.example"},
        Understood{"https://me:p@ss@one.example:8443/x", "one.example"},
        Understood{"https://[2606:4700::1111]:443/x", "2606:4700::1111"},
        Understood{"https://bücher.example/x", "bücher.example"},
        Understood{"https://one.example/" + std::string(2000, 'x'), "one.example"}));

INSTANTIATE_TEST_SUITE_P(
    UserPortBracketsAndDot, UnderstoodHost,
    testing::Values(
        Understood{"me@one.example", "one.example"}, Understood{"one.example:443", "one.example"},
        Understood{"1.1.1.1:65535", "1.1.1.1"}, Understood{"one.example:0", "one.example"},
        Understood{"[2606:4700::1111]:443", "2606:4700::1111"}, Understood{"[::1]", "::1"},
        Understood{"[fe80::1%eth0]", "fe80::1%eth0"}, Understood{"one.example.", "one.example"},
        Understood{"1.1.1.1.", "1.1.1.1"}, Understood{"one.example.:443/", "one.example"}));

INSTANTIATE_TEST_SUITE_P(
    Ipv4InIpv6, UnderstoodHost,
    testing::Values(
        Understood{"::ffff:192.0.2.1", "192.0.2.1"}, Understood{"::FFFF:c000:201", "192.0.2.1"},
        Understood{"[::ffff:192.0.2.1]:443", "192.0.2.1"}, Understood{"::ffff:192.0.2.1%lo", "192.0.2.1"}));

struct Mistaken {
    std::string text;
    HostMistake mistake;

    friend void PrintTo(const Mistaken& param, std::ostream* out) { *out << '"' << param.text << '"'; }
};

class MistakenHost : public testing::TestWithParam<Mistaken> {};

TEST_P(MistakenHost, IsNoneForAReason) {
    EXPECT_EQ(hostIn(GetParam().text), HostOrMistake(GetParam().mistake));
}

INSTANTIATE_TEST_SUITE_P(
    Missing, MistakenHost,
    testing::Values(
        Mistaken{"", HostMistake::empty}, Mistaken{" \t\u00A0", HostMistake::empty},
        Mistaken{"https://", HostMistake::noHost}, Mistaken{"/etc/hosts", HostMistake::noHost},
        Mistaken{"file:///x", HostMistake::noHost}, Mistaken{"me@", HostMistake::noHost},
        Mistaken{":443", HostMistake::noHost}, Mistaken{"?", HostMistake::noHost}));

INSTANTIATE_TEST_SUITE_P(
    Name, MistakenHost,
    testing::Values(
        Mistaken{std::string(1025, 'a'), HostMistake::tooLong}, Mistaken{"one example", HostMistake::blank},
        Mistaken{"one.example two.example", HostMistake::blank},
        Mistaken{"https:// one.example", HostMistake::blank}, Mistaken{"one\u00A0b", HostMistake::blank},
        Mistaken{"1,1,1,1", HostMistake::character}, Mistaken{"\"one.example\"", HostMistake::character},
        Mistaken{"*.example", HostMistake::character}, Mistaken{"one\\two", HostMistake::character},
        Mistaken{"one%eth0", HostMistake::character}, Mistaken{"one\x1B[31m", HostMistake::character},
        Mistaken{"one\u009B", HostMistake::character}, Mistaken{"a\u202Eb", HostMistake::character},
        Mistaken{
            "b\xFC"
            "cher.example",
            HostMistake::character},
        Mistaken{std::string("one\0two", 7), HostMistake::character},
        Mistaken{"one..example", HostMistake::emptyPart}, Mistaken{".example", HostMistake::emptyPart},
        Mistaken{"one.example..", HostMistake::emptyPart}, Mistaken{".", HostMistake::emptyPart}));

INSTANTIATE_TEST_SUITE_P(
    ColonsAndBrackets, MistakenHost,
    testing::Values(
        Mistaken{"one.example:https", HostMistake::port}, Mistaken{"one.example:", HostMistake::port},
        Mistaken{"one.example:65536", HostMistake::port}, Mistaken{"one.example:-1", HostMistake::port},
        Mistaken{"me@one.example:path", HostMistake::port}, Mistaken{"http:/one.example", HostMistake::port},
        Mistaken{"http://https://one.example", HostMistake::port}, Mistaken{"[::1]x", HostMistake::port},
        Mistaken{"[::1]:x", HostMistake::port}, Mistaken{"[::1", HostMistake::brackets},
        Mistaken{"[]", HostMistake::brackets}, Mistaken{"[one.example]", HostMistake::brackets},
        Mistaken{"[1.1.1.1]", HostMistake::brackets}, Mistaken{"one.example:1:2", HostMistake::notAddress},
        Mistaken{"2606:4700:1111", HostMistake::notAddress}, Mistaken{":::", HostMistake::notAddress},
        Mistaken{"::1%", HostMistake::notAddress}, Mistaken{"fe80::1%\x1B", HostMistake::notAddress},
        Mistaken{"::1]", HostMistake::notAddress}));

INSTANTIATE_TEST_SUITE_P(
    NoNameOfTheNameSystem, MistakenHost,
    testing::Values(
        Mistaken{"-a", HostMistake::dash}, Mistaken{"--help", HostMistake::dash},
        Mistaken{"https://-a.example", HostMistake::dash},
        Mistaken{std::string(64, 'a'), HostMistake::longPart},
        Mistaken{"a." + std::string(64, 'b') + ".example", HostMistake::longPart}));

INSTANTIATE_TEST_SUITE_P(
    NotOneMachine, MistakenHost,
    testing::Values(
        Mistaken{"::", HostMistake::notOne}, Mistaken{"[::]:80", HostMistake::notOne},
        Mistaken{"::%lo", HostMistake::notOne}, Mistaken{"ff02::1", HostMistake::notOne},
        Mistaken{"ff02::1%eth0", HostMistake::notOne}, Mistaken{"0.0.0.0", HostMistake::notOne},
        Mistaken{"0", HostMistake::notOne}, Mistaken{"::ffff:0.0.0.0", HostMistake::notOne},
        Mistaken{"224.0.0.1", HostMistake::notOne}, Mistaken{"239.255.255.255", HostMistake::notOne},
        Mistaken{"255.255.255.255", HostMistake::notOne},
        Mistaken{"::ffff:255.255.255.255", HostMistake::notOne}));

INSTANTIATE_TEST_SUITE_P(
    JustNot, UnderstoodHost,
    testing::Values(
        Understood{"a-", "a-"}, Understood{std::string(63, 'a') + ".b", std::string(63, 'a') + ".b"},
        Understood{"0.0.0.1", "0.0.0.1"}, Understood{"223.255.255.255", "223.255.255.255"},
        Understood{"240.0.0.1", "240.0.0.1"}, Understood{"255.255.255.254", "255.255.255.254"}));

INSTANTIATE_TEST_SUITE_P(
    LinkLocal, MistakenHost,
    testing::Values(
        Mistaken{"fe80::1", HostMistake::noZone}, Mistaken{"[fe80::1]:22", HostMistake::noZone},
        Mistaken{"febf::1%", HostMistake::noZone}));

} // namespace

TEST(HostMistakeReason, DiffersForEachMistakeAndFitsIntoALine) {
    constexpr std::array all{HostMistake::empty, HostMistake::noHost,    HostMistake::tooLong,
                             HostMistake::blank, HostMistake::character, HostMistake::emptyPart,
                             HostMistake::dash,  HostMistake::longPart,  HostMistake::notOne,
                             HostMistake::port,  HostMistake::brackets,  HostMistake::notAddress,
                             HostMistake::noZone};
    std::set<std::string_view> reasons;
    for (const HostMistake mistake : all) {
        EXPECT_THAT(std::string(reason(mistake)), testing::MatchesRegex("[a-z][^.]+[a-z0]"));
        reasons.insert(reason(mistake));
    }
    EXPECT_EQ(reasons.size(), all.size());
}

} // namespace tarnwick
