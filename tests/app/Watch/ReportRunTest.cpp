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
        const auto report = asked(options);
        const auto* const error = std::get_if<UsageError>(&report);
        return error != nullptr ? "refused: " + error->text : std::get<ToldReport>(report).text;
    }

    [[nodiscard]] std::string hint(const ReportOptions& options) {
        return std::get<ToldReport>(asked(options)).hint;
    }

    [[nodiscard]] std::variant<ToldReport, UsageError> asked(const ReportOptions& options) {
        return reportFor(journal, options, "one.example", {.version = "1.2.3", .made = reportTime}, utc);
    }

    void rememberAlso(const std::string& host) {
        journal.write({.host = host, .episodes = {{.start = reportTime}}, .until = reportTime});
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

TEST_F(ReportRunTest, ReadsWholeDays) {
    ReportOptions options;
    options.since = "30m";
    (void)told(options);

    EXPECT_THAT(journal.wanted, testing::ElementsAre(Span{reportTime - std::chrono::days(1), reportTime}));
}

TEST_F(ReportRunTest, ReadsOutagesFromTheirBeginning) {
    const HistoryTime start = reportTime - std::chrono::hours(62);
    journal.write({.host = "one.example", .episodes = {{.start = start}}, .until = reportTime});
    ReportOptions options;
    options.since = "30m";
    (void)told(options);

    EXPECT_EQ(journal.wanted.back(), (Span{start, reportTime}));
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
    EXPECT_EQ(json["figures"]["percentile99Ms"], 20);
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

TEST_F(ReportRunTest, IsAPageAsHtml) {
    ReportOptions options;
    options.format = ReportOptions::Format::html;

    EXPECT_THAT(told(options), StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(told(options), HasSubstr("By Tarnwick 1.2.3 on 2026-11-23 00:00 UTC+00:00"));
}

TEST_F(ReportRunTest, NamesOtherHostsWhereNothingIsKnownOfTheOneAskedFor) {
    ReportOptions options;
    options.host = "two.example";

    EXPECT_EQ(hint({}), "");
    EXPECT_EQ(
        hint(options), "The history has nothing of two.example, but of one.example: name one with --host.");

    rememberAlso("four.example");
    EXPECT_THAT(hint(options), HasSubstr("but of four.example and one.example: name"));

    for (const char* host : {"a.example", "b.example", "c.example"}) {
        rememberAlso(host);
    }
    EXPECT_THAT(
        hint(options), HasSubstr("of a.example, b.example, c.example, four.example and one.example: name"));

    rememberAlso("d.example");
    EXPECT_THAT(
        hint(options),
        HasSubstr("of a.example, b.example, c.example, d.example, four.example and 1 more: name"));
}

TEST_F(ReportRunTest, NamesNoOtherHostWhereTheOneAskedForIsKnownOrNone) {
    ReportOptions before;
    before.since = "2w";
    before.until = "1w";
    EXPECT_EQ(hint(before), "");

    journal.clear();
    EXPECT_EQ(hint({}), "");
}

/// An hour of pings and an outage in each of both hours that the clock shows as the third one of a night.
TEST(ReportRun, TellsTheRepeatedHourApartAsJson) {
    const HistoryTime midnight{std::chrono::sys_days(std::chrono::year(2026) / 10 / 25)};
    const auto offset = [&](HistoryTime time) -> std::chrono::seconds {
        return std::chrono::hours(time < midnight + std::chrono::hours(1) ? 2 : 1);
    };
    simulation::RecordingJournal journal;
    Journal::Batch batch{.host = "one.example", .until = midnight + std::chrono::hours(23)};
    for (HistoryTime start = midnight - std::chrono::hours(2); start < batch.until;
         start += std::chrono::minutes(1)) {
        Period period{.start = start};
        period.figures.watchedSeconds = 60;
        batch.minutes.push_back(period);
    }
    for (const int minute : {30, 90}) {
        const HistoryTime start = midnight + std::chrono::minutes(minute);
        batch.episodes.push_back({.start = start, .end = start + std::chrono::minutes(1)});
    }
    journal.write(batch);
    ReportOptions options;
    options.since = "2026-10-25";
    options.format = ReportOptions::Format::json;

    const auto told = reportFor(journal, options, "one.example", {.made = batch.until}, offset);
    const auto json = nlohmann::json::parse(std::get<ToldReport>(told).text);

    EXPECT_EQ(json["since"], "2026-10-25T00:00:00+02:00");
    EXPECT_EQ(json["until"], "2026-10-26T00:00:00+01:00");
    EXPECT_EQ(json["outages"][0]["start"], "2026-10-25T02:30:00+02:00");
    EXPECT_EQ(json["outages"][1]["start"], "2026-10-25T02:30:00+01:00");
    EXPECT_EQ(json["days"][0]["watchedSeconds"], 90'000);
    EXPECT_EQ(json["days"].size(), 1U);
}

} // namespace
} // namespace tarnwick
