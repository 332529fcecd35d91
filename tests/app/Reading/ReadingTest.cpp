// What there is to show, made of what has been measured: every text in every state.
#include "app/Reading/Reading.h"

#include <cstdlib>
#include <ctime>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Status = ConnectionWatchdog::Status;
using Tone = QualityTone;

const PingError notFound = PingError::resolution("Name or service not known");
const PingError noSocket = PingError::socket("Permission denied");
constexpr auto now = RunLoop::WallTime(std::chrono::hours(480'000));

/// Scores with this number of lit bars.
constexpr double fiveBars = 1;
constexpr double fourBars = 0.7;
constexpr double threeBars = 0.5;
constexpr double twoBars = 0.3;
constexpr double oneBar = -2.5;

ReadingSettings usualSettings() {
    return {
        .hostname = "example.org",
        .slowPingThresholdMs = 100,
        .pingTimeout = 4,
        .pingInterval = 1,
        .lossTextMode = MenuBarTitle::LossMode::whenLossy};
}

Reading readingOf(const Measurements& measured, const ReadingSettings& settings = usualSettings()) {
    return makeReading(measured, settings, now);
}

std::string tooltipOf(const std::string& latency, const std::string& loss) {
    return "Latest Ping Time: " + latency + "\nRecent Packet Loss: " + loss;
}

/// A state, and all that is made of it.
struct State {
    std::string name;
    Measurements measured;
    int bars;
    Tone tone;
    std::string qualityTitle;
    std::string latencyText;
    std::string figure;
    std::string menuTitle; ///< with the loss
    bool showsLoss;
    std::optional<std::string> lossText;
    std::string tooltip;
    std::string summary;

    friend void PrintTo(const State& param, std::ostream* out) { *out << param.name; }
};

class ReadingOf : public testing::TestWithParam<State> {};

Measurements up(double score, double ms, double loss) {
    return {
        .status = Status::up,
        .score = score,
        .latestPingMs = ms,
        .lossPercent = loss,
        .lossIsKnown = true,
        .resolvedAddress = "192.0.2.7"};
}

State working(const std::string& name, double score, int bars, Tone tone, const std::string& quality) {
    return {
        name,
        up(score, 42.4, 2.5),
        bars,
        tone,
        quality,
        "42 ms",
        "42",
        "42ms (3%)",
        true,
        "3% loss",
        tooltipOf("42ms", "3%"),
        quality + ", 42 milliseconds, 3 percent packet loss"};
}

Measurements changed(Measurements measured, const std::function<void(Measurements&)>& change) {
    change(measured);
    return measured;
}

Measurements down(const std::function<void(Measurements&)>& change) {
    return changed(up(fiveBars, 42.4, 50), [&](Measurements& measured) {
        measured.status = Status::down;
        change(measured);
    });
}

State failed(const std::string& name, const Measurements& measured, const std::string& reason) {
    return {name, measured, 0,    Tone::bad,    "Connection down",        "Down",
            "",   "Failed", true, std::nullopt, tooltipOf("42ms", "50%"), "Connection down, " + reason};
}

} // namespace

TEST_P(ReadingOf, HasTheValuesAndTextsOfTheState) {
    const State& state = GetParam();
    const Reading reading = readingOf(state.measured);

    EXPECT_EQ(reading.bars, state.bars);
    EXPECT_EQ(reading.qualityTone, state.tone);
    EXPECT_EQ(reading.qualityTitle, state.qualityTitle);
    EXPECT_EQ(reading.latencyText, state.latencyText);
    EXPECT_EQ(reading.figure(), state.figure);
    EXPECT_EQ(reading.menuTitle(true), state.menuTitle);
    EXPECT_EQ(reading.showsLoss, state.showsLoss);
    EXPECT_EQ(reading.lossText, state.lossText);
    EXPECT_EQ(reading.tooltip, state.tooltip);
    EXPECT_EQ(reading.accessibilitySummary, state.summary);
}

INSTANTIATE_TEST_SUITE_P(
    Connecting, ReadingOf,
    testing::Values(
        State{
            "NothingKnown",
            {},
            0,
            Tone::neutral,
            "Connecting…",
            "–",
            "…",
            "…",
            false,
            std::nullopt,
            tooltipOf("–", "–"),
            "Connecting"},
        State{
            "APingOutstanding",
            {.lossIsKnown = true},
            0,
            Tone::neutral,
            "Connecting…",
            "–",
            "…",
            "…",
            false,
            std::nullopt,
            tooltipOf("–", "0%"),
            "Connecting"},
        State{
            "AScoreButNoReply",
            {.score = oneBar, .lossIsKnown = true},
            1,
            Tone::bad,
            "Very poor",
            "–",
            "…",
            "…",
            true,
            "0% loss",
            tooltipOf("–", "0%"),
            "Connecting"},
        State{
            "AfterAWake",
            {.score = fiveBars, .latestPingMs = 20},
            5,
            Tone::good,
            "Excellent",
            "20 ms",
            "20",
            "20ms",
            false,
            std::nullopt,
            tooltipOf("20ms", "–"),
            "Excellent, 20 milliseconds"},
        State{
            "AReplyOfTheRunBeforeAndNoScore",
            {.latestPingMs = 20},
            0,
            Tone::neutral,
            "Connecting…",
            "20 ms",
            "20",
            "20ms",
            false,
            std::nullopt,
            tooltipOf("20ms", "–"),
            "Connecting"}),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Up, ReadingOf,
    testing::Values(
        State{
            "NoScoreYet",
            {.status = Status::up, .latestPingMs = 31},
            0,
            Tone::bad,
            "Very poor",
            "31 ms",
            "31",
            "31ms",
            false,
            std::nullopt,
            tooltipOf("31ms", "–"),
            "Very poor, 31 milliseconds"},
        State{
            "SlowerThanASecond", up(oneBar, 1234, 0), 1, Tone::bad, "Very poor", "1234 ms", "1.2s",
            "1.2s (0%)", true, "0% loss", tooltipOf("1234ms", "0%"),
            "Very poor, 1234 milliseconds, 0 percent packet loss"},
        State{
            "HalvesRoundedAwayFromZero", up(fiveBars, 22.5, 0.5), 5, Tone::good, "Excellent", "23 ms", "23",
            "23ms (1%)", true, "1% loss", tooltipOf("23ms", "1%"),
            "Excellent, 23 milliseconds, 1 percent packet loss"},
        State{
            "AllButTheTitleShowsAHundredPercent", up(oneBar, 20, 100), 1, Tone::bad, "Very poor", "20 ms",
            "20", "20ms (99%)", true, "100% loss", tooltipOf("20ms", "100%"),
            "Very poor, 20 milliseconds, 100 percent packet loss"},
        working("FiveBars", fiveBars, 5, Tone::good, "Excellent"),
        working("FourBars", fourBars, 4, Tone::good, "Good"),
        working("ThreeBars", threeBars, 3, Tone::middle, "Fair"),
        working("TwoBars", twoBars, 2, Tone::middle, "Poor"),
        working("OneBar", oneBar, 1, Tone::bad, "Very poor")),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Down, ReadingOf,
    testing::Values(
        failed("NoReplies", down([](auto&) {}), "No replies for 8 s"),
        failed(
            "HostNotFound", down([](auto& measured) { measured.startError = notFound; }),
            "Can’t find host “example.org”"),
        failed(
            "SocketError", down([](auto& measured) { measured.startError = noSocket; }),
            "Can’t open a ping socket"),
        failed(
            "NoNetwork", down([](auto& measured) { measured.pathSatisfied = false; }),
            "No network connection"),
        failed(
            "NoNetworkExplainsTheError", down([](auto& measured) {
                measured.pathSatisfied = false;
                measured.startError = noSocket;
            }),
            "No network connection")),
    [](const auto& instance) { return instance.param.name; });

// The reason.

TEST(Reading, HasAReasonOnlyWhileDown) {
    const Measurements broken{.startError = notFound, .pathSatisfied = false};
    EXPECT_EQ(readingOf(broken).downReason, std::nullopt);
    EXPECT_EQ(readingOf(broken).downReasonText, "No replies for 8 s");

    EXPECT_EQ(readingOf(down([](auto&) {})).downReason, (DownReason{DownReason::Kind::noReplies}));
    EXPECT_EQ(
        readingOf(down([](auto& measured) { measured.startError = noSocket; })).downReason,
        (DownReason{DownReason::Kind::socketError, "Permission denied"}));
}

TEST(Reading, TheLastErrorIsTheMessageOfTheStartError) {
    EXPECT_EQ(readingOf({}).lastError(), std::nullopt);
    EXPECT_EQ(
        readingOf({.startError = noSocket}).lastError(), "Could not open ICMP socket: Permission denied");
}

TEST(Reading, NamesTheInterfaceThatIsMissing) {
    ReadingSettings settings = usualSettings();
    settings.hostname = "fe80::1%eth7";
    const Measurements broken = down([](auto& measured) { measured.startError = notFound; });

    EXPECT_EQ(readingOf(broken, settings).downReasonText, "There is no interface “eth7”");
}

TEST(Reading, TellsTheWholeSecondsOfTheReplyTimeout) {
    const auto text = [](double timeout, double interval) {
        ReadingSettings settings = usualSettings();
        settings.pingTimeout = timeout;
        settings.pingInterval = interval;
        return readingOf({}, settings).downReasonText;
    };

    EXPECT_EQ(text(2.75, 1), "No replies for 6 s");
    EXPECT_EQ(text(4, 20), "No replies for 64 s");
    EXPECT_EQ(text(4, 60), "No replies for 124 s");
}

// The host.

TEST(Reading, TheHostLineHasTheAddressWhenItSaysMore) {
    EXPECT_EQ(readingOf({}).hostLine, "example.org");
    EXPECT_EQ(readingOf({.resolvedAddress = "192.0.2.7"}).hostLine, "example.org · 192.0.2.7");
    EXPECT_EQ(readingOf({.resolvedAddress = "example.org"}).hostLine, "example.org");
    EXPECT_EQ(readingOf(down([](auto&) {})).hostLine, "No replies for 8 s");
}

// The title and the loss.

TEST(Reading, TheTitleHasTheLossOnlyWhenAskedTo) {
    EXPECT_EQ(readingOf(up(fiveBars, 42, 3)).menuTitle(false), "42ms");
}

TEST(Reading, AnUnknownLossIsNone) {
    Measurements measured = up(fiveBars, 42, 3);
    EXPECT_EQ(readingOf(measured).knownLoss(), 3);

    measured.lossIsKnown = false;
    EXPECT_EQ(readingOf(measured).knownLoss(), std::nullopt);
}

TEST(Reading, IsLossyAboveZero) {
    EXPECT_FALSE(readingOf(up(fiveBars, 42, 0)).isLossy());
    EXPECT_TRUE(readingOf(up(fiveBars, 42, 0.1)).isLossy());
}

// What is taken over.

TEST(Reading, TakesOverWhatWasMeasuredAndSet) {
    Measurements measured = up(0.8, 42, 3);
    measured.startError = notFound;
    measured.pathSatisfied = false;
    measured.samples = {{.id = 1, .date = now}, {.id = 2, .date = now}};
    measured.ledger.resetSite({.sent = 10, .replied = 9});
    measured.ledger.sent(7, true);
    measured.recording = Recording::otherRecords;

    const Reading reading = readingOf(measured);

    EXPECT_EQ(reading.status, Status::up);
    EXPECT_EQ(reading.score, 0.8);
    EXPECT_EQ(reading.host, "example.org");
    EXPECT_EQ(reading.resolvedAddress, "192.0.2.7");
    EXPECT_EQ(reading.startError, notFound);
    EXPECT_FALSE(reading.pathSatisfied);
    EXPECT_EQ(reading.latestPingMs, 42);
    EXPECT_EQ(reading.lossPercent, 3);
    EXPECT_TRUE(reading.lossIsKnown);
    EXPECT_EQ(reading.lossTextMode, MenuBarTitle::LossMode::whenLossy);
    EXPECT_EQ(reading.session, (StatCounter{.sent = 1}));
    EXPECT_EQ(reading.site, (StatCounter{.sent = 11, .replied = 9}));
    EXPECT_EQ(reading.samples, 2U);
    EXPECT_EQ(reading.recording, Recording::otherRecords);
}

TEST(Reading, HasTheChartOfTheLastFiveMinutesAndItsThresholds) {
    const Measurements measured{.samples = {{.id = 1, .date = now, .rttMs = 40}}};

    const LatencyChart::Chart chart = readingOf(measured).chart;

    ASSERT_EQ(chart.buckets.size(), 36U);
    EXPECT_EQ(chart.buckets.back().worstRtt, 40);
    EXPECT_EQ(chart.lowThresholdMs, 100);
    EXPECT_EQ(chart.highThresholdMs, 1000);
}

TEST(Reading, HasABucketForEachPingAtLongIntervals) {
    ReadingSettings settings = usualSettings();
    settings.pingInterval = 60;

    EXPECT_EQ(readingOf({}, settings).chart.buckets.size(), 5U);
}

TEST(Reading, DiffersFromAnotherOneOnlyByWhatItShows) {
    EXPECT_EQ(readingOf({.score = 1}), readingOf({.score = 1}));
    EXPECT_NE(readingOf({.score = 1}), readingOf({.score = 0.9}));
}

namespace {

/// Half past three in the afternoon, in a zone of its own.
class ReadingInAPause : public testing::Test {
protected:
    ReadingInAPause() { inZone("XXX-2"); }

    ~ReadingInAPause() override {
        ::unsetenv("TZ");
        ::tzset();
    }

    static void inZone(const char* name) {
        ::setenv("TZ", name, 1);
        ::tzset();
    }

    static constexpr auto end =
        RunLoop::WallTime(std::chrono::hours(24 * 20'000 + 13) + std::chrono::minutes(30));
    Measurements measured{.resolvedAddress = "192.0.2.7", .pausedUntil = end};
};

} // namespace

TEST_F(ReadingInAPause, SaysUntilWhen) {
    const Reading reading = readingOf(measured);

    EXPECT_EQ(reading.pausedUntil, end);
    EXPECT_EQ(reading.qualityTitle, "Paused until 15:30");
    EXPECT_EQ(reading.accessibilitySummary, "Paused until 15:30");
    EXPECT_EQ(reading.itemToolTip(), "Paused until 15:30");
    EXPECT_EQ(reading.hostLine, "example.org · 192.0.2.7");
}

TEST_F(ReadingInAPause, HasNoFigures) {
    const Reading reading = readingOf(measured);

    EXPECT_EQ(reading.bars, 0);
    EXPECT_EQ(reading.qualityTone, Tone::neutral);
    EXPECT_EQ(reading.latencyText, "–");
    EXPECT_EQ(reading.lossText, std::nullopt);
    EXPECT_EQ(reading.menuTitle(true), "Paused");
    EXPECT_EQ(reading.figure(), "II");
}

TEST_F(ReadingInAPause, FollowsTheTimeZone) {
    inZone("XXX8");

    EXPECT_EQ(readingOf(measured).qualityTitle, "Paused until 05:30");
}

TEST_F(ReadingInAPause, IsNoneWhilePinging) {
    measured.pausedUntil.reset();

    EXPECT_FALSE(readingOf(measured).isPaused());
    EXPECT_EQ(readingOf(measured).qualityTitle, "Connecting…");
}

TEST(ReadingItemToolTip, EndsWithWhoseFaultItIs) {
    Reading reading{.tooltip = "Latest Ping Time: 420ms"};
    reading.verdict = {.blame = Blame::provider, .evidence = "Your router answers."};
    EXPECT_EQ(reading.itemToolTip(), "Latest Ping Time: 420ms\nYour router answers.");

    reading.status = Status::down;
    reading.downReasonText = "No replies for 8 s";
    EXPECT_EQ(reading.itemToolTip(), "No replies for 8 s\nYour router answers.");

    reading.startError = noSocket;
    EXPECT_EQ(
        reading.itemToolTip(),
        "No replies for 8 s\nCould not open ICMP socket: Permission denied\nYour router answers.");

    reading.verdict.reset();
    EXPECT_EQ(reading.itemToolTip(), "No replies for 8 s\nCould not open ICMP socket: Permission denied");
}

} // namespace tarnwick
