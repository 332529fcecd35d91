// What the journal tells on the command line.
#include "app/Watch/ReportRun.h"

#include "tests/simulation/RecordingJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tarnwick {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr HistoryTime reportTime{std::chrono::sys_days(std::chrono::year(2026) / 11 / 23)};

/// An hour of pings, with an outage of ten minutes that has a verdict, up to `reportTime`.
class ReportRunTest : public testing::Test {
protected:
    ReportRunTest() {
        Journal::Batch batch{.host = "one.example", .until = reportTime};
        for (int minute = 60; minute > 0; --minute) {
            Period period{.start = reportTime - std::chrono::minutes(minute)};
            period.figures.watchedSeconds = 60;
            period.figures.sent = 1;
            period.figures.addAnswer(20);
            batch.minutes.push_back(period);
        }
        batch.episodes = {
            {.start = reportTime - std::chrono::minutes(30),
             .end = reportTime - std::chrono::minutes(20),
             .verdict = Verdict{.blame = Blame::wifi, .likelihood = Likelihood::likely, .evidence = "Weak."},
             .address = "192.0.2.1",
             .interface = "wlan0",
             .pingsLost = 600}};
        journal.write(batch);
    }

    [[nodiscard]] std::string told(const ReportOptions& options) {
        const auto report = reportFor(journal, options, "one.example", reportTime, utc);
        const auto* const error = std::get_if<UsageError>(&report);
        return error != nullptr ? "refused: " + error->text : std::get<std::string>(report);
    }

    static std::chrono::seconds utc(HistoryTime /*time*/) { return std::chrono::seconds(0); }

    simulation::RecordingJournal journal;
};

TEST_F(ReportRunTest, IsTextOfTheHostInTheSettingsUnlessToldOtherwise) {
    EXPECT_THAT(
        told({}), StartsWith("Connection to one.example\n2026-11-22 23:00:00 to 2026-11-23 00:00:00\n"));
    ReportOptions options;
    options.host = "two.example";
    EXPECT_EQ(told(options), "Nothing is known of two.example in this time.\n");
}

TEST_F(ReportRunTest, IsOfTheTimeThatIsWanted) {
    ReportOptions options;
    options.since = "30m";
    options.until = "2026-11-22T23:50";

    EXPECT_THAT(told(options), HasSubstr("\n2026-11-22 23:30:00 to 2026-11-22 23:50:00\n"));
}

TEST_F(ReportRunTest, RefusesTimesThatCannotBeMeant) {
    ReportOptions options;
    options.since = "yesterday";
    EXPECT_THAT(told(options), StartsWith("refused: --since takes"));
    options.since = "1h";
    options.until = "now";
    EXPECT_THAT(told(options), StartsWith("refused: --until takes"));
    options.until = "1h";
    EXPECT_EQ(told(options), "refused: --until must be later than --since");
}

TEST_F(ReportRunTest, IsALineForEachOutageAsCsv) {
    ReportOptions options;
    options.format = ReportOptions::Format::csv;

    EXPECT_THAT(told(options), HasSubstr("2026-11-22T23:30:00+00:00,2026-11-22T23:40:00+00:00,600,wifi,"));
}

TEST_F(ReportRunTest, IsOneObjectAsJson) {
    ReportOptions options;
    options.format = ReportOptions::Format::json;

    const auto json = nlohmann::json::parse(told(options));

    EXPECT_EQ(json["host"], "one.example");
    EXPECT_EQ(json["since"], "2026-11-22T23:00:00+00:00");
    EXPECT_EQ(json["until"], "2026-11-23T00:00:00+00:00");
    EXPECT_EQ(json["availability"]["watchedSeconds"], 3600);
    EXPECT_EQ(json["availability"]["downSeconds"], 600);
    EXPECT_NEAR(json["availability"]["percent"].get<double>(), 83.333, 0.001);
    EXPECT_EQ(json["figures"]["sent"], 60);
    EXPECT_EQ(json["figures"]["medianMs"], 20);
    EXPECT_TRUE(json["figures"]["jitterMs"].is_null());
    EXPECT_EQ(json["outages"], nlohmann::json::parse(R"([{"start": "2026-11-22T23:30:00+00:00",
            "end": "2026-11-22T23:40:00+00:00", "seconds": 600, "verdict": "wifi", "likelihood": "likely",
            "evidence": "Weak.", "address": "192.0.2.1", "interface": "wlan0", "pingsLost": 600}])"));
    EXPECT_EQ(json["worstHours"][0]["downSeconds"], 600);
    EXPECT_EQ(json["days"][0]["day"], "2026-11-22");
    EXPECT_EQ(json["days"][0]["outages"], 1);
}

TEST_F(ReportRunTest, OfNothingIsAnObjectWithoutTimesAsJson) {
    ReportOptions options;
    options.format = ReportOptions::Format::json;
    options.host = "two.example";

    const auto json = nlohmann::json::parse(told(options));

    EXPECT_TRUE(json["since"].is_null());
    EXPECT_TRUE(json["availability"]["percent"].is_null());
    EXPECT_TRUE(json["figures"]["fastestMs"].is_null());
    EXPECT_TRUE(json["outages"].empty());
}

} // namespace
} // namespace tarnwick
