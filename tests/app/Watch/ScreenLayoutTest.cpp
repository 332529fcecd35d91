// What the terminal view shows, and where.
#include "app/Watch/ScreenLayout.h"

#include "tests/app/WatchedMonitor.h"

#include <algorithm>
#include <clocale>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <set>

namespace tarnwick {

namespace {

using LatencyChart::Bucket;
using testing::HasSubstr;

constexpr ScreenSize smallest{6, 40};
constexpr ScreenSize small{10, 40};
constexpr ScreenSize usual{24, 80};
constexpr ScreenSize large{40, 120};

const std::vector<std::string> statsLabels{"Pings sent", "Replies lost", "Packet loss",
                                           "Average",    "Fastest",      "Slowest"};

ScreenContent fairConnection() {
    return {
        .bars = 3,
        .tone = Monitor::QualityTone::middle,
        .quality = "Fair",
        .hostLine = "example.org · 192.0.2.7",
        .latency = "550 ms",
        .isDown = false,
        .loss = "3% loss",
        .isLossy = true,
        .buckets = std::vector<Bucket>(36),
        .lowThresholdMs = 100,
        .highThresholdMs = 1000,
        .stats = StatsGrid::rows(
            {.sent = 1204, .replied = 1200, .lost = 4, .averageMs = 23, .fastestMs = 9, .slowestMs = 87},
            {.sent = 88310,
             .replied = 80000,
             .lost = 8310,
             .averageMs = 140,
             .fastestMs = 8,
             .slowestMs = 999},
            {}),
        .notes = {},
    };
}

/// A drawn screen, read back the way a person looks at it.
class Screen {
public:
    Screen(const ScreenContent& content, ScreenSize size, bool ascii = false)
        : canvas_(drawScreen(content, size, ascii)), content_(content) {}

    [[nodiscard]] const Canvas& canvas() const { return canvas_; }

    [[nodiscard]] std::vector<std::string> rows() const {
        std::vector<std::string> texts;
        for (int row = 0; row < canvas_.size().rows; ++row) {
            texts.push_back(canvas_.rowText(row));
        }
        return texts;
    }

    /// The row that holds `text`, or nothing.
    [[nodiscard]] std::optional<int> find(const std::string& text) const {
        const auto texts = rows();
        const auto found =
            std::ranges::find_if(texts, [&](const auto& row) { return row.find(text) != std::string::npos; });
        return found != texts.end() ? std::optional(static_cast<int>(found - texts.begin())) : std::nullopt;
    }

    /// The ink in which `text` begins.
    [[nodiscard]] std::optional<Ink> inkOf(const std::string& text) const {
        const auto row = find(text);
        if (!row) {
            return std::nullopt;
        }
        Canvas before({1, canvas_.size().columns}, canvas_.isAscii());
        const std::string whole = canvas_.rowText(*row);
        return canvas_.at(*row, before.widthOf(whole.substr(0, whole.find(text)))).ink;
    }

    [[nodiscard]] int lastChartRow() const { return find("Last 5 minutes").value() - 1; }

    /// The cells above the caption in one column, from below, as far as the chart goes.
    [[nodiscard]] std::vector<Cell> chartColumn(int column) const {
        const int top = find(content_.hostLine).value() + 1;
        std::vector<Cell> cells;
        for (int row = lastChartRow(); row >= top; --row) {
            cells.push_back(canvas_.at(row, column));
        }
        return cells;
    }

    /// The same as text, without the blanks above.
    [[nodiscard]] std::string chartText(int column) const {
        const auto cells = chartColumn(column);
        Canvas line({1, static_cast<int>(cells.size())}, false);
        for (std::size_t cell = 0; cell < cells.size(); ++cell) {
            line.put(0, static_cast<int>(cell), cells[cell].glyph, cells[cell].ink);
        }
        return line.rowText(0);
    }

private:
    Canvas canvas_;
    const ScreenContent& content_;
};

/// The column of a bucket on a screen 40 columns wide, where each has one.
constexpr int columnOfBucket(int bucket) {
    return 1 + bucket;
}

class ScreenLayoutTest : public testing::Test {
protected:
    ScreenLayoutTest() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

