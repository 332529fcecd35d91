// The pinger on a simulated network: starting, sending, matching answers, moving between addresses, stopping.
#include "core/Pinger/Pinger.h"

#include "tests/simulation/VirtualNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <memory>
#include <netinet/in.h>

namespace tarnwick::simulation {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t identifier = 0x1234;
constexpr double deadline = 4;
constexpr auto first = "192.0.2.1";
constexpr auto second = "192.0.2.2";
constexpr auto overIPv6 = "2001:db8::1";

std::string text(const Pinger::Event& event) {
    if (const auto* started = std::get_if<Pinger::Started>(&event)) {
        return "started " + started->address.display;
    }
    if (const auto* switched = std::get_if<Pinger::Switched>(&event)) {
        return "switched " + switched->address.display;
    }
    if (const auto* failed = std::get_if<Pinger::Failed>(&event)) {
        return "failed: " + failed->error.message();
    }
    return "reply " + std::to_string(std::get<Pinger::Reply>(event).id);
}

std::vector<ResolvedAddress> addresses(const std::vector<std::string>& texts) {
    std::vector<ResolvedAddress> list;
    for (const std::string& each : texts) {
        list.push_back(VirtualNetwork::address(each));
    }
    return list;
}

class PingerTest : public testing::Test {
protected:
    /// Answers come only when a test delivers them.
    PingerTest() {
        network.setBehavior([](const SentRequest&) { return Answer{.copies = 0}; });
        pinger = std::make_unique<Pinger>(loop, network, "host", identifier, deadline);
        listen();
    }

    void listen() {
        pinger->onEvent = [this](const Pinger::Event& event) { events.push_back(text(event)); };
    }

    void resolveTo(const std::vector<std::string>& texts, double delay = 0) {
        network.setHost("host", addresses(texts), delay);
    }

    /// Starts on these addresses and forgets the event of it.
    void startOn(const std::vector<std::string>& texts) {
        resolveTo(texts);
        pinger->start();
        loop.runPending();
        events.clear();
    }

    void answer(std::uint64_t id, std::int32_t family = AF_INET) {
        network.deliver(family, VirtualNetwork::echoReply(id, identifier, family));
    }

    void sendAll(std::uint64_t from, std::uint64_t to) {
        for (std::uint64_t id = from; id <= to; ++id) {
            pinger->send(id);
        }
    }

    /// The next send fails, which moves the pinger to its next address.
    void failToSend(std::uint64_t id) {
        network.setSendFails(true);
        EXPECT_FALSE(pinger->send(id));
        network.setSendFails(false);
    }

    void destroyAtTheNextEvent() {
        events.clear();
        pinger->onEvent = [this](const Pinger::Event& event) {
            events.push_back(text(event));
            pinger.reset();
        };
    }

    void expectNothingAfter(const std::string& event) {
        loop.advance(1);
        EXPECT_THAT(events, ElementsAre(event));
        EXPECT_EQ(network.openSockets(), 0U);
    }

    VirtualRunLoop loop;
    VirtualNetwork network{loop};
    std::unique_ptr<Pinger> pinger;
    std::vector<std::string> events;
};

TEST_F(PingerTest, RemembersWhatItWasMadeWith) {
    EXPECT_EQ(pinger->hostName(), "host");
    EXPECT_EQ(pinger->identifier(), identifier);
}

TEST_F(PingerTest, HasNoAddressAndNoSocketBeforeItIsStarted) {
    EXPECT_FALSE(pinger->isRunning());
    EXPECT_EQ(pinger->address(), nullptr);
    EXPECT_THAT(pinger->addresses(), IsEmpty());
}

TEST_F(PingerTest, StartReturnsBeforeTheOutcomeIsTold) {
    resolveTo({first});

    pinger->start();

    EXPECT_THAT(events, IsEmpty());
}

TEST_F(PingerTest, ReportsTheFirstAddressOnceTheSocketsAreOpen) {
    resolveTo({first, second});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("started 192.0.2.1"));
    EXPECT_TRUE(pinger->isRunning());
    EXPECT_EQ(*pinger->address(), VirtualNetwork::address(first));
    EXPECT_EQ(pinger->addresses(), addresses({first, second}));
}

