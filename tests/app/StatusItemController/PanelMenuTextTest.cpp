// The menu as rows of text, for panels that draw it by themselves.
#include "tests/app/StatusItemController/PanelMenuTextTest.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++found;
    }
    return found;
}

std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

} // namespace

// The header.

TEST_F(PanelMenuTextTest, TheFirstLineHasQualityLatencyAndLoss) {
    answerAfter(0.042);
    watchFor(12.5);

    EXPECT_EQ(PanelMenuHeader::qualityLine(monitor.reading()), "Excellent · 42 ms · 0% loss");
}

TEST_F(PanelMenuTextTest, BeforeTheFirstReplyTheFirstLineHasADash) {
    fallSilent();
    watchFor(0.5);

    EXPECT_EQ(PanelMenuHeader::qualityLine(monitor.reading()), "Connecting… · –");
}

TEST_F(PanelMenuTextTest, ADownIsSaidInWordsWithItsReasonBelow) {
    showMenu();
    watchFor(5.5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());

    const auto lines = panelMenu->rows();

    EXPECT_EQ(lines[0].label, "Connection down");
    EXPECT_EQ(lines[1].label, "No replies for 8 s");
}

TEST_F(PanelMenuTextTest, APauseIsSaidWithItsEndAndCanBeEnded) {
    showMenu();
    watchFor(5.5);
    EXPECT_FALSE(row("Resume").visible);

    panelMenu->choose(row("Pause for an Hour").id);

    EXPECT_THAT(panelMenu->rows()[0].label, testing::MatchesRegex("Paused until [0-9][0-9]:[0-9][0-9]"));
    EXPECT_FALSE(row("Pause for an Hour").visible);
    panelMenu->choose(row("Resume").id);
    EXPECT_FALSE(monitor.reading().isPaused());
    EXPECT_TRUE(row("Pause for an Hour").visible);
}

TEST_F(PanelMenuTextTest, ALongHostNameLosesItsMiddle) {
    const std::string name = std::string(60, 'a') + "." + std::string(60, 'b') + ".example.org";
    resolve(name, "192.0.2.7");
    prefs.setHostname(name);
    showMenu();
    watchFor(0.5);

    const std::string host = panelMenu->rows()[1].label;

    EXPECT_EQ(characters(host), 60U);
    EXPECT_THAT(host, StartsWith("aaaa"));
    EXPECT_THAT(host, HasSubstr("a…b"));
    EXPECT_TRUE(host.ends_with(".example.org · 192.0.2.7"));
}

TEST_F(PanelMenuTextTest, TheSessionLineHasItsFigures) {
    answerAfter(0.04);
    watchFor(2.5);
    answerAfter(0.06);
    loop.advance(3);

    EXPECT_EQ(
        PanelMenuHeader::sessionLine(monitor.reading(), {}), "Session: 6 sent, 0 lost, average 50.0 ms");
}

TEST_F(PanelMenuTextTest, TheFirstReplyGivesTheSessionLineItsAverage) {
    answerAfter(0.042);
    watchFor(0.5);

    EXPECT_EQ(
        PanelMenuHeader::sessionLine(monitor.reading(), {}), "Session: 1 sent, 0 lost, average 42.0 ms");
}

TEST_F(PanelMenuTextTest, WithoutRepliesTheSessionLineHasNoAverage) {
    fallSilent();
    watchFor(1.5);

    EXPECT_EQ(PanelMenuHeader::sessionLine(monitor.reading(), {}), "Session: 2 sent, 0 lost");
}

// The chart's line.

TEST_F(PanelMenuTextTest, TheChartIsThirtySixBlocksWide) {
    watchFor(400.5);

    EXPECT_EQ(characters(PanelMenuHeader::chartLine(monitor.reading().chart)), 36U);
}

TEST_F(PanelMenuTextTest, AChartWithoutBucketsIsALineOfEmptySigns) {
    const std::string chart = PanelMenuHeader::chartLine({});

    EXPECT_EQ(characters(chart), 36U);
    EXPECT_EQ(count(chart, "▖"), 36U);
}

TEST_F(PanelMenuTextTest, FewerBucketsAreStretchedToTheSameWidth) {
    prefs.setPingInterval(60);
    watchFor(400.5);

    const std::string chart = PanelMenuHeader::chartLine(monitor.reading().chart);

    EXPECT_EQ(characters(chart), 36U);
    // The oldest of the five may have left the chart.
    EXPECT_LE(count(chart, "▖"), 8U);
}

