// A report as plain text.
#include "app/Report/ReportText.h"

#include "tests/core/History/SomeHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using testing::HasSubstr;
using testing::Not;

const Span textDay = test::between("2026-01-05 00:00", "2026-01-06 00:00");

std::string textOf(const History& history) {
    return reportText(makeReport(history, "one.example", textDay, test::centralEurope), test::centralEurope);
}

History goodDay() {
    History history{.until = textDay.to};
    history.periods = test::goodPeriods(textDay, PeriodLength::quarterHour);
    return history;
}

TEST(ReportText, BeginsWithTheHostAndTheTime) {
    EXPECT_THAT(
        textOf(goodDay()), testing::StartsWith("Connection to one.example\n"
                                               "2026-01-05 01:00:00 to 2026-01-06 01:00:00\n"
                                               "Times are in UTC+01:00.\n\n"));
}

TEST(ReportText, OfAGoodDayTellsFiguresAndNoOutages) {
    const std::string text = textOf(goodDay());

    EXPECT_THAT(text, HasSubstr("  up                100% of the time watched\n"));
    EXPECT_THAT(text, HasSubstr("  watched           1 d\n"));
    for (const char* state :
         {"  down              ", "  asleep            ", "  paused            ", "  not watched       "}) {
        EXPECT_THAT(text, HasSubstr(std::string(state) + "0 s\n"));
    }
    EXPECT_THAT(text, HasSubstr("  pings             17280, 0 lost\n"));
    EXPECT_THAT(text, HasSubstr("  loss              0.00%\n"));
    EXPECT_THAT(text, HasSubstr("  fastest           20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  median            20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  slowest           20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  95th percentile   20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  99th percentile   20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  jitter            unknown\n"));
    EXPECT_THAT(text, HasSubstr("Outages: 0\n"));
    EXPECT_THAT(text, Not(HasSubstr("Worst hours")));
    EXPECT_THAT(text, HasSubstr("How it was measured\n"));
}

TEST(ReportText, OfNoAnswersHasNoLatency) {
    History history{.until = textDay.to};
    history.periods = {{.start = textDay.from}};
    history.periods[0].figures.lost = 1;

    const std::string text = textOf(history);

    EXPECT_THAT(text, HasSubstr("  loss              100.00%\n"));
    EXPECT_THAT(text, HasSubstr("  fastest           unknown\n"));
    EXPECT_THAT(text, HasSubstr("  slowest           unknown\n"));
}

TEST(ReportText, TellsOutagesWithTheirVerdicts) {
    History history = goodDay();
    history.episodes = {
        test::outage("2026-01-05 10:00", "2026-01-05 10:07"), {.start = test::at("2026-01-05 23:59")}};
    history.episodes[0].verdict = Verdict{
        .blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "The router answers."};

    const std::string text = textOf(history);

    EXPECT_THAT(
        text, HasSubstr("Outages: 2\n"
                        "  2026-01-05 11:00:00  7 min\n"
                        "    The router answers. (likely)\n"
                        "  2026-01-06 00:59:00  1 min, and it lasts\n"));
    EXPECT_THAT(
        text, HasSubstr("Worst hours\n"
                        "  2026-01-05 11:00  down 7 min, loss 0.0%, 95th percentile 20.0 ms\n"));
    EXPECT_THAT(text, HasSubstr("  down              8 min\n"));
}

TEST(ReportText, TellsTheRepeatedHourApart) {
    const Span night = test::between("2026-10-24 22:00", "2026-10-25 23:00"); // 25 hours
    History history{.until = night.to};
    history.periods = test::goodPeriods(night, PeriodLength::quarterHour);
    history.episodes = {
        test::outage("2026-10-25 00:30", "2026-10-25 00:31"),
        test::outage("2026-10-25 01:30", "2026-10-25 01:32")};

    const std::string text =
        reportText(makeReport(history, "one.example", night, test::centralEurope), test::centralEurope);

    EXPECT_THAT(text, HasSubstr("\nTimes are in UTC+02:00, from 2026-10-25 on UTC+01:00.\n"));
    EXPECT_THAT(text, HasSubstr("  watched           1 d 1 h\n"));
    EXPECT_THAT(
        text, HasSubstr("  2026-10-25 02:30:00 UTC+02:00  1 min\n  2026-10-25 02:30:00 UTC+01:00  2 min\n"));
    EXPECT_THAT(text, HasSubstr("  2026-10-25 02:00 UTC+01:00  down 2 min,"));
}

TEST(ReportText, DoesNotCountTheHourThatTheClockLeavesOut) {
    const Span night = test::between("2026-03-28 23:00", "2026-03-29 22:00"); // 23 hours
    History history{.until = night.to};
    history.periods = test::goodPeriods(night, PeriodLength::quarterHour);
    history.episodes = {test::outage("2026-03-29 00:59:30", "2026-03-29 01:01:00")};

    const std::string text =
        reportText(makeReport(history, "one.example", night, test::centralEurope), test::centralEurope);

    EXPECT_THAT(text, HasSubstr("\nTimes are in UTC+01:00, from 2026-03-29 on UTC+02:00.\n"));
    EXPECT_THAT(text, HasSubstr("  watched           23 h\n"));
    EXPECT_THAT(text, HasSubstr("  2026-03-29 01:59:30  1 min 30 s\n"));
    EXPECT_THAT(text, HasSubstr("  2026-03-29 03:00  down 1 min,"));
    EXPECT_THAT(text, HasSubstr("  2026-03-29 01:00  down 30 s,"));
}

TEST(ReportText, SaysThatNothingIsKnown) {
    EXPECT_EQ(textOf({}), "Nothing is known of one.example in this time.\n");
}

} // namespace
} // namespace tarnwick
