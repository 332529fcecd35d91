// The chart on a report's page.
#include "tests/app/Report/SomePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::aGoodDay;
using test::at;
using test::between;
using test::countOf;
using test::outage;
using test::pageDay;
using test::pageOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

TEST(HtmlChart, ShowsTimeWithoutPingsAsNotWatched) {
    History history = aGoodDay();
    std::erase_if(
        history.periods, [](const Period& period) { return period.start >= at("2026-01-05 12:00"); });

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr("</svg>Not watched</th><td>12 h</td><td>50.00%</td>"));
    EXPECT_THAT(
        page,
        HasSubstr("<rect class=\"unwatched\" x=\"384.0\" y=\"10.0\" width=\"336.0\" height=\"236.0\"/>"));
}

TEST(HtmlChart, DrawsOutagesAsWallsThatCanBeSeen) {
    History history = aGoodDay();
    history.episodes = {
        outage("2026-01-05 06:00", "2026-01-05 12:00"), outage("2026-01-05 18:00", "2026-01-05 18:00:05")};

    const std::string page = pageOf(history);

    EXPECT_THAT(
        page, HasSubstr("<rect class=\"outage\" x=\"216.0\" y=\"10.0\" width=\"168.0\" height=\"236.0\"/>"));
    EXPECT_THAT(
        page, HasSubstr("<rect class=\"outage\" x=\"552.0\" y=\"10.0\" width=\"1.4\" height=\"236.0\"/>"));
}

TEST(HtmlChart, DrawsManyShortOutagesSoThatTheyDoNotFillTheChart) {
    History history = aGoodDay();
    for (int number = 0; number < 224; ++number) {
        const HistoryTime start = pageDay.from + 2h + std::chrono::minutes(5 * number);
        history.episodes.push_back({.start = start, .end = start + 1s});
    }

    // 112 of 672 for all of them.
    EXPECT_EQ(countOf(pageOf(history), "y=\"10.0\" width=\"0.5\" height=\"236.0\"/>"), 224U);
}

TEST(HtmlChart, DrawsAnswersOnARoundScaleAndMarksThoseBeyondIt) {
    History history = aGoodDay();
    history.periods[40].figures.addAnswer(900);

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr("<svg class=\"chart\" role=\"img\" viewBox=\"0 0 720 274\">"));
    EXPECT_THAT(page, HasSubstr("<text class=\"value\" x=\"42.0\" y=\"13.5\">40 ms</text>"));
    EXPECT_THAT(page, HasSubstr(">0 ms</text>"));
    // 20 of 40 ms, and one that fills the lane.
    EXPECT_THAT(
        page, HasSubstr("<rect class=\"answer\" x=\"48.0\" y=\"96.0\" width=\"4.0\" height=\"86.0\"/>"));
    EXPECT_THAT(page, HasSubstr("y=\"10.0\" width=\"4.0\" height=\"172.0\"/><rect class=\"beyond\""));
    EXPECT_THAT(page, HasSubstr("slowest answer 900.0 ms, outages 0"));
    EXPECT_THAT(page, HasSubstr("slowest answer of each 10 min"));
}

/// A day whose periods are all as slow, but for some.
History aDayOf(double ms, const std::vector<double>& others = {}) {
    History history{.until = pageDay.to};
    for (HistoryTime start = pageDay.from; start < pageDay.to; start += 15min) {
        history.periods.push_back(test::goodPeriod(start, PeriodLength::quarterHour, ms));
    }
    for (std::size_t index = 0; index < others.size(); ++index) {
        history.periods[index * 2].figures.addAnswer(others[index]);
    }
    return history;
}

