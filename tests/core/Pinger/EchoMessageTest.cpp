// The bytes of echo requests, and which datagrams count as replies.
#include "core/Pinger/EchoMessage.h"

#include "tests/core/Pinger/EchoReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace tarnwick {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::Optional;

constexpr std::uint64_t id = 0x0123456789ABCDEF;
constexpr std::uint16_t identifier = 0xBEEF;

TEST(EchoRequest, ForIpv4IsTypeEightWithItsChecksumInPlace) {
    EXPECT_THAT(
        echoRequest(id, identifier, ipv4),
        ElementsAre(
            8, 0, 0x8B, 0xD6, 0xBE, 0xEF, 0xCD, 0xEF, 'T', 'A', 'R', 'N', 'W', 'I', 'C', 'K', 0x01, 0x23,
            0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF));
}

TEST(EchoRequest, ForIpv6IsType128AndLeavesTheChecksumToTheSystem) {
    EXPECT_THAT(
        echoRequest(id, identifier, ipv6),
        ElementsAre(
            128, 0, 0, 0, 0xBE, 0xEF, 0xCD, 0xEF, 'T', 'A', 'R', 'N', 'W', 'I', 'C', 'K', 0x01, 0x23, 0x45,
            0x67, 0x89, 0xAB, 0xCD, 0xEF));
}

TEST(EchoRequest, ForAnyOtherFamilyIsTheIpv6One) {
    EXPECT_EQ(echoRequest(id, identifier, AF_UNIX), echoRequest(id, identifier, ipv6));
}

TEST(EchoRequest, OfIdsThatAre65536ApartHasTheSameSequenceButAnotherPayload) {
    const EchoMessage first = echoRequest(7, identifier, ipv6);
    const EchoMessage second = echoRequest(7 + 65'536, identifier, ipv6);

    EXPECT_EQ(first[6], second[6]);
    EXPECT_EQ(first[7], second[7]);
    EXPECT_NE(first, second);
}

TEST(EchoRequest, ChecksummedWithItsChecksumInPlaceGivesZero) {
    EXPECT_EQ(checksum(echoRequest(id, identifier, ipv4)), 0);
}

TEST(Checksum, OfNoBytesIsAllOnes) {
    EXPECT_EQ(checksum({}), 0xFFFF);
}

TEST(Checksum, OfAnAllZeroMessageIsAllOnes) {
    EXPECT_EQ(checksum(EchoMessage{}), 0xFFFF);
}

TEST(Checksum, TakesPairsAsBigEndianWords) {
    EXPECT_EQ(checksum(Bytes{0x12, 0x34}), 0xEDCB);
}

TEST(Checksum, CountsAnOddLastByteAsTheHighOne) {
    EXPECT_EQ(checksum(Bytes{0x12, 0x34, 0x01}), 0xECCB);
}

TEST(Checksum, FoldsTheCarriesBackIn) {
    // The worked example of RFC 1071: the words add up to 0x2DDF0, which folds to 0xDDF2.
    EXPECT_EQ(checksum(Bytes{0x00, 0x01, 0xF2, 0x03, 0xF4, 0xF5, 0xF6, 0xF7}), 0x220D);
}

TEST(Checksum, FoldsUntilNoCarryIsLeft) {
    // 0xFFFF + 0xFFFF + 0x0001 = 0x1FFFF, whose first fold carries once more.
    EXPECT_EQ(checksum(Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x01}), 0xFFFE);
}

