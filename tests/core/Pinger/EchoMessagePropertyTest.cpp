// Any datagram at all, judged a second time by the rules written out plainly.
#include "core/Pinger/EchoMessage.h"

#include "tests/core/Pinger/EchoReplies.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {
namespace {

using namespace test;

/// The rules of acceptance, one after the other.
std::optional<std::uint64_t> plainlyParsed(
    const Bytes& datagram, std::int32_t family, std::uint16_t identifier) {
    const bool isIpv4 = family == ipv4;
    std::size_t start = 0;
    if (isIpv4 && !datagram.empty() && datagram[0] / 16 == 4) {
        start = datagram[0] % 64 * 4U;
    }
    if (datagram.size() < start + 8 + 8 + 8) {
        return std::nullopt;
    }
    const auto byte = [&](std::size_t at) { return std::uint64_t{datagram[start + at]}; };
    if (byte(0) != (isIpv4 ? 0U : 129U) || byte(1) != 0) {
        return std::nullopt;
    }
    if (std::string(
            datagram.begin() + static_cast<std::ptrdiff_t>(start) + 8,
            datagram.begin() + static_cast<std::ptrdiff_t>(start) + 16)
        != "TARNWICK") {
        return std::nullopt;
    }
    if (byte(4) * 256 + byte(5) != identifier) {
        return std::nullopt;
    }
    std::uint64_t id = 0;
    for (std::size_t at = 16; at < 24; ++at) {
        id = id * 256 + byte(at);
    }
    return byte(6) * 256 + byte(7) == id % 65'536 ? std::optional(id) : std::nullopt;
}

rc::Gen<std::int32_t> anyFamily() {
    return rc::gen::element(ipv4, ipv6);
}

rc::Gen<std::uint8_t> headerWords() {
    return rc::gen::inRange<std::uint8_t>(5, 16);
}

/// A good reply, perhaps behind a header, in which a few bytes may be changed and the end be cut or
/// prolonged.
Bytes nearlyGoodReply(std::uint16_t identifier, std::int32_t family) {
    Bytes datagram = replyFor(*rc::gen::arbitrary<std::uint64_t>(), identifier, family);
    if (*rc::gen::arbitrary<bool>()) {
        datagram = withIpv4Header(datagram, *rc::gen::inRange<std::uint8_t>(1, 16));
    }
    const int changes = *rc::gen::inRange(0, 3);
    for (int change = 0; change < changes; ++change) {
        datagram[*rc::gen::inRange<std::size_t>(0, datagram.size())] = *rc::gen::arbitrary<std::uint8_t>();
    }
    if (*rc::gen::arbitrary<bool>()) {
        datagram.resize(*rc::gen::inRange<std::size_t>(0, 100));
    }
    datagram.shrink_to_fit(); // so that reading past the end is noticed
    return datagram;
}

TEST(ParseReplyProperty, JudgesArbitraryBytesByTheRules) {
    EXPECT_TRUE(rc::check("arbitrary bytes", [](const Bytes& datagram, std::uint16_t identifier) {
        const std::int32_t family = *anyFamily();
        RC_ASSERT(parseReply(datagram, family, identifier) == plainlyParsed(datagram, family, identifier));
    }));
}

TEST(ParseReplyProperty, JudgesNearlyGoodRepliesByTheRules) {
    EXPECT_TRUE(rc::check("nearly good replies", [](std::uint16_t identifier) {
        const std::int32_t family = *anyFamily();
        const Bytes datagram = nearlyGoodReply(identifier, family);
        const std::optional<std::uint64_t> expected = plainlyParsed(datagram, family, identifier);
        RC_CLASSIFY(expected.has_value(), "accepted");
        RC_ASSERT(parseReply(datagram, family, identifier) == expected);
    }));
}

TEST(EchoMessageProperty, GivesEveryIdBackWhateverTheHeader) {
    EXPECT_TRUE(rc::check("round trip", [](std::uint64_t id, std::uint16_t identifier) {
        const std::int32_t family = *anyFamily();
        const Bytes reply = replyFor(id, identifier, family);
        RC_ASSERT(parseReply(reply, family, identifier) == id);
        if (family == ipv4) {
            RC_ASSERT(parseReply(withIpv4Header(reply, *headerWords()), family, identifier) == id);
        }
    }));
}

TEST(EchoMessageProperty, IsRecognizedByNoOtherIdentifier) {
    EXPECT_TRUE(rc::check("foreign identifier", [](std::uint64_t id, std::uint16_t own, std::uint16_t other) {
        RC_PRE(own != other);
        const std::int32_t family = *anyFamily();
        RC_ASSERT(parseReply(replyFor(id, own, family), family, other) == std::nullopt);
    }));
}

TEST(EchoMessageProperty, IsNeverAcceptedWhenItIsCutShort) {
    EXPECT_TRUE(rc::check("cut short", [](std::uint64_t id, std::uint16_t identifier) {
        const Bytes datagram = withIpv4Header(replyFor(id, identifier, ipv4), *headerWords());
        const auto length = *rc::gen::inRange<std::size_t>(0, datagram.size());
        const Bytes cut(datagram.begin(), datagram.begin() + static_cast<std::ptrdiff_t>(length));
        RC_ASSERT(parseReply(cut, ipv4, identifier) == std::nullopt);
    }));
}

TEST(EchoMessageProperty, ChecksumsToZeroWithItsChecksumInPlace) {
    EXPECT_TRUE(rc::check("checksum", [](std::uint64_t id, std::uint16_t identifier) {
        RC_ASSERT(checksum(echoRequest(id, identifier, ipv4)) == 0);
    }));
}

TEST(ChecksumProperty, DoesNotDependOnTheOrderOfTheWords) {
    EXPECT_TRUE(rc::check("word order", [](const Bytes& first, const Bytes& second) {
        RC_PRE(first.size() % 2 == 0 && second.size() % 2 == 0);
        Bytes forward = first;
        forward.insert(forward.end(), second.begin(), second.end());
        Bytes backward = second;
        backward.insert(backward.end(), first.begin(), first.end());
        RC_ASSERT(checksum(forward) == checksum(backward));
    }));
}

} // namespace
} // namespace tarnwick
