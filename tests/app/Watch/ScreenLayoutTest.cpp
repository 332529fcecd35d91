// What the terminal view shows, and where. The screens stand in `data/*.screen`: first the text of every row,
// then one letter for the style of every cell.
#include "app/Watch/ScreenLayout.h"

#include "tests/app/Watch/CanvasRows.h"
#include "tests/support/Files.h"

#include <algorithm>
#include <clocale>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

using LatencyChart::BarTone;
using LatencyChart::Bucket;
using testing::HasSubstr;

constexpr ScreenSize smallest{6, 40};
constexpr ScreenSize small{10, 40};
constexpr ScreenSize usual{24, 80};
constexpr ScreenSize large{40, 120};

struct Scene {
    Reading reading{};
    ScreenOptions options{};
    std::optional<HistoryChart::Chart> past{};
};

/// Three bars, some loss, and nothing in the chart yet.
Scene fair() {
    Scene scene;
    Reading& reading = scene.reading;
    reading.status = ConnectionWatchdog::Status::up;
    reading.bars = 3;
    reading.qualityTone = QualityTone::middle;
    reading.qualityTitle = "Fair";
    reading.hostLine = "example.org · 192.0.2.7";
    reading.latencyText = "550 ms";
    reading.lossText = "3% loss";
    reading.lossPercent = 3;
    reading.chart = {.buckets = std::vector<Bucket>(36), .lowThresholdMs = 100, .highThresholdMs = 1000};
    reading.session = {
        .sent = 1204, .replied = 1200, .lost = 4, .averageMs = 23, .fastestMs = 9, .slowestMs = 87};
    reading.site = {
        .sent = 88310, .replied = 80000, .lost = 8310, .averageMs = 140, .fastestMs = 8, .slowestMs = 999};
    return scene;
}

Bucket reply(double ms, bool lost = false) {
    return {.worstRtt = ms, .lost = lost};
}

Bucket outage() {
    return {.lost = true};
}

/// A bar of every kind: fast, very fast, in the middle, slow, beside a loss, an outage, far beyond the scale.
Scene everyBar() {
    Scene scene = fair();
    auto& buckets = scene.reading.chart.buckets;
    std::fill(buckets.begin() + 8, buckets.end(), reply(90));
    const std::vector<Bucket> first{reply(100), reply(0.01),     {},       reply(550),
                                    reply(551), reply(45, true), outage(), outage()};
    std::ranges::copy(first, buckets.begin());
    buckets[20] = reply(4000);
    return scene;
}

Scene excellent() {
    Scene scene = fair();
    Reading& reading = scene.reading;
    reading.bars = 5;
    reading.qualityTone = QualityTone::good;
    reading.qualityTitle = "Excellent";
    reading.latencyText = "12 ms";
    reading.lossText = "0% loss";
    reading.lossPercent = 0;
    std::ranges::fill(reading.chart.buckets, reply(12)); // the scale ends below the threshold
    return scene;
}

Scene down() {
    Scene scene = fair();
    Reading& reading = scene.reading;
    reading.status = ConnectionWatchdog::Status::down;
    reading.bars = 0;
    reading.qualityTone = QualityTone::bad;
    reading.qualityTitle = "Connection down";
    reading.hostLine = "No replies for 8 s";
    reading.latencyText = "Down";
    reading.lossText.reset();
    std::ranges::fill(reading.chart.buckets, outage());
    return scene;
}

Scene connecting() {
    Scene scene;
    scene.reading.qualityTitle = "Connecting…";
    scene.reading.hostLine = "one.one.one.one";
    scene.reading.latencyText = "–";
    scene.reading.chart = {
        .buckets = std::vector<Bucket>(36), .lowThresholdMs = 100, .highThresholdMs = 1000};
    return scene;
}

Scene paused() {
    Scene scene = fair();
    Reading& reading = scene.reading;
    reading.status = ConnectionWatchdog::Status::starting;
    reading.pausedUntil = RunLoop::WallTime();
    reading.bars = 0;
    reading.qualityTone = QualityTone::neutral;
    reading.qualityTitle = "Paused until 15:30";
    reading.latencyText = "–";
    reading.lossText.reset();
    reading.lossPercent = 0;
    return scene;
}

Scene veryPoor() {
    Scene scene = everyBar();
    scene.reading.bars = 1;
    scene.reading.qualityTone = QualityTone::bad;
    scene.reading.qualityTitle = "Very poor";
    return scene;
}

