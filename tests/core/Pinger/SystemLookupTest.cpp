// Lookups on threads of their own: a few for a host text at a time, and none that holds anything up.
#include "core/Pinger/SystemPingNetwork.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/ThreadsEnd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace tarnwick {
namespace {

using namespace test;
using simulation::VirtualRunLoop;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double patience = 5; ///< seconds until a test gives up waiting

Resolution answerFor(const std::string& host) {
    return PingError::resolution("answer for " + host);
}

/// A resolver that answers a host only once it is let go. Shared with the threads that wait in it.
class HangingResolver {
public:
    Resolution operator()(const std::string& host) {
        std::unique_lock lock(mutex_);
        const int number = ++calls_[host];
        changed_.notify_all();
        const auto isLetGo = [&] { return letGo_.contains(host) || letGoAlone_.contains({host, number}); };
        changed_.wait_for(lock, std::chrono::duration<double>(2 * patience), isLetGo);
        ++answered_;
        changed_.notify_all();
        return answerFor(host);
    }

    void letGo(const std::string& host) {
        const std::lock_guard lock(mutex_);
        letGo_[host] = true;
        changed_.notify_all();
    }

    /// The first call is number 1.
    void letGo(const std::string& host, int number) {
        const std::lock_guard lock(mutex_);
        letGoAlone_.emplace(host, number);
        changed_.notify_all();
    }

    [[nodiscard]] bool isCalledFor(const std::string& host, int times = 1) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(
            lock, std::chrono::duration<double>(patience), [&] { return calls_[host] >= times; });
    }

    [[nodiscard]] int callsFor(const std::string& host) {
        const std::lock_guard lock(mutex_);
        return calls_[host];
    }

    /// Of all its calls.
    [[nodiscard]] int answered() {
        const std::lock_guard lock(mutex_);
        return answered_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, int> calls_;
    std::map<std::string, bool> letGo_;
    std::set<std::pair<std::string, int>> letGoAlone_;
    int answered_ = 0;
};

const auto* const threadsEnd = testing::AddGlobalTestEnvironment(new ThreadsEnd);

class SystemLookupTest : public testing::Test {
protected:
    ~SystemLookupTest() override {
        for (const char* host : {"a", "b"}) {
            resolver->letGo(host);
        }
    }

    static SystemPingNetwork::BlockingResolver calling(std::shared_ptr<HangingResolver> resolver) {
        return [resolver = std::move(resolver)](const std::string& host) { return (*resolver)(host); };
    }

    void ask(const std::string& host, const std::string& who) {
        network->resolve(host, [this, host, who](const Resolution& resolution) {
            EXPECT_EQ(resolution, answerFor(host));
            answered.push_back(who);
        });
    }

    [[nodiscard]] bool runUntilAnswered(std::size_t count) {
        const double deadline = loop->now() + patience;
        while (answered.size() < count && loop->now() < deadline) {
            test::runOneTurn(*loop, 0.1);
        }
        return answered.size() == count;
    }