    ~ScreenLayoutTest() override { std::setlocale(LC_CTYPE, "C"); }

    ScreenContent content_ = fairConnection();
};

} // namespace

// Any size.

class AnyScreenSize : public ScreenLayoutTest, public testing::WithParamInterface<ScreenSize> {};

TEST_P(AnyScreenSize, NothingIsDrawnOutsideAndNoWideCharacterIsCut) {
    content_.hostLine = "日本語日本語日本語日本語日本語日本語日本語日本語日本語日本語";
    content_.quality = content_.hostLine;
    content_.notes = {content_.hostLine + " " + content_.hostLine};
    content_.buckets[35] = {.id = 35, .worstRtt = 90};

    const Canvas canvas = drawScreen(content_, GetParam(), false);

    ASSERT_EQ(canvas.size().rows, GetParam().rows);
    ASSERT_EQ(canvas.size().columns, GetParam().columns);
    for (int row = 0; row < canvas.size().rows; ++row) {
        EXPECT_LE(canvas.widthOf(canvas.rowText(row)), canvas.size().columns);
        for (int column = 0; column < canvas.size().columns; ++column) {
            const bool isWide = canvas.widthOf(canvas.rowText(row)) > 0
                                && canvas.at(row, column).glyph >= 0x3000
                                && canvas.at(row, column).glyph < 0xA000;
            if (isWide) {
                ASSERT_LT(column + 1, canvas.size().columns);
                EXPECT_EQ(canvas.at(row, column + 1).glyph, char32_t{0});
            }
        }
    }
}

TEST_P(AnyScreenSize, AnAsciiTerminalGetsNothingElse) {
    content_.notes = {"This user may not ping yet – “allow” it…"};
    for (int bucket = 0; bucket < 36; ++bucket) {
        content_.buckets[static_cast<std::size_t>(bucket)] = {
            .id = bucket,
            .worstRtt = bucket % 3 == 0 ? std::nullopt : std::optional(10.0 * bucket),
            .lost = bucket % 4 == 0};
    }

    for (const std::string& row : Screen(content_, GetParam(), true).rows()) {
        EXPECT_TRUE(std::ranges::all_of(row, [](char letter) { return letter >= ' ' && letter < 0x7F; }))
            << row;
    }
}

TEST_P(AnyScreenSize, TheSignalBarsAreShownWhereverThereIsRoom) {
    const Screen screen(content_, GetParam());

    int bars = 0;
    for (int row = 0; row < std::min(GetParam().rows, 2); ++row) {
        for (int column = 0; column < GetParam().columns; ++column) {
            bars += screen.canvas().at(row, column).ink == Ink::warn ? 1 : 0;
        }
    }
    EXPECT_GE(bars, std::clamp(GetParam().columns - 1, 0, 3));
}

INSTANTIATE_TEST_SUITE_P(
    ScreenLayout, AnyScreenSize,
    testing::Values(
        smallest, small, usual, large, ScreenSize{3, 20}, ScreenSize{1, 1}, ScreenSize{0, 0},
        ScreenSize{1, 200}, ScreenSize{200, 1}, ScreenSize{2, 40}, ScreenSize{100, 300}));

TEST_F(ScreenLayoutTest, AnyContentFitsOnAnyScreen) {
    EXPECT_TRUE(rc::check("drawing stays inside", [this] {
        ScreenContent content = content_;
        content.bars = *rc::gen::inRange(0, 6);
        content.quality = *rc::gen::arbitrary<std::string>();
        content.hostLine = *rc::gen::arbitrary<std::string>();
        content.latency = *rc::gen::arbitrary<std::string>();
        content.loss = *rc::gen::arbitrary<std::string>();
        content.notes = *rc::gen::arbitrary<std::vector<std::string>>();
        content.buckets.resize(*rc::gen::inRange<std::size_t>(0, 37));
        for (Bucket& bucket : content.buckets) {
            bucket.lost = *rc::gen::arbitrary<bool>();
            bucket.worstRtt = *rc::gen::inRange(0, 9000);
        }
        const ScreenSize size{*rc::gen::inRange(0, 50), *rc::gen::inRange(0, 150)};

        const Canvas canvas = drawScreen(content, size, *rc::gen::arbitrary<bool>());

        RC_ASSERT(canvas.size().rows == size.rows);
        RC_ASSERT(canvas.size().columns == size.columns);
    }));
}

class EveryUsefulSize : public ScreenLayoutTest, public testing::WithParamInterface<ScreenSize> {};

TEST_P(EveryUsefulSize, HasHeaderChartAndCaption) {
    content_.buckets[35] = {.id = 35, .worstRtt = 90};
    const Screen screen(content_, GetParam());

    const auto quality = screen.find("Fair");
    ASSERT_TRUE(quality);
    EXPECT_EQ(screen.find("550 ms"), quality);
    EXPECT_EQ(screen.find("example.org · 192.0.2.7"), *quality + 1);
    EXPECT_EQ(screen.find("3% loss"), *quality + 1);
    ASSERT_TRUE(screen.find("Last 5 minutes"));
    EXPECT_EQ(screen.find("slow above 100 ms"), screen.find("Last 5 minutes"));
    EXPECT_GE(screen.lastChartRow(), *quality + 2) << "no row for the chart";
    EXPECT_THAT(screen.rows()[static_cast<std::size_t>(screen.lastChartRow())], HasSubstr("█"));
}

TEST_P(EveryUsefulSize, LatencyAndLossEndAtTheSameColumn) {
    const Screen screen(content_, GetParam());

    const auto top = static_cast<std::size_t>(screen.find("550 ms").value());
    EXPECT_EQ(screen.canvas().widthOf(screen.rows()[top]), screen.canvas().widthOf(screen.rows()[top + 1]));
}

INSTANTIATE_TEST_SUITE_P(
    ScreenLayout, EveryUsefulSize,
    testing::Values(smallest, small, usual, large, ScreenSize{60, 40}, ScreenSize{6, 200}));

// The header.

TEST_F(ScreenLayoutTest, TheLitBarsHaveTheirToneAndTheOthersAreFaint) {
    const Canvas canvas = drawScreen(content_, small, false);

    std::vector<Ink> inks;
    for (int column = 1; column <= 5; ++column) {
        inks.push_back(canvas.at(0, column).ink);
    }
    EXPECT_THAT(inks, testing::ElementsAre(Ink::warn, Ink::warn, Ink::warn, Ink::secondary, Ink::secondary));
}

TEST_F(ScreenLayoutTest, LitBarsRise) {
    content_.bars = 5;
    const Canvas canvas = drawScreen(content_, small, false);

    for (int column = 1; column < 5; ++column) {
        EXPECT_LT(canvas.at(0, column).glyph, canvas.at(0, column + 1).glyph);
    }
    EXPECT_EQ(canvas.at(0, 5).glyph, U'█');
}

TEST_F(ScreenLayoutTest, WithoutColorsOfItsOwnAnAsciiTerminalStillTellsLitBarsFromOthers) {
    EXPECT_THAT(drawScreen(content_, small, true).rowText(0), testing::StartsWith(" ###.."));
}

struct ToneInk {
    Monitor::QualityTone tone;
    Ink ink;
};

class BarsTone : public ScreenLayoutTest, public testing::WithParamInterface<ToneInk> {};

TEST_P(BarsTone, HasItsInk) {
    content_.tone = GetParam().tone;
    content_.bars = 5;

    EXPECT_EQ(drawScreen(content_, small, false).at(0, 1).ink, GetParam().ink);
}

INSTANTIATE_TEST_SUITE_P(
    ScreenLayout, BarsTone,
    testing::Values(
        ToneInk{Monitor::QualityTone::good, Ink::good}, ToneInk{Monitor::QualityTone::middle, Ink::warn},
        ToneInk{Monitor::QualityTone::bad, Ink::bad},
        ToneInk{Monitor::QualityTone::neutral, Ink::secondary}));

TEST_F(ScreenLayoutTest, TheQualityStandsOutAndTheHostStepsBack) {
    const Screen screen(content_, usual);

    EXPECT_EQ(screen.inkOf("Fair"), Ink::strong);
    EXPECT_EQ(screen.inkOf("550 ms"), Ink::strong);
    EXPECT_EQ(screen.inkOf("example.org"), Ink::secondary);
}

TEST_F(ScreenLayoutTest, WhileDownTheLatencyIsBad) {
    content_.latency = "Down";
    content_.isDown = true;

    EXPECT_EQ(Screen(content_, usual).inkOf("Down"), Ink::strongBad);
}

TEST_F(ScreenLayoutTest, TheLossWarnsOnlyWhenThereIsSome) {
    EXPECT_EQ(Screen(content_, usual).inkOf("3% loss"), Ink::warn);

    content_.loss = "0% loss";
    content_.isLossy = false;
    EXPECT_EQ(Screen(content_, usual).inkOf("0% loss"), Ink::secondary);
}

TEST_F(ScreenLayoutTest, WithoutLossToShowTheHostHasTheWholeLine) {
    content_.loss.reset();
    content_.hostLine = std::string(31, 'h');

    EXPECT_TRUE(Screen(content_, small).find(content_.hostLine));
}

TEST_F(ScreenLayoutTest, ALongHostIsCutBeforeTheLossIs) {
    content_.hostLine = "a-very-long-host-name.in.a-very-long.example.org";

    const std::string line = drawScreen(content_, small, false).rowText(1);

    EXPECT_THAT(line, HasSubstr("a-very-long-host"));
    EXPECT_THAT(line, HasSubstr("… 3% loss"));
}

TEST_F(ScreenLayoutTest, ALongQualityIsCutBeforeTheLatencyIs) {
    content_.quality = std::string(60, 'q');

    EXPECT_THAT(drawScreen(content_, small, false).rowText(0), HasSubstr("q… 550 ms"));
}

// The chart.

/// On a screen 40 columns by 10 rows: a chart of seven rows, 56 eighths, a column for each bucket.
class ChartTest : public ScreenLayoutTest {
protected:
    void put(int bucket, std::optional<double> worstRtt, bool lost = false) {
        content_.buckets[static_cast<std::size_t>(bucket)] = {
            .id = bucket, .worstRtt = worstRtt, .lost = lost};
    }

