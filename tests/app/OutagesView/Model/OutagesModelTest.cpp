// How the outages window's content follows the history.
#include "app/OutagesView/Model/OutagesModel.h"

#include "tests/core/History/SomeHistory.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::centralEurope;
using test::outage;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

class OutagesModelTest : public testing::Test {
protected:
    OutagesModelTest() {
        loop.setWallClock(at("2026-01-07 11:00"));
        publish({.host = "one.example"});
        model.onChange = [this] { ++changes; };
    }

    void publish(Reading next) {
        reading.set(std::move(next));
        loop.runPending();
    }

    [[nodiscard]] std::string dateOf(std::size_t day) const { return model.page().days.at(day).date; }

    [[nodiscard]] std::string chosenDate() const { return dateOf(model.chosenDay()); }

    simulation::VirtualRunLoop loop;
    Observed<Reading> reading;
    Observed<bool> keeps{true};
    History kept;
    std::vector<Span> reads;
    int changes = 0;
    OutagesModel model{
        {.loop = loop,
         .reading = reading,
         .keepsHistory = [this] { return keeps.get(); },
         .read =
             [this](const Span& span) {
                 reads.push_back(span);
                 return kept;
             },
         .version = "1.2",
         .offset = centralEurope}};
};

TEST_F(OutagesModelTest, OpenedItReadsItsDaysOnce) {
    model.open();
    model.open();

    ASSERT_THAT(reads, SizeIs(1));
    EXPECT_EQ(reads[0], between("2025-10-09 23:00", "2026-01-07 11:00"));
    EXPECT_EQ(chosenDate(), "Wednesday, 2026-01-07");
    EXPECT_EQ(model.status(), "Nothing is known of one.example yet. Its history has just begun.");
    EXPECT_EQ(changes, 1);
}

TEST_F(OutagesModelTest, ClosedItHoldsNothingAndDoesNothing) {
    const std::size_t timers = loop.timerCount();
    kept.episodes = {outage("2026-01-06 10:00", "2026-01-06 10:05")};
    model.open();
    model.close();
    publish({.status = ConnectionWatchdog::Status::down, .host = "two.example"});
    loop.advance(3600);

    EXPECT_FALSE(model.isOpen());
    EXPECT_THAT(reads, SizeIs(1));
    EXPECT_EQ(loop.timerCount(), timers);
    EXPECT_THAT(model.page().days, IsEmpty());
    EXPECT_THAT(model.page().rows, IsEmpty());
    EXPECT_THAT(model.history().episodes, IsEmpty());
    EXPECT_THAT(model.figures(), IsEmpty());
    EXPECT_EQ(model.status(), "");
}

TEST_F(OutagesModelTest, ItReadsAgainEachMinute) {
    model.open();
    loop.advance(59);
    EXPECT_THAT(reads, SizeIs(1));
    loop.advance(2);
    EXPECT_THAT(reads, SizeIs(2));
    EXPECT_EQ(reads[1].to, at("2026-01-07 11:01"));
    EXPECT_EQ(changes, 2);
}

TEST_F(OutagesModelTest, WhileAnOutageLastsItReadsAgainSoon) {
    kept = {.episodes = {{.start = at("2026-01-07 10:59:30")}}, .until = at("2026-01-07 11:00")};
    model.open();
    EXPECT_EQ(model.page().rows.at(0).length, "30 s so far");
    kept.until += 6s;
    loop.advance(6);
    EXPECT_EQ(model.page().rows.at(0).length, "36 s so far");

    kept.episodes[0].end = kept.until;
    loop.advance(6);
    EXPECT_EQ(model.page().rows.at(0).length, "36 s");
    const std::size_t before = reads.size();
    loop.advance(50);
    EXPECT_THAT(reads, SizeIs(before)) << "each minute again";
    loop.advance(15);
    EXPECT_THAT(reads, SizeIs(before + 1));
}

TEST_F(OutagesModelTest, ItReadsAgainAtOnceWhenTheConnectionChanges) {
    using Status = ConnectionWatchdog::Status;
    const Verdict blamed{.blame = Blame::provider, .evidence = "Nothing has answered for 3 s."};
    const Verdict same{.blame = Blame::provider, .evidence = "Nothing has answered for 4 s."};
    model.open();

    publish({.status = Status::up, .host = "one.example", .latencyText = "23 ms"});
    EXPECT_THAT(reads, SizeIs(1)) << "a ping tells nothing new";
    publish({.status = Status::down, .host = "one.example"});
    EXPECT_THAT(reads, SizeIs(2)) << "an outage begins";
    publish({.status = Status::down, .verdict = blamed, .host = "one.example"});
    EXPECT_THAT(reads, SizeIs(3)) << "it has a verdict";
    publish({.status = Status::down, .verdict = same, .host = "one.example"});
    EXPECT_THAT(reads, SizeIs(3)) << "it is the same one";
    publish({.status = Status::up, .host = "one.example"});
    EXPECT_THAT(reads, SizeIs(4)) << "it ends";
}

