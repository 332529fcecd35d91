// A reading as one line of JSON.
#include "app/Watch/JsonLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tarnwick {

namespace {

using Json = nlohmann::ordered_json;

class JsonLineTest : public testing::Test {
protected:
    [[nodiscard]] std::string text() const { return jsonLine(reading_, now_, 12.5, "the title"); }

    [[nodiscard]] Json line() const { return Json::parse(text()); }

    Reading reading_;
    RunLoop::WallTime now_{};
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
    const std::string written = text();

    EXPECT_EQ(written.find('\n'), written.size() - 1);
    EXPECT_TRUE(Json::parse(written).is_object());
}

TEST_F(JsonLineTest, HasExactlyItsKeysInOrder) {
    EXPECT_THAT(
        keys(line()),
        testing::ElementsAre(
            "time", "monotonic", "host", "resolvedAddress", "status", "pausedUntil", "score", "bars",
            "latestPingMs", "lossPercent", "lossIsKnown", "menuTitle", "tooltip", "qualityTitle",
            "qualityTone", "downReason", "downReasonText", "lastError", "startError", "verdict", "likelihood",
            "evidence", "path", "accessibilitySummary", "session", "site", "samples", "notices"));
    const auto counter =
        testing::ElementsAre("sent", "replied", "lost", "averageMs", "fastestMs", "slowestMs");
    EXPECT_THAT(keys(line()["session"]), counter);
    EXPECT_THAT(keys(line()["site"]), counter);
}

TEST_F(JsonLineTest, HasTheSameKeysWhileDown) {
    const std::vector<std::string> expected = keys(line());

    reading_.status = ConnectionWatchdog::Status::down;
    reading_.downReason = DownReason{DownReason::Kind::noReplies};

    EXPECT_EQ(keys(line()), expected);
}

TEST_F(JsonLineTest, WhatIsNotKnownYetIsNull) {
    reading_.downReasonText = "No replies for 8 s";

    for (const char* key :
         {"pausedUntil", "verdict", "likelihood", "evidence", "resolvedAddress", "score", "latestPingMs",
          "downReason", "downReasonText", "lastError", "startError"}) {
        EXPECT_TRUE(line()[key].is_null()) << key;
    }
}

TEST_F(JsonLineTest, EachValueStandsUnderItsName) {
    now_ = at(std::chrono::milliseconds(1));
    reading_.host = "example.org";
    reading_.resolvedAddress = "192.0.2.7";
    reading_.status = ConnectionWatchdog::Status::up;
    reading_.score = 0.75;
    reading_.bars = 4;
    reading_.latestPingMs = 40.5;
    reading_.lossPercent = 2.5;
    reading_.lossIsKnown = true;
    reading_.tooltip = "the tool tip";
    reading_.qualityTitle = "Good";
    reading_.qualityTone = QualityTone::good;
    reading_.startError = PingError::socket("Permission denied");
    reading_.verdict = {
        .blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "the evidence"};
    reading_.path = {
        {.address = "192.0.2.1",
         .name = "router.example",
         .quietMs = 1.5,
         .samples = {{.ms = 3}, {.ms = 2.5}, {}, {}}},
        {.isHost = true}};
    reading_.accessibilitySummary = "the summary";
    reading_.session = {1, 2, 3, 4.5, 5.5, 6.5};
    reading_.site = {7, 8, 9, 10.5, 11.5, 12.5};
    reading_.samples = 300;
    reading_.notices = {
        {.kind = Notice::Kind::mayNotPing, .text = "Allow it with:", .command = "the command"},
        {.kind = Notice::Kind::noPanel, .text = "No panel"}};

    constexpr auto expected =
        R"({"time":"1970-01-01T00:00:00.001Z","monotonic":12.5,"host":"example.org",)"
        R"("resolvedAddress":"192.0.2.7","status":"up","pausedUntil":null,"score":0.75,"bars":4,)"
        R"("latestPingMs":40.5,"lossPercent":2.5,"lossIsKnown":true,"menuTitle":"the title","tooltip":"the tool tip",)"
        R"("qualityTitle":"Good","qualityTone":"good","downReason":null,"downReasonText":null,)"
        R"("lastError":"Could not open ICMP socket: Permission denied",)"
        R"("startError":"Could not open ICMP socket: Permission denied",)"
        R"("verdict":"provider","likelihood":"likely","evidence":"the evidence",)"
        R"("path":[{"address":"192.0.2.1","name":"router.example","isHost":false,"loss":0.5,)"
        R"("latestMs":2.5,"quietMs":1.5},)"
        R"({"address":null,"name":null,"isHost":true,"loss":null,"latestMs":null,"quietMs":null}],)"
        R"("accessibilitySummary":"the summary",)"
        R"("session":{"sent":1,"replied":2,"lost":3,"averageMs":4.5,"fastestMs":5.5,"slowestMs":6.5},)"
        R"("site":{"sent":7,"replied":8,"lost":9,"averageMs":10.5,"fastestMs":11.5,"slowestMs":12.5},)"
        R"("samples":300,"notices":["Allow it with: the command","No panel"]})"
        "\n";
    EXPECT_EQ(text(), expected);
}

TEST_F(JsonLineTest, TheEndOfAPauseIsWrittenInUtc) {
    reading_.pausedUntil = at(std::chrono::milliseconds(3'600'001));

    EXPECT_EQ(line()["pausedUntil"], "1970-01-01T01:00:00.001Z");
}

TEST_F(JsonLineTest, CasesAreWrittenByTheirNames) {
    using Status = ConnectionWatchdog::Status;
    using Kind = DownReason::Kind;
    for (const auto& [status, name] :
         {std::pair{Status::starting, "starting"}, {Status::up, "up"}, {Status::down, "down"}}) {
        reading_.status = status;
        EXPECT_EQ(line()["status"], name);
    }
    for (const auto& [tone, name] :
         {std::pair{QualityTone::neutral, "neutral"},
          {QualityTone::good, "good"},
          {QualityTone::middle, "middle"},
          {QualityTone::bad, "bad"}}) {
        reading_.qualityTone = tone;
        EXPECT_EQ(line()["qualityTone"], name);
    }
    reading_.downReasonText = "why";
    for (const auto& [kind, name] :
         {std::pair{Kind::socketError, "socketError"},
          {Kind::hostNotFound, "hostNotFound"},
          {Kind::noNetwork, "noNetwork"},
          {Kind::noReplies, "noReplies"}}) {
        reading_.downReason = DownReason{kind};
        EXPECT_EQ(line()["downReason"], name);
        EXPECT_EQ(line()["downReasonText"], "why");
    }
}

TEST_F(JsonLineTest, AHostThatIsNotUtf8IsWrittenWithMarksInItsPlace) {
    reading_.host = "caf\xE9.example";

    EXPECT_EQ(line()["host"], "caf\uFFFD.example");
}

TEST_F(JsonLineTest, AHostWithALineBreakStaysOnTheLine) {
    reading_.host = "two\nlines\"";

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