TEST_F(PanelMenuTextTest, AStretchWithoutPingsIsAnEmptySign) {
    watchFor(0.5);

    EXPECT_EQ(count(PanelMenuHeader::chartLine(monitor.reading().chart), "▖"), 35U);
}

TEST_F(PanelMenuTextTest, AnOutageIsHigherThanTheSlowestReply) {
    answerAfter(0.5);
    watchFor(100.5);
    fallSilent();
    loop.advance(100);

    const std::string chart = PanelMenuHeader::chartLine(monitor.reading().chart);

    EXPECT_GE(count(chart, "█"), 9U);
    EXPECT_EQ(count(chart, "▇"), 0U);
    EXPECT_GE(count(chart, "▅") + count(chart, "▆"), 9U);
}

TEST(PanelMenuHeader, SlowerRepliesAreHigherAndALossIsHighest) {
    // The scale ends at 100 ms.
    LatencyChart::Chart chart{
        .buckets = std::vector(36, LatencyChart::Bucket{.worstRtt = 80}), .lowThresholdMs = 1000};
    std::size_t column = 0;
    for (const double ms : {10, 20, 40, 60, 80, 200}) {
        chart.buckets[column++].worstRtt = ms;
    }
    chart.buckets[6] = {.lost = true};
    chart.buckets[7] = {};

    EXPECT_THAT(PanelMenuHeader::chartLine(chart), StartsWith("▁▂▃▄▅▆█▖▅"));
}

// The rows.

TEST_F(PanelMenuTextTest, TheRowsAreTheHeaderAndThenTheItems) {
    showMenu();
    watchFor(5.5);

    std::vector<std::string> labels;
    for (const PanelMenuRow& one : panelMenu->rows()) {
        labels.push_back(one.isSeparator ? "-" : one.label);
    }

    EXPECT_THAT(
        labels, testing::ElementsAre(
                    StartsWith("Excellent"), "1.1.1.1", testing::_, StartsWith("Session: "), "Change Host…",
                    "-", "Reset Session Stats", "Reset All Time Stats…", "Pause for an Hour", "Resume", "-",
                    "Outages…", "Settings…", "About Tarnwick", "-", "Quit Tarnwick"));
}

TEST_F(PanelMenuTextTest, BothResetsAreListed) {
    showMenu();

    EXPECT_TRUE(row("Reset Session Stats").visible);
    EXPECT_TRUE(row("Reset All Time Stats…").visible);
}

TEST_F(PanelMenuTextTest, ChangeHostIsAnInvisibleRowUntilItIsNeeded) {
    showMenu();
    watchFor(5.5);
    EXPECT_FALSE(row("Change Host…").visible);

    fallSilent();
    ASSERT_TRUE(waitUntilDown());

    EXPECT_TRUE(row("Change Host…").visible);
}

TEST_F(PanelMenuTextTest, OnlyTheFirstLineOfTheHeaderCanBeChosen) {
    showMenu();
    watchFor(5.5);
    const auto lines = panelMenu->rows();

    EXPECT_TRUE(lines[0].enabled);
    EXPECT_FALSE(lines[1].enabled);
    EXPECT_FALSE(lines[2].enabled);
    EXPECT_FALSE(lines[3].enabled);
}

TEST_F(PanelMenuTextTest, IdsAreUniqueAndStayTheSame) {
    showMenu();
    watchFor(5.5);
    const auto before = panelMenu->rows();
    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    const auto after = panelMenu->rows();

    ASSERT_EQ(before.size(), after.size());
    std::set<int> ids;
    for (std::size_t index = 0; index < before.size(); ++index) {
        EXPECT_EQ(before[index].id, after[index].id);
        ids.insert(before[index].id);
    }
    EXPECT_EQ(ids.size(), before.size());
    EXPECT_GT(*ids.begin(), 0);
}

TEST_F(PanelMenuTextTest, ShortcutsAreNamedAsKeys) {
    showMenu();

    EXPECT_EQ(row("Settings…").shortcutKey, "comma");
    EXPECT_EQ(row("Quit Tarnwick").shortcutKey, "q");
    EXPECT_EQ(row("About Tarnwick").shortcutKey, "");
}

TEST_F(PanelMenuTextTest, TheVerdictStandsBelowTheHost) {
    showMenu();
    Observed<Reading> reading;
    Reading bad;
    bad.verdict = {.blame = Blame::provider, .evidence = "Your router answers."};
    reading.set(bad);
    PanelMenuText text(loop, reading, *menu, {});

    const auto shown = text.rows();

    EXPECT_EQ(shown[2].label, "Your router answers.");
    EXPECT_FALSE(shown[2].enabled);
}