TEST_F(OutagesModelTest, AnotherHostHasAnotherHistory) {
    model.open();
    publish({.host = "two.example"});

    EXPECT_THAT(reads, SizeIs(2));
    EXPECT_THAT(model.status(), HasSubstr("two.example"));
}

TEST_F(OutagesModelTest, ItTellsWhyNothingIsKept) {
    model.open();
    publish(
        {.host = "one.example",
         .notices = {
             {.kind = Notice::Kind::noPanel, .text = "No panel."},
             {.kind = Notice::Kind::noHistory, .text = "The history is not stored: no space."}}});
    EXPECT_EQ(model.status(), "The history is not stored: no space.");

    keeps.set(false);
    loop.runPending();
    EXPECT_EQ(model.status(), "No history is kept: that is switched off in the settings.");
}

TEST_F(OutagesModelTest, TheChosenDayStaysWhenAnotherBegins) {
    loop.setWallClock(at("2026-01-07 22:59:30"));
    model.open();
    model.chooseDay(OutagesPage::today - 2);
    loop.advance(61);

    EXPECT_EQ(dateOf(OutagesPage::today), "Thursday, 2026-01-08");
    EXPECT_EQ(model.chosenDay(), OutagesPage::today - 3);
    EXPECT_EQ(chosenDate(), "Monday, 2026-01-05");
}

TEST_F(OutagesModelTest, TodayIsFollowedOverMidnight) {
    loop.setWallClock(at("2026-01-07 22:59:30"));
    model.open();
    loop.advance(61);

    EXPECT_EQ(chosenDate(), "Thursday, 2026-01-08");
}

TEST_F(OutagesModelTest, ADayThatLeavesTheCalendarGivesWayToToday) {
    loop.setWallClock(at("2026-01-07 22:59:30"));
    model.open();
    model.chooseDay(0);
    loop.advance(61);

    EXPECT_EQ(chosenDate(), "Thursday, 2026-01-08");
}

TEST_F(OutagesModelTest, FiguresAreThoseOfTheChosenDay) {
    kept.until = at("2026-01-07 11:00");
    kept.periods =
        test::goodPeriods(between("2026-01-04 23:00", "2026-01-05 05:00"), PeriodLength::quarterHour);
    model.open();
    ASSERT_THAT(model.figures(), SizeIs(dayFigureCount));
    EXPECT_EQ(model.figures().front().value, "unknown");

    model.chooseDay(OutagesPage::today - 2);
    EXPECT_EQ(model.figures().front().value, "100%");
    model.chooseDay(OutagesPage::today + 1);
    EXPECT_EQ(model.chosenDay(), OutagesPage::today - 2);
}

TEST_F(OutagesModelTest, ExportsTheReportOfAllDays) {
    kept.until = at("2026-01-07 11:00");
    kept.periods = test::goodPeriods(between("2026-01-07 10:00", "2026-01-07 11:00"));
    kept.episodes = {outage("2025-12-24 10:00", "2025-12-24 10:05")};
    model.open();

    const std::string text = model.exported(ExportFormat::text);
    EXPECT_THAT(text, HasSubstr("Connection to one.example\n2025-12-24 11:00:00 to 2026-01-07 12:00:00\n"));
    EXPECT_THAT(text, HasSubstr("Outages: 1\n"));
    EXPECT_THAT(model.exported(ExportFormat::csv), HasSubstr("\r\n2025-12-24T11:00:00+01:00,"));
    EXPECT_THAT(model.exported(ExportFormat::html), HasSubstr("1.2"));
    EXPECT_EQ(model.exportName(), "tarnwick-2026-01-07");
}

TEST_F(OutagesModelTest, TheChartOfADayGoesFromMidnightToMidnight) {
    kept = {.episodes = {outage("2026-01-06 09:10", "2026-01-06 09:20")}, .until = at("2026-01-07 11:00")};
    model.open();
    model.chooseDay(OutagesPage::today - 1);

    const HistoryChart::Chart chart = model.chart();
    ASSERT_THAT(chart.columns, SizeIs(48));
    EXPECT_EQ(chart.columns.front().span.from, at("2026-01-05 23:00"));
    EXPECT_TRUE(chart.columns[20].isWall()); // from 10 by the local clock
    EXPECT_FALSE(chart.columns[19].isWall());
    EXPECT_FALSE(chart.columns[21].isWall());
}

TEST_F(OutagesModelTest, TheChartOfADayOnWhichTheClockIsSetBackIsAnHourLonger) {
    loop.setWallClock(at("2026-11-07 11:00"));
    model.open();
    const auto& days = model.page().days;
    const auto found = std::ranges::find(
        days, std::chrono::year(2026) / 10 / 25, [](const OutagesDay& day) { return day.summary.day; });
    ASSERT_NE(found, days.end());
    model.chooseDay(static_cast<std::size_t>(found - days.begin()));

    EXPECT_THAT(model.chart().columns, SizeIs(50));
    EXPECT_EQ(model.chart().whyEmpty, "Nothing is known of this day.");
}

TEST_F(OutagesModelTest, WhileItIsClosedThereIsNoChart) {
    EXPECT_THAT(model.chart().columns, IsEmpty());
}

} // namespace
} // namespace tarnwick
