// What the outages window shows of a history.
#include "app/OutagesView/Model/OutagesPage.h"

#include "tests/core/History/SomeHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using test::outage;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr std::size_t today = OutagesPage::today;

/// Three days without a break, until noon of the third one by the local clock.
const HistoryTime noon = at("2026-01-07 11:00");

History threeDays() {
    History history{.until = noon};
    history.periods =
        test::goodPeriods({.from = at("2026-01-04 23:00"), .to = noon}, PeriodLength::quarterHour);
    return history;
}

/// The figures of a day of `threeDays` with what is added to it.
std::map<std::string, std::string> figuresOf(const History& history, std::size_t day) {
    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);
    std::map<std::string, std::string> figures;
    for (const OutagesFigure& figure : dayFigures(history, page.days.at(day).summary, centralEurope)) {
        figures[figure.name] = figure.value;
    }
    return figures;
}

std::string textOfDay(const History& history, std::size_t day) {
    return makeOutagesPage(history, noon, centralEurope).days.at(day).text;
}

std::vector<std::string> lengths(const OutagesPage& page) {
    std::vector<std::string> texts;
    for (const OutagesRow& row : page.rows) {
        texts.push_back(row.length);
    }
    return texts;
}

TEST(OutagesPage, HasNinetyDaysUpToToday) {
    const OutagesPage page = makeOutagesPage(threeDays(), noon, centralEurope);

    ASSERT_EQ(page.days.size(), 90U);
    EXPECT_EQ(page.days.front().date, "Friday, 2025-10-10");
    EXPECT_EQ(page.days.back().date, "Wednesday, 2026-01-07");
    EXPECT_EQ(page.days.back().summary.span, between("2026-01-06 23:00", "2026-01-07 11:00"));
    EXPECT_EQ(outagesSpan(noon, centralEurope), between("2025-10-09 23:00", "2026-01-07 11:00"));
}

TEST(OutagesPage, OfAnEmptyHistoryHasDaysThatWereNotWatched) {
    const OutagesPage page = makeOutagesPage({}, noon, centralEurope);

    ASSERT_EQ(page.days.size(), 90U);
    EXPECT_EQ(page.days.front().text, "Friday, 2025-10-10: not watched");
    EXPECT_EQ(page.days.back().text, "Wednesday, 2026-01-07: not watched");
    EXPECT_THAT(page.rows, IsEmpty());
    EXPECT_EQ(page.rowOf(today), std::nullopt);
}

TEST(OutagesPage, TellsHowEachDayWas) {
    History history = threeDays();
    history.episodes = {
        outage("2026-01-05 10:00", "2026-01-05 10:10"), outage("2026-01-05 12:00", "2026-01-05 12:05"),
        outage("2026-01-06 10:00", "2026-01-06 10:05"), outage("2026-01-07 10:00", "2026-01-07 10:05")};
    history.episodes[2].kind = Episode::Kind::degradation;

    EXPECT_EQ(textOfDay(history, today - 3), "Sunday, 2026-01-04: not watched");
    EXPECT_EQ(
        textOfDay(history, today - 2), "Monday, 2026-01-05: 98.958% available, 2 outages, down for 15 min");
    EXPECT_EQ(textOfDay(history, today - 1), "Tuesday, 2026-01-06: 100% available, at times poor");
    EXPECT_EQ(
        textOfDay(history, today), "Wednesday, 2026-01-07: 99.305% available, 1 outage, down for 5 min");
    history.episodes.clear();
    EXPECT_EQ(textOfDay(history, today), "Wednesday, 2026-01-07: 100% available");
}

TEST(OutagesPage, ADayOfAClockChangeIsAsLongAsItWas) {
    const auto watchedOn = [](const Span& span, HistoryTime now) {
        History history{.until = now};
        history.periods = test::goodPeriods(span, PeriodLength::quarterHour);
        const OutagesPage page = makeOutagesPage(history, now, centralEurope);
        return dayFigures(history, page.days.at(today - 1).summary, centralEurope).at(2).value;
    };

    EXPECT_EQ(watchedOn(between("2026-03-28 00:00", "2026-03-30 12:00"), at("2026-03-30 12:00")), "23 h");
    EXPECT_EQ(watchedOn(between("2026-10-24 00:00", "2026-10-26 12:00"), at("2026-10-26 12:00")), "1 d 1 h");
}

TEST(OutagesPage, ListsTheNewestFirst) {
    History history = threeDays();
    history.episodes = {
        outage("2026-01-05 10:00", "2026-01-05 10:10"), outage("2026-01-06 10:00", "2026-01-06 10:05"),
        outage("2026-01-07 10:00", "2026-01-07 10:01")};
    history.episodes[1].kind = Episode::Kind::degradation;

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    EXPECT_THAT(lengths(page), ElementsAre("1 min", "5 min", "10 min"));
    EXPECT_EQ(page.rows[0].when, "2026-01-07 11:00:00");
    EXPECT_EQ(page.rows[0].day, today);
    EXPECT_EQ(page.rows[1].kind, Episode::Kind::degradation);
    EXPECT_EQ(page.rows[2].day, today - 2);
}

