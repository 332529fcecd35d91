// Files, as they come from servers that behave, and what these are told.
#include "tests/platform/https/HttpsDownloaderTest.h"

#include "tests/support/Variable.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>

namespace tarnwick {

namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

} // namespace

TEST_F(HttpsDownloaderTest, AFileComesWhole) {
    servers_.put("small", "What is new");

    const Outcome outcome = fetchedFrom("/small");

    EXPECT_EQ(outcome.problem(), std::nullopt);
    EXPECT_EQ(outcome.content, "What is new");
}

TEST_F(HttpsDownloaderTest, AnEmptyFileComesWithoutAPart) {
    servers_.put("empty", "");

    const Outcome outcome = fetchedFrom("/empty");

    EXPECT_EQ(outcome.problem(), std::nullopt);
    EXPECT_EQ(outcome.parts, 0);
}

TEST_F(HttpsDownloaderTest, ALongFileComesInPartsInTheirOrder) {
    const std::string content = longContent(5'000'000);
    servers_.put("long", content);

    const Outcome outcome = fetchedFrom("/long");

    EXPECT_EQ(outcome.problem(), std::nullopt);
    EXPECT_TRUE(outcome.content == content);
    EXPECT_GT(outcome.parts, 10);
}

TEST_F(HttpsDownloaderTest, AFileOfUntoldSizeComesWhole) {
    const std::string content = longContent(700'000);
    servers_.put("chunked", content);
    servers_.behave("/chunked", {{"chunked", true}});

    const Outcome outcome = fetchedFrom("/chunked");

    EXPECT_EQ(outcome.problem(), std::nullopt);
    EXPECT_TRUE(outcome.content == content);
}

TEST_F(HttpsDownloaderTest, TheServerIsToldTheUserAgentAndNothingElse) {
    servers_.put("asked", "x");
    // Would be told the next time.
    servers_.behave(
        "/asked",
        {{"headers",
          {{"Set-Cookie", "who=me; Path=/"}, {"ETag", "\"me\""}, {"Cache-Control", "max-age=60"}}}});
    ASSERT_EQ(fetchedFrom("/asked").problem(), std::nullopt);

    ASSERT_EQ(fetchedFrom("/asked").problem(), std::nullopt);

    const auto requests = servers_.requests("/asked");
    ASSERT_EQ(requests.size(), 2U);
    const std::string host = servers_.address("").substr(std::string("https://").size());
    for (const auto& headers : requests) {
        EXPECT_THAT(
            headers,
            UnorderedElementsAre(
                Pair("host", host), Pair("user-agent", "Tarnwick/0.1"), Pair("accept-encoding", "identity"),
                Pair("accept-language", "*"), Pair("connection", "Keep-Alive")));
    }
}

TEST_F(HttpsDownloaderTest, ARedirectedRequestTellsNoMore) {
    servers_.put("target", "x");
    servers_.behave(
        "/from",
        {{"status", 302},
         {"body", ""},
         {"headers", {{"Location", servers_.address("/target")}, {"Set-Cookie", "who=me; Path=/"}}}});

    const Outcome outcome = fetchedFrom("/from");

    EXPECT_EQ(outcome.problem(), std::nullopt);
    ASSERT_EQ(servers_.requests("/target").size(), 1U);
    EXPECT_EQ(servers_.requests("/target"), servers_.requests("/from"));
}

TEST_F(HttpsDownloaderTest, AServerThatAsksWhoWeAreIsNotTold) {
    servers_.behave(
        "/closed", {{"status", 401}, {"body", ""}, {"headers", {{"WWW-Authenticate", "Negotiate"}}}});

    const Outcome outcome = fetchedFrom("/closed");

    EXPECT_EQ(outcome.problem(), Problem::unusable);
    EXPECT_EQ(servers_.requests("/closed").size(), 1U);
}

TEST_F(HttpsDownloaderTest, EveryKindOfRedirectToHttpsIsFollowed) {
    servers_.put("moved", "here");
    for (const int status : {301, 302, 303, 307, 308}) {
        servers_.behave(
            "/old", {{"status", status}, {"body", "moved"}, {"headers", {{"Location", "/moved?by=us"}}}});

        const Outcome outcome = fetchedFrom("/old");

        EXPECT_EQ(outcome.problem(), std::nullopt) << status;
        EXPECT_EQ(outcome.content, "here") << status;
    }
}

TEST_F(HttpsDownloaderTest, AsManyRedirectsAsAllowedAreFollowed) {
    servers_.put("hop5", "here");
    for (int hop = 0; hop < 5; ++hop) {
        servers_.behave(
            "/hop" + std::to_string(hop),
            {{"status", 302}, {"body", ""}, {"headers", {{"Location", "/hop" + std::to_string(hop + 1)}}}});
    }

    EXPECT_EQ(fetchedFrom("/hop0").content, "here");
}

TEST_F(HttpsDownloaderTest, TheSystemsProxyIsUsed) {
    servers_.put("far", "by proxy");
    ASSERT_FALSE(servers_.isProxied());
    const test::Variable proxy("https_proxy", servers_.proxyAddress().c_str());

    const Outcome outcome = fetchedFrom("/far");

    EXPECT_EQ(outcome.content, "by proxy");
    EXPECT_TRUE(servers_.isProxied());
}

TEST_F(HttpsDownloaderTest, NothingIsCalledInsideAFetch) {
    servers_.put("small", "x");
    HttpsDownloader downloader(loop_);
    Outcome good;
    Outcome bad;

    const RunLoop::Handle first = downloader.fetch(requestFor(servers_.address("/small")), into(good));
    const RunLoop::Handle second = downloader.fetch(requestFor("http://127.0.0.1/"), into(bad));

    EXPECT_EQ(good.ends + bad.ends, 0);
    EXPECT_TRUE(runUntil([&] { return good.ends == 1 && bad.ends == 1; }));
}

TEST_F(HttpsDownloaderTest, SeveralFilesComeAtTheSameTime) {
    servers_.put("one", "1");
    servers_.put("two", longContent(1'000'000));
    HttpsDownloader downloader(loop_);
    Outcome one;
    Outcome two;

    const RunLoop::Handle first = downloader.fetch(requestFor(servers_.address("/one")), into(one));
    const RunLoop::Handle second = downloader.fetch(requestFor(servers_.address("/two")), into(two));

    ASSERT_TRUE(runUntil([&] { return one.ends == 1 && two.ends == 1; }));
    EXPECT_EQ(one.content, "1");
    EXPECT_TRUE(two.content == longContent(1'000'000));
}

TEST_F(HttpsDownloaderTest, ADestroyedHandleBreaksTheTransferOff) {
    servers_.put("stays", longContent(100'000));
    servers_.behave("/stays", {{"hang_after", 50'000}});
    HttpsDownloader downloader(loop_);
    Outcome outcome;
    RunLoop::Handle handle = downloader.fetch(requestFor(servers_.address("/stays")), into(outcome));
    ASSERT_TRUE(runUntil([&outcome] { return outcome.content.size() == 50'000; }));

    handle.reset();

    EXPECT_TRUE(runUntil([this] { return servers_.isLeft("/stays"); }));
    EXPECT_EQ(outcome.ends, 0);
}

TEST_F(HttpsDownloaderTest, AHandleDestroyedAtOnceSendsNothing) {
    servers_.put("never", "x");
    HttpsDownloader downloader(loop_);
    Outcome outcome;

    downloader.fetch(requestFor(servers_.address("/never")), into(outcome)).reset();

    runFor(200);
    EXPECT_EQ(outcome.ends, 0);
    EXPECT_TRUE(servers_.requests("/never").empty());
}

TEST_F(HttpsDownloaderTest, TheHandleMayBeDestroyedWhileAPartIsReceived) {
    servers_.put("cancelled", longContent(3'000'000));
    HttpsDownloader downloader(loop_);
    Outcome outcome;
    RunLoop::Handle handle;
    Downloader::Receiver receiver = into(outcome);
    receiver.received = [&handle, &outcome](std::string_view part) {
        handle.reset();
        outcome.content += part; // what this function holds is still there
        ++outcome.parts;
        return true;
    };

    handle = downloader.fetch(requestFor(servers_.address("/cancelled")), receiver);

    ASSERT_TRUE(runUntil([&outcome] { return outcome.parts > 0; }));
    runFor(200);
    EXPECT_EQ(outcome.parts, 1);
    EXPECT_EQ(outcome.ends, 0);
}

TEST_F(HttpsDownloaderTest, TheHandleMayBeDestroyedAtTheEnd) {
    servers_.put("small", "x");
    HttpsDownloader downloader(loop_);
    RunLoop::Handle handle;
    int ends = 0;

    handle = downloader.fetch(
        requestFor(servers_.address("/small")), {.received = [](std::string_view) { return true; },
                                                 .ended =
                                                     [&handle, &ends](const auto&) {
                                                         handle.reset();
                                                         ++ends;
                                                     }});

    ASSERT_TRUE(runUntil([&ends] { return ends > 0; }));
    EXPECT_EQ(handle, nullptr);
}

TEST_F(HttpsDownloaderTest, AReceiverThatWantsNoMoreIsNotCalledAgain) {
    servers_.put("unwanted", longContent(3'000'000));
    servers_.behave("/unwanted", {{"hang_after", 2'999'999}});
    HttpsDownloader downloader(loop_, {.silence = shortTime});
    Outcome outcome;
    Downloader::Receiver receiver = into(outcome);
    receiver.received = [&outcome](std::string_view) {
        ++outcome.parts;
        return false;
    };

    const RunLoop::Handle handle = downloader.fetch(requestFor(servers_.address("/unwanted")), receiver);

    EXPECT_TRUE(runUntil([this] { return servers_.isLeft("/unwanted"); }));
    runFor(500);
    EXPECT_EQ(outcome.parts, 1);
    EXPECT_EQ(outcome.ends, 0);
}

TEST_F(HttpsDownloaderTest, NoThreadStaysAfterATransfer) {
    servers_.put("small", "x");
    // Some of the library's threads stay until the end of the program: they are there from now on.
    ASSERT_EQ(fetchedFrom("/small").problem(), std::nullopt);
    const auto before = threadCount();
    HttpsDownloader downloader(loop_);
    Outcome outcome;

    RunLoop::Handle handle = downloader.fetch(requestFor(servers_.address("/small")), into(outcome));
    ASSERT_TRUE(runUntil([&outcome] { return outcome.ends == 1; }));

    EXPECT_TRUE(runUntil([before] { return threadCount() <= before; }));
}

} // namespace tarnwick