TEST_F(PingerTest, StartsWithTheResolversFirstAddressWhateverItsFamily) {
    resolveTo({overIPv6, first});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("started 2001:db8::1"));
}

TEST_F(PingerTest, OpensOneSocketForEachFamily) {
    startOn({first, overIPv6, second, "2001:db8::2"});

    EXPECT_EQ(network.openSockets(), 2U);
}

TEST_F(PingerTest, IsNotRunningWhileItResolves) {
    resolveTo({first}, 3);

    pinger->start();
    loop.advance(2);

    EXPECT_FALSE(pinger->isRunning());
    EXPECT_FALSE(pinger->send(1));
}

TEST_F(PingerTest, SendingBeforeTheAddressesAreKnownRecordsNothing) {
    resolveTo({first, second});
    EXPECT_FALSE(pinger->send(6));
    pinger->start();
    EXPECT_FALSE(pinger->send(7));
    loop.runPending();
    failToSend(8);
    events.clear();

    answer(6);
    answer(7);

    // Had an early ping been recorded with the first address, its answer would lead back there.
    EXPECT_THAT(events, ElementsAre("reply 6", "reply 7"));
    EXPECT_EQ(network.sent().size(), 1U);
}

TEST_F(PingerTest, AFailedResolutionIsReportedWithItsError) {
    network.setHost("host", PingError::resolution("Name or service not known"));

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("failed: Could not resolve host: Name or service not known"));
    EXPECT_FALSE(pinger->isRunning());
}

TEST_F(PingerTest, NeverTriesAgainByItself) {
    network.setHost("host", PingError::resolution("Name or service not known"));

    pinger->start();
    loop.advance(3600);

    EXPECT_EQ(network.lookups("host"), 1);
    EXPECT_EQ(events.size(), 1U);
}

TEST_F(PingerTest, CanBeStartedAgainAfterAFailure) {
    network.setHost("host", PingError::resolution("Name or service not known"));
    pinger->start();
    loop.runPending();
    events.clear();

    resolveTo({first});
    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("started 192.0.2.1"));
}

TEST_F(PingerTest, AnIPv6OnlyHostWithoutIPv6SocketsFailsWithTheSystemsText) {
    network.setSocketError(AF_INET6, "Address family not supported by protocol");
    resolveTo({overIPv6});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(
        events, ElementsAre("failed: Could not open ICMP socket: Address family not supported by protocol"));
}

TEST_F(PingerTest, AnEmptyResolutionFailsForWantOfAUsableAddress) {
    resolveTo({});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("failed: Could not open ICMP socket: no usable address"));
}

TEST_F(PingerTest, WhenNoFamilyGetsASocketOneOfTheSystemsTextsIsReported) {
    network.setSocketError(AF_INET, "Permission denied");
    network.setSocketError(AF_INET6, "Permission denied");
    resolveTo({first, overIPv6});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("failed: Could not open ICMP socket: Permission denied"));
}

TEST_F(PingerTest, KeepsOnlyAddressesOfFamiliesWithASocketInTheResolversOrder) {
    network.setSocketError(AF_INET6, "Address family not supported by protocol");
    resolveTo({overIPv6, second, "2001:db8::2", first});

    pinger->start();
    loop.runPending();

    EXPECT_THAT(events, ElementsAre("started 192.0.2.2"));
    EXPECT_EQ(pinger->addresses(), addresses({second, first}));
}

TEST_F(PingerTest, SendsTheRequestWithItsIdAndIdentifierToTheCurrentAddress) {
    startOn({first});

    EXPECT_TRUE(pinger->send(0x123456789abcdef0));

    ASSERT_EQ(network.sent().size(), 1U);
    EXPECT_EQ(network.sent()[0].address, first);
    EXPECT_EQ(network.sent()[0].id, 0x123456789abcdef0);
    EXPECT_EQ(network.sent()[0].identifier, identifier);
}

TEST_F(PingerTest, RequestsCarryTheIdentifierThatTheirSocketReallyHas) {
    network.setIdentifier(0x4321);
    startOn({first});

    pinger->send(1);

    EXPECT_EQ(network.sent()[0].identifier, 0x4321);
}

