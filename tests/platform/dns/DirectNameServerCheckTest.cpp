// Name servers on loopback that answer, refuse, lie and keep quiet.
#include "platform/dns/DirectNameServerCheck.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/core/Required.h"
#include "tests/platform/dns/ScriptedNameServer.h"
#include "tests/platform/linux/NetworkNamespace.h"
#include "tests/support/LoopTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using test::ScriptedNameServer;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using Bytes = ScriptedNameServer::Bytes;
using Messages = std::vector<Bytes>;
using Outcome = NameServerEvidence::Answer;

constexpr std::uint8_t right = 0, failed = 2, noSuchName = 3, refused = 5;

/// The query turned into an answer with this code, and an address where all is right.
Bytes answerTo(Bytes query, std::uint8_t code = right) {
    query[2] = 0x81;
    query[3] = static_cast<std::uint8_t>(0x80 | code);
    query[7] = code == right ? 1 : 0;
    return query;
}

ScriptedNameServer::Script says(std::uint8_t code) {
    return [code](const Bytes& query) { return Messages{answerTo(query, code)}; };
}

Messages nothing(const Bytes& /*query*/) {
    return {};
}

Bytes changed(Bytes message, std::size_t place) {
    message[place] ^= 1;
    return message;
}

auto is(const std::string& address, Outcome answer) {
    return AllOf(Field(&NameServerEvidence::address, address), Field(&NameServerEvidence::answer, answer));
}

class DirectNameServerCheckTest : public testing::Test {
protected:
    /// Longer than any server here takes on the busiest machine; where one is waited for in vain, `shortly`.
    static constexpr double patience = 20;
    static constexpr double shortly = 0.2;

    ScriptedNameServer& addServer(const std::string& address, ScriptedNameServer::Script script) {
        const std::uint16_t port = servers_.empty() ? 0 : servers_.front()->port();
        servers_.push_back(std::make_unique<ScriptedNameServer>(loop_, address, std::move(script), port));
        EXPECT_TRUE(servers_.back()->isOpen());
        addresses_.push_back(address);
        return *servers_.back();
    }

    void makeCheck(double seconds) {
        check_ = std::make_unique<DirectNameServerCheck>(
            loop_, [this] { return addresses_; }, seconds, servers_.empty() ? 9 : servers_.front()->port());
    }

    void ask(const std::string& host = "one.example", std::int32_t family = AF_INET) {
        check_->ask(host, family, [this](const std::vector<NameServerEvidence>& evidence) {
            answers_.push_back(evidence);
        });
        EXPECT_THAT(answers_, IsEmpty()); // not before the call has returned
    }

    template<typename Condition>
    bool runUntil(Condition condition) {
        const double deadline = loop_.now() + patience;
        while (!condition() && loop_.now() < deadline) {
            test::runOneTurn(loop_, 0.05);
        }
        return condition();
    }

    /// What the servers say, within so many seconds.
    std::vector<NameServerEvidence> answer(double seconds = patience) {
        makeCheck(seconds);
        ask();
        EXPECT_TRUE(runUntil([this] { return !answers_.empty(); }));
        return answers_.empty() ? std::vector<NameServerEvidence>{} : answers_.front();
    }

    EpollRunLoop loop_;
    std::vector<std::unique_ptr<ScriptedNameServer>> servers_;
    std::vector<std::string> addresses_;
    std::unique_ptr<DirectNameServerCheck> check_;
    std::vector<std::vector<NameServerEvidence>> answers_;
};

} // namespace

TEST_F(DirectNameServerCheckTest, OneThatFindsTheNameIsTimed) {
    addServer("127.0.0.1", [](const Bytes& query) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return Messages{answerTo(query)};
    });

    const auto evidence = answer();

    ASSERT_THAT(evidence, ElementsAre(is("127.0.0.1", Outcome::found)));
    const double ms = evidence[0].ms.value_or(0);
    EXPECT_GE(ms, 30);
    EXPECT_LT(ms, patience * 1000);
}

TEST_F(DirectNameServerCheckTest, WhatAServerSaysIsTold) {
    addServer("127.0.0.1", says(noSuchName));
    addServer("127.0.0.2", says(refused));
    addServer("127.0.0.3", says(failed));

    EXPECT_THAT(
        answer(), ElementsAre(
                      is("127.0.0.1", Outcome::noSuchName), is("127.0.0.2", Outcome::refused),
                      is("127.0.0.3", Outcome::failed)));
}