Scene fiveMinuteBuckets() {
    Scene scene = fair();
    scene.reading.chart.buckets = {{}, reply(60), reply(80, true), outage(), reply(90)};
    return scene;
}

Scene withNotices() {
    Scene scene = fair();
    scene.reading.notices = {
        {.kind = Notice::Kind::mayNotPing,
         .text = "This user may not ping yet. Allow it with:",
         .command = "sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\""},
        {.kind = Notice::Kind::settingsMistake,
         .text = "Another Tarnwick records the statistics; this one records nothing."},
        {.kind = Notice::Kind::noPanel, .text = std::string(100, 'w')}};
    return scene;
}

Scene withVerdict() {
    Scene scene = withNotices();
    scene.reading.notices.resize(1);
    scene.reading.verdict = {
        .blame = Blame::provider,
        .evidence = "Your router answers in 2 ms; nothing beyond it has answered for 14 s."};
    return scene;
}

/// Texts that are longer than their places.
Scene longTexts() {
    Scene scene = fair();
    scene.reading.qualityTitle = std::string(60, 'q');
    scene.reading.hostLine = "a-very-long-host-name.in.a-very-long.example.org";
    return scene;
}

Scene longHostWithoutLoss() {
    Scene scene = fair();
    scene.reading.hostLine = std::string(31, 'h');
    scene.reading.lossText.reset();
    return scene;
}

Scene inAscii(Scene scene) {
    scene.options.ascii = true;
    return scene;
}

/// A column of every kind: good, slow, with much loss and little, beyond the scale, down, a gap, half a gap,
/// nothing.
Scene pastDay(std::size_t count) {
    Scene scene = fair();
    HistoryChart::Chart& chart = scene.past.emplace();
    chart.title = "Last 24 hours";
    chart.thresholds = {.lowMs = 100, .highMs = 1000};
    chart.columns = std::vector<HistoryChart::Column>(count, {.slowestMs = 90, .tone = BarTone::good});
    const std::vector<HistoryChart::Column> first{
        {.slowestMs = 110, .tone = BarTone::warn},
        {.slowestMs = 40, .lossShare = 0.5, .tone = BarTone::good},
        {.slowestMs = 40, .lossShare = 0.01, .tone = BarTone::good},
        {.slowestMs = 4000, .tone = BarTone::bad},
        {.slowestMs = 40, .lossShare = 0.9, .tone = BarTone::outage},
        {.gapShare = 1},
        {.slowestMs = 60, .gapShare = 0.6, .tone = BarTone::good},
        {}};
    std::ranges::copy(first, chart.columns.begin());
    chart.timeLabels = {
        {.position = 0.01, .text = "16:00"},
        {.position = 0.05, .text = "17:00"},
        {.position = 0.5, .text = "00:00"},
        {.position = 0.99, .text = "12:00"}};
    return scene;
}

Scene pastUnknown() {
    Scene scene = pastDay(24);
    scene.past->columns.assign(24, {});
    scene.past->whyEmpty = "The history is not stored: no space is left on the device.";
    return scene;
}

char letterOf(const Cell& cell) {
    if (cell == Cell{}) {
        return ' ';
    }
    switch (cell.style) {
    case TextStyle::plain:
        return 'p';
    case TextStyle::strong:
        return 'S';
    case TextStyle::secondary:
        return 's';
    case TextStyle::good:
        return 'g';
    case TextStyle::warn:
        return 'w';
    case TextStyle::bad:
        return 'b';
    case TextStyle::strongBad:
        break;
    }
    return 'B';
}

/// The screen as the files have it.
std::string written(const Canvas& canvas) {
    std::string text;
    for (int row = 0; row < canvas.size().rows; ++row) {
        text += rowText(canvas, row) + "\n";
    }
    text += "-- styles\n";
    for (int row = 0; row < canvas.size().rows; ++row) {
        std::string styles;
        for (int column = 0; column < canvas.size().columns; ++column) {
            styles += letterOf(canvas.at(row, column));
        }
        styles.erase(styles.find_last_not_of(' ') + 1);
        text += styles + "\n";
    }
    return text;
}

Scene withKeyboard(Scene scene) {
    scene.options.readsKeys = true;
    return scene;
}

struct Golden {
    std::string name;
    Scene scene;
    ScreenSize size;

    friend void PrintTo(const Golden& param, std::ostream* out) { *out << param.name; }
};

class ScreenLayoutTest : public testing::Test {
protected:
    ScreenLayoutTest() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

