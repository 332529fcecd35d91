// What enrolling and withdrawing write into the entry that starts the program with the session.
#include "platform/xdg/AutostartEntry.h"

#include "tests/platform/xdg/SessionFiles.h"
#include "tests/support/CaseName.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;
using test::application;
using test::fresh;
using test::gnomeOff;
using test::hidden;
using test::own;
using test::shown;
using test::startsProgram;
using test::withdrawn;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

/// As earlier versions wrote it.
std::string withoutTheOption(std::string entry) {
    const std::string option = " --from-session";
    return entry.erase(entry.find(option), option.size());
}

/// With a command line of the user's own.
std::string withOptions(std::string entry) {
    return entry.insert(entry.find(" --from-session"), " --set PingInterval=5");
}

class AutostartChangesTest : public testing::Test {
protected:
    void storeUser(const std::string& text) const { files_.store(files_.userFile(), text); }

    test::SessionFiles files_;
};

/// The user's entry before and after; empty where there is no file.
struct Change {
    std::string name;
    std::string before;
    std::string after;
    std::vector<std::string> desktops = {};
    std::optional<std::string> system = {};

    friend void PrintTo(const Change& change, std::ostream* out) { *out << change.before; }
};

class ChangedEntry : public AutostartChangesTest, public testing::WithParamInterface<Change> {
protected:
    void SetUp() override {
        if (!GetParam().before.empty()) {
            storeUser(GetParam().before);
        }
        if (const auto& system = GetParam().system) {
            files_.store(files_.systemFile(), *system);
        }
    }

    void expectChanged(Status status) const {
        EXPECT_EQ(entry_.status(), status);
        EXPECT_EQ(files_.text(), files_.withPaths(GetParam().after));
        EXPECT_EQ(test::fileCount(files_.userFile().parent_path()), GetParam().after.empty() ? 0 : 1);
        EXPECT_EQ(test::contentOf(files_.systemFile()), files_.withPaths(GetParam().system.value_or("")));
    }

    AutostartEntry entry_ = files_.entry(GetParam().desktops);
};

class Enrolling : public ChangedEntry {};

TEST_P(Enrolling, LeavesAnEntryThatStartsTheProgram) {
    EXPECT_EQ(entry_.enroll(), std::nullopt);
    expectChanged(Status::enabled);
}

INSTANTIATE_TEST_SUITE_P(
    AutostartChangesTest, Enrolling,
    testing::Values(
        Change{"MakesAnEntry", "", fresh()},
        Change{
            "KeepsWhatOthersWrote",
            "# by hand\n"
                + application(
                    "Name=Mine", "Name[de]=Meins", "X-GNOME-Autostart-Delay=5", hidden, gnomeOff, "",
                    "[Desktop Action A]", "Exec=other"),
            "# by hand\n"
                + application(
                    "Name=Mine", "Name[de]=Meins", "X-GNOME-Autostart-Delay=5", "TryExec=PROGRAM",
                    startsProgram, "", "[Desktop Action A]", "Exec=other")},
        Change{
            "KeepsACommandOfTheUsersOwn",
            application("Exec=sh -c \"sleep 10; tarnwick\"", "TryExec=PROGRAM", hidden, withdrawn),
            application("Exec=sh -c \"sleep 10; tarnwick\"", "TryExec=PROGRAM")},
        Change{
            "KeepsTheOptionsOfTheUsersOwn",
            application("Exec=\"PROGRAM\" --set PingInterval=5", "TryExec=PROGRAM", hidden, withdrawn),
            application("Exec=\"PROGRAM\" --set PingInterval=5", "TryExec=PROGRAM")},
        Change{"KeepsAConditionOfTheUsersOwn", own("TryExec=sh", hidden, withdrawn), own("TryExec=sh")},
        Change{
            "KeepsAConditionBesideAnOwnCommand",
            application("Exec=sh -c \"sleep 10; tarnwick\"", "TryExec=sh", hidden, withdrawn),
            application("Exec=sh -c \"sleep 10; tarnwick\"", "TryExec=sh")},
        Change{
            "ReplacesACommandThatIsGone", application("Exec=/nothing/tarnwick", "TryExec=PROGRAM"),
            application(startsProgram, "TryExec=PROGRAM")},
        Change{"ReplacesAProgramThatIsGone", own("TryExec=/nothing/tarnwick"), own("TryExec=PROGRAM")},
        Change{
            "ReplacesAnotherCopy", application("Name=Tarnwick", "Exec=COPY", "TryExec=COPY"),
            own("TryExec=PROGRAM")},
        Change{"DropsAListOfOtherDesktops", own("OnlyShowIn=GNOME;"), own("TryExec=PROGRAM"), {"XFCE"}},
        Change{"DropsAListThatExcludesThisDesktop", own("NotShowIn=XFCE;"), own("TryExec=PROGRAM"), {"XFCE"}},
        Change{
            "KeepsAListThatAdmitsThisDesktop",
            own("OnlyShowIn=XFCE;"),
            own("OnlyShowIn=XFCE;", "TryExec=PROGRAM"),
            {"XFCE"}},
        Change{
            "LeavesNothingOfAWithdrawal", own("# by hand", "TryExec=PROGRAM", hidden, withdrawn),
            own("# by hand", "TryExec=PROGRAM")}),
    test::caseName);