TEST_F(PingerTest, AReplyIsRecognizedByTheIdentifierOfItsOwnSocket) {
    network.setIdentifier(0x4321);
    startOn({first});
    pinger->send(1);

    network.deliver(AF_INET, VirtualNetwork::echoReply(1, 0x4321, AF_INET));

    EXPECT_THAT(events, ElementsAre("reply 1"));
}

TEST_F(PingerTest, AReplyIsReportedWithItsIdAndTheTimeOfItsArrival) {
    startOn({first});
    std::vector<Pinger::Reply> replies;
    pinger->onEvent = [&](const Pinger::Event& event) { replies.push_back(std::get<Pinger::Reply>(event)); };
    network.setBehavior([](const SentRequest&) { return Answer{.delay = 0.25}; });

    const double sent = loop.now();
    pinger->send(99);
    loop.advance(1);

    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].id, 99U);
    EXPECT_EQ(replies[0].at, sent + 0.25);
}

TEST_F(PingerTest, EveryCopyOfAReplyIsReported) {
    startOn({first});
    pinger->send(1);

    answer(1);
    answer(1);

    EXPECT_THAT(events, ElementsAre("reply 1", "reply 1"));
}

TEST_F(PingerTest, AReplyToAPingThatWasNeverSentIsReportedToo) {
    startOn({first});

    answer(4711);

    EXPECT_THAT(events, ElementsAre("reply 4711"));
}

TEST_F(PingerTest, AnswersOverIPv6AreMatchedAsWell) {
    startOn({overIPv6});
    pinger->send(5);

    answer(5, AF_INET6);

    EXPECT_THAT(events, ElementsAre("reply 5"));
}

TEST_F(PingerTest, WithoutAListenerEventsAreDropped) {
    pinger->onEvent = nullptr;
    startOn({first});
    pinger->send(1);
    answer(1);
    listen();

    answer(2);

    EXPECT_THAT(events, ElementsAre("reply 2"));
}

// What is no valid reply.

struct BadDatagram {
    std::string name;
    std::function<void(std::vector<std::uint8_t>&)> spoil;

    friend void PrintTo(const BadDatagram& param, std::ostream* out) { *out << param.name; }
};

class BadDatagramTest : public PingerTest, public testing::WithParamInterface<BadDatagram> {};

TEST_P(BadDatagramTest, IsIgnored) {
    startOn({first});
    pinger->send(1);
    std::vector<std::uint8_t> datagram = VirtualNetwork::echoReply(1, identifier, AF_INET);
    GetParam().spoil(datagram);

    network.deliver(AF_INET, datagram);

    EXPECT_THAT(events, IsEmpty());
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
    [](const auto& instance) { return instance.param.name; });

TEST_F(PingerTest, AFloodOfDatagramsIsReadInBoundedPortions) {
    startOn({first});
    constexpr std::size_t flood = 10000;

    network.deliverTogether(AF_INET, {1, 2, 3}, flood);
    const std::size_t leftAfterOneWakeUp = network.unread();
    network.deliverTogether(AF_INET, {1, 2, 3}, 0);

    EXPECT_GT(leftAfterOneWakeUp, flood / 2);
    EXPECT_LT(network.unread(), leftAfterOneWakeUp);
}

TEST_F(PingerTest, AReplyBehindAFloodIsStillRead) {
    startOn({first});
    pinger->send(1);

    network.deliverTogether(AF_INET, {1, 2, 3}, 1000);
    answer(1);
    while (network.unread() > 0) {
        network.deliverTogether(AF_INET, {}, 0);
    }

    EXPECT_THAT(events, ElementsAre("reply 1"));
}

// Moving between addresses.

TEST_F(PingerTest, MovesOnWhenAnAddressIsSilentForTheWholeDeadline) {
    startOn({first, second});
    for (std::uint64_t id = 0; id < 4; ++id) {
        pinger->send(id);
        loop.advance(1);
    }
    EXPECT_THAT(events, IsEmpty());

    pinger->send(4);

    EXPECT_THAT(events, ElementsAre("switched 192.0.2.2"));
    EXPECT_EQ(pinger->address()->display, second);
}