TEST(OutagesPage, LeavesOutWhatEndedBeforeItsDays) {
    History history = threeDays();
    history.episodes = {
        outage("2025-10-09 20:00", "2025-10-09 23:00"), outage("2025-10-09 22:00", "2025-10-09 23:30")};

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    ASSERT_EQ(page.rows.size(), 1U);
    EXPECT_EQ(page.rows[0].length, "1 h 30 min");
    EXPECT_EQ(page.rows[0].day, 0U);
}

TEST(OutagesPage, AnOutageOverMidnightIsOneRowForBothDays) {
    History history = threeDays();
    history.episodes = {outage("2026-01-05 22:00", "2026-01-06 01:00")};

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    EXPECT_THAT(lengths(page), ElementsAre("3 h"));
    EXPECT_EQ(page.rows[0].day, today - 2);
    EXPECT_EQ(page.rowOf(today - 2), 0U);
    EXPECT_EQ(page.rowOf(today - 1), 0U);
    EXPECT_EQ(page.rowOf(today), std::nullopt);
}

TEST(OutagesPage, ADaysRowIsItsNewestOutage) {
    History history = threeDays();
    history.episodes = {
        outage("2026-01-06 10:00", "2026-01-06 10:05"), outage("2026-01-06 12:00", "2026-01-06 12:05"),
        outage("2026-01-06 14:00", "2026-01-06 14:05"), outage("2026-01-07 10:00", "2026-01-07 10:05")};
    history.episodes[2].kind = Episode::Kind::degradation;
    history.episodes[3].kind = Episode::Kind::degradation;

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    EXPECT_EQ(page.rowOf(today), 0U);
    EXPECT_EQ(page.rowOf(today - 1), 2U);
}

TEST(OutagesPage, TimeAsleepIsNoPartOfALength) {
    History history = threeDays();
    history.episodes = {outage("2026-01-06 10:00", "2026-01-06 12:00")};
    history.gaps = {{.kind = Gap::Kind::asleep, .span = between("2026-01-06 10:30", "2026-01-06 11:30")}};

    EXPECT_THAT(lengths(makeOutagesPage(history, noon, centralEurope)), ElementsAre("1 h"));
}

TEST(OutagesPage, WhatLastsSaysSo) {
    History history = threeDays();
    history.episodes = {{.start = noon - 187s}};

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    EXPECT_THAT(lengths(page), ElementsAre("3 min 7 s so far"));
    EXPECT_EQ(page.rows[0].text(), "2026-01-07 11:56:53, down for 3 min 7 s so far. Not clear.");
}

TEST(OutagesPage, ARowTellsWhoseFaultItWasAndWhy) {
    History history = threeDays();
    history.episodes = {
        outage("2026-01-06 10:00", "2026-01-06 10:05"), outage("2026-01-07 10:00", "2026-01-07 10:05")};
    history.episodes[0].verdict = Verdict{
        .blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "Your router answers."};
    history.episodes[1].kind = Episode::Kind::degradation;
    history.episodes[1].verdict = Verdict{.evidence = notClearYet};

    const OutagesPage page = makeOutagesPage(history, noon, centralEurope);

    EXPECT_EQ(page.rows[1].blame, "Provider (likely)");
    EXPECT_EQ(page.rows[1].evidence, "Your router answers.");
    EXPECT_EQ(
        page.rows[1].text(), "2026-01-06 11:00:00, down for 5 min. Provider (likely): Your router answers.");
    EXPECT_EQ(page.rows[0].text(), "2026-01-07 11:00:00, poor for 5 min. Not clear.");
}

TEST(OutagesPage, WhatIsNotCertainSaysSo) {
    const auto blamed = [](const Verdict& verdict) {
        History history = threeDays();
        history.episodes = {outage("2026-01-06 10:00", "2026-01-06 10:05")};
        history.episodes[0].verdict = verdict;
        return makeOutagesPage(history, noon, centralEurope).rows.at(0).blame;
    };

    EXPECT_EQ(blamed({.blame = Blame::wifi, .likelihood = Likelihood::possible}), "Wi-Fi (possible)");
    EXPECT_EQ(blamed({.blame = Blame::wifi, .likelihood = Likelihood::likely}), "Wi-Fi (likely)");
    EXPECT_EQ(blamed({.blame = Blame::wifi, .likelihood = Likelihood::certain}), "Wi-Fi");
    EXPECT_EQ(blamed({.blame = Blame::unclear, .likelihood = Likelihood::likely}), "Not clear");
}

