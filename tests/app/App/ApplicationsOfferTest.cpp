// A bundle's place among the user's applications, in real files: offered once, brought up to date, taken
// away.
#include "app/App/ApplicationsOffer.h"

#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/support/Files.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

class ApplicationsOfferTest : public testing::Test {
protected:
    ApplicationsOfferTest() { makeBundle(); }

    void makeBundle() const {
        const fs::path share = bundle_ / "share";
        test::writeFile(
            share / "applications/org.tarnwick.tarnwick.desktop",
            "[Desktop Entry]\nType=Application\nName=Tarnwick\nExec=tarnwick\nIcon=org.tarnwick.tarnwick\n");
        test::writeFile(share / "icons/hicolor/scalable/apps/org.tarnwick.tarnwick.svg", "<svg/>");
        test::writeFile(program(), "#!/bin/sh\n");
        fs::permissions(program(), fs::perms::owner_all);
    }

    [[nodiscard]] fs::path program() const { return bundle_ / "bin/tarnwick"; }

    /// As a start of the program does.
    void start() {
        watched_.monitor.clearNotice(Notice::Kind::offersApplications);
        offer_.emplace(ApplicationsOffer::Needs{
            .monitor = watched_.monitor,
            .settings = settings_,
            .menu = MenuEntry(
                {.program = program(), .share = bundle_ / "share", .userData = data_, .systemFolders = {}}),
            .session = {.userFolder = config_, .systemFolders = {}, .desktops = {}},
            .program = program(),
            .bundle = bundle_,
            .answered = folder() / "applications-answered",
            .ask =
                [this](const Question& question, const std::function<void(bool)>& answered) {
                    questions_.push_back(question);
                    answered(isSure_);
                },
            .forgetUpdates = [this] { ++forgotten_; }});
        offer_->start();
    }

    void moveBundle() {
        const fs::path elsewhere = folder() / "elsewhere/Tarnwick.app";
        fs::create_directories(elsewhere.parent_path());
        fs::rename(bundle_, elsewhere);
        bundle_ = elsewhere;
    }

    [[nodiscard]] const fs::path& folder() const { return watched_.folder.path(); }

    [[nodiscard]] std::optional<Notice> notice() const {
        const Notices& notices = watched_.monitor.reading().notices;
        const auto found = std::ranges::find(notices, Notice::Kind::offersApplications, &Notice::kind);
        return found != notices.end() ? std::optional(*found) : std::nullopt;
    }

    [[nodiscard]] bool isAdded() const { return settings_.applications()->haveIt; }

    int forgotten_ = 0;
    WatchedMonitor watched_;
    simulation::FakeLoginItem loginItem_;
    SettingsModel settings_{watched_.monitor, watched_.notifications, loginItem_};
    fs::path bundle_ = folder() / "Downloads/Tarnwick.app";
    fs::path data_ = folder() / "data";
    fs::path config_ = folder() / "config";
    fs::path menuFile_ = data_ / "applications/org.tarnwick.tarnwick.desktop";
    fs::path loginFile_ = config_ / "autostart/org.tarnwick.tarnwick.desktop";
    std::vector<Question> questions_;
    bool isSure_ = true;
    std::optional<ApplicationsOffer> offer_;
};

} // namespace

TEST_F(ApplicationsOfferTest, AtTheFirstStartItIsOfferedAndNothingIsWritten) {
    start();

    EXPECT_EQ(notice(), applicationsNotice());
    EXPECT_FALSE(isAdded());
    EXPECT_FALSE(fs::exists(menuFile_));
    EXPECT_FALSE(fs::exists(loginFile_));
}

TEST_F(ApplicationsOfferTest, TakenItIsInTheMenuAndStartsAtLogin) {
    start();

    settings_.answerApplications(true);

    EXPECT_EQ(notice(), std::nullopt);
    EXPECT_TRUE(isAdded());
    EXPECT_THAT(test::contentOf(menuFile_), HasSubstr("TryExec=" + program().string() + "\n"));
    EXPECT_THAT(test::contentOf(loginFile_), HasSubstr("TryExec=" + program().string() + "\n"));
}

TEST_F(ApplicationsOfferTest, DeclinedItIsNotOfferedAgain) {
    start();
    settings_.answerApplications(false);
    EXPECT_EQ(notice(), std::nullopt);

    start();

    EXPECT_EQ(notice(), std::nullopt);
    EXPECT_FALSE(fs::exists(menuFile_));
}

TEST_F(ApplicationsOfferTest, WithoutAnAnswerTheNextStartOffersAgain) {
    start();

    start();

    EXPECT_NE(notice(), std::nullopt);
}

