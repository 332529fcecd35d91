// Probes to the loopback address, which the kernel answers. What routers answer is tried in the chain
// laboratory.
#include "core/Prober/SystemProbeNetwork.h"

#include "core/Pinger/EchoMessage.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/core/Pinger/PingSockets.h"
#include "tests/support/LoopTurn.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using namespace test;

class SystemProbeNetworkTest : public testing::TestWithParam<Loopback> {
protected:
    void SetUp() override {
        TARNWICK_NEED_PING_SOCKETS(GetParam());
        auto opened = network.open(GetParam().family, [this] { receive(); });
        ASSERT_TRUE(std::holds_alternative<std::unique_ptr<ProbeSocket>>(opened));
        socket = std::move(std::get<std::unique_ptr<ProbeSocket>>(opened));
    }

    void receive() {
        while (const auto answer = socket->receive()) {
            answers.push_back(*answer);
        }
    }

    /// False when it has not become so many within five seconds.
    [[nodiscard]] bool hasAnswers(std::size_t count) {
        const double deadline = loop.now() + 5;
        while (answers.size() < count && loop.now() < deadline) {
            test::runOneTurn(loop, 0.1);
        }
        return answers.size() == count;
    }

    EpollRunLoop loop;
    SystemProbeNetwork network{loop};
    std::vector<ProbeAnswer> answers;
    std::unique_ptr<ProbeSocket> socket;
};

INSTANTIATE_TEST_SUITE_P(
    Loopback, SystemProbeNetworkTest, testing::Values(ipv4Loopback, ipv6Loopback),
    [](const auto& tested) { return tested.param.name; });

TEST_P(SystemProbeNetworkTest, TheHostsReplyTellsItsAddressAndTheRequest) {
    const double before = loop.now();
    ASSERT_TRUE(socket->send(0x1122334455667788, addressOf(GetParam()), 1));

    ASSERT_TRUE(hasAnswers(1));
    EXPECT_EQ(answers[0].kind, ProbeAnswer::Kind::reply);
    EXPECT_EQ(answers[0].id, 0x1122334455667788);
    EXPECT_EQ(answers[0].sender, GetParam().address);
    EXPECT_GE(answers[0].at, before);
}

TEST_P(SystemProbeNetworkTest, EachRequestHasItsOwnAnswer) {
    for (std::uint64_t id = 1; id <= 3; ++id) {
        ASSERT_TRUE(socket->send(id, addressOf(GetParam()), 64));
    }

    ASSERT_TRUE(hasAnswers(3));
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(answers[index].id, index + 1);
    }
}

TEST_P(SystemProbeNetworkTest, NothingWaitsBeforeARequest) {
    EXPECT_EQ(socket->receive(), std::nullopt);
}

TEST_P(SystemProbeNetworkTest, TellsThatAnAddressCanNotBeSentTo) {
    ResolvedAddress cut = addressOf(GetParam());
    cut.sockaddr.resize(4);

    EXPECT_FALSE(socket->send(1, cut, 1));
    EXPECT_FALSE(socket->send(1, addressOf(GetParam()), 256));
}

} // namespace
} // namespace tarnwick