TEST_F(PingerTest, TheNextRequestAfterAMoveGoesToTheNewAddress) {
    startOn({first, second});
    pinger->send(1);
    loop.advance(deadline);
    pinger->send(2);

    pinger->send(3);

    EXPECT_EQ(network.sent()[1].address, first);
    EXPECT_EQ(network.sent()[2].address, second);
}

TEST_F(PingerTest, AnAnswerFromTheCurrentAddressStartsTheDeadlineAnew) {
    startOn({first, second});
    pinger->send(1);
    loop.advance(3);
    answer(1);

    pinger->send(2);
    loop.advance(3);
    pinger->send(3);

    EXPECT_THAT(events, ElementsAre("reply 1"));
}

TEST_F(PingerTest, AFailedSendMovesOnAtOnce) {
    startOn({first, second});

    failToSend(1);

    EXPECT_THAT(events, ElementsAre("switched 192.0.2.2"));
}

TEST_F(PingerTest, TwoFailedSendsComeBackToTheFirstOfTwoAddresses) {
    startOn({first, second});

    failToSend(1);
    failToSend(2);

    EXPECT_THAT(events, ElementsAre("switched 192.0.2.2", "switched 192.0.2.1"));
}

TEST_F(PingerTest, AFailedSendRaisesNoErrorEvent) {
    startOn({first});

    failToSend(1);

    EXPECT_THAT(events, IsEmpty());
    EXPECT_TRUE(pinger->isRunning());
}

TEST_F(PingerTest, ALoneAddressIsNeverSwitched) {
    startOn({first});
    for (std::uint64_t id = 0; id < 100; ++id) {
        pinger->send(id);
        loop.advance(1);
    }
    failToSend(100);
    answer(3);

    EXPECT_THAT(events, ElementsAre("reply 3"));
}

TEST_F(PingerTest, ALateAnswerLeadsBackToItsAddressFirst) {
    startOn({first, second});
    pinger->send(1);
    failToSend(2);
    events.clear();

    answer(1);

    EXPECT_THAT(events, ElementsAre("switched 192.0.2.1", "reply 1"));
    EXPECT_EQ(pinger->address()->display, first);
}

TEST_F(PingerTest, APingWhoseSendFailedIsRememberedWithItsAddress) {
    startOn({first, second});
    failToSend(1);
    events.clear();

    answer(1);

    EXPECT_THAT(events, ElementsAre("switched 192.0.2.1", "reply 1"));
}

TEST_F(PingerTest, ASecondCopyOfAnAnswerMovesNothing) {
    startOn({first, second});
    pinger->send(1);
    answer(1);
    failToSend(2);
    events.clear();

    answer(1);

    EXPECT_THAT(events, ElementsAre("reply 1"));
}

TEST_F(PingerTest, TheNewestSixtyFourPingsAreRemembered) {
    startOn({first, second});
    sendAll(1, 2);
    failToSend(3);
    sendAll(4, 65);
    events.clear();

    answer(1);
    EXPECT_THAT(events, ElementsAre("reply 1"));
    answer(2);

    EXPECT_THAT(events, ElementsAre("reply 1", "switched 192.0.2.1", "reply 2"));
}

TEST_F(PingerTest, FailsOverBetweenFamilies) {
    startOn({overIPv6, first});
    failToSend(1);

    pinger->send(2);
    answer(2);

    EXPECT_EQ(network.sent().back().address, first);
    EXPECT_THAT(events, ElementsAre("switched 192.0.2.1", "reply 2"));
}

// Stopping, and what belongs to an earlier run.

TEST_F(PingerTest, StoppingClosesTheSocketsAndForgetsTheAddresses) {
    startOn({first, overIPv6});

    pinger->stop();

    EXPECT_EQ(network.openSockets(), 0U);
    EXPECT_FALSE(pinger->isRunning());
    EXPECT_EQ(pinger->address(), nullptr);
    EXPECT_FALSE(pinger->send(1));
}