// Notices.

TEST_F(PanelMenuTextTest, ANoticeStandsBelowTheHostWithItsCommand) {
    showMenu();
    watchFor(5.5);
    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "Nothing to do"});
    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "Do it with:", .command = "it"});

    const auto lines = panelMenu->rows();

    std::vector<std::string> labels;
    for (std::size_t index = 1; index < 7; ++index) {
        labels.push_back(lines[index].label + (lines[index].enabled ? "" : " (disabled)"));
    }
    EXPECT_THAT(
        labels, testing::ElementsAre(
                    "1.1.1.1 (disabled)", "Do it with: (disabled)", "it (disabled)", "Copy Command",
                    "Nothing to do (disabled)", testing::_));
}

TEST_F(PanelMenuTextTest, TheRowsOfANoticeKeepTheirIdsWhenAnotherComes) {
    showMenu();
    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "Do it with:", .command = "it"});
    const int textId = row("Do it with:").id;
    const int copyId = row("Copy Command").id;

    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "Another"});

    EXPECT_EQ(row("Do it with:").id, textId);
    EXPECT_EQ(row("Copy Command").id, copyId);
}

TEST_F(PanelMenuTextTest, CopyCommandCopiesTheCommandOfItsNotice) {
    showMenu();
    monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "One:", .command = "first"});
    const int firstId = row("Copy Command").id;
    monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "Two:", .command = "second"});

    panelMenu->choose(firstId);
    panelMenu->choose(row("One:").id);
    EXPECT_THAT(copied, testing::ElementsAre("first"));

    monitor.clearNotice(Notice::Kind::settingsMistake);
    panelMenu->choose(firstId);
    panelMenu->choose(row("Copy Command").id);
    EXPECT_THAT(copied, testing::ElementsAre("first", "second"));
}

TEST_F(PanelMenuTextTest, AllowPingingIsThereWhileTheUserMayNotPing) {
    showMenu();
    const auto labels = [this] {
        std::vector<std::string> texts;
        for (const PanelMenuRow& one : panelMenu->rows()) {
            texts.push_back(one.label);
        }
        return texts;
    };
    EXPECT_THAT(labels(), testing::Not(testing::Contains("Allow Pinging…")));

    monitor.setNotice({.kind = Notice::Kind::mayNotPing, .text = "Allow it with:", .command = "it"});
    EXPECT_THAT(labels(), testing::Contains("Allow Pinging…"));
    panelMenu->choose(row("Allow Pinging…").id);

    EXPECT_EQ(permissionsAsked, 1);
    EXPECT_TRUE(copied.empty());
}

TEST_F(PanelMenuTextTest, AllowPingingIsNotThereWhereNothingCanAsk) {
    show();
    PanelMenuText unable(
        loop, monitor.observedReading(), *menu,
        {.openDropDown = [] {}, .copyCommand = [](const std::string&) {}});
    monitor.setNotice({.kind = Notice::Kind::mayNotPing, .text = "Allow it with:", .command = "it"});

    EXPECT_THAT(
        unable.rows(), testing::Each(testing::Field(&PanelMenuRow::label, testing::Ne("Allow Pinging…"))));
}

// Choosing.

TEST_F(PanelMenuTextTest, AClickOnTheHeaderOpensTheDropDown) {
    showMenu();

    panelMenu->choose(panelMenu->rows().front().id);

    EXPECT_EQ(dropDownsOpened, 1);
}

TEST_F(PanelMenuTextTest, ARowRunsItsItem) {
    showMenu();

    panelMenu->choose(row("About Tarnwick").id);
    EXPECT_EQ(std::pair(windows.aboutShown, windows.quits), std::pair(1, 0));

    panelMenu->choose(row("Quit Tarnwick").id);
    EXPECT_EQ(std::pair(windows.aboutShown, windows.quits), std::pair(1, 1));
}

TEST_F(PanelMenuTextTest, UnknownIdsAreIgnored) {
    showMenu();
    const int behindTheLast = panelMenu->rows().back().id + 1;

    for (const int id :
         {-1, 0, 2, 3, 4, 5, 9, 10, behindTheLast, 99, 100, 102, 104, std::numeric_limits<int>::max()}) {
        panelMenu->choose(id);
    }

    EXPECT_TRUE(copied.empty());
    EXPECT_EQ(dropDownsOpened + windows.settingsShown + windows.aboutShown + windows.quits, 0);
}

} // namespace tarnwick