TEST(DayFigures, AreThoseOfTheDay) {
    History history = threeDays();
    history.episodes = {outage("2026-01-06 10:00", "2026-01-06 10:15")};
    history.gaps = {
        {.kind = Gap::Kind::asleep, .span = between("2026-01-06 20:00", "2026-01-06 22:00")},
        {.kind = Gap::Kind::paused, .span = between("2026-01-06 22:00", "2026-01-06 23:00")}};
    std::erase_if(history.periods, [](const Period& period) {
        return between("2026-01-06 20:00", "2026-01-06 23:00").overlaps(period.span());
    });

    EXPECT_EQ(
        figuresOf(history, today - 1), (std::map<std::string, std::string>{
                                           {"Availability", "98.809%"},
                                           {"Down", "15 min"},
                                           {"Watched", "21 h"},
                                           {"Asleep", "2 h"},
                                           {"Paused", "1 h"},
                                           {"Not watched", "0 s"},
                                           {"Median latency", "20.0 ms"},
                                           {"95th percentile", "20.0 ms"},
                                           {"Slowest answer", "20.0 ms"},
                                           {"Jitter", "unknown"},
                                           {"Packet loss", "0.00%"},
                                           {"Worst hour", "11:00, down for 15 min"}}));
}

TEST(DayFigures, OfADayThatWasNotWatchedAreUnknown) {
    const auto figures = figuresOf(threeDays(), today - 3);

    EXPECT_EQ(figures.size(), dayFigureCount);
    EXPECT_EQ(figures.at("Availability"), "unknown");
    EXPECT_EQ(figures.at("Not watched"), "1 d");
    EXPECT_EQ(figures.at("Median latency"), "unknown");
    EXPECT_EQ(figures.at("Slowest answer"), "unknown");
    EXPECT_EQ(figures.at("Packet loss"), "unknown");
    EXPECT_EQ(figures.at("Worst hour"), "none");
}

TEST(DayFigures, OfASingleAnswerAreKnown) {
    History history{.until = noon};
    history.periods.push_back({.start = at("2026-01-06 10:00"), .length = PeriodLength::quarterHour});
    history.periods.front().figures.sent = 1;
    history.periods.front().figures.addAnswer(34);

    EXPECT_EQ(figuresOf(history, today - 1).at("Slowest answer"), "34.0 ms");
}

TEST(DayFigures, AnHourOfLossIsWorstWhereNothingWasDown) {
    History history = threeDays();
    history.periods.at(4).figures.lost = 20; // of 00:00 to 01:00 UTC on the first day
    history.periods.at(4).figures.sent += 20;

    EXPECT_EQ(figuresOf(history, today - 2).at("Worst hour"), "01:00, 2.70% lost");
}

TEST(HistoryStatus, TellsSinceWhenOrWhyNothingIsKnown) {
    const Span span = outagesSpan(noon, centralEurope);
    const auto status = [&](const History& history, const HistoryKeeping& keeping) {
        return historyStatus(history, span, keeping, centralEurope);
    };
    const HistoryKeeping kept{.host = "one.example"};
    const HistoryKeeping off{.host = "one.example", .isOn = false, .problem = "It is not stored."};
    const HistoryKeeping failing{.host = "one.example", .problem = "The history is not stored: no space."};

    EXPECT_EQ(status(threeDays(), kept), "Connection to one.example, known since 2026-01-05 00:00.");
    EXPECT_EQ(status({}, kept), "Nothing is known of one.example yet. Its history has just begun.");
    EXPECT_EQ(status({}, off), "No history is kept: that is switched off in the settings.");
    EXPECT_EQ(
        status(threeDays(), off), "Connection to one.example, known since 2026-01-05 00:00. "
                                  "No history is kept: that is switched off in the settings.");
    EXPECT_EQ(status({}, failing), "The history is not stored: no space.");
}

TEST(HistoryStatus, AnOutageMayBeAllThatIsKnown) {
    History history{.until = noon};
    history.episodes = {outage("2026-01-06 10:00", "2026-01-06 12:00")};

    EXPECT_EQ(
        historyStatus(history, outagesSpan(noon, centralEurope), {.host = "::1"}, centralEurope),
        "Connection to ::1, known since 2026-01-06 11:00.");
}

TEST(HistoryStatus, AnOlderHistoryFillsTheCalendar) {
    const Span span = outagesSpan(noon, centralEurope);
    History history{.until = noon};
    history.periods = test::goodPeriods({.from = span.from, .to = span.from + 1h}, PeriodLength::hour);

    EXPECT_EQ(
        historyStatus(history, span, {.host = "one.example"}, centralEurope),
        "Connection to one.example, the last 90 days.");
}

} // namespace
} // namespace tarnwick