TEST(HtmlChart, ScalesAnswersSoThatFewSlowOnesDoNotFlattenTheOthers) {
    EXPECT_THAT(pageOf(aDayOf(1)), HasSubstr(">4 ms</text>")); // never less
    EXPECT_THAT(pageOf(aDayOf(1)), HasSubstr(">3 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(50)), HasSubstr(">60 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(50)), HasSubstr(">15 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(50, {90})), HasSubstr(">100 ms</text>")); // less than twice the usual
    EXPECT_THAT(pageOf(aDayOf(50, {90})), Not(HasSubstr("class=\"beyond\" x")));
    EXPECT_THAT(pageOf(aDayOf(50, {110})), HasSubstr(">80 ms</text>")); // more: a quarter above the usual
    EXPECT_THAT(pageOf(aDayOf(82, {200})), HasSubstr(">200 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(82, {200})), Not(HasSubstr("class=\"beyond\" x"))); // just reaches the top
    EXPECT_EQ(countOf(pageOf(aDayOf(50, {110})), "class=\"beyond\" x"), 2U); // both buckets of its quarter
}

TEST(HtmlChart, ShowsSlowAnswersInSeconds) {
    EXPECT_THAT(pageOf(aDayOf(900)), HasSubstr(">1000 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(900)), HasSubstr(">750 ms</text>"));
    EXPECT_THAT(pageOf(aDayOf(1000)), HasSubstr(">2 s</text>"));
    EXPECT_THAT(pageOf(aDayOf(1000)), HasSubstr(">1.5 s</text>"));
}

TEST(HtmlChart, DrawsATimeWithoutAnswersOnAScaleToo) {
    History history{.until = pageDay.to};
    history.periods = {{.start = pageDay.from, .length = PeriodLength::hour}};
    history.periods[0].figures.lost = 5;

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr(">4 ms</text>"));
    EXPECT_THAT(page, HasSubstr(">100%</text>"));
    EXPECT_THAT(page, HasSubstr("slowest answer unknown, outages 0, the longest of 0 s."));
    EXPECT_THAT(page, HasSubstr("<dt>Median latency</dt><dd>unknown</dd>"));
    EXPECT_THAT(page, HasSubstr("<th scope=\"row\">Slowest</th><td>unknown</td>"));
}

TEST(HtmlFigures, OfASingleAnswerAreKnown) {
    History history{.until = pageDay.to};
    history.periods = {{.start = pageDay.from, .length = PeriodLength::hour}};
    history.periods[0].figures.addAnswer(34);

    EXPECT_THAT(pageOf(history), HasSubstr("<th scope=\"row\">Fastest</th><td>34.0 ms</td>"));
    EXPECT_THAT(pageOf(history), HasSubstr("<th scope=\"row\">Slowest</th><td>34.0 ms</td>"));
}

TEST(HtmlChart, HatchesNoTimeThatIsTooShortToBeSeen) {
    History history = aGoodDay();
    history.gaps = {
        {.kind = Gap::Kind::paused, .span = between("2026-01-05 02:00", "2026-01-05 02:05")},
        {.kind = Gap::Kind::paused, .span = between("2026-01-05 06:00", "2026-01-05 06:06")}};

    const std::string page = pageOf(history);

    EXPECT_EQ(countOf(page, "<rect class=\"unwatched\" x=\"216.0\" y=\"10.0\" width=\"2.8\""), 1U);
    EXPECT_EQ(countOf(page, "<rect class=\"unwatched\" x=\"104.0\" y"), 0U);
    EXPECT_THAT(page, HasSubstr("</svg>Paused</th><td>11 min</td><td>0.76%</td>"));
}

TEST(HtmlChart, NamesTimesThatHaveRoomBelowTheChart) {
    const std::string page = pageOf(aGoodDay(), between("2026-01-05 00:20", "2026-01-05 23:50"));

    // 02:00 to 00:00 by the local clock; the last one would reach beyond the drawing.
    EXPECT_THAT(page, HasSubstr("<text class=\"time\" x=\"67.1\" y=\"264.0\">02:00</text>"));
    EXPECT_THAT(page, HasSubstr(">22:00</text>"));
    EXPECT_THAT(page, HasSubstr("<line class=\"mark\" x1=\"696.2\" y1=\"10.0\" x2=\"696.2\" y2=\"250.0\"/>"));
    EXPECT_THAT(page, HasSubstr(">00:00</text>"));
    const std::string later = pageOf(aGoodDay(), between("2026-01-05 00:50", "2026-01-05 23:10"));
    EXPECT_THAT(later, HasSubstr("<line class=\"mark\" x1=\"53.0\""));
    EXPECT_THAT(later, Not(HasSubstr(">02:00</text>")));
    EXPECT_THAT(later, HasSubstr("<line class=\"mark\" x1=\"715.0\""));
    EXPECT_THAT(later, Not(HasSubstr(">00:00</text>")));
}

TEST(HtmlChart, DrawsTheLeastAnswerAndTheLeastLossSoThatTheyCanBeSeen) {
    History history = aDayOf(0.001);
    for (Period& period : history.periods) {
        period.figures.lost = 1;
        period.figures.replied = 100'000;
    }

    const std::string page = pageOf(history);

    EXPECT_THAT(
        page, HasSubstr("<rect class=\"answer\" x=\"48.0\" y=\"181.0\" width=\"4.0\" height=\"1.0\"/>"));
    EXPECT_THAT(
        page, HasSubstr("<rect class=\"loss\" x=\"48.0\" y=\"245.0\" width=\"4.0\" height=\"1.0\"/>"));
}

TEST(HtmlChart, DrawsTheLossOnItsOwnScale) {
    History history = aGoodDay();
    history.periods[0].figures.lost = history.periods[0].figures.replied / 9; // a tenth

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr(">10%</text>"));
    EXPECT_THAT(pageOf(aGoodDay()), HasSubstr(">4%</text>"));                    // never less
    history.periods[40].figures.lost = history.periods[40].figures.replied / 19; // a twentieth
    EXPECT_EQ(countOf(pageOf(history), "y=\"225.0\" width=\"4.0\" height=\"21.0\"/>"), 1U);
    EXPECT_THAT(
        page, HasSubstr("<rect class=\"loss\" x=\"48.0\" y=\"202.0\" width=\"4.0\" height=\"44.0\"/>"));
}

} // namespace
} // namespace tarnwick
