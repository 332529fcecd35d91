// How much of a time the connection was up.
#include "core/History/Availability.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::at;
using test::between;
using test::goodPeriods;
using test::outage;

constexpr double anHour = 3600;
const Span tenHours = between("2026-01-01 00:00", "2026-01-01 10:00");

History watchedThroughout() {
    History history{.until = tenHours.to};
    history.periods = goodPeriods(tenHours);
    return history;
}

TEST(Availability, IsWholeWithoutOutages) {
    const Availability found = availabilityIn(watchedThroughout(), tenHours);

    EXPECT_EQ(found, Availability{.watched = 10 * anHour});
    EXPECT_EQ(found.percent(), 100);
}

TEST(Availability, OfATimeWithoutPingsIsUnknown) {
    const Availability found = availabilityIn({.until = tenHours.to}, tenHours);

    EXPECT_EQ(found, Availability{.notWatched = 10 * anHour});
    EXPECT_EQ(found.percent(), std::nullopt);
}

TEST(Availability, FallsByTheShareOfTheOutages) {
    History history = watchedThroughout();
    history.episodes = {
        outage("2026-01-01 01:00", "2026-01-01 01:30"), outage("2026-01-01 02:00", "2026-01-01 02:30")};

    EXPECT_EQ(availabilityIn(history, tenHours).percent(), 90);
}

TEST(Availability, DoesNotFallByDegradations) {
    History history = watchedThroughout();
    history.episodes = {outage("2026-01-01 01:00", "2026-01-01 01:30")};
    history.episodes[0].kind = Episode::Kind::degradation;

    EXPECT_EQ(availabilityIn(history, tenHours).percent(), 100);
}

TEST(Availability, CountsAnOutageThatLastsUpToTheEnd) {
    History history = watchedThroughout();
    history.episodes = {{.start = at("2026-01-01 09:00")}};

    EXPECT_EQ(availabilityIn(history, tenHours).down, anHour);
}

TEST(Availability, CountsOverlappingOutagesOnce) {
    History history = watchedThroughout();
    history.episodes = {
        outage("2026-01-01 01:00", "2026-01-01 02:00"), outage("2026-01-01 01:30", "2026-01-01 02:00")};

    EXPECT_EQ(availabilityIn(history, tenHours).down, anHour);
}

TEST(Availability, LeavesOutTheTimeAsleep) {
    History history{.until = tenHours.to};
    history.periods = goodPeriods(between("2026-01-01 00:00", "2026-01-01 02:00"));
    const auto later = goodPeriods(between("2026-01-01 08:00", "2026-01-01 10:00"));
    history.periods.insert(history.periods.end(), later.begin(), later.end());
    history.gaps = {{.kind = Gap::Kind::asleep, .span = between("2026-01-01 02:00", "2026-01-01 08:00")}};
    // It was down when the machine fell asleep, and still when it woke.
    history.episodes = {outage("2026-01-01 01:30", "2026-01-01 08:30")};

    const Availability found = availabilityIn(history, tenHours);

    EXPECT_EQ(found, (Availability{.watched = 4 * anHour, .down = anHour, .asleep = 6 * anHour}));
    EXPECT_EQ(found.percent(), 75);
}

TEST(Availability, TellsPausesAndTheRestApart) {
    History history{.until = tenHours.to};
    history.periods = goodPeriods(between("2026-01-01 00:00", "2026-01-01 04:00"));
    history.gaps = {
        {.kind = Gap::Kind::paused, .span = between("2026-01-01 04:00", "2026-01-01 06:00")},
        {.kind = Gap::Kind::asleep, .span = between("2026-01-01 05:00", "2026-01-01 07:00")},
        {.kind = Gap::Kind::notRunning, .span = between("2026-01-01 07:00", "2026-01-01 08:00")}};

    EXPECT_EQ(
        availabilityIn(history, tenHours),
        (Availability{
            .watched = 4 * anHour, .asleep = anHour, .paused = 2 * anHour, .notWatched = 3 * anHour}));
}

TEST(Availability, SeesOnlyItsSpan) {
    History history = watchedThroughout();
    history.episodes = {outage("2026-01-01 01:00", "2026-01-01 03:00")};

    const Availability found = availabilityIn(history, between("2026-01-01 02:30", "2026-01-01 04:30"));

    EXPECT_EQ(found, (Availability{.watched = 2 * anHour, .down = anHour / 2}));
}

TEST(Availability, OfItsPartsAddsUpToThatOfTheWhole) {
    History history{.until = at("2026-01-02 00:00")};
    const Span day = between("2026-01-01 00:00", "2026-01-02 00:00");
    history.periods = goodPeriods(day);
    std::erase_if(history.periods, [](const Period& period) {
        return period.span().overlaps(between("2026-01-01 06:00", "2026-01-01 09:00"));
    });
    history.episodes = {
        outage("2026-01-01 01:00", "2026-01-01 01:10"), outage("2026-01-01 01:05", "2026-01-01 02:00"),
        outage("2026-01-01 05:55", "2026-01-01 09:05"), outage("2026-01-01 20:00", "2026-01-01 20:01")};
    history.gaps = {
        {.kind = Gap::Kind::asleep, .span = between("2026-01-01 06:00", "2026-01-01 08:00")},
        {.kind = Gap::Kind::paused, .span = between("2026-01-01 07:00", "2026-01-01 07:30")},
        {.kind = Gap::Kind::notRunning, .span = between("2026-01-01 08:00", "2026-01-01 09:00")}};
    const AvailabilityFinder finder(history);
    const Availability whole = finder.in(day);

    Availability sum;
    for (HistoryTime from = day.from; from < day.to; from += std::chrono::minutes(7)) {
        const Availability part = finder.in(common({from, from + std::chrono::minutes(7)}, day));
        sum.watched += part.watched;
        sum.down += part.down;
        sum.asleep += part.asleep;
        sum.paused += part.paused;
        sum.notWatched += part.notWatched;
    }

    EXPECT_EQ(
        whole, (Availability{
                   .watched = 21 * 3600.0,
                   .down = (60 + 5 + 5 + 1) * 60.0,
                   .asleep = 90 * 60.0,
                   .paused = 30 * 60.0,
                   .notWatched = 3600.0}));
    EXPECT_NEAR(sum.watched, whole.watched, 0.001);
    EXPECT_NEAR(sum.notWatched, whole.notWatched, 0.001);
    EXPECT_EQ(sum.down, whole.down);
    EXPECT_EQ(sum.asleep, whole.asleep);
    EXPECT_EQ(sum.paused, whole.paused);
}

TEST(Availability, StaysInItsBoundsAfterTheClockWasSetBack) {
    History history = watchedThroughout();
    for (Period& period : history.periods) {
        period.figures.merge(period.figures); // each minute came twice
    }
    history.episodes = {outage("2026-01-01 02:00", "2026-01-01 01:00")};

    const Availability found = availabilityIn(history, tenHours);

    EXPECT_EQ(found, Availability{.watched = 10 * anHour});
}

TEST(Availability, IsNeverBelowZero) {
    History history{.until = tenHours.to};
    history.periods = goodPeriods(between("2026-01-01 00:00", "2026-01-01 01:00"));
    history.episodes = {outage("2026-01-01 00:00", "2026-01-01 03:00")}; // the clock was set forward in it

    EXPECT_EQ(availabilityIn(history, tenHours).percent(), 0);
}

} // namespace
} // namespace tarnwick