class Withdrawing : public ChangedEntry {};

TEST_P(Withdrawing, LeavesNoEntryThatStartsTheProgram) {
    EXPECT_EQ(entry_.withdraw(), std::nullopt);
    expectChanged(Status::notRegistered);
}

INSTANTIATE_TEST_SUITE_P(
    AutostartChangesTest, Withdrawing,
    testing::Values(
        Change{"RemovesWhatHoldsNothingOfOthers", fresh(), ""},
        Change{"RemovesAnEntryWithoutTheOption", withoutTheOption(fresh()), ""},
        Change{"RemovesItAlsoWhenTheDesktopHadSwitchedItOff", fresh(hidden, gnomeOff), ""},
        Change{
            "HidesAnEntryWithACommandOfTheUsersOwn",
            withOptions(fresh()),
            withOptions(fresh(hidden, withdrawn)),
        },
        Change{
            "HidesAnEntryWithLinesOfOthers", "# by hand\n" + fresh("X-GNOME-Autostart-Delay=5"),
            "# by hand\n" + fresh("X-GNOME-Autostart-Delay=5", hidden, withdrawn)},
        Change{
            "ChangesNothingTheSecondTime", fresh("# by hand", hidden, withdrawn),
            fresh("# by hand", hidden, withdrawn)},
        Change{
            "HidesItAgainAfterTheDesktopLetItStart", fresh("# by hand", shown, withdrawn),
            fresh("# by hand", hidden, withdrawn)},
        Change{
            .name = "HidesTheSystemsEntryByACopy",
            .before = "",
            .after = own("Name[de]=Anzeige", hidden, withdrawn),
            .system = own("Name[de]=Anzeige")},
        Change{
            .name = "HidesItBesideASystemsEntry",
            .before = fresh(),
            .after = fresh(hidden, withdrawn),
            .system = own()}),
    test::caseName);

// Files that can't be written as they are.

TEST_F(AutostartChangesTest, EnrollingMakesTheFolder) {
    fs::remove_all(files_.userFolder());

    EXPECT_EQ(files_.entry().enroll(), std::nullopt);

    EXPECT_EQ(files_.text(), files_.withPaths(fresh()));
}

TEST_F(AutostartChangesTest, AFileThatIsNoEntryIsKeptUnderAnotherName) {
    storeUser("no entry");

    EXPECT_EQ(files_.entry().enroll(), std::nullopt);

    EXPECT_EQ(files_.entry().status(), Status::enabled);
    EXPECT_EQ(test::contentOf(files_.userFile().string() + ".unreadable"), "no entry");
}

