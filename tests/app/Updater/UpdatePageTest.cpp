// What the update window says in each state.
#include "app/Updater/UpdatePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Action = UpdatePage::Action;
using Button = UpdatePage::Button;
using Progress = UpdatePage::Progress;

FoundUpdate someUpdate() {
    FoundUpdate update;
    update.release.version = ReleaseVersion::parse("1.1").value();
    update.release.notes = "* Better";
    update.archive.size = 4000;
    return update;
}

std::optional<UpdatePage> page(const UpdateState& state) {
    return pageOf(state, ReleaseVersion::parse("1.0").value());
}

TEST(UpdatePageTest, NothingIsShownOfWhatNobodyHasAskedFor) {
    EXPECT_EQ(page(Updating::Idle{}), std::nullopt);
    EXPECT_EQ(page(Updating::Checking{.isAskedFor = false}), std::nullopt);
    EXPECT_EQ(page(Updating::Downloading{someUpdate(), 5, false}), std::nullopt);
    EXPECT_EQ(page(Updating::Preparing{someUpdate(), false}), std::nullopt);
    EXPECT_EQ(page(Updating::Ready{someUpdate().release.version, false}), std::nullopt);
}

TEST(UpdatePageTest, ACheckCanBeCanceled) {
    const auto shown = page(Updating::Checking{.isAskedFor = true}).value();

    EXPECT_EQ(shown.title, "Checking for updates…");
    EXPECT_EQ(shown.progress, Progress{});
    EXPECT_THAT(shown.buttons, ElementsAre(Button{"&Cancel", Action::cancel}));
    EXPECT_EQ(shown.whenClosed, Action::cancel);
}

TEST(UpdatePageTest, AnUpdateIsShownWithBothVersionsAndItsNotes) {
    const auto shown = page(Updating::Found{someUpdate(), false}).value();

    EXPECT_EQ(shown.title, "A new version of Tarnwick is available");
    EXPECT_EQ(shown.text, "Version 1.1 can be installed now. You have version 1.0.");
    EXPECT_EQ(shown.notes, "* Better");
    EXPECT_THAT(
        shown.buttons,
        ElementsAre(
            Button{"&Skip This Version", Action::skip}, Button{"Remind Me &Later", Action::remindLater},
            Button{"&Install", Action::install}));
    EXPECT_EQ(shown.whenClosed, Action::remindLater);
    EXPECT_FALSE(shown.isAlert);
}

TEST(UpdatePageTest, ADownloadIsShownInBytes) {
    const auto shown = page(Updating::Downloading{someUpdate(), 1000, true}).value();

    EXPECT_EQ(shown.title, "Downloading Tarnwick 1.1");
    EXPECT_EQ(shown.progress, (Progress{.done = 1000, .whole = 4000}));
    EXPECT_THAT(shown.buttons, ElementsAre(Button{"&Cancel", Action::cancel}));
}

TEST(UpdatePageTest, APreparationIsUnderWay) {
    const auto shown = page(Updating::Preparing{someUpdate(), true}).value();

    EXPECT_EQ(shown.title, "Preparing Tarnwick 1.1");
    EXPECT_EQ(shown.text, "The download is being verified and unpacked.");
    EXPECT_EQ(shown.progress, Progress{});
    EXPECT_THAT(shown.buttons, ElementsAre(Button{"&Cancel", Action::cancel}));
    EXPECT_EQ(shown.whenClosed, Action::cancel);
}

TEST(UpdatePageTest, WhatIsReadyWaitsForARestart) {
    const auto shown = page(Updating::Ready{someUpdate().release.version, true}).value();

    EXPECT_EQ(shown.title, "Tarnwick 1.1 is ready");
    EXPECT_EQ(shown.text, "It takes the place of version 1.0 when Tarnwick restarts.");
    EXPECT_THAT(
        shown.buttons,
        ElementsAre(Button{"&Later", Action::dismiss}, Button{"&Restart Now", Action::restart}));
}

TEST(UpdatePageTest, NewsNeedsNoMoreThanToBeRead) {
    const auto upToDate = page(Updating::NothingNewer{}).value();
    EXPECT_EQ(upToDate.title, "Tarnwick is up to date");
    EXPECT_EQ(upToDate.text, "Version 1.0 is the newest one.");
    EXPECT_TRUE(upToDate.isAlert);

    const auto failed = page(Updating::Failed{.text = "The update server does not answer."}).value();
    EXPECT_EQ(failed.title, "Tarnwick was not updated");
    EXPECT_EQ(failed.text, "The update server does not answer.");
    EXPECT_TRUE(failed.isAlert);
    EXPECT_THAT(failed.buttons, ElementsAre(Button{"&OK", Action::dismiss}));
}

} // namespace
} // namespace tarnwick
