// What a message carries, written and read as values.
#include "platform/bus/BusMessage.h"

#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <fcntl.h>
#include <map>
#include <systemd/sd-bus.h>
#include <tuple>
#include <unistd.h>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using Other = std::monostate;
using Simple = std::variant<Other, bool, std::uint32_t, std::string>;

class BusMessageTest : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        peer_ = &addPeer();
    }

    /// As it arrives at another program.
    template<typename... Values>
    [[nodiscard]] BusMessage arrived(const Values&... values) {
        BusMessage message = peer_->link().newSignal("/path", "test.Signals", "Spoken");
        EXPECT_TRUE(message.append(values...));
        EXPECT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
        return message;
    }

    template<typename Value>
    [[nodiscard]] Value sentAndRead(const Value& value) {
        BusMessage message = arrived(value);
        return std::get<0>(message.read<Value>().value());
    }

    BusPeer* peer_ = nullptr;
};

} // namespace

TEST_F(BusMessageTest, ValuesOfEachTypeArriveAsTheyWere) {
    using Image = std::tuple<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
    const std::vector<Image> images{{2, 1, {0, 127, 255}}, {0, 0, {}}};
    const std::map<std::string, Simple> entries{{"a", true}, {"b", 7U}, {"c", std::string("text")}};
    const std::vector<std::vector<std::string>> lists{{"Control", "Q"}, {}};

    EXPECT_EQ(sentAndRead(true), true);
    EXPECT_EQ(sentAndRead(std::uint8_t{200}), 200);
    EXPECT_EQ(sentAndRead(std::int32_t{-7}), -7);
    EXPECT_EQ(sentAndRead(std::uint32_t{4'000'000'000}), 4'000'000'000U);
    EXPECT_EQ(sentAndRead(std::string("Excellent · 23 ms")), "Excellent · 23 ms");
    EXPECT_EQ(sentAndRead(BusPath{"/MenuBar"}), BusPath{"/MenuBar"});
    EXPECT_EQ(sentAndRead(images), images);
    EXPECT_EQ(sentAndRead(entries), entries);
    EXPECT_EQ(sentAndRead(lists), lists);
}

TEST_F(BusMessageTest, SeveralValuesAreReadTogether) {
    BusMessage message = arrived(std::string("one"), std::int32_t{2});

    EXPECT_EQ((message.read<std::string, std::int32_t>()), std::tuple("one", 2));
}

TEST_F(BusMessageTest, ReadingStartsAtTheFirstValueEachTime) {
    BusMessage message = arrived(std::string("one"), std::int32_t{2});

    EXPECT_EQ(message.read<std::int32_t>(), std::nullopt);
    EXPECT_EQ(message.read<std::string>(), std::tuple("one"));
    EXPECT_EQ(message.read<std::string>(), std::tuple("one"));
}

TEST_F(BusMessageTest, ValuesOfOtherTypesAreNoResult) {
    BusMessage message = arrived(std::vector<std::string>{"text"});

    EXPECT_EQ(message.read<std::string>(), std::nullopt);
    EXPECT_EQ(message.read<bool>(), std::nullopt);
    EXPECT_EQ(message.read<std::vector<std::int32_t>>(), std::nullopt);
    EXPECT_EQ(message.read<std::vector<std::uint8_t>>(), std::nullopt);
    EXPECT_EQ(message.read<std::tuple<std::string>>(), std::nullopt);
    EXPECT_EQ((message.read<std::map<std::string, Simple>>()), std::nullopt);
    EXPECT_EQ(message.read<Simple>(), std::nullopt);
    EXPECT_FALSE(message.read<FileDescriptor>().has_value());
}

TEST_F(BusMessageTest, FewerValuesThanAskedForAreNoResult) {
    BusMessage message = arrived(std::string("one"));

    EXPECT_EQ((message.read<std::string, std::string>()), std::nullopt);
}

TEST_F(BusMessageTest, NoMessageHasNoValues) {
    BusMessage none;

    EXPECT_EQ(none.read<std::string>(), std::nullopt);
    EXPECT_FALSE(none.append(true));
    EXPECT_FALSE(none.send());
}

TEST_F(BusMessageTest, AVariantOfAnUnknownTypeIsPassedOver) {
    using Nested = std::map<std::string, std::vector<std::int32_t>>;
    BusMessage message = arrived(std::variant<Nested>(Nested{{"key", {1, 2}}}), std::string("next"));

    EXPECT_EQ((message.read<Simple, std::string>()), std::tuple(Simple(), "next"));
}

TEST_F(BusMessageTest, AVariantThatMustHaveACertainTypeIsNoResultWithAnother) {
    BusMessage message = arrived(std::variant<bool>(true));

    EXPECT_EQ(message.read<std::variant<std::uint32_t>>(), std::nullopt);
}

TEST_F(BusMessageTest, AVariantOfAKnownTypeWithUnknownContentsIsNoResult) {
    using Numbers = std::vector<std::variant<std::uint32_t>>;
    using Texts = std::vector<std::variant<std::string>>;
    BusMessage message = arrived(std::variant<Texts>(Texts{"text"}));

    EXPECT_EQ((message.read<std::variant<Other, Numbers, bool>>()), std::nullopt);
}

TEST_F(BusMessageTest, AVariantInsideAVariantIsWhatTheInnerOneHolds) {
    using Inner = std::variant<std::uint32_t>;
    using Middle = std::variant<Inner>;
    BusMessage message = arrived(std::variant<Middle>(Middle(Inner(7U))), std::string("next"));

    EXPECT_EQ((message.read<Simple, std::string>()), std::tuple(Simple(7U), "next"));
}

TEST_F(BusMessageTest, ADescriptorArrivesAsACopyThatStartedProgramsDoNotGet) {
    const FileDescriptor original(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    BusMessage message = arrived(original);

    const auto copy = message.read<FileDescriptor>();

    ASSERT_TRUE(copy.has_value());
    EXPECT_NE(std::get<0>(*copy).get(), original.get());
    EXPECT_EQ(::fcntl(std::get<0>(*copy).get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(BusMessageTest, TextIsSentAsValidUtf8) {
    EXPECT_EQ(sentAndRead(std::string("caf\xe9")), "caf\uFFFD");
    EXPECT_EQ(sentAndRead(std::string("a\0b", 3)), "ab");
}

TEST_F(BusMessageTest, WhatIsNoPathOrNoTypeCannotBeSent) {
    BusMessage message = peer_->link().newSignal("/path", "test.Signals", "Spoken");

    EXPECT_FALSE(message.append(BusPath{"no path"}));
    EXPECT_FALSE(message.append(Simple()));
}

} // namespace tarnwick