    ~ScreenLayoutTest() override { std::setlocale(LC_CTYPE, "C"); }
};

class GoldenScreen : public ScreenLayoutTest, public testing::WithParamInterface<Golden> {};

} // namespace

TEST_P(GoldenScreen, IsDrawnAsItsFileHasIt) {
    const auto& [name, scene, size] = GetParam();
    ScreenOptions options = scene.options;
    options.past = scene.past ? &*scene.past : nullptr;
    const std::string drawn = written(drawScreen(scene.reading, options, size));
    const std::string file = name + ".screen";

    if (drawn != test::contentOf(std::filesystem::path(TARNWICK_SCREEN_FILES) / file)) {
        const std::filesystem::path actual = std::filesystem::path(testing::TempDir()) / file;
        std::ofstream(actual) << drawn;
        ADD_FAILURE() << "drawn differently, see " << actual << ":\n" << drawn;
    }
}

INSTANTIATE_TEST_SUITE_P(
    ScreenLayout, GoldenScreen,
    testing::Values(
        Golden{"fair-smallest", fair(), smallest}, Golden{"fair-usual", fair(), usual},
        Golden{"keys-usual", withKeyboard(fair()), usual},
        Golden{"paused-usual", withKeyboard(paused()), usual}, Golden{"paused-smallest", paused(), smallest},
        Golden{"bars-small", everyBar(), small}, Golden{"bars-usual", everyBar(), usual},
        Golden{"bars-large", everyBar(), large}, Golden{"bars-ascii", inAscii(everyBar()), usual},
        Golden{"bars-narrow", everyBar(), {10, 20}}, Golden{"very-poor", veryPoor(), small},
        Golden{"excellent", excellent(), {24, 40}}, Golden{"connecting", connecting(), usual},
        Golden{"down", down(), usual}, Golden{"five-buckets", fiveMinuteBuckets(), small},
        Golden{"notices-smallest", withNotices(), smallest}, Golden{"notices-usual", withNotices(), usual},
        Golden{"verdict-smallest", withVerdict(), smallest}, Golden{"verdict-usual", withVerdict(), usual},
        Golden{"past-usual", pastDay(72), usual}, Golden{"past-small", pastDay(24), small},
        Golden{"past-smallest", pastDay(24), smallest}, Golden{"past-large", pastDay(36), large},
        Golden{"past-ascii", inAscii(pastDay(36)), usual}, Golden{"past-unknown", pastUnknown(), small},
        Golden{"notices-ascii", inAscii(withNotices()), {24, 40}}, Golden{"long-texts", longTexts(), small},
        Golden{"long-host", longHostWithoutLoss(), smallest}),
    [](const auto& instance) {
        std::string name = instance.param.name;
        std::ranges::replace(name, '-', '_');
        return name;
    });

// Any size.

class AnyScreenSize : public ScreenLayoutTest, public testing::WithParamInterface<ScreenSize> {};

TEST_P(AnyScreenSize, NothingIsDrawnOutsideAndNoWideCharacterIsCut) {
    Scene scene = everyBar();
    scene.reading.hostLine = "日本語日本語日本語日本語日本語日本語日本語日本語日本語日本語";
    scene.reading.qualityTitle = scene.reading.hostLine;
    scene.reading.notices = {
        {.kind = Notice::Kind::noPanel, .text = scene.reading.hostLine + " " + scene.reading.hostLine}};

    const Canvas canvas = drawScreen(scene.reading, scene.options, GetParam());

    ASSERT_EQ(canvas.size().rows, GetParam().rows);
    ASSERT_EQ(canvas.size().columns, GetParam().columns);
    for (int row = 0; row < canvas.size().rows; ++row) {
        EXPECT_LE(canvas.widthOf(rowText(canvas, row)), canvas.size().columns);
        for (int column = 0; column < canvas.size().columns; ++column) {
            const char32_t glyph = canvas.at(row, column).glyph;
            if (glyph >= 0x3000 && glyph < 0xA000) {
                ASSERT_LT(column + 1, canvas.size().columns);
                EXPECT_EQ(canvas.at(row, column + 1).glyph, char32_t{0});
            }
        }
    }
}