TEST(Checksum, HoldsForALongMessage) {
    EXPECT_EQ(checksum(Bytes(65'535 + 1, 0xFF)), 0);
}

struct Family {
    std::int32_t family;
    const char* name;
};

class ReplyOfEitherFamily : public testing::TestWithParam<Family> {
protected:
    [[nodiscard]] static std::int32_t family() { return GetParam().family; }

    [[nodiscard]] static std::optional<std::uint64_t> parse(const Bytes& datagram) {
        return parseReply(datagram, family(), identifier);
    }

    Bytes reply = replyFor(id, identifier, family());
};

INSTANTIATE_TEST_SUITE_P(
    EchoReply, ReplyOfEitherFamily, testing::Values(Family{ipv4, "Ipv4"}, Family{ipv6, "Ipv6"}),
    [](const auto& tested) { return tested.param.name; });

TEST_P(ReplyOfEitherFamily, YieldsItsPingId) {
    EXPECT_THAT(parse(reply), Optional(id));
}

TEST_P(ReplyOfEitherFamily, MayBeLongerThanTheMessage) {
    reply.resize(2048, 0xAA);
    EXPECT_THAT(parse(reply), Optional(id));
}

TEST_P(ReplyOfEitherFamily, OneByteTooShortIsDropped) {
    reply.pop_back();
    EXPECT_EQ(parse(reply), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithoutAnyBytesIsDropped) {
    EXPECT_EQ(parse({}), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, AsALoopedBackRequestIsDropped) {
    const EchoMessage request = echoRequest(id, identifier, family());
    EXPECT_EQ(parse(Bytes(request.begin(), request.end())), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, OfTheOtherFamilysTypeIsDropped) {
    reply[0] = replyType(family() == ipv4 ? ipv6 : ipv4);
    EXPECT_EQ(parse(reply), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithACodeIsDropped) {
    reply[1] = 1;
    EXPECT_EQ(parse(reply), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithAForeignIdentifierIsDropped) {
    EXPECT_EQ(parseReply(reply, family(), identifier + 1), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithASequenceThatIsNotTheLowHalfOfItsIdIsDropped) {
    reply[7] ^= 1;
    EXPECT_EQ(parse(reply), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithAnIdThatDoesNotFitItsSequenceIsDropped) {
    reply[23] ^= 1;
    EXPECT_EQ(parse(reply), std::nullopt);
}

TEST_P(ReplyOfEitherFamily, WithAWrongByteAnywhereInTheMagicIsDropped) {
    for (std::size_t at = 8; at < 16; ++at) {
        Bytes wrong = reply;
        wrong[at] ^= 0x20;
        EXPECT_EQ(parse(wrong), std::nullopt) << "byte " << at;
    }
}

TEST_P(ReplyOfEitherFamily, WithAWrongChecksumIsAccepted) {
    reply[2] ^= 0xFF;
    EXPECT_THAT(parse(reply), Optional(id));
}

TEST_P(ReplyOfEitherFamily, OfIdsThatAre65536ApartAreToldApart) {
    EXPECT_THAT(parse(replyFor(7, identifier, family())), Optional(7U));
    EXPECT_THAT(parse(replyFor(7 + 65'536, identifier, family())), Optional(7U + 65'536U));
}

TEST_P(ReplyOfEitherFamily, MayCarryTheHighestId) {
    constexpr auto highest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_THAT(parse(replyFor(highest, identifier, family())), Optional(highest));
}

TEST(Ipv4Reply, BehindAHeaderOfTwentyBytesIsFoundThere) {
    EXPECT_THAT(
        parseReply(withIpv4Header(replyFor(id, identifier, ipv4), 5), ipv4, identifier), Optional(id));
}

TEST(Ipv4Reply, BehindAHeaderWithOptionsIsFoundThere) {
    EXPECT_THAT(
        parseReply(withIpv4Header(replyFor(id, identifier, ipv4), 6), ipv4, identifier), Optional(id));
}

TEST(Ipv4Reply, BehindTheLongestHeaderIsFoundThere) {
    EXPECT_THAT(
        parseReply(withIpv4Header(replyFor(id, identifier, ipv4), 15), ipv4, identifier), Optional(id));
}

TEST(Ipv4Reply, OneByteTooShortBehindAHeaderIsDropped) {
    Bytes datagram = withIpv4Header(replyFor(id, identifier, ipv4), 5);
    datagram.pop_back();
    EXPECT_EQ(parseReply(datagram, ipv4, identifier), std::nullopt);
}

TEST(Ipv4Reply, BehindAHeaderThatClaimsToBeLongerThanItIsIsDropped) {
    Bytes datagram = withIpv4Header(replyFor(id, identifier, ipv4), 5);
    datagram[0] = 0x46;
    EXPECT_EQ(parseReply(datagram, ipv4, identifier), std::nullopt);
}

TEST(Ipv4Reply, WithoutTheRoomThatItsHeaderClaimsIsDropped) {
    EXPECT_EQ(parseReply(Bytes{0x4F}, ipv4, identifier), std::nullopt);
}

TEST(Ipv6Reply, IsNeverLookedForBehindAHeader) {
    EXPECT_EQ(parseReply(withIpv4Header(replyFor(id, identifier, ipv6), 5), ipv6, identifier), std::nullopt);
}

} // namespace
} // namespace tarnwick