TEST_F(AutostartChangesTest, ALinkedFileIsWrittenWhereItLies) {
    const fs::path linked = files_.folder("dotfiles") / "entry";
    files_.store(linked, own(hidden));
    fs::create_directories(files_.userFile().parent_path());
    fs::create_symlink(linked, files_.userFile());

    EXPECT_EQ(files_.entry().enroll(), std::nullopt);

    EXPECT_TRUE(fs::is_symlink(files_.userFile()));
    EXPECT_THAT(test::contentOf(linked), Not(HasSubstr("Hidden")));
}

TEST_F(AutostartChangesTest, AMaskedEntryIsNotEnabledAndTheMaskIsNotWrittenTo) {
    fs::create_directories(files_.userFile().parent_path());
    fs::create_symlink("/dev/null", files_.userFile());
    EXPECT_EQ(files_.entry().status(), Status::notRegistered);

    EXPECT_THAT(files_.entry().enroll(), Optional(HasSubstr("autostart/org.tarnwick.tarnwick.desktop")));

    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(AutostartChangesTest, WithoutAKnownPlaceOfTheProgramEnrollingFailsInWords) {
    EXPECT_THAT(AutostartEntry(std::nullopt, files_.session()).enroll(), Optional(Not(IsEmpty())));
    EXPECT_FALSE(fs::exists(files_.userFile()));
}

TEST_F(AutostartChangesTest, AFolderThatCannotBeWrittenGivesItsNameAndTheReason) {
    files_.protect();

    EXPECT_THAT(
        files_.entry().enroll(), Optional(
                                     "Can’t change " + files_.userFile().string() + ": "
                                     + std::make_error_code(std::errc::permission_denied).message()));
}

TEST_F(AutostartChangesTest, AFileInThePlaceOfTheFolderGivesTheReason) {
    test::writeFile(files_.userFile().parent_path(), "in the way");

    EXPECT_THAT(
        files_.entry().enroll(),
        Optional(HasSubstr(std::make_error_code(std::errc::not_a_directory).message())));
}

/// The entry of a program that was moved: made where it was, looked at where it is.
class MovedProgramTest : public AutostartChangesTest {
protected:
    MovedProgramTest() {
        storeUser(fresh());
        former_ = files_.program();
        files_.install("moved/tarnwick");
    }

    fs::path former_;
};

TEST_F(MovedProgramTest, TheEntryFollowsIt) {
    EXPECT_EQ(files_.entry().follow(former_), std::nullopt);

    EXPECT_EQ(files_.text(), files_.withPaths(fresh()));
    EXPECT_EQ(files_.entry().status(), Status::enabled);
}

TEST_F(MovedProgramTest, TheSwitchesOfTheEntryStay) {
    test::writeFile(files_.userFile(), files_.text() + hidden + "\n");

    EXPECT_EQ(files_.entry().follow(former_), std::nullopt);

    EXPECT_EQ(files_.text(), files_.withPaths(fresh(hidden)));
    EXPECT_EQ(files_.entry().status(), Status::requiresApproval);
}

TEST_F(MovedProgramTest, AnEntryForAnotherCopyStays) {
    const std::string before = files_.text();

    EXPECT_EQ(files_.entry().follow(files_.anotherCopy()), std::nullopt);

    EXPECT_EQ(files_.text(), before);
}

TEST_F(MovedProgramTest, ACommandLineOfTheUsersOwnStays) {
    const std::string before = withOptions(files_.text());
    test::writeFile(files_.userFile(), before);

    EXPECT_EQ(files_.entry().follow(former_), std::nullopt);

    EXPECT_EQ(files_.text(), before);
}

TEST_F(MovedProgramTest, WhereThereIsNoEntryNoneIsMade) {
    fs::remove(files_.userFile());

    EXPECT_EQ(files_.entry().follow(former_), std::nullopt);

    EXPECT_FALSE(fs::exists(files_.userFile()));
}

} // namespace

} // namespace tarnwick