TEST_F(ApplicationsOfferTest, WhereTheMenuHasThePackagedProgramItIsNotOffered) {
    test::writeFile(menuFile_, "[Desktop Entry]\nType=Application\nExec=tarnwick\n");

    start();

    EXPECT_EQ(notice(), std::nullopt);
    EXPECT_FALSE(isAdded());
}

TEST_F(ApplicationsOfferTest, AFailureIsToldAndMayBeTriedAgain) {
    start();
    test::writeFile(data_, "in the way");

    settings_.answerApplications(true);

    ASSERT_NE(notice(), std::nullopt);
    EXPECT_THAT(notice()->text, AllOf(HasSubstr("not among your applications"), HasSubstr(data_.string())));
    EXPECT_THAT(settings_.applications()->problem, HasSubstr(data_.string()));
    EXPECT_FALSE(isAdded());

    fs::remove(data_);
    settings_.answerApplications(true);

    EXPECT_EQ(notice(), std::nullopt);
    EXPECT_EQ(settings_.applications()->problem, "");
    EXPECT_TRUE(isAdded());
}

TEST_F(ApplicationsOfferTest, AfterAMoveBothEntriesFollowAtTheNextStart) {
    start();
    settings_.answerApplications(true);
    moveBundle();

    start();

    EXPECT_TRUE(isAdded());
    EXPECT_THAT(test::contentOf(menuFile_), HasSubstr("TryExec=" + program().string() + "\n"));
    EXPECT_THAT(test::contentOf(loginFile_), HasSubstr("TryExec=" + program().string() + "\n"));
}

TEST_F(ApplicationsOfferTest, ASecondCopyLeavesTheEntriesOfTheFirst) {
    start();
    settings_.answerApplications(true);
    const std::string menuBefore = test::contentOf(menuFile_);
    const std::string loginBefore = test::contentOf(loginFile_);
    bundle_ = folder() / "second/Tarnwick.app";
    makeBundle();

    start();

    EXPECT_EQ(notice(), std::nullopt);
    EXPECT_FALSE(isAdded());
    EXPECT_EQ(test::contentOf(menuFile_), menuBefore);
    EXPECT_EQ(test::contentOf(loginFile_), loginBefore);
}

TEST_F(ApplicationsOfferTest, ANewVersionBringsItsIcon) {
    start();
    settings_.answerApplications(true);
    const fs::path icon = "icons/hicolor/scalable/apps/org.tarnwick.tarnwick.svg";
    test::writeFile(bundle_ / "share" / icon, "<svg version='2'/>");

    start();

    EXPECT_EQ(test::contentOf(data_ / icon), "<svg version='2'/>");
}

TEST_F(ApplicationsOfferTest, UninstallingAsksAndSaysWhatGoesAndWhatStays) {
    start();
    settings_.answerApplications(true);
    isSure_ = false;

    settings_.uninstall();

    ASSERT_EQ(questions_.size(), 1U);
    EXPECT_THAT(
        questions_.front().note, AllOf(
                                     HasSubstr("menu"), HasSubstr("icon"), HasSubstr("login"),
                                     HasSubstr("Settings and statistics stay"), HasSubstr(bundle_.string())));
    EXPECT_TRUE(isAdded());
    EXPECT_TRUE(fs::exists(menuFile_));
    EXPECT_TRUE(fs::exists(loginFile_));
    EXPECT_EQ(forgotten_, 0);
}

TEST_F(ApplicationsOfferTest, UninstalledNothingOfItIsLeftButTheFolder) {
    start();
    settings_.answerApplications(true);

    settings_.uninstall();

    EXPECT_FALSE(isAdded());
    EXPECT_FALSE(fs::exists(menuFile_));
    EXPECT_FALSE(fs::exists(loginFile_));
    EXPECT_EQ(forgotten_, 1);
    EXPECT_TRUE(fs::exists(program()));
    start();
    EXPECT_EQ(notice(), std::nullopt);
}

TEST_F(ApplicationsOfferTest, AFailureOfUninstallingIsTold) {
    start();
    settings_.answerApplications(true);
    fs::permissions(menuFile_.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    {
        const test::Unprivileged ordinary;
        ASSERT_TRUE(ordinary.isOrdinary());
        settings_.uninstall();
    }
    fs::permissions(menuFile_.parent_path(), fs::perms::owner_all);

    EXPECT_THAT(settings_.applications()->problem, HasSubstr(menuFile_.string()));
    EXPECT_TRUE(isAdded());
}

} // namespace tarnwick