TEST_F(DirectNameServerCheckTest, OneOverIPv6IsAskedForThatFamily) {
    const ScriptedNameServer& server = addServer("::1", says(right));
    makeCheck(patience);
    ask("one.example", AF_INET6);
    ASSERT_TRUE(runUntil([this] { return !answers_.empty(); }));

    EXPECT_THAT(answers_.front(), ElementsAre(is("::1", Outcome::found)));
    ASSERT_EQ(server.queries().size(), 1U);
    const Bytes& query = server.queries().front();
    EXPECT_EQ(query[query.size() - 3], 28);
}

TEST_F(DirectNameServerCheckTest, OneThatIsSilentIsGivenUp) {
    addServer("127.0.0.1", nothing);
    const double begun = loop_.now();

    const auto evidence = answer(shortly);

    ASSERT_THAT(evidence, ElementsAre(is("127.0.0.1", Outcome::none)));
    EXPECT_FALSE(evidence[0].ms);
    EXPECT_GE(loop_.now() - begun, shortly - 0.01);
}

TEST_F(DirectNameServerCheckTest, OneOfThreeThatIsSilentHidesNoOther) {
    addServer("127.0.0.1", says(right));
    addServer("127.0.0.2", nothing);
    addServer("127.0.0.3", says(right));

    EXPECT_THAT(
        answer(shortly), ElementsAre(
                             is("127.0.0.1", Outcome::found), is("127.0.0.2", Outcome::none),
                             is("127.0.0.3", Outcome::found)));
}

TEST_F(DirectNameServerCheckTest, AMachineThatIsNoNameServerRefuses) {
    addServer("127.0.0.1", says(right));
    addresses_.emplace_back("127.0.0.9");

    EXPECT_THAT(answer(), ElementsAre(is("127.0.0.1", Outcome::found), is("127.0.0.9", Outcome::refused)));
}

TEST_F(DirectNameServerCheckTest, OneThatCantBeSentToDoesNotAnswer) {
    addServer("127.0.0.1", says(right));
    addresses_ = {"255.255.255.255", "no address", "127.0.0.1"};

    EXPECT_THAT(
        answer(), ElementsAre(
                      is("255.255.255.255", Outcome::none), is("no address", Outcome::none),
                      is("127.0.0.1", Outcome::found)));
}

TEST_F(DirectNameServerCheckTest, ForgedAnswersBeforeTheRightOneChangeNothing) {
    constexpr std::size_t idPlace = 0;
    constexpr std::size_t letterPlace = 13;
    addServer("127.0.0.1", [](const Bytes& query) {
        const Bytes forged = answerTo(query, noSuchName);
        return Messages{
            changed(forged, idPlace), changed(forged, letterPlace), Bytes{}, Bytes(511, 0xFF),
            answerTo(query)};
    });

    EXPECT_THAT(answer(), ElementsAre(is("127.0.0.1", Outcome::found)));
}

TEST_F(DirectNameServerCheckTest, AnAnswerFromElsewhereChangesNothing) {
    const FileDescriptor other(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)); // at another port
    ScriptedNameServer* server = nullptr;
    server = &addServer("127.0.0.1", [&](const Bytes& query) {
        const Bytes forged = answerTo(query, noSuchName);
        const auto* const asker = reinterpret_cast<const sockaddr*>(&server->asker());
        EXPECT_EQ(
            ::sendto(other.get(), forged.data(), forged.size(), 0, asker, sizeof(sockaddr_in)),
            static_cast<ssize_t>(forged.size()));
        return Messages{answerTo(query)};
    });

    EXPECT_THAT(answer(), ElementsAre(is("127.0.0.1", Outcome::found)));
}

