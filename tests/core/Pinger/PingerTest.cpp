// The pinger's datagrams on a simulated network. Starting, moving between addresses and stopping:
// cases/pinger.txt.
#include "core/Pinger/Pinger.h"

#include "tests/simulation/VirtualNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/CaseName.h"

#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace tarnwick::simulation {

namespace {

class PingerTest : public testing::Test {
protected:
    static constexpr std::uint16_t identifier = 0x1234;
    static constexpr auto address = "192.0.2.1";

    PingerTest() {
        network.setHost("host", std::vector{VirtualNetwork::address(address)});
        network.setBehavior([](const SentRequest&) { return Answer{.copies = 0}; });
        pinger.onEvent = [this](const Pinger::Event& event) {
            if (const auto* reply = std::get_if<Pinger::Reply>(&event)) {
                replies.push_back(*reply);
            }
        };
    }

    void start() {
        pinger.start();
        loop.runPending();
    }

    void answer(std::uint64_t id, std::uint16_t ofSocket = identifier) {
        network.deliver(AF_INET, VirtualNetwork::echoReply(id, ofSocket, AF_INET));
    }

    VirtualRunLoop loop;
    VirtualNetwork network{loop};
    Pinger pinger{loop, network, "host", identifier, 4};
    std::vector<Pinger::Reply> replies;
};

TEST_F(PingerTest, RemembersWhatItWasMadeWith) {
    EXPECT_EQ(pinger.hostName(), "host");
    EXPECT_EQ(pinger.identifier(), identifier);
}

TEST_F(PingerTest, AFamilyThatIsAbsentDoesNotHideThatTheFirstIsForbidden) {
    network.setHost(
        "host", std::vector{VirtualNetwork::address("2001:db8::1"), VirtualNetwork::address(address)});
    network.setSocketError(AF_INET, "Permission denied");
    network.setSocketError(AF_INET6, "Address family not supported by protocol");
    std::vector<Pinger::Event> events;
    pinger.onEvent = [&events](const Pinger::Event& event) { events.push_back(event); };

    start();

    ASSERT_EQ(events.size(), 1U);
    ASSERT_TRUE(std::holds_alternative<Pinger::Failed>(events[0]));
    EXPECT_EQ(std::get<Pinger::Failed>(events[0]).error, PingError::socket("Permission denied"));
}

TEST_F(PingerTest, SendsTheRequestWithItsIdAndIdentifierToTheCurrentAddress) {
    start();

    EXPECT_TRUE(pinger.send(0x123456789abcdef0).isSent);

    ASSERT_EQ(network.sent().size(), 1U);
    EXPECT_EQ(network.sent()[0].address, address);
    EXPECT_EQ(network.sent()[0].id, 0x123456789abcdef0);
    EXPECT_EQ(network.sent()[0].identifier, identifier);
}

TEST_F(PingerTest, RequestsCarryTheIdentifierThatTheirSocketReallyHas) {
    network.setIdentifier(0x4321);
    start();

    pinger.send(1);

    EXPECT_EQ(network.sent()[0].identifier, 0x4321);
}

TEST_F(PingerTest, AReplyIsRecognizedByTheIdentifierOfItsOwnSocket) {
    network.setIdentifier(0x4321);
    start();
    pinger.send(1);

    answer(1, 0x4321);

    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].id, 1U);
}

TEST_F(PingerTest, AReplyIsReportedWithItsIdAndTheTimeOfItsArrival) {
    start();
    network.setBehavior([](const SentRequest&) { return Answer{.delay = 0.25}; });

    const double sent = loop.now();
    pinger.send(99);
    loop.advance(1);

    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].id, 99U);
    EXPECT_EQ(replies[0].at, sent + 0.25);
}

// What is no valid reply.

struct BadDatagram {
    std::string name;
    std::function<void(std::vector<std::uint8_t>&)> spoil;

    friend void PrintTo(const BadDatagram& param, std::ostream* out) { *out << param.name; }
};

class BadDatagramTest : public PingerTest, public testing::WithParamInterface<BadDatagram> {};

TEST_P(BadDatagramTest, IsIgnored) {
    start();
    pinger.send(1);
    std::vector<std::uint8_t> datagram = VirtualNetwork::echoReply(1, identifier, AF_INET);
    GetParam().spoil(datagram);

    network.deliver(AF_INET, datagram);

    EXPECT_TRUE(replies.empty());
    EXPECT_EQ(network.unread(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    PingerTest, BadDatagramTest,
    testing::Values(
        BadDatagram{"Empty", [](auto& bytes) { bytes.clear(); }},
        BadDatagram{"Truncated", [](auto& bytes) { bytes.resize(23); }},
        BadDatagram{"Request", [](auto& bytes) { bytes[0] = 8; }},
        BadDatagram{"ReplyOfTheOtherFamily", [](auto& bytes) { bytes[0] = 129; }},
        BadDatagram{"ForeignIdentifier", [](auto& bytes) { bytes[5] ^= 1; }},
        BadDatagram{"WrongSequence", [](auto& bytes) { bytes[7] ^= 1; }},
        BadDatagram{"WrongMagic", [](auto& bytes) { bytes[8] ^= 1; }}),
    test::caseName);

TEST_F(PingerTest, AFloodOfDatagramsIsReadInBoundedPortions) {
    start();
    constexpr std::size_t flood = 10000;

    network.deliverTogether(AF_INET, {1, 2, 3}, flood);
    const std::size_t leftAfterOneWakeUp = network.unread();
    network.deliverTogether(AF_INET, {1, 2, 3}, 0);

    EXPECT_GT(leftAfterOneWakeUp, flood / 2);
    EXPECT_LT(network.unread(), leftAfterOneWakeUp);
}

TEST_F(PingerTest, AReplyBehindAFloodIsStillRead) {
    start();
    pinger.send(1);

    network.deliverTogether(AF_INET, {1, 2, 3}, 1000);
    answer(1);
    while (network.unread() > 0) {
        network.deliverTogether(AF_INET, {}, 0);
    }

    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].id, 1U);
}

} // namespace

} // namespace tarnwick::simulation