TEST_P(AnyScreenSize, AnAsciiTerminalGetsNothingElse) {
    Scene scene = inAscii(everyBar());
    scene.reading.notices = {
        {.kind = Notice::Kind::mayNotPing, .text = "This user may not ping yet – “allow” it…"}};

    const Canvas canvas = drawScreen(scene.reading, scene.options, GetParam());

    for (int row = 0; row < canvas.size().rows; ++row) {
        const std::string text = rowText(canvas, row);
        EXPECT_TRUE(std::ranges::all_of(text, [](char letter) { return letter >= ' ' && letter < 0x7F; }))
            << text;
    }
}

TEST_P(AnyScreenSize, AChartOfThePastStaysInside) {
    for (const bool isAscii : {false, true}) {
        for (const std::size_t count : {8U, 72U, 168U}) {
            for (Scene scene : {pastDay(count), pastUnknown()}) {
                scene.options.ascii = isAscii;
                scene.options.past = &*scene.past;

                const Canvas canvas = drawScreen(scene.reading, scene.options, GetParam());

                for (int row = 0; row < canvas.size().rows; ++row) {
                    EXPECT_LE(canvas.widthOf(rowText(canvas, row)), canvas.size().columns);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    ScreenLayout, AnyScreenSize,
    testing::Values(
        smallest, small, usual, large, ScreenSize{3, 20}, ScreenSize{1, 1}, ScreenSize{0, 0},
        ScreenSize{1, 200}, ScreenSize{200, 1}, ScreenSize{2, 40}, ScreenSize{100, 300}));

TEST_F(ScreenLayoutTest, AnyReadingFitsOnAnyScreen) {
    EXPECT_TRUE(rc::check("drawing stays inside", [] {
        Scene scene = fair();
        Reading& reading = scene.reading;
        reading.bars = *rc::gen::inRange(0, 6);
        reading.qualityTitle = *rc::gen::arbitrary<std::string>();
        reading.hostLine = *rc::gen::arbitrary<std::string>();
        reading.latencyText = *rc::gen::arbitrary<std::string>();
        reading.lossText = *rc::gen::arbitrary<std::string>();
        for (const std::string& text : *rc::gen::arbitrary<std::vector<std::string>>()) {
            reading.notices.push_back({.kind = Notice::Kind::noPanel, .text = text});
        }
        scene.options.ascii = *rc::gen::arbitrary<bool>();
        reading.chart.buckets.resize(*rc::gen::inRange<std::size_t>(0, 37));
        for (Bucket& bucket : reading.chart.buckets) {
            bucket.lost = *rc::gen::arbitrary<bool>();
            bucket.worstRtt = *rc::gen::inRange(0, 9000);
        }
        const ScreenSize size{*rc::gen::inRange(0, 50), *rc::gen::inRange(0, 150)};

        const Canvas canvas = drawScreen(reading, scene.options, size);

        RC_ASSERT(canvas.size().rows == size.rows);
        RC_ASSERT(canvas.size().columns == size.columns);
    }));
}

TEST_F(ScreenLayoutTest, AGrowingScreenFirstShowsTheWholeGridAndThenALargerChart) {
    const Scene scene = fair();
    bool hadGrid = false;
    for (int rows = 6; rows <= 60; ++rows) {
        const std::string screen = written(drawScreen(scene.reading, scene.options, {rows, 40}));
        const bool hasGrid = screen.find("All Time") != std::string::npos;
        EXPECT_EQ(screen.find("Slowest") != std::string::npos, hasGrid) << rows;
        EXPECT_TRUE(hasGrid || !hadGrid) << rows;
        hadGrid = hasGrid;
    }
    EXPECT_TRUE(hadGrid);
}

TEST_F(ScreenLayoutTest, TheChartGrowsWithTheScreenUpToALimit) {
    Scene scene = fair();
    std::ranges::fill(scene.reading.chart.buckets, outage());
    const auto chartRows = [&](int rows) {
        const Canvas canvas = drawScreen(scene.reading, scene.options, {rows, 80});
        int count = 0;
        for (int row = 0; row < rows; ++row) {
            count += canvas.at(row, 1).glyph == U'▒' ? 1 : 0;
        }
        return count;
    };

    EXPECT_LT(chartRows(6), chartRows(10));
    EXPECT_LT(chartRows(24), chartRows(30));
    EXPECT_EQ(chartRows(60), chartRows(100));
}

TEST_F(ScreenLayoutTest, ATerminalWithoutColorsStillTellsLitBarsFromOthers) {
    const Scene scene = inAscii(fair());

    EXPECT_THAT(rowText(drawScreen(scene.reading, scene.options, small), 0), testing::StartsWith(" ###.."));
}

} // namespace tarnwick
