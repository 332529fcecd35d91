// The command line of a report.
#include "app/CommandLine/ReportOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tarnwick {
namespace {

using testing::HasSubstr;

ReportOptions acceptedReport(const std::vector<std::string>& arguments) {
    const auto parsed = parseReportOptions(arguments);
    if (const auto* const error = std::get_if<UsageError>(&parsed)) {
        ADD_FAILURE() << error->text;
        return {};
    }
    return std::get<ReportOptions>(parsed);
}

std::string refusedReport(const std::vector<std::string>& arguments) {
    const auto parsed = parseReportOptions(arguments);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error != nullptr ? error->text : "accepted";
}

TEST(ReportOptions, AreAWeekOfTheUsualHostWithoutArguments) {
    const ReportOptions options = acceptedReport({});

    EXPECT_EQ(options.since, "7d");
    EXPECT_EQ(options.until, "0m");
    EXPECT_EQ(options.host, std::nullopt);
    EXPECT_EQ(options.format, ReportOptions::Format::text);
    EXPECT_FALSE(options.help);
}

TEST(ReportOptions, TakeTimesHostAndFormat) {
    const ReportOptions options = acceptedReport(
        {"--since", "2026-11-01", "--until=2026-11-23T14:05", "--host", "https://one.example/x", "--format",
         "csv"});

    EXPECT_EQ(options.since, "2026-11-01");
    EXPECT_EQ(options.until, "2026-11-23T14:05");
    EXPECT_EQ(options.host, "one.example");
    EXPECT_EQ(options.format, ReportOptions::Format::csv);
    EXPECT_EQ(acceptedReport({"--format", "json"}).format, ReportOptions::Format::json);
    EXPECT_EQ(acceptedReport({"--format", "html"}).format, ReportOptions::Format::html);
    EXPECT_EQ(acceptedReport({"--format", "text"}).format, ReportOptions::Format::text);
    EXPECT_TRUE(acceptedReport({"-h"}).help);
    EXPECT_TRUE(acceptedReport({"--version"}).version);
}

TEST(ReportOptions, RefuseWhatCannotBeMeant) {
    EXPECT_THAT(refusedReport({"--format", "pdf"}), HasSubstr("text, csv, json or html"));
    EXPECT_THAT(refusedReport({"--host", "one example"}), HasSubstr("--host takes"));
    EXPECT_THAT(refusedReport({"--since"}), HasSubstr("needs a value"));
    EXPECT_THAT(refusedReport({"--json"}), HasSubstr("unknown option"));
    EXPECT_THAT(refusedReport({"one.example"}), HasSubstr("one.example"));
}

TEST(ReportOptions, TheFormatsThatShellsOfferAreAccepted) {
    for (const ProgramOption& option : ReportOptions::table().options) {
        if (option.values == nullptr) {
            continue;
        }
        std::istringstream values(option.values);
        int count = 0;
        for (std::string value; values >> value; ++count) {
            acceptedReport({std::string("--") + option.name, value});
        }
        EXPECT_EQ(count, 4);
        EXPECT_STREQ(option.name, "format");
    }
}

TEST(ReportOptions, AreAllInTheHelp) {
    for (const char* option : {"--since", "--until", "--host", "--format", "--help", "--version"}) {
        EXPECT_THAT(usageOf(ReportOptions::table()), HasSubstr(option));
    }
    EXPECT_THAT(usageOf(ReportOptions::table()), HasSubstr("tarnwick-watch report"));
}

} // namespace
} // namespace tarnwick