TEST_F(DirectNameServerCheckTest, EachQueryHasAnIdAndAPortOfItsOwn) {
    const ScriptedNameServer& server = addServer("127.0.0.1", says(right));
    std::vector<std::pair<int, int>> seen;
    makeCheck(patience);
    for (std::size_t round = 0; round < 8; ++round) {
        answers_.clear();
        ask();
        ASSERT_TRUE(runUntil([this] { return !answers_.empty(); }));
        const Bytes& query = server.queries().back();
        seen.emplace_back(
            query[0] << 8 | query[1], reinterpret_cast<const sockaddr_in&>(server.asker()).sin_port);
    }

    EXPECT_EQ(server.queries().size(), 8U);
    const auto differ = [&](auto part) {
        return std::ranges::any_of(seen, [&](const auto& one) { return one.*part != seen.front().*part; });
    };
    EXPECT_TRUE(differ(&std::pair<int, int>::first));
    EXPECT_TRUE(differ(&std::pair<int, int>::second));
}

TEST_F(DirectNameServerCheckTest, WithoutServersNothingIsKnown) {
    EXPECT_THAT(answer(), IsEmpty());
}

TEST_F(DirectNameServerCheckTest, ANameThatServersNeedNotKnowIsNotAskedFor) {
    const ScriptedNameServer& server = addServer("127.0.0.1", says(noSuchName));
    makeCheck(patience);
    ask("printer.local");

    ASSERT_TRUE(runUntil([this] { return !answers_.empty(); }));
    EXPECT_THAT(answers_.front(), IsEmpty());
    EXPECT_THAT(server.queries(), IsEmpty());
}

TEST_F(DirectNameServerCheckTest, ANewQuestionTakesThePlaceOfOneThatIsOpen) {
    bool isSilent = true;
    const ScriptedNameServer& server = addServer("127.0.0.1", [&](const Bytes& query) {
        return std::exchange(isSilent, false) ? Messages{} : Messages{answerTo(query)};
    });
    makeCheck(patience);
    check_->ask("one.example", AF_INET, [](const auto&) { FAIL() << "the first is answered"; });
    ASSERT_TRUE(runUntil([&] { return server.queries().size() == 1; }));
    ask("two.example");

    ASSERT_TRUE(runUntil([this] { return !answers_.empty(); }));
    EXPECT_THAT(answers_.front(), ElementsAre(is("127.0.0.1", Outcome::found)));
}

TEST_F(DirectNameServerCheckTest, NothingIsAnsweredAfterItsEnd) {
    const ScriptedNameServer& server = addServer("127.0.0.1", says(right));
    makeCheck(shortly);
    ask();
    check_.reset();

    ASSERT_TRUE(runUntil([&] { return server.queries().size() == 1; }));
    const double end = loop_.now() + 2 * shortly;
    while (loop_.now() < end) {
        test::runOneTurn(loop_, end - loop_.now());
    }
    EXPECT_THAT(answers_, IsEmpty());
}

TEST_F(DirectNameServerCheckTest, AnAnswerMayEndItOrAskAgain) {
    addServer("127.0.0.1", says(right));
    makeCheck(patience);
    std::string order;
    check_->ask("one.example", AF_INET, [&](const auto&) {
        order += "first ";
        check_->ask("one.example", AF_INET, [&](const auto&) {
            check_.reset();
            order += "second";
        });
    });

    EXPECT_TRUE(runUntil([&] { return order == "first second"; }));
}

TEST(DirectNameServerCheckWithScope, OneThatIsLinkLocalIsAskedOverItsInterface) {
    const test::NetworkNamespace network;
    if (!network.isEntered() || !test::NetworkNamespace::ip("link set lo up")
        || !test::NetworkNamespace::addLink("cable")
        || !test::NetworkNamespace::ip("address add fe80::53/64 dev cable nodad")) {
        TARNWICK_CANNOT_RUN("no network namespace can be made here");
    }
    EpollRunLoop loop;
    const ScriptedNameServer server(loop, "fe80::53%cable", says(right));
    ASSERT_TRUE(server.isOpen());
    DirectNameServerCheck check(
        loop, [] { return std::vector<std::string>{"fe80::53%cable"}; }, 20, server.port());
    std::optional<std::vector<NameServerEvidence>> answer;
    check.ask("one.example", AF_INET, [&](const auto& evidence) { answer = evidence; });

    while (!answer) {
        ASSERT_TRUE(test::runOneTurn(loop, 30));
    }
    EXPECT_THAT(*answer, ElementsAre(is("fe80::53%cable", Outcome::found)));
}

} // namespace tarnwick
