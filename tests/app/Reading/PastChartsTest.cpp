// Which span is chosen, and when the past is read.
#include "app/Reading/PastCharts.h"

#include "tests/core/History/SomeHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using HistoryChart::Reach;
using test::at;
using test::between;
using testing::ElementsAre;
using testing::SizeIs;

class PastChartsTest : public testing::Test {
protected:
    PastChartsTest() {
        reading.host = "one.example";
        reading.chart = {.lowThresholdMs = 100, .highThresholdMs = 400};
    }

    const HistoryChart::Chart& show(const char* now, int most = 73) {
        return past.chart(most, reading, at(now));
    }

    std::vector<Span> reads;
    History history;
    PastCharts past{
        {.read =
             [this](const Span& span) {
                 reads.push_back(span);
                 return history;
             },
         .whyEmpty = [] { return "No history is kept."; },
         .offset = [](HistoryTime) { return std::chrono::seconds(0); }}};
    Reading reading;
};

TEST_F(PastChartsTest, FiveMinutesAreChosenAtFirst) {
    EXPECT_EQ(past.reach(), Reach::fiveMinutes);
    EXPECT_THAT(reads, SizeIs(0));
}

TEST_F(PastChartsTest, TheChosenSpanIsRead) {
    past.choose(Reach::hour);
    EXPECT_EQ(show("2026-11-24 13:20:30").title, "Last hour");
    past.choose(Reach::day);
    EXPECT_EQ(show("2026-11-24 13:20:30").title, "Last 24 hours");
    EXPECT_THAT(show("2026-11-24 13:20:30").columns, SizeIs(72));
    past.choose(Reach::week);
    EXPECT_EQ(show("2026-11-24 13:20:30").title, "Last 7 days");

    EXPECT_THAT(
        reads,
        ElementsAre(
            between("2026-11-24 12:21", "2026-11-24 13:21"), between("2026-11-23 13:40", "2026-11-24 13:40"),
            between("2026-11-17 15:00", "2026-11-24 15:00")));
}

TEST_F(PastChartsTest, ItIsReadOnceAMinute) {
    past.choose(Reach::week);
    for (int second = 0; second < 180; ++second) {
        static_cast<void>(past.chart(73, reading, at("2026-11-24 13:20") + std::chrono::seconds(second)));
    }

    EXPECT_THAT(reads, SizeIs(3));
}

TEST_F(PastChartsTest, GoingToAndFroBetweenSpansReadsEachOnce) {
    for (const Reach reach : {Reach::hour, Reach::day, Reach::hour, Reach::day}) {
        past.choose(reach);
        show("2026-11-24 13:20:30");
    }

    EXPECT_THAT(reads, SizeIs(2));
    EXPECT_EQ(show("2026-11-24 13:20:30").title, "Last 24 hours");
}

TEST_F(PastChartsTest, AnotherHostIsReadAtOnce) {
    past.choose(Reach::hour);
    show("2026-11-24 13:20:30");
    reading.host = "two.example";
    show("2026-11-24 13:20:31");

    EXPECT_THAT(reads, SizeIs(2));
}

TEST_F(PastChartsTest, OtherThresholdsAndAnotherRoomShowAtOnce) {
    history = {.periods = {test::goodPeriod(at("2026-11-24 13:00"))}, .until = at("2026-11-24 13:20")};
    past.choose(Reach::hour);
    show("2026-11-24 13:20:30");
    reading.chart.lowThresholdMs = 10;

    EXPECT_EQ(show("2026-11-24 13:20:30").thresholdText(), "slow above 10 ms");
    EXPECT_THAT(show("2026-11-24 13:20:30", 40).columns, SizeIs(30));
}

TEST_F(PastChartsTest, AnEmptyOneSaysWhy) {
    past.choose(Reach::hour);

    EXPECT_EQ(show("2026-11-24 13:20:30").whyEmpty, "No history is kept.");
}

TEST_F(PastChartsTest, OneWithSomethingInItGivesNoReason) {
    history = {.periods = {test::goodPeriod(at("2026-11-24 13:00"))}, .until = at("2026-11-24 13:20")};
    past.choose(Reach::hour);

    EXPECT_EQ(show("2026-11-24 13:20:30").whyEmpty, "");
}

} // namespace
} // namespace tarnwick