TEST_F(PingerTest, AResolutionThatEndsAfterTheStopIsDropped) {
    resolveTo({first}, 1);
    pinger->start();

    pinger->stop();
    loop.advance(2);

    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(network.openSockets(), 0U);
}

TEST_F(PingerTest, OfTwoStartsInARowOnlyTheSecondOnesOutcomeIsDelivered) {
    resolveTo({first}, 2);
    pinger->start();
    resolveTo({second}, 1);

    pinger->start();
    loop.advance(3);

    EXPECT_THAT(events, ElementsAre("started 192.0.2.2"));
}

TEST_F(PingerTest, AFailureOfAnEarlierStartIsDroppedToo) {
    network.setHost("host", PingError::resolution("Name or service not known"), 2);
    pinger->start();
    resolveTo({second}, 1);

    pinger->start();
    loop.advance(3);

    EXPECT_THAT(events, ElementsAre("started 192.0.2.2"));
}

TEST_F(PingerTest, ARestartForgetsThePingsOfTheRunBefore) {
    startOn({first, second});
    failToSend(1);

    startOn({first, second});
    failToSend(2);
    events.clear();
    answer(1);

    EXPECT_THAT(events, ElementsAre("reply 1"));
}

TEST_F(PingerTest, ARestartBeginsWithTheFirstAddressAgain) {
    startOn({first, second});
    failToSend(1);

    pinger->start();
    loop.runPending();

    EXPECT_EQ(pinger->address()->display, first);
    EXPECT_EQ(network.openSockets(), 1U);
}

TEST_F(PingerTest, ADestroyedPingerReceivesNothing) {
    resolveTo({first}, 1);
    pinger->start();

    pinger.reset();
    loop.advance(2);

    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(network.openSockets(), 0U);
}

TEST_F(PingerTest, MayBeStoppedByItsListenerWhileDatagramsWait) {
    startOn({first});
    pinger->onEvent = [this](const Pinger::Event& event) {
        events.push_back(text(event));
        pinger->stop();
    };

    network.deliverTogether(AF_INET, VirtualNetwork::echoReply(1, identifier, AF_INET), 3);

    EXPECT_THAT(events, ElementsAre("reply 1"));
    EXPECT_EQ(network.openSockets(), 0U);
}

TEST_F(PingerTest, MayBeDestroyedByItsListenerWhenItStarts) {
    resolveTo({first});
    destroyAtTheNextEvent();

    pinger->start();
    loop.runPending();

    expectNothingAfter("started 192.0.2.1");
}

TEST_F(PingerTest, MayBeDestroyedByItsListenerWhenItFails) {
    resolveTo({});
    destroyAtTheNextEvent();

    pinger->start();
    loop.runPending();

    expectNothingAfter("failed: Could not open ICMP socket: no usable address");
}

TEST_F(PingerTest, MayBeDestroyedByItsListenerWhenASendMovesIt) {
    startOn({first, second});
    destroyAtTheNextEvent();

    failToSend(1);

    expectNothingAfter("switched 192.0.2.2");
}

TEST_F(PingerTest, MayBeDestroyedByItsListenerWhenAReplyMovesIt) {
    startOn({first, second});
    pinger->send(1);
    failToSend(2);
    destroyAtTheNextEvent();

    answer(1);

    expectNothingAfter("switched 192.0.2.1");
}

TEST_F(PingerTest, MayBeDestroyedByItsListenerWhileRepliesWait) {
    startOn({first});
    destroyAtTheNextEvent();

    network.deliverTogether(AF_INET, VirtualNetwork::echoReply(1, identifier, AF_INET), 3);

    expectNothingAfter("reply 1");
}

TEST_F(PingerTest, MayBeRestartedByItsListener) {
    network.setHost("host", PingError::resolution("Name or service not known"));
    pinger->onEvent = [this](const Pinger::Event& event) {
        events.push_back(text(event));
        if (std::holds_alternative<Pinger::Failed>(event)) {
            resolveTo({first});
            pinger->start();
        }
    };

    pinger->start();
    loop.runPending();

    EXPECT_THAT(
        events,
        ElementsAre("failed: Could not resolve host: Name or service not known", "started 192.0.2.1"));
}

} // namespace

} // namespace tarnwick::simulation
