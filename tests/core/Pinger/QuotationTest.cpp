// Which quotations in error messages are of our requests.
#include "core/Pinger/EchoMessage.h"

#include "tests/core/Pinger/EchoReplies.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using namespace test;

constexpr std::uint16_t usedIdentifier = 0x4242;
constexpr std::uint64_t quotedId = 0x1122334455667788;

class Quotation : public testing::TestWithParam<std::int32_t> {
protected:
    [[nodiscard]] Bytes whole() const {
        const EchoMessage request = echoRequest(quotedId, usedIdentifier, GetParam());
        return {request.begin(), request.end()};
    }

    [[nodiscard]] std::optional<QuotedRequest> parse(const Bytes& quotation) const {
        return parseQuotation(quotation, GetParam(), usedIdentifier);
    }
};

INSTANTIATE_TEST_SUITE_P(Families, Quotation, testing::Values(ipv4, ipv6), [](const auto& tested) {
    return tested.param == ipv4 ? "Ipv4" : "Ipv6";
});

TEST_P(Quotation, OfTheWholeRequestTellsItsId) {
    const auto request = parse(whole());

    ASSERT_TRUE(request);
    EXPECT_EQ(request->sequence, 0x7788);
    EXPECT_EQ(request->id, quotedId);
}

TEST_P(Quotation, MayHaveMoreBehindTheRequest) {
    Bytes quotation = whole();
    quotation.resize(128);

    EXPECT_EQ(parse(quotation).value().id, quotedId);
}

TEST_P(Quotation, MayEndAnywhereBehindTheHeader) {
    for (std::size_t size = 8; size < echoMessageSize; ++size) {
        Bytes quotation = whole();
        quotation.resize(size);

        ASSERT_TRUE(parse(quotation)) << size;
        EXPECT_EQ(parse(quotation)->sequence, 0x7788);
        EXPECT_EQ(parse(quotation)->id, std::nullopt);
    }
}

TEST_P(Quotation, WithoutTheWholeHeaderIsDropped) {
    for (std::size_t size = 0; size < 8; ++size) {
        Bytes quotation = whole();
        quotation.resize(size);

        EXPECT_FALSE(parse(quotation)) << size;
    }
}

TEST_P(Quotation, OfAnotherMessageIsDropped) {
    // Type, code, identifier, sequence, mark and id; not the checksum, which routers may have changed.
    for (const unsigned offset : {0U, 1U, 4U, 5U, 6U, 7U, 8U, 15U, 22U, 23U}) {
        Bytes quotation = whole();
        quotation[offset] ^= 0x01;

        EXPECT_FALSE(parse(quotation)) << offset;
    }
}

TEST_P(Quotation, OfAnotherMarkIsDroppedAsFarAsItIsQuoted) {
    Bytes quotation = whole();
    quotation[9] ^= 0x01;
    quotation.resize(10);

    EXPECT_FALSE(parse(quotation));
}

} // namespace
} // namespace tarnwick