    [[nodiscard]] std::string column(int bucket, ScreenSize size = small, bool ascii = false) const {
        return Screen(content_, size, ascii).chartText(columnOfBucket(bucket));
    }

    [[nodiscard]] Ink ink(int bucket) const {
        return Screen(content_, small).chartColumn(columnOfBucket(bucket)).front().ink;
    }
};

TEST_F(ChartTest, ABarIsAsHighAsItsLatencyOnTheScale) {
    put(0, 90); // the scale ends at 125 ms
    put(1, 125.0 / 7);
    put(2, 125.0 / 7 * 2.5);

    EXPECT_EQ(column(0), "█████╌");
    EXPECT_EQ(column(1), "█    ╌");
    EXPECT_EQ(column(2), "██▄  ╌");
}

TEST_F(ChartTest, AFullBarReachesTheTop) {
    for (int bucket = 0; bucket < 36; ++bucket) {
        put(bucket, 16); // the scale ends at 20 ms
    }
    put(1, 20);

    EXPECT_EQ(column(1), "███████");
}

TEST_F(ChartTest, AVeryFastPingStillShows) {
    put(0, 20);
    put(1, 0.01);

    EXPECT_THAT(column(1), testing::StartsWith("▁"));
}

TEST_F(ChartTest, AnEmptyBucketKeepsItsPlaceAndShowsNothing) {
    put(0, 10);
    put(2, 10); // the scale ends below the threshold

    EXPECT_EQ(column(1), "");
    EXPECT_NE(column(2), "");
}

TEST_F(ChartTest, BarsHaveTheInkOfTheirLatency) {
    put(0, 100);
    put(1, 550);
    put(2, 551);
    put(3, 20, true);

    EXPECT_EQ(ink(0), Ink::good);
    EXPECT_EQ(ink(1), Ink::warn);
    EXPECT_EQ(ink(2), Ink::bad);
    EXPECT_EQ(ink(3), Ink::bad);
}

TEST_F(ChartTest, AnOutageIsAWallOfItsOwnKind) {
    for (int bucket = 0; bucket < 36; ++bucket) {
        put(bucket, 90);
    }
    put(7, std::nullopt, true);
    put(8, std::nullopt, true);

    for (const int bucket : {7, 8}) {
        EXPECT_EQ(column(bucket), "▒▒▒▒▒▒▒");
        const auto cells = Screen(content_, small).chartColumn(columnOfBucket(bucket));
        EXPECT_THAT(cells, testing::Each(testing::Field(&Cell::ink, Ink::bad)));
    }
}

TEST_F(ChartTest, AnOutageOfTheWholeFiveMinutesIsAWallFromEdgeToEdge) {
    for (int bucket = 0; bucket < 36; ++bucket) {
        put(bucket, std::nullopt, true);
    }

    for (int bucket = 0; bucket < 36; ++bucket) {
        EXPECT_EQ(column(bucket), "▒▒▒▒▒▒▒") << bucket;
    }
}

TEST_F(ChartTest, ABarBeyondTheScaleIsClippedAndMarked) {
    for (int bucket = 0; bucket < 36; ++bucket) {
        put(bucket, 30);
    }
    put(20, 4000);

    EXPECT_EQ(column(20), "██████▲");
    EXPECT_EQ(column(19), "█████▂");
}

TEST_F(ChartTest, TheThresholdLineRunsBehindTheBars) {
    put(0, 125);
    put(35, 90);

    const Screen screen(content_, small);
    for (int bucket = 1; bucket < 35; ++bucket) {
        EXPECT_EQ(
            screen.chartText(columnOfBucket(bucket)).find("╌"),
            screen.chartText(columnOfBucket(1)).find("╌"));
        EXPECT_THAT(screen.chartText(columnOfBucket(bucket)), testing::EndsWith("╌"));
    }
    EXPECT_EQ(screen.inkOf("╌"), Ink::secondary);
}

TEST_F(ChartTest, AThresholdAboveTheScaleHasNoLine) {
    put(0, 10);

    EXPECT_EQ(column(1), "");
}

TEST_F(ChartTest, WithoutAnyReplyTheScaleStillHasTheThreshold) {
    EXPECT_EQ(column(0), "    ╌");
}

TEST_F(ChartTest, TheNewestBucketIsAtTheRight) {
    put(35, 90);

    EXPECT_NE(column(35), column(34));
    EXPECT_EQ(column(33), column(34));
}

TEST_F(ChartTest, OnANarrowScreenTheNewestBucketsAreShown) {
    content_.hostLine = "host";
    content_.loss.reset();
    put(35, 90);
    put(0, std::nullopt, true);

    const Screen screen(content_, {10, 20});

    EXPECT_THAT(screen.chartText(18), testing::StartsWith("█"));
    EXPECT_EQ(screen.chartText(1), screen.chartText(2));
}

TEST_F(ChartTest, OnAWideScreenBarsAreWiderAndKeepAir) {
    put(0, 10);
    put(1, 10);

    const Screen screen(content_, large);

    std::string bottom;
    for (int column = 1; column <= 6; ++column) {
        bottom += screen.chartText(column).empty() ? ' ' : '#';
    }
    EXPECT_EQ(bottom, "## ## ");
}

TEST_F(ChartTest, WhereThereIsRoomTheScaleIsWrittenBesideTheChart) {
    put(0, 90);

    EXPECT_TRUE(Screen(content_, large).find("125 ms"));
    EXPECT_FALSE(Screen(content_, small).find("125 ms"));
}

TEST_F(ChartTest, FiveBucketsOfAMinuteFillTheWidth) {
    content_.buckets = std::vector<Bucket>(5);
    put(4, 90);

    const Screen screen(content_, small);

    for (int column = 1 + 4 * 7; column < 1 + 4 * 7 + 6; ++column) {
        EXPECT_THAT(screen.chartText(column), testing::StartsWith("█")) << column;
    }
}

TEST_F(ChartTest, AnAsciiTerminalTellsBarsOutagesAndClippedBarsApart) {
    content_.hostLine = "example.org";
    for (int bucket = 0; bucket < 36; ++bucket) {
        put(bucket, 30);
    }
    put(1, 4000);
    put(2, std::nullopt, true);

    std::set<std::string> columns;
    for (const int bucket : {0, 1, 2}) {
        columns.insert(Screen(content_, small, true).chartText(columnOfBucket(bucket)));
    }
    EXPECT_EQ(columns.size(), 3u);
    EXPECT_TRUE(columns.contains("######^"));
    EXPECT_TRUE(columns.contains("xxxxxxx"));
}

TEST_F(ChartTest, GrowsWithTheScreenUpToALimit) {
    const auto chartRows = [this](int rows) { return Screen(content_, {rows, 80}).chartColumn(1).size(); };

    EXPECT_LT(chartRows(6), chartRows(10));
    EXPECT_LT(chartRows(24), chartRows(30));
    EXPECT_EQ(chartRows(60), chartRows(100));
}

// The grid.

TEST_F(ScreenLayoutTest, TheGridHasItsTitlesLabelsAndFiguresInColumns) {
    const Screen screen(content_, usual);

    const auto titles = screen.find("Session");
    ASSERT_TRUE(titles);
    EXPECT_EQ(screen.find("All Time"), titles);
    for (std::size_t line = 0; line < statsLabels.size(); ++line) {
        const auto row = screen.find(statsLabels[line]);
        ASSERT_EQ(row, *titles + 1 + static_cast<int>(line));
        const std::string text = screen.rows()[static_cast<std::size_t>(*row)];
        EXPECT_THAT(text, HasSubstr(content_.stats.at(line).session));
        EXPECT_THAT(text, testing::EndsWith(content_.stats.at(line).allTime));
        EXPECT_EQ(
            screen.canvas().widthOf(text),
            screen.canvas().widthOf(screen.rows()[static_cast<std::size_t>(*titles)]));
    }
}

TEST_F(ScreenLayoutTest, TheGridIsShownAsAWholeOrNotAtAllAndStaysWhenTheScreenGrows) {
    bool wasShown = false;
    for (int rows = 6; rows <= 60; ++rows) {
        const Screen screen(content_, {rows, 40});
        const auto shown = std::ranges::count_if(
            statsLabels, [&](const auto& label) { return screen.find(label).has_value(); });
        EXPECT_THAT(shown, testing::AnyOf(0, 6)) << rows;
        EXPECT_EQ(shown == 6, screen.find("All Time").has_value()) << rows;
        EXPECT_TRUE(shown == 6 || !wasShown) << rows;
        wasShown = shown == 6;
    }
    EXPECT_TRUE(wasShown);
}

TEST_F(ScreenLayoutTest, TheGridIsThereOnTheUsualScreenAndNotOnTheSmallestOne) {
    EXPECT_TRUE(Screen(content_, usual).find("Packet loss"));
    EXPECT_FALSE(Screen(content_, smallest).find("Packet loss"));
}

TEST_F(ScreenLayoutTest, TheGridFitsIntoFortyColumns) {
    const Screen screen(content_, {24, 40});

    EXPECT_TRUE(screen.find("88310"));
    EXPECT_TRUE(screen.find("All Time"));
}

// Notes.

TEST_F(ScreenLayoutTest, ALongNoteIsWrappedAtItsBlanks) {
    content_.notes = {
        "This user may not ping yet. Allow it with: sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\""};

    const Screen screen(content_, {24, 40});

    EXPECT_TRUE(screen.find("This user may not ping yet."));
    EXPECT_TRUE(screen.find("net.ipv4.ping_group_range=\"1000"));
    std::string joined;
    for (const std::string& row : screen.rows()) {
        joined += row + " ";
    }
    joined.erase(
        std::unique(joined.begin(), joined.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
        joined.end());
    EXPECT_THAT(joined, HasSubstr(content_.notes[0]));
}

TEST_F(ScreenLayoutTest, NotesStandBetweenHeaderAndChartAndWarn) {
    content_.notes = {"first note", "second note"};

    for (const ScreenSize size : {smallest, small, usual}) {
        const Screen screen(content_, size);
        const auto first = screen.find("first note");
        ASSERT_TRUE(first);
        EXPECT_GT(first, screen.find(content_.hostLine));
        EXPECT_EQ(screen.find("second note"), *first + 1);
        EXPECT_EQ(screen.inkOf("first note"), Ink::warn);
        const auto caption = screen.find("Last 5 minutes");
        EXPECT_TRUE(!caption || *caption > *first);
    }
}

TEST_F(ScreenLayoutTest, ANoteIsShownEvenWhereItTakesTheChartsPlace) {
    content_.notes = {"note 1", "note 2", "note 3", "note 4", "note 5"};

    const Screen screen(content_, smallest);

    EXPECT_TRUE(screen.find("Fair"));
    EXPECT_TRUE(screen.find("note 1"));
    EXPECT_TRUE(screen.find("note 4"));
}

TEST_F(ScreenLayoutTest, AWordLongerThanTheScreenIsCut) {
    content_.notes = {std::string(100, 'w')};

    EXPECT_TRUE(Screen(content_, small).find(std::string(37, 'w') + "…"));
}

// From the model.

TEST_F(ScreenLayoutTest, AWorkingConnectionIsShownAsTheModelHasIt) {
    WatchedMonitor world;
    world.prefs.setHostname("example.org");
    world.prefs.setSlowPingThresholdMs(250);
    world.resolve("example.org", "192.0.2.7");
    world.answerAfter(0.04);
    world.watchFor(10.5);

    const ScreenContent shown = screenContent(world.monitor, world.loop.wallNow(), {}, {"a note"});

    EXPECT_EQ(shown.bars, 5);
    EXPECT_EQ(shown.tone, Monitor::QualityTone::good);
    EXPECT_EQ(shown.quality, "Excellent");
    EXPECT_EQ(shown.hostLine, "example.org · 192.0.2.7");
    EXPECT_EQ(shown.latency, "40 ms");
    EXPECT_FALSE(shown.isDown);
    EXPECT_EQ(shown.loss, "0% loss");
    EXPECT_FALSE(shown.isLossy);
    EXPECT_EQ(shown.buckets.size(), 36u);
    EXPECT_DOUBLE_EQ(shown.lowThresholdMs, 250);
    EXPECT_DOUBLE_EQ(shown.highThresholdMs, 1150);
    EXPECT_EQ(shown.stats[0].session, "11");
    EXPECT_THAT(shown.notes, testing::ElementsAre("a note"));
}

TEST_F(ScreenLayoutTest, ADownConnectionIsShownWithItsReason) {
    WatchedMonitor world;
    world.fallSilent();
    world.monitor.start();
    ASSERT_TRUE(world.waitUntilDown());

    const ScreenContent shown = screenContent(world.monitor, world.loop.wallNow(), {}, {});

    EXPECT_EQ(shown.bars, 0);
    EXPECT_EQ(shown.tone, Monitor::QualityTone::bad);
    EXPECT_EQ(shown.quality, "Connection down");
    EXPECT_EQ(shown.hostLine, "No replies for 8 s");
    EXPECT_EQ(shown.latency, "Down");
    EXPECT_TRUE(shown.isDown);
    EXPECT_EQ(shown.loss, std::nullopt);
}

} // namespace tarnwick
