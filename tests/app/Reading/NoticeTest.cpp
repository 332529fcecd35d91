// What the user should know or do: which notices there are, in which order.
#include "app/Reading/Notice.h"

#include "app/Reading/Measurements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using Kind = Notice::Kind;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<Kind> kindsOf(const Notices& notices) {
    std::vector<Kind> kinds;
    for (const Notice& notice : notices) {
        kinds.push_back(notice.kind);
    }
    return kinds;
}

} // namespace

TEST(Notice, ThereIsNoneWhileAllIsWell) {
    EXPECT_THAT(noticesOf({}), IsEmpty());
}

TEST(Notice, ACommandStandsBehindTheText) {
    EXPECT_EQ((Notice{.kind = Kind::noPanel, .text = "The text"}.line()), "The text");
    EXPECT_EQ(
        (Notice{.kind = Kind::noPanel, .text = "Do it with:", .command = "it"}.line()), "Do it with: it");
}

TEST(Notice, AUserWhoMayNotPingIsToldTheCommandThatAllowsIt) {
    const Measurements measured{
        .startError = PingError::socket("Permission denied"), .pingPermissionCommand = "sudo it"};

    EXPECT_THAT(
        noticesOf(measured), ElementsAre(Notice{
                                 .kind = Kind::mayNotPing,
                                 .text = "This user may not ping yet. Allow it with:",
                                 .command = "sudo it"}));
}

TEST(Notice, AnotherObstacleToASocketIsToldInTheSystemsWords) {
    const Measurements measured{.startError = PingError::socket("Too many open files")};

    EXPECT_THAT(
        noticesOf(measured),
        ElementsAre(
            Notice{.kind = Kind::noPingSocket, .text = "Could not open ICMP socket: Too many open files"}));
}

TEST(Notice, AMissingPanelIsToldWithWhatTheDesktopNeeds) {
    const Notice elsewhere = noPanelNotice(false);
    EXPECT_EQ(elsewhere.kind, Kind::noPanel);
    EXPECT_THAT(elsewhere.text, testing::StartsWith("No panel here shows status items."));

    const Notice onGnome = noPanelNotice(true);
    EXPECT_EQ(onGnome.kind, Kind::noPanel);
    EXPECT_THAT(onGnome.text, testing::HasSubstr("“AppIndicator and KStatusNotifierItem Support”"));
}

TEST(Notice, AHostThatIsNotFoundNeedsNone) {
    EXPECT_THAT(noticesOf({.startError = PingError::resolution("Name or service not known")}), IsEmpty());
}

TEST(Notice, TellsWhyTheStatisticsAreNotRecorded) {
    EXPECT_THAT(
        noticesOf({.recording = Recording::otherRecords}),
        ElementsAre(Notice{
            .kind = Kind::notRecorded,
            .text = "Another Tarnwick records the statistics; this one records nothing."}));
    EXPECT_THAT(
        noticesOf({.recording = Recording::cannotRecord}),
        ElementsAre(Notice{
            .kind = Kind::notRecorded,
            .text = "The statistics are not stored: their folder can’t be written or locked."}));
}

TEST(Notice, TellsWhyTheStatisticsCouldNotBeWritten) {
    EXPECT_THAT(
        noticesOf({.recordingProblem = "No space left on device"}),
        ElementsAre(Notice{
            .kind = Kind::notRecorded, .text = "The statistics are not stored: No space left on device."}));
}

TEST(Notice, TellsOfHostsThatAreNotStored) {
    EXPECT_THAT(
        noticesOf({.surplusHosts = 3}),
        ElementsAre(Notice{
            .kind = Kind::notRecorded,
            .text = "There are too many hosts: the statistics of those pinged least (3) are not stored."}));
}

TEST(Notice, TellsOfAHistoryThatIsNotStored) {
    EXPECT_THAT(
        noticesOf({.historyProblem = "The history is not stored: disk full."}),
        ElementsAre(Notice{.kind = Kind::noHistory, .text = "The history is not stored: disk full."}));
}

TEST(Notice, WhereTheStatisticsAreNotStoredEitherTheyAreNamedAlone) {
    EXPECT_THAT(
        kindsOf(noticesOf({.recordingProblem = "disk full", .historyProblem = "The same."})),
        ElementsAre(Kind::notRecorded));
    EXPECT_THAT(
        kindsOf(noticesOf({.recording = Recording::cannotRecord, .historyProblem = "The same."})),
        ElementsAre(Kind::notRecorded));
}

TEST(Notice, OfTheSettingsTellsTheFirstMistakeAndHowManyMoreThereAre) {
    EXPECT_EQ(settingsNotice({"one"}), (Notice{.kind = Kind::settingsMistake, .text = "one"}));
    EXPECT_EQ(settingsNotice({"one", "two", "three"}).text, "one (and 2 more)");
}

TEST(Notice, TheMostImportantOneIsTheFirst) {
    const Measurements measured{
        .startError = PingError::socket("Permission denied"),
        .pingPermissionCommand = "sudo it",
        .recording = Recording::otherRecords,
        .notices = {{.kind = Kind::noPanel}, {.kind = Kind::settingsMistake}}};

    EXPECT_THAT(
        kindsOf(noticesOf(measured)),
        ElementsAre(Kind::mayNotPing, Kind::settingsMistake, Kind::noPanel, Kind::notRecorded));
}

} // namespace tarnwick
