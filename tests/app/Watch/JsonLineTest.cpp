// Everything that the monitor publishes, as one line of JSON.
#include "app/Watch/JsonLine.h"

#include "tests/app/WatchedMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <nlohmann/json.hpp>

namespace tarnwick {

namespace {

using Json = nlohmann::ordered_json;

class JsonLineTest : public testing::Test, protected WatchedMonitor {
protected:
    [[nodiscard]] std::string text() const { return jsonLine(monitor, loop.wallNow(), "42ms (3%)"); }

    [[nodiscard]] Json line() const { return Json::parse(text()); }
};

RunLoop::WallTime at(std::chrono::milliseconds sinceEpoch) {
    return RunLoop::WallTime(sinceEpoch);
}

std::vector<std::string> keys(const Json& object) {
    std::vector<std::string> names;
    for (const auto& [key, value] : object.items()) {
        names.push_back(key);
    }
    return names;
}

} // namespace

TEST_F(JsonLineTest, IsOneObjectOnOneLine) {
    watchFor(3.5);

    const std::string written = text();

    EXPECT_EQ(written.find('\n'), written.size() - 1);
    EXPECT_TRUE(Json::parse(written).is_object());
}

TEST_F(JsonLineTest, HasExactlyItsKeysInOrder) {
    watchFor(3.5);

    EXPECT_THAT(
        keys(line()), testing::ElementsAre(
                          "time", "monotonic", "host", "resolvedAddress", "status", "score", "bars",
                          "latestPingMs", "lossPercent", "lossIsKnown", "menuTitle", "tooltip",
                          "qualityTitle", "qualityTone", "downReason", "downReasonText", "lastError",
                          "startError", "accessibilitySummary", "session", "site", "samples"));
}

TEST_F(JsonLineTest, HasTheSameKeysInEveryState) {
    const std::vector<std::string> expected = keys(line());
    fallSilent();
    watchFor(3.5);
    EXPECT_EQ(keys(line()), expected);
    ASSERT_TRUE(waitUntilDown());
    EXPECT_EQ(keys(line()), expected);
}

TEST_F(JsonLineTest, ACounterHasItsSixFigures) {
    watchFor(3.5);

    EXPECT_THAT(
        keys(line()["session"]),
        testing::ElementsAre("sent", "replied", "lost", "averageMs", "fastestMs", "slowestMs"));
    EXPECT_EQ(keys(line()["site"]), keys(line()["session"]));
}

TEST_F(JsonLineTest, WhatIsNotKnownYetIsNull) {
    prefs.setHostname("example.org");
    network.setHangingHost("example.org");
    watchFor(0.5);

    const Json written = line();

    for (const char* key :
         {"resolvedAddress", "score", "latestPingMs", "downReason", "downReasonText", "lastError",
          "startError"}) {
        EXPECT_TRUE(written[key].is_null()) << key;
    }
    EXPECT_EQ(written["status"], "starting");
    EXPECT_EQ(written["bars"], 0);
    EXPECT_EQ(written["lossPercent"], 0.0);
    EXPECT_EQ(written["lossIsKnown"], false);
    EXPECT_EQ(written["qualityTitle"], "Connecting…");
    EXPECT_EQ(written["qualityTone"], "neutral");
    EXPECT_EQ(written["accessibilitySummary"], "Connecting");
    EXPECT_EQ(written["samples"], 0);
}

TEST_F(JsonLineTest, AWorkingConnectionIsWrittenWithItsFigures) {
    prefs.setHostname("example.org");
    resolve("example.org", "192.0.2.7");
    answerAfter(0.04);
    watchFor(5.5);

    const Json written = line();

    EXPECT_EQ(written["host"], "example.org");
    EXPECT_EQ(written["resolvedAddress"], "192.0.2.7");
    EXPECT_EQ(written["status"], "up");
    EXPECT_EQ(written["score"], 1.0);
    EXPECT_EQ(written["bars"], 5);
    EXPECT_NEAR(written["latestPingMs"].get<double>(), 40, 0.001);
    EXPECT_EQ(written["lossPercent"], 0.0);
    EXPECT_EQ(written["lossIsKnown"], true);
    EXPECT_EQ(written["tooltip"], "Latest Ping Time: 40ms\nRecent Packet Loss: 0%");
    EXPECT_EQ(written["qualityTitle"], "Excellent");
    EXPECT_EQ(written["qualityTone"], "good");
    EXPECT_EQ(written["accessibilitySummary"], "Excellent, 40 milliseconds, 0 percent packet loss");
    EXPECT_EQ(written["samples"], 6);
}

TEST_F(JsonLineTest, TheCountersAreThoseOfTheLedger) {
    answerAfter(0.04);
    watchFor(5.5);

    const Json session = line()["session"];

    EXPECT_EQ(session["sent"], 6);
    EXPECT_EQ(session["replied"], 6);
    EXPECT_EQ(session["lost"], 0);
    EXPECT_NEAR(session["averageMs"].get<double>(), 40, 0.001);
    EXPECT_NEAR(session["fastestMs"].get<double>(), 40, 0.001);
    EXPECT_NEAR(session["slowestMs"].get<double>(), 40, 0.001);
    EXPECT_EQ(line()["site"], session);
}

TEST_F(JsonLineTest, TheMenuTitleIsTheOneHandedIn) {
    EXPECT_EQ(line()["menuTitle"], "42ms (3%)");
}

TEST_F(JsonLineTest, TheMonotonicTimeIsThatOfTheLatestEvaluation) {
    const double start = loop.now();
    watchFor(3.7);

    EXPECT_EQ(line()["monotonic"], start + 3);
}

TEST_F(JsonLineTest, TheTimeIsTheOneHandedIn) {
    EXPECT_EQ(
        Json::parse(jsonLine(monitor, at(std::chrono::milliseconds(1)), ""))["time"],
        "1970-01-01T00:00:00.001Z");
}

// The tones and reasons by their names.

struct Latency {
    double seconds;
    std::string tone;
};

class JsonTone : public JsonLineTest, public testing::WithParamInterface<Latency> {};

TEST_P(JsonTone, IsWrittenByItsName) {
    answerAfter(GetParam().seconds);
    watchFor(20.5);

    EXPECT_EQ(line()["qualityTone"], GetParam().tone);
}

INSTANTIATE_TEST_SUITE_P(
    JsonLine, JsonTone, testing::Values(Latency{0.04, "good"}, Latency{0.55, "middle"}, Latency{2, "bad"}));

struct Failure {
    std::string name;
    std::function<void(WatchedMonitor&)> arrange;
    std::string reason;
    std::string text;
};

class JsonDownReason : public JsonLineTest, public testing::WithParamInterface<Failure> {};

TEST_P(JsonDownReason, IsWrittenByItsNameAndText) {
    GetParam().arrange(*this);
    monitor.start();
    ASSERT_TRUE(waitUntilDown());

    const Json written = line();

    EXPECT_EQ(written["status"], "down");
    EXPECT_EQ(written["downReason"], GetParam().reason);
    EXPECT_EQ(written["downReasonText"], GetParam().text);
    EXPECT_EQ(written["bars"], 0);
    EXPECT_EQ(written["qualityTitle"], "Connection down");
    EXPECT_EQ(written["qualityTone"], "bad");
    EXPECT_EQ(written["accessibilitySummary"], "Connection down, " + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    JsonLine, JsonDownReason,
    testing::Values(
        Failure{"NoReplies", [](auto& world) { world.fallSilent(); }, "noReplies", "No replies for 8 s"},
        Failure{
            "HostNotFound",
            [](auto& world) {
                world.prefs.setHostname("no.such.host");
                world.network.setHost("no.such.host", PingError::resolution("Name or service not known"));
            },
            "hostNotFound", "Can’t find host “no.such.host”"},
        Failure{
            "SocketError", [](auto& world) { world.network.setSocketError(AF_INET, "Permission denied"); },
            "socketError", "Can’t open a ping socket"},
        Failure{
            "NoNetwork",
            [](auto& world) {
                world.fallSilent();
                world.loop.post([&world] { world.path.report(false); });
            },
            "noNetwork", "No network connection"}),
    [](const auto& test) { return test.param.name; });

TEST_F(JsonLineTest, AFailedStartIsWrittenWithItsMessage) {
    network.setSocketError(AF_INET, "Permission denied");
    watchFor(2.5);

    const Json written = line();

    ASSERT_TRUE(monitor.startError());
    EXPECT_EQ(written["startError"], monitor.startError()->message());
    EXPECT_EQ(written["lastError"], monitor.startError()->message());
}

// Texts that are not UTF-8, and texts that break lines.

TEST_F(JsonLineTest, AHostThatIsNotUtf8IsWrittenWithMarksInItsPlace) {
    prefs.setHostname("caf\xE9.example");
    resolve("caf\xE9.example", "192.0.2.7");
    watchFor(1.5);

    EXPECT_EQ(line()["host"], "caf\uFFFD.example");
}

TEST_F(JsonLineTest, AHostWithALineBreakStaysOnTheLine) {
    prefs.setHostname("two\nlines\"");
    resolve("two\nlines\"", "192.0.2.7");
    watchFor(1.5);

    EXPECT_EQ(text().find('\n'), text().size() - 1);
    EXPECT_EQ(line()["host"], "two\nlines\"");
}

// Time stamps.

struct Stamp {
    std::chrono::milliseconds sinceEpoch;
    std::string text;
};

class TimeStamp : public testing::TestWithParam<Stamp> {};

TEST_P(TimeStamp, IsInUtcWithThreeDecimals) {
    EXPECT_EQ(timestamp(at(GetParam().sinceEpoch)), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    JsonLine, TimeStamp,
    testing::Values(
        Stamp{std::chrono::milliseconds(0), "1970-01-01T00:00:00.000Z"},
        Stamp{std::chrono::milliseconds(7), "1970-01-01T00:00:00.007Z"},
        Stamp{std::chrono::milliseconds(-1), "1969-12-31T23:59:59.999Z"},
        Stamp{std::chrono::milliseconds(1'709'251'199'999), "2024-02-29T23:59:59.999Z"},
        Stamp{std::chrono::milliseconds(4'102'444'800'050), "2100-01-01T00:00:00.050Z"}));

TEST(JsonLine, ATimeStampNamesTheMillisecondThatHasBegun) {
    EXPECT_EQ(timestamp(RunLoop::WallTime(std::chrono::microseconds(1'999'999))), "1970-01-01T00:00:01.999Z");
}

} // namespace tarnwick