    std::shared_ptr<HangingResolver> resolver = std::make_shared<HangingResolver>();
    std::optional<EpollRunLoop> loop{std::in_place};
    std::optional<SystemPingNetwork> network{std::in_place, *loop, calling(resolver)};
    std::vector<std::string> answered;
};

TEST_F(SystemLookupTest, IsAnsweredOnceTheResolverAnswers) {
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    EXPECT_FALSE(test::runOneTurn(*loop, 0));
    resolver->letGo("a");
    EXPECT_TRUE(runUntilAnswered(1));
}

TEST_F(SystemLookupTest, IsAnsweredWhileAnOlderOneOfTheSameHostHangs) {
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    ask("a", "second");
    ASSERT_TRUE(resolver->isCalledFor("a", 2));
    resolver->letGo("a", 2);
    EXPECT_TRUE(runUntilAnswered(1));
    EXPECT_THAT(answered, ElementsAre("second"));
    resolver->letGo("a");
    EXPECT_TRUE(runUntilAnswered(2));
}

TEST_F(SystemLookupTest, BeyondThreeWaitsForAnOlderOneToEnd) {
    for (const char* who : {"first", "second", "third", "fourth"}) {
        ask("a", who);
    }
    ASSERT_TRUE(resolver->isCalledFor("a", 3));
    EXPECT_EQ(resolver->callsFor("a"), 3);
    resolver->letGo("a", 1);
    ASSERT_TRUE(runUntilAnswered(1));
    ASSERT_TRUE(resolver->isCalledFor("a", 4));
    resolver->letGo("a", 4);
    EXPECT_TRUE(runUntilAnswered(2));
    EXPECT_EQ(answered.back(), "fourth");
}

TEST_F(SystemLookupTest, DoesNotPileUpWithRetries) {
    for (int retry = 0; retry < 50; ++retry) {
        ask("a", std::to_string(retry));
    }
    ASSERT_TRUE(resolver->isCalledFor("a", 3));
    resolver->letGo("a");
    EXPECT_TRUE(runUntilAnswered(4));
    EXPECT_THAT(answered, testing::UnorderedElementsAre("0", "1", "2", "49"));
    EXPECT_EQ(resolver->callsFor("a"), 4);
}

TEST_F(SystemLookupTest, OfOneHostHoldsUpNoOtherHost) {
    for (int retry = 0; retry < 3; ++retry) {
        ask("a", "of a");
    }
    ask("b", "of b");
    resolver->letGo("b");
    EXPECT_TRUE(runUntilAnswered(1));
    EXPECT_THAT(answered, ElementsAre("of b"));
    resolver->letGo("a");
    EXPECT_TRUE(runUntilAnswered(4));
}

TEST_F(SystemLookupTest, BeginsAnewOnceTheLastOneIsAnswered) {
    resolver->letGo("a");
    ask("a", "first");
    ASSERT_TRUE(runUntilAnswered(1));
    ask("a", "second");
    EXPECT_TRUE(runUntilAnswered(2));
    EXPECT_EQ(resolver->callsFor("a"), 2);
}

TEST_F(SystemLookupTest, DoesNotHoldUpTheMainThread) {
    bool isRun = false;
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    loop->post([&isRun] { isRun = true; });
    EXPECT_TRUE(test::runOneTurn(*loop, patience));
    EXPECT_TRUE(isRun);
}

TEST_F(SystemLookupTest, DoesNotHoldUpTheEndOfNetworkAndLoop) {
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    network.reset();
    loop.reset();
    EXPECT_EQ(resolver->answered(), 0);
}

TEST_F(SystemLookupTest, MayBeAnsweredAfterNetworkAndLoopHaveEnded) {
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    network.reset();
    loop.reset();
    resolver->letGo("a");
    // The thread lets go of the resolver when it has done all it will do.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(patience);
    while (resolver.use_count() > 1 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(resolver.use_count(), 1);
    EXPECT_THAT(answered, IsEmpty());
}

TEST_F(SystemLookupTest, MayEndTheNetworkWithItsAnswerWhileAnotherWaits) {
    network->resolve("a", [this](const Resolution&) { network.reset(); });
    ASSERT_TRUE(resolver->isCalledFor("a"));
    for (const char* who : {"second", "third", "fourth"}) {
        ask("a", who);
    }
    resolver->letGo("a", 1);
    const double deadline = loop->now() + patience;
    while (network && loop->now() < deadline) {
        test::runOneTurn(*loop, 0.1);
    }
    EXPECT_FALSE(network);
    EXPECT_THAT(answered, IsEmpty());
}

TEST_F(SystemLookupTest, IsDroppedWhenTheNetworkHasEndedMeanwhile) {
    ask("a", "first");
    ASSERT_TRUE(resolver->isCalledFor("a"));
    network.reset();
    resolver->letGo("a");
    EXPECT_TRUE(test::runOneTurn(*loop, patience)); // the answer arrives
    EXPECT_THAT(answered, IsEmpty());
}

/// Detached work is done at once here; its result waits in the loop's queue.
class LookupOrder : public testing::Test {
protected:
    VirtualRunLoop loop;
    std::optional<SystemPingNetwork> network{std::in_place, loop, answerFor};
    std::vector<std::string> answered;

    [[nodiscard]] PingNetwork::ResolveDone noting(const std::string& who) {
        return [this, who](const Resolution&) { answered.push_back(who); };
    }
};

TEST_F(LookupOrder, IsNeverAnsweredFromInsideTheQuestion) {
    network->resolve("a", noting("first"));
    EXPECT_THAT(answered, IsEmpty());
    loop.runPending();
    EXPECT_THAT(answered, ElementsAre("first"));
}

TEST_F(LookupOrder, IsDroppedWhenTheNetworkEndsBeforeTheAnswerArrives) {
    network->resolve("a", noting("first"));
    network.reset();
    loop.runPending();
    EXPECT_THAT(answered, IsEmpty());
}

TEST_F(LookupOrder, LetsAnAnswerAskAgain) {
    network->resolve("a", [this](const Resolution&) { network->resolve("a", noting("again")); });
    loop.runPending();
    loop.runPending();
    EXPECT_THAT(answered, ElementsAre("again"));
}

TEST_F(LookupOrder, LetsAnAnswerEndTheNetwork) {
    network->resolve("a", [this](const Resolution&) { network.reset(); });
    network->resolve("b", noting("of b"));
    loop.runPending();
    EXPECT_FALSE(network);
    EXPECT_THAT(answered, IsEmpty());
}

TEST_F(LookupOrder, IsAnErrorLaterWhenThereIsNoThreadToGive) {
    loop.hasThreads = false;
    std::optional<Resolution> resolution;
    network->resolve("a", [&resolution](const Resolution& told) { resolution = told; });
    EXPECT_FALSE(resolution);

    loop.runPending();
    ASSERT_TRUE(resolution);
    const auto* error = std::get_if<PingError>(&*resolution);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, PingError::Kind::resolution);
    EXPECT_FALSE(error->text.empty());
}

TEST_F(LookupOrder, NeedsNoThreadForAnAddressLiteral) {
    loop.hasThreads = false;
    for (const char* literal : {"192.0.2.7", "2001:db8::7"}) {
        std::optional<Resolution> resolution;
        network->resolve(literal, [&resolution](const Resolution& told) { resolution = told; });
        EXPECT_FALSE(resolution);

        loop.runPending();
        EXPECT_EQ(resolution, answerFor(literal));
    }
}

TEST_F(LookupOrder, IsTriedAgainAfterThereWasNoThreadToGive) {
    loop.hasThreads = false;
    network->resolve("a", noting("first"));
    loop.runPending();
    loop.hasThreads = true;
    network->resolve("a", noting("second"));
    loop.runPending();
    EXPECT_THAT(answered, ElementsAre("first", "second"));
}

} // namespace
} // namespace tarnwick
