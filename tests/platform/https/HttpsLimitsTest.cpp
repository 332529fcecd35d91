// Servers that refuse, fall silent, break off, or send too much.
#include "tests/platform/https/HttpsDownloaderTest.h"
#include "tests/platform/https/SilentNameServer.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>

namespace tarnwick {

namespace {

using testing::HasSubstr;

class HttpsLimitsTest : public HttpsDownloaderTest {
protected:
    /// For the half of a transfer that must not end by its own patience.
    static constexpr double longTime = 600;
};

} // namespace

TEST_F(HttpsLimitsTest, AFileThatTheServerDoesNotHaveIsMissing) {
    servers_.behave("/gone", {{"status", 410}, {"body", "the error page"}});

    const Outcome missing = fetchedFrom("/missing");
    const Outcome gone = fetchedFrom("/gone");

    ASSERT_EQ(missing.problem(), Problem::missing);
    EXPECT_EQ(missing.failure->detail, "404 Not Found");
    EXPECT_EQ(missing.content, "");
    EXPECT_EQ(gone.problem(), Problem::missing);
    EXPECT_EQ(gone.content, "");
}

TEST_F(HttpsLimitsTest, AFileThatTheServerCanNotServeNowIsUnavailable) {
    for (const int status : {408, 429, 500, 503, 511}) {
        servers_.behave("/broken", {{"status", status}, {"body", "the error page"}});

        const Outcome outcome = fetchedFrom("/broken");

        ASSERT_EQ(outcome.problem(), Problem::unavailable) << status;
        EXPECT_THAT(outcome.failure->detail, HasSubstr(std::to_string(status)));
        EXPECT_EQ(outcome.content, "") << status;
    }
}

TEST_F(HttpsLimitsTest, AnAnswerThatIsNotTheFileIsUnusable) {
    for (const int status : {203, 206, 300, 302, 403, 409}) {
        servers_.behave("/other", {{"status", status}, {"body", "not the file"}});

        const Outcome outcome = fetchedFrom("/other");

        EXPECT_EQ(outcome.problem(), Problem::unusable) << status;
        EXPECT_EQ(outcome.content, "") << status;
    }
}

TEST_F(HttpsLimitsTest, AnEndlessErrorPageIsNotReadToItsEnd) {
    servers_.behave(
        "/endless-error", {{"status", 500}, {"body", std::string(100'000, 'x')}, {"endless", true}});

    const Outcome outcome =
        fetched(requestFor(servers_.address("/endless-error")), {.answer = longTime, .silence = longTime});

    EXPECT_EQ(outcome.problem(), Problem::unavailable);
}

TEST_F(HttpsLimitsTest, WhatIsNotHttpsIsNotAskedFor) {
    servers_.put("plain", "x");
    for (const std::string& address :
         {servers_.address("/plain", "plain"), std::string("file:///etc/hostname"),
          std::string("ftp://127.0.0.1/x"), std::string("https:///x"), std::string("feed.json"),
          std::string("https://[::1"), std::string()}) {
        EXPECT_EQ(fetched(requestFor(address)).problem(), Problem::notHttps) << address;
    }
    EXPECT_TRUE(servers_.requests("/plain", "plain").empty());
}

TEST_F(HttpsLimitsTest, ARedirectToPlainHttpIsNotFollowed) {
    servers_.put("plain-target", "x");
    servers_.behave(
        "/down", {{"status", 301},
                  {"body", ""},
                  {"headers", {{"Location", servers_.address("/plain-target", "plain")}}}});
    servers_.behave("/down-later", {{"status", 302}, {"body", ""}, {"headers", {{"Location", "/down"}}}});

    for (const auto* const path : {"/down", "/down-later"}) {
        const Outcome outcome = fetchedFrom(path);

        ASSERT_EQ(outcome.problem(), Problem::notHttps);
        EXPECT_EQ(outcome.failure->detail, servers_.address("/plain-target", "plain"));
    }
    EXPECT_TRUE(servers_.requests("/plain-target", "plain").empty());
}

TEST_F(HttpsLimitsTest, ARedirectToALocalFileIsNotFollowed) {
    servers_.behave(
        "/local", {{"status", 302}, {"body", ""}, {"headers", {{"Location", "file:///etc/hostname"}}}});

    EXPECT_EQ(fetchedFrom("/local").problem(), Problem::notHttps);
}

TEST_F(HttpsLimitsTest, ACircleOfRedirectsIsLeft) {
    servers_.behave("/round", {{"status", 302}, {"body", ""}, {"headers", {{"Location", "/round"}}}});

    EXPECT_EQ(fetchedFrom("/round").problem(), Problem::unusable);
    EXPECT_EQ(servers_.requests("/round").size(), 6U);
}

TEST_F(HttpsLimitsTest, WhatComesCompressedIsUnusable) {
    servers_.behave("/packed", {{"body", "as if"}, {"headers", {{"Content-Encoding", "gzip"}}}});
    const Outcome outcome = fetchedFrom("/packed");

    ASSERT_EQ(outcome.problem(), Problem::unusable);
    EXPECT_EQ(outcome.failure->detail, "Content-Encoding: gzip");
    EXPECT_EQ(outcome.content, "");
}

TEST_F(HttpsLimitsTest, ACodingThatIsNoneIsTaken) {
    servers_.behave("/as-is", {{"body", "as it is"}, {"headers", {{"Content-Encoding", "Identity"}}}});

    EXPECT_EQ(fetchedFrom("/as-is").content, "as it is");
}

TEST_F(HttpsLimitsTest, AFileOfTheGreatestSizeComes) {
    servers_.put("full", std::string(100'000, 'x'));

    const Outcome outcome = fetched(requestFor(servers_.address("/full"), 100'000));

    EXPECT_EQ(outcome.problem(), std::nullopt);
    EXPECT_EQ(outcome.content.size(), 100'000U);
}

TEST_F(HttpsLimitsTest, AFileThatIsAnnouncedTooLargeIsNotTaken) {
    servers_.put("large", std::string(100'001, 'x'));

    const Outcome outcome = fetched(requestFor(servers_.address("/large"), 100'000));

    EXPECT_EQ(outcome.problem(), Problem::tooLarge);
    EXPECT_EQ(outcome.failure->detail, "100001 bytes");
    EXPECT_EQ(outcome.parts, 0);
}

TEST_F(HttpsLimitsTest, AFileWithoutEndIsLeftAtTheLimit) {
    servers_.behave("/endless", {{"body", std::string(10'000, 'x')}, {"endless", true}});

    const Outcome outcome = fetched(requestFor(servers_.address("/endless"), 1'000'000));

    EXPECT_EQ(outcome.problem(), Problem::tooLarge);
    EXPECT_LE(outcome.content.size(), 1'000'000U);
    EXPECT_TRUE(runUntil([this] { return servers_.isLeft("/endless"); }));
}

TEST_F(HttpsLimitsTest, AServerIsHeldUpWhileNobodyReads) {
    constexpr int megabyte = 1'000'000;
    servers_.behave("/fast", {{"body", std::string(megabyte, 'x')}, {"endless", true}});
    HttpsDownloader downloader(loop_);
    Outcome outcome;
    const RunLoop::Handle handle = downloader.fetch(
        requestFor(servers_.address("/fast"), std::uint64_t{1000} * megabyte), into(outcome));
    ASSERT_TRUE(runUntil([&outcome] { return outcome.parts > 0; }));

    // The toolkit's loop does not run from here on. The system holds a few megabytes, too.
    const int before = servers_.chunkCount();
    int count = -1;
    while (count != servers_.chunkCount() && servers_.chunkCount() < before + 100) {
        count = servers_.chunkCount();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }

    EXPECT_LT(servers_.chunkCount(), before + 100);
}

TEST_F(HttpsLimitsTest, AServerThatTakesNoHandshakeIsSilent) {
    const Port port = silentPort(true);

    EXPECT_EQ(
        fetched(requestFor(port.address), {.answer = shortTime, .silence = longTime}).problem(),
        Problem::silent);
}

TEST_F(HttpsLimitsTest, AServerThatDoesNotAnswerIsSilent) {
    servers_.behave("/mute", {{"body", ""}, {"mute", true}});

    const Outcome outcome =
        fetched(requestFor(servers_.address("/mute")), {.answer = shortTime, .silence = longTime});

    EXPECT_EQ(outcome.problem(), Problem::silent);
    EXPECT_TRUE(runUntil([this] { return servers_.isLeft("/mute"); }));
}

TEST_F(HttpsLimitsTest, AServerThatStopsInTheMiddleIsSilent) {
    servers_.put("stops", std::string(50'000, 'x'));
    servers_.behave("/stops", {{"hang_after", 20'000}});

    const Outcome outcome =
        fetched(requestFor(servers_.address("/stops")), {.answer = longTime, .silence = shortTime});

    EXPECT_EQ(outcome.problem(), Problem::silent);
    EXPECT_EQ(outcome.content.size(), 20'000U);
}

TEST_F(HttpsLimitsTest, AServerThatSendsNextToNothingIsSilent) {
    servers_.put("drips", std::string(500, 'x'));
    servers_.behave("/drips", {{"piece", 1}, {"pause", 0.02}});

    const Outcome outcome =
        fetched(requestFor(servers_.address("/drips")), {.answer = longTime, .silence = shortTime});

    EXPECT_EQ(outcome.problem(), Problem::silent);
}

TEST_F(HttpsLimitsTest, AServerThatSendsEnoughMayTakeLongerThanThePatience) {
    servers_.put("steady", std::string(20 * HttpsPatience::leastProgress, 'x'));
    servers_.behave("/steady", {{"piece", HttpsPatience::leastProgress}, {"pause", 0.05}});
    HttpsDownloader downloader(loop_, {.answer = longTime, .silence = shortTime});
    Outcome outcome;
    Downloader::Receiver receiver = into(outcome);
    double latest = 0;
    double longestGap = 0;
    receiver.received = [&](std::string_view part) {
        longestGap = latest > 0 ? std::max(longestGap, loop_.now() - latest) : 0;
        latest = loop_.now();
        outcome.content += part;
        return true;
    };

    const RunLoop::Handle handle = downloader.fetch(requestFor(servers_.address("/steady")), receiver);
    ASSERT_TRUE(runUntil([&outcome] { return outcome.ends > 0; }));

    // On a busy machine the server itself may pause for too long, which falsifies nothing.
    longestGap = std::max(longestGap, outcome.failure ? loop_.now() - latest : 0);
    if (longestGap < shortTime / 2) {
        EXPECT_EQ(outcome.problem(), std::nullopt);
    }
}

TEST_F(HttpsLimitsTest, AConnectionThatEndsInTheMiddleIsBrokenOff) {
    servers_.put("cut", std::string(50'000, 'x'));
    for (const bool isChunked : {false, true}) {
        servers_.behave("/cut", {{"cut_after", 20'000}, {"chunked", isChunked}});

        const Outcome outcome = fetchedFrom("/cut");

        EXPECT_EQ(outcome.problem(), Problem::brokenOff) << isChunked;
        EXPECT_EQ(outcome.content.size(), 20'000U) << isChunked;
    }
}

TEST_F(HttpsLimitsTest, APortWhereNobodyListensIsUnreachable) {
    const Port port = silentPort(false);

    const Outcome outcome = fetched(requestFor(port.address));

    ASSERT_EQ(outcome.problem(), Problem::unreachable);
    EXPECT_THAT(outcome.failure->detail, HasSubstr("refused"));
}

TEST_F(HttpsLimitsTest, AHostThatNobodyKnowsIsUnreachable) {
    const Outcome outcome = fetched(requestFor("https://nowhere.invalid/x"));

    ASSERT_EQ(outcome.problem(), Problem::unreachable);
    EXPECT_THAT(outcome.failure->detail, HasSubstr("nowhere.invalid"));
}

TEST_F(HttpsLimitsTest, TheLibraryDoesNotWaitForANameServer) {
    const test::SilentNameServer nameServer;
    ASSERT_TRUE(nameServer.isAsked());
    const HttpsPatience patience = {.answer = shortTime, .silence = longTime};

    EXPECT_EQ(fetched(requestFor("https://slow.example/"), patience).problem(), Problem::silent);

    EXPECT_TRUE(nameServer.hasQuery());
    // Those of the library, for which the end of the program would wait.
    EXPECT_EQ(test::threadsNamed("Thread (pooled)"), 0);
}

TEST_F(HttpsLimitsTest, AServersWordsMakeOneLine) {
    servers_.behave(
        "/wordy", {{"status", 302},
                   {"body", ""},
                   {"headers", {{"Location", "http://one.example/" + std::string(1000, 'x')}}}});

    const Outcome outcome = fetchedFrom("/wordy");

    ASSERT_EQ(outcome.problem(), Problem::notHttps);
    EXPECT_EQ(outcome.failure->detail.size(), 200U);
}

} // namespace tarnwick
