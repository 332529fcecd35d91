// The entry that starts the program with the session: its states, and what changing it preserves.
#include "platform/xdg/AutostartEntry.h"

#include "tests/core/Required.h"
#include "tests/platform/ports/LoginItemContract.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"
#include "tests/support/Variable.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;
using test::run;
using test::shellQuoted;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

/// The folders and files that a session would read.
class SessionFiles {
public:
    SessionFiles() {
        install("tarnwick");
        fs::create_directories(userFolder());
    }

    SessionFiles(const SessionFiles&) = delete;
    SessionFiles& operator=(const SessionFiles&) = delete;

    ~SessionFiles() {
        ordinary_.reset();
        for (const fs::path& folder : {userFolder(), userFile().parent_path()}) {
            std::error_code ignored;
            fs::permissions(folder, fs::perms::owner_all, ignored);
        }
    }

    /// A program with this name, which leaves the file "started" behind.
    void install(const std::string& name) {
        program_ = folder_.path() / "my programs" / name;
        test::writeFile(program_, "#!/bin/sh\n: > " + shellQuoted(started()) + "\n");
        fs::permissions(program_, fs::perms::owner_all);
    }

    [[nodiscard]] const fs::path& program() const { return program_; }

    /// Of the same name, but elsewhere.
    [[nodiscard]] fs::path anotherCopy() const {
        const fs::path copy = folder_.path() / "other" / program_.filename();
        test::writeFile(copy, "#!/bin/sh\n");
        fs::permissions(copy, fs::perms::owner_all);
        return copy;
    }

    [[nodiscard]] fs::path started() const { return folder_.path() / "started"; }

    [[nodiscard]] fs::path userFolder() const { return folder_.path() / "config"; }

    [[nodiscard]] fs::path userFile() const { return userFolder() / "autostart" / "tarnwick.desktop"; }

    [[nodiscard]] fs::path systemFolder(const std::string& name) const { return folder_.path() / name; }

    [[nodiscard]] fs::path systemFile(const std::string& name = "xdg") const {
        return systemFolder(name) / "autostart" / "tarnwick.desktop";
    }

    [[nodiscard]] std::string text() const { return test::contentOf(userFile()); }

    /// From now on nothing can be written.
    void protect() {
        for (const fs::path& folder : {userFile().parent_path(), userFolder()}) {
            std::error_code ignored;
            fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec, ignored);
        }
        ordinary_ = std::make_unique<test::Unprivileged>();
        ASSERT_TRUE(ordinary_->isOrdinary());
    }

    [[nodiscard]] AutostartEntry::Session session(std::vector<std::string> desktops = {}) const {
        return {
            .userFolder = userFolder(),
            .systemFolders = {systemFolder("xdg"), systemFolder("later")},
            .desktops = std::move(desktops)};
    }

    [[nodiscard]] std::unique_ptr<AutostartEntry> entry(std::vector<std::string> desktops = {}) const {
        return std::make_unique<AutostartEntry>(program_, session(std::move(desktops)));
    }

private:
    test::TemporaryFolder folder_;
    fs::path program_;
    std::unique_ptr<test::Unprivileged> ordinary_;
};

// The contract.

class AutostartDriver {
public:
    LoginItem& item() { return *item_; }

    void switchOff() {
        before_ = files_.text();
        test::writeFile(files_.userFile(), before_ + "X-GNOME-Autostart-enabled=false\n");
    }

    void switchOn() { test::writeFile(files_.userFile(), before_ + "X-GNOME-Autostart-enabled=true\n"); }

    void refuse() { files_.protect(); }

private:
    SessionFiles files_;
    std::unique_ptr<AutostartEntry> item_ = files_.entry();
    std::string before_;
};

class FakeDriver {
public:
    LoginItem& item() { return item_; }

    void switchOff() { item_.now = Status::requiresApproval; }

    void switchOn() { item_.now = Status::enabled; }

    void refuse() { item_.failure = "No."; }

private:
    simulation::FakeLoginItem item_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(AutostartEntry, LoginItemContract, AutostartDriver, );
INSTANTIATE_TYPED_TEST_SUITE_P(FakeLoginItem, LoginItemContract, FakeDriver, );

// The states.

namespace {

class AutostartEntryTest : public testing::Test {
protected:
    void storeUser(const std::string& text) { test::writeFile(files_.userFile(), text); }

    void storeSystem(const std::string& text, const std::string& folder = "xdg") {
        test::writeFile(files_.systemFile(folder), text);
    }

    /// An entry that starts the program, and these lines.
    [[nodiscard]] std::string starting(const std::string& lines = "") const {
        return startingWith("\"" + files_.program().string() + "\"", lines);
    }

    [[nodiscard]] static std::string startingWith(const std::string& command, const std::string& lines = "") {
        return "[Desktop Entry]\nType=Application\nName=Tarnwick\nExec=" + command + "\n" + lines;
    }

    /// An entry with something of others, withdrawn.
    void withdrawOwn() {
        ASSERT_EQ(enroll(), std::nullopt);
        storeUser(files_.text() + "# by hand\n");
        ASSERT_EQ(withdraw(), std::nullopt);
        ASSERT_EQ(files_.entry()->status(), Status::notRegistered);
    }

    /// As a desktop does: it reads the entry, changes the key, and writes all of it anew.
    void desktopSets(const std::string& key, bool value) {
        auto entry = DesktopEntry::parse(files_.text());
        ASSERT_TRUE(entry);
        ASSERT_TRUE(entry->boolean(key));
        entry->setBoolean(key, value);
        storeUser(entry->text());
    }

    [[nodiscard]] Status statusOf(const std::string& text, std::vector<std::string> desktops = {}) {
        storeUser(text);
        return files_.entry(std::move(desktops))->status();
    }

    [[nodiscard]] std::optional<std::string> enroll(std::vector<std::string> desktops = {}) {
        return files_.entry(std::move(desktops))->enroll();
    }

    [[nodiscard]] std::optional<std::string> withdraw() { return files_.entry()->withdraw(); }

    SessionFiles files_;
};

} // namespace

/// The user's entry, a desktop, and what the entry means there. In the text, PROGRAM and COPY stand for the
/// program's path and for that of another copy.
struct State {
    std::string name;
    std::string text;
    Status status;
    std::vector<std::string> desktops = {};

    friend void PrintTo(const State& state, std::ostream* out) { *out << state.text; }
};

class EntryState : public AutostartEntryTest, public testing::WithParamInterface<State> {};

TEST_P(EntryState, IsReadFromTheUsersEntry) {
    std::string text = GetParam().text;
    const auto put = [&text](const std::string& word, const fs::path& path) {
        if (const std::size_t at = text.find(word); at != std::string::npos) {
            text.replace(at, word.size(), path);
        }
    };
    put("PROGRAM", files_.program());
    put("COPY", files_.anotherCopy());

    EXPECT_EQ(statusOf(text, GetParam().desktops), GetParam().status);
}

namespace {

std::string applicationWith(const std::string& lines) {
    return "[Desktop Entry]\nType=Application\n" + lines + "\n";
}

State here(
    std::string name, const std::string& lines, Status status, std::vector<std::string> desktops = {}) {
    return {std::move(name), applicationWith("Exec=\"PROGRAM\"\n" + lines), status, std::move(desktops)};
}

State other(std::string name, std::string text, Status status) {
    return {std::move(name), std::move(text), status};
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    OfTheSwitches, EntryState,
    testing::Values(
        here("None", "", Status::enabled),
        here("BothOn", "X-GNOME-Autostart-enabled=true\nHidden=false", Status::enabled),
        here("Hidden", "Hidden=true", Status::requiresApproval),
        here("Disabled", "X-GNOME-Autostart-enabled=false", Status::requiresApproval),
        here("HiddenInAnotherGroup", "\n[Desktop Action X]\nHidden=true", Status::enabled),
        here("Withdrawn", "Hidden=true\nX-Tarnwick-Withdrawn=true", Status::notRegistered),
        here("ShownAgainByTheDesktop", "Hidden=false\nX-Tarnwick-Withdrawn=true", Status::enabled),
        other("HiddenAlone", "[Desktop Entry]\nHidden=true\n", Status::requiresApproval)),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfThePrograms, EntryState,
    testing::Values(
        other("ProgramGone", applicationWith("Exec=/nothing/tarnwick"), Status::notRegistered),
        here("TryExecGone", "TryExec=/nothing/tarnwick", Status::notRegistered),
        here("TryExecNotInPath", "TryExec=no-such-program", Status::notRegistered),
        here("TryExecInPath", "TryExec=sh", Status::enabled),
        here("TryExecEmpty", "TryExec=", Status::enabled),
        other("NoProgram", applicationWith("Name=Tarnwick"), Status::notRegistered),
        other("EmptyProgram", applicationWith("Exec="), Status::notRegistered),
        other("Link", "[Desktop Entry]\nType=Link\nExec=sh\n", Status::notRegistered),
        other("NoType", "[Desktop Entry]\nExec=sh\n", Status::notRegistered),
        other("NoEntry", "no entry", Status::notRegistered), other("Empty", "", Status::notRegistered),
        other("AnotherCopy", applicationWith("Exec=COPY"), Status::notRegistered),
        other("AnotherCopyWithArguments", applicationWith("Exec=COPY --set Host=a"), Status::notRegistered),
        other("AnotherCopyHidden", applicationWith("Exec=COPY\nHidden=true"), Status::requiresApproval),
        other("ByAnotherProgram", applicationWith("Exec=env LANG=C tarnwick"), Status::enabled),
        other("ByAScript", applicationWith("Exec=sh -c \"sleep 10; tarnwick\""), Status::enabled)),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    OfTheDesktops, EntryState,
    testing::Values(
        here("OnlyAnother", "OnlyShowIn=GNOME;", Status::notRegistered, {"XFCE"}),
        here("OnlyNamedOnes", "OnlyShowIn=GNOME;", Status::notRegistered),
        here("Excluded", "NotShowIn=GNOME;XFCE;", Status::notRegistered, {"XFCE"}),
        here("OnlyThis", "OnlyShowIn=GNOME;XFCE", Status::enabled, {"XFCE"}),
        here("AnotherExcluded", "NotShowIn=GNOME;", Status::enabled, {"XFCE"}),
        here("UnnamedDesktop", "NotShowIn=GNOME;", Status::enabled),
        here(
            "FirstNameDecides", "OnlyShowIn=GNOME;\nNotShowIn=Unity;", Status::enabled,
            {"Other", "GNOME", "Unity"}),
        here(
            "FirstNameDecidesAgainst", "OnlyShowIn=GNOME;\nNotShowIn=Unity;", Status::notRegistered,
            {"Unity", "GNOME"})),
    [](const auto& test) { return test.param.name; });

TEST_F(AutostartEntryTest, IsNotRegisteredByAFolderInItsPlace) {
    fs::create_directories(files_.userFile());

    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);
    EXPECT_THAT(enroll(), Optional(HasSubstr(files_.userFile().string())));
}

TEST_F(AutostartEntryTest, EnrolledOverAnotherCopyItStartsThisOne) {
    storeUser(startingWith(files_.anotherCopy(), "TryExec=" + files_.anotherCopy().string() + "\n"));

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::enabled);
    EXPECT_EQ(files_.text(), starting("TryExec=" + files_.program().string() + "\n"));
}

TEST_F(AutostartEntryTest, ALinkToTheProgramStartsIt) {
    const fs::path link = files_.systemFolder("bin") / "tarnwick";
    fs::create_directories(link.parent_path());
    fs::create_symlink(files_.program(), link);

    EXPECT_EQ(statusOf(startingWith(link)), Status::enabled);
}

TEST_F(AutostartEntryTest, ANameAloneStartsTheFirstProgramOfThatName) {
    const fs::path first = files_.systemFolder("first");
    const std::string folders = first.string() + ":" + files_.program().parent_path().string();
    const test::Variable path("PATH", folders.c_str());
    EXPECT_EQ(statusOf(startingWith("tarnwick")), Status::enabled);

    test::writeFile(first / "tarnwick", "#!/bin/sh\n");
    fs::permissions(first / "tarnwick", fs::perms::owner_all);

    EXPECT_EQ(statusOf(startingWith("tarnwick")), Status::notRegistered);
}

TEST_F(AutostartEntryTest, WhereItsOwnPlaceIsUnknownAnyProgramCounts) {
    storeUser(startingWith(files_.anotherCopy()));
    EXPECT_EQ(AutostartEntry(std::nullopt, files_.session()).status(), Status::enabled);
}

TEST_F(AutostartEntryTest, AChangeByTheDesktopIsSeenAtOnce) {
    const auto entry = files_.entry();
    ASSERT_EQ(entry->enroll(), std::nullopt);
    storeUser(files_.text() + "Hidden=true\n");
    EXPECT_EQ(entry->status(), Status::requiresApproval);

    fs::remove(files_.userFile());

    EXPECT_EQ(entry->status(), Status::notRegistered);
}

// Entries of the system.

TEST_F(AutostartEntryTest, AnEntryOfTheSystemCounts) {
    storeSystem(starting(), "later");
    EXPECT_EQ(files_.entry()->status(), Status::enabled);
}

TEST_F(AutostartEntryTest, AnEntryOfTheSystemMayStartAnotherCopy) {
    storeSystem(startingWith(files_.anotherCopy()));
    EXPECT_EQ(files_.entry()->status(), Status::enabled);
}

TEST_F(AutostartEntryTest, OfTheSystemsEntriesTheFirstCounts) {
    storeSystem(starting("Hidden=true\n"), "xdg");
    storeSystem(starting(), "later");
    EXPECT_EQ(files_.entry()->status(), Status::requiresApproval);
}

TEST_F(AutostartEntryTest, TheUsersEntryHidesTheSystems) {
    storeSystem(starting());
    EXPECT_EQ(statusOf(starting("Hidden=true\n")), Status::requiresApproval);
    EXPECT_EQ(statusOf("no entry"), Status::notRegistered);
}

TEST_F(AutostartEntryTest, WithdrawnItStaysSoInSpiteOfTheSystemsEntry) {
    storeSystem(starting("Name[de]=Anzeige\n"));

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);
    EXPECT_EQ(files_.text(), starting("Name[de]=Anzeige\nHidden=true\nX-Tarnwick-Withdrawn=true\n"));
    EXPECT_EQ(test::contentOf(files_.systemFile()), starting("Name[de]=Anzeige\n"));
}

TEST_F(AutostartEntryTest, EnrolledAndWithdrawnBesideASystemsEntryItIsNotRegistered) {
    storeSystem(starting());
    ASSERT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);
}

// Enrolling.

TEST_F(AutostartEntryTest, EnrollingMakesTheFolder) {
    fs::remove_all(files_.userFolder());

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(
        files_.text(),
        "[Desktop Entry]\nType=Application\nName=Tarnwick\nComment=Keeps an eye on your internet connection "
        "from the panel\nIcon=tarnwick\nTryExec="
            + files_.program().string() + "\nExec=\"" + files_.program().string() + "\"\nTerminal=false\n");
    EXPECT_EQ(test::fileCount(files_.userFile().parent_path()), 1);
}

TEST_F(AutostartEntryTest, EnrollingKeepsWhatOthersWrote) {
    const std::string others = "# by hand\n[Desktop Entry]\nType=Application\nName=Mine\nName[de]=Meins\n"
                               "X-GNOME-Autostart-Delay=5\n";
    storeUser(others + "Hidden=true\nX-GNOME-Autostart-enabled=false\n\n[Desktop Action A]\nExec=other\n");

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(
        files_.text(), others + "TryExec=" + files_.program().string() + "\nExec=\""
                           + files_.program().string() + "\"\n\n[Desktop Action A]\nExec=other\n");
}

TEST_F(AutostartEntryTest, EnrollingStartsTheProgramThatRunsNowInsteadOfOneThatIsGone) {
    storeUser(starting("TryExec=/nothing/tarnwick\n"));

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::enabled);
    EXPECT_THAT(files_.text(), HasSubstr("TryExec=" + files_.program().string() + "\n"));
}

TEST_F(AutostartEntryTest, EnrollingDropsTheListsThatKeepItFromThisDesktop) {
    for (const std::string list : {"OnlyShowIn=GNOME;\n", "NotShowIn=XFCE;\n"}) {
        storeUser(starting(list));

        EXPECT_EQ(enroll({"XFCE"}), std::nullopt);

        EXPECT_EQ(files_.entry({"XFCE"})->status(), Status::enabled);
        EXPECT_EQ(files_.text(), starting("TryExec=" + files_.program().string() + "\n"));
    }
}

TEST_F(AutostartEntryTest, EnrollingKeepsTheListsThatAdmitThisDesktop) {
    storeUser(starting("OnlyShowIn=XFCE;\n"));

    EXPECT_EQ(enroll({"XFCE"}), std::nullopt);

    EXPECT_THAT(files_.text(), HasSubstr("OnlyShowIn=XFCE;\n"));
}

TEST_F(AutostartEntryTest, AFileThatIsNoEntryIsKeptUnderAnotherName) {
    storeUser("no entry");

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::enabled);
    fs::path aside = files_.userFile();
    aside += ".unreadable";
    EXPECT_EQ(test::contentOf(aside), "no entry");
}

TEST_F(AutostartEntryTest, ALinkedFileIsWrittenWhereItLies) {
    const fs::path linked = files_.systemFolder("dotfiles") / "entry";
    test::writeFile(linked, starting("Hidden=true\n"));
    fs::create_directories(files_.userFile().parent_path());
    fs::create_symlink(linked, files_.userFile());

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_TRUE(fs::is_symlink(files_.userFile()));
    EXPECT_THAT(test::contentOf(linked), Not(HasSubstr("Hidden")));
}

TEST_F(AutostartEntryTest, AnEntryThatIsMaskedIsNotEnabledAndTheMaskIsNotWrittenTo) {
    fs::create_directories(files_.userFile().parent_path());
    fs::create_symlink("/dev/null", files_.userFile());
    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);

    EXPECT_THAT(enroll(), Optional(HasSubstr("autostart/tarnwick.desktop")));

    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(AutostartEntryTest, WithoutAKnownPlaceOfTheProgramEnrollingFailsInWords) {
    AutostartEntry entry(
        std::nullopt, {.userFolder = files_.userFolder(), .systemFolders = {}, .desktops = {}});

    EXPECT_THAT(entry.enroll(), Optional(Not(IsEmpty())));
    EXPECT_FALSE(fs::exists(files_.userFile()));
}

TEST_F(AutostartEntryTest, AFolderThatCannotBeWrittenGivesItsNameAndTheReason) {
    files_.protect();

    EXPECT_THAT(
        enroll(), Optional(
                      "Can’t change " + files_.userFile().string() + ": "
                      + std::make_error_code(std::errc::permission_denied).message()));
}

TEST_F(AutostartEntryTest, AFileInThePlaceOfTheFolderGivesTheReason) {
    test::writeFile(files_.userFile().parent_path(), "in the way");

    EXPECT_THAT(enroll(), Optional(HasSubstr(std::make_error_code(std::errc::not_a_directory).message())));
}

// Withdrawing.

TEST_F(AutostartEntryTest, WithdrawingRemovesWhatHoldsNothingOfOthers) {
    ASSERT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(test::fileCount(files_.userFile().parent_path()), 0);
}

TEST_F(AutostartEntryTest, WithdrawingRemovesItAlsoWhenTheDesktopHadSwitchedItOff) {
    ASSERT_EQ(enroll(), std::nullopt);
    storeUser(files_.text() + "Hidden=true\nX-GNOME-Autostart-enabled=false\n");

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_FALSE(fs::exists(files_.userFile()));
}

TEST_F(AutostartEntryTest, WithdrawingHidesAnEntryWithLinesOfOthers) {
    ASSERT_EQ(enroll(), std::nullopt);
    storeUser("# by hand\n" + files_.text() + "X-GNOME-Autostart-Delay=5\n");
    const std::string before = files_.text();

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(files_.text(), before + "Hidden=true\nX-Tarnwick-Withdrawn=true\n");
    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);
}

TEST_F(AutostartEntryTest, EnrolledAgainNothingIsLeftOfTheWithdrawal) {
    storeUser(starting("# by hand\n"));
    ASSERT_EQ(enroll(), std::nullopt);
    const std::string before = files_.text();
    ASSERT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(enroll(), std::nullopt);

    EXPECT_EQ(files_.text(), before);
}

TEST_F(AutostartEntryTest, WithdrawnTwiceItIsAsWithdrawnOnce) {
    withdrawOwn();
    const std::string before = files_.text();

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(files_.text(), before);
}

TEST_F(AutostartEntryTest, WhatTheDesktopLetsStartAgainAfterAWithdrawalIsEnabled) {
    withdrawOwn();

    desktopSets("Hidden", false);

    EXPECT_EQ(files_.entry()->status(), Status::enabled);
}

TEST_F(AutostartEntryTest, WithdrawnAfterTheDesktopLetItStartAgainItIsNotRegistered) {
    withdrawOwn();
    desktopSets("Hidden", false);

    EXPECT_EQ(withdraw(), std::nullopt);

    EXPECT_EQ(files_.entry()->status(), Status::notRegistered);
}

// Inside a sandbox.

namespace {

class SandboxedEntryTest : public AutostartEntryTest {
protected:
    SandboxedEntryTest() { sandboxed_.isSandboxed = true; }

    [[nodiscard]] AutostartEntry entry() const { return {files_.program(), sandboxed_}; }

private:
    AutostartEntry::Session sandboxed_ = files_.session();
};

} // namespace

TEST_F(SandboxedEntryTest, WhatNoDesktopReadsIsNotRegistered) {
    storeUser(starting());
    EXPECT_EQ(entry().status(), Status::notRegistered);

    storeUser(starting("Hidden=true\n"));
    EXPECT_EQ(entry().status(), Status::notRegistered);
}

TEST_F(SandboxedEntryTest, AnEntryOfTheSystemInsideDoesNotCount) {
    storeSystem(starting());
    EXPECT_EQ(entry().status(), Status::notRegistered);
}

TEST_F(SandboxedEntryTest, EnrollingFailsInWordsAndWritesNothing) {
    EXPECT_THAT(entry().enroll(), Optional(HasSubstr("sandbox")));

    EXPECT_FALSE(fs::exists(files_.userFile()));
    EXPECT_EQ(entry().status(), Status::notRegistered);
}

TEST_F(SandboxedEntryTest, WithdrawingIsNoFailureAndWritesNothing) {
    storeUser(starting());

    EXPECT_EQ(entry().withdraw(), std::nullopt);

    EXPECT_EQ(files_.text(), starting());
}

// The session.

TEST_F(AutostartEntryTest, ThePresentSessionIsAsTheEnvironmentTells) {
    const test::Variable config("XDG_CONFIG_HOME", "/somewhere/config");
    const test::Variable system("XDG_CONFIG_DIRS", "/srv/one:/srv/two");
    const test::Variable desktop("XDG_CURRENT_DESKTOP", "Other:GNOME");

    const AutostartEntry::Session session = AutostartEntry::presentSession(false);

    EXPECT_EQ(session.userFolder, "/somewhere/config");
    EXPECT_THAT(session.systemFolders, testing::ElementsAre("/srv/one", "/srv/two"));
    EXPECT_THAT(session.desktops, testing::ElementsAre("Other", "GNOME"));
    EXPECT_FALSE(session.isSandboxed);
    EXPECT_TRUE(AutostartEntry::presentSession(true).isSandboxed);
}

TEST_F(AutostartEntryTest, ADesktopMayHaveNoName) {
    const test::Variable desktop("XDG_CURRENT_DESKTOP", nullptr);
    EXPECT_THAT(AutostartEntry::presentSession(false).desktops, IsEmpty());
}

// What desktops make of it.

namespace {

constexpr auto generator = "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator";
constexpr auto missingGenerator = "systemd's generator for autostart entries is not installed";

/// Wherever the program lies.
class WrittenEntry : public AutostartEntryTest, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        files_.install(GetParam());
        ASSERT_EQ(enroll(), std::nullopt);
        ASSERT_EQ(files_.entry()->status(), Status::enabled);
    }

    [[nodiscard]] bool hasStarted() const {
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!fs::exists(files_.started()) && std::chrono::steady_clock::now() < patience) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return fs::exists(files_.started());
    }
};

/// With a tool that reads and writes entries as GNOME and its relatives do.
class EditedEntry : public AutostartEntryTest {
protected:
    void SetUp() override {
        if (run("command -v desktop-file-edit").status != 0) {
            TARNWICK_CANNOT_RUN("desktop-file-edit is not installed");
        }
        withdrawOwn();
    }

    void edit(const std::string& key, const std::string& value) {
        const auto result =
            run("desktop-file-edit --set-key=" + key + " --set-value=" + value + " "
                + shellQuoted(files_.userFile()));
        ASSERT_EQ(result.status, 0) << result.output;
    }
};

/// Where the session's service manager starts what the entries name.
class GeneratedEntry : public WrittenEntry {
protected:
    /// What the session's service manager would run, in its notation; empty when it drops the entry.
    [[nodiscard]] std::string generatedCommand() const {
        const fs::path units = files_.systemFolder("units");
        fs::create_directories(units);
        const std::string folder = shellQuoted(units);
        const auto result =
            run("XDG_CONFIG_HOME=" + shellQuoted(files_.userFolder()) + " XDG_CONFIG_DIRS=/nothing "
                + generator + " " + folder + " " + folder + " " + folder);
        EXPECT_EQ(result.status, 0) << result.output;
        const std::string unit = test::contentOf(units / "app-tarnwick@autostart.service");
        const std::string key = "\nExecStart=:";
        const std::size_t start = unit.find(key);
        return start == std::string::npos
                   ? ""
                   : unit.substr(start + key.size(), unit.find('\n', start + 1) - start - key.size());
    }
};

/// Which escapes the service manager takes away when it reads its own notation.
std::string asServiceManagerReads(const std::string& command) {
    std::string result;
    for (std::size_t at = 0; at < command.size(); ++at) {
        const bool isDoubledPercent = command.compare(at, 2, "%%") == 0;
        if ((command[at] == '\\' || isDoubledPercent) && at + 1 < command.size()) {
            ++at;
        }
        result += command[at];
    }
    return result;
}

std::string nameOfPlace(const testing::TestParamInfo<std::string>& test) {
    std::string name = "Place" + std::to_string(test.index);
    for (const char letter : test.param) {
        if (std::isalnum(static_cast<unsigned char>(letter)) != 0) {
            name += letter;
        }
    }
    return name;
}

} // namespace

TEST_P(WrittenEntry, IsValid) {
    if (run("command -v desktop-file-validate").status != 0) {
        TARNWICK_CANNOT_RUN("desktop-file-validate is not installed");
    }
    const auto result = run("desktop-file-validate --no-hints " + shellQuoted(files_.userFile()));

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

TEST_P(WrittenEntry, IsValidOnceWithdrawn) {
    if (run("command -v desktop-file-validate").status != 0) {
        TARNWICK_CANNOT_RUN("desktop-file-validate is not installed");
    }
    storeUser(files_.text() + "# by hand\n");
    ASSERT_EQ(withdraw(), std::nullopt);
    const auto result = run("desktop-file-validate --no-hints " + shellQuoted(files_.userFile()));

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

TEST_P(WrittenEntry, IsStartedByADesktopThatReadsItItself) {
    if (run("command -v gio").status != 0) {
        TARNWICK_CANNOT_RUN("gio is not installed");
    }
    const auto result = run("gio launch " + shellQuoted(files_.userFile()));

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(hasStarted()) << files_.text();
}

TEST_F(EditedEntry, IsEnabledOnceItMayStartAgain) {
    edit("Hidden", "false");

    EXPECT_EQ(files_.entry()->status(), Status::enabled);
}

TEST_P(GeneratedEntry, IsStartedByTheServiceManager) {
    if (!fs::exists(generator)) {
        TARNWICK_CANNOT_RUN(missingGenerator);
    }
    const std::string quotedProgram = "\"" + files_.program().string() + "\"";

    EXPECT_THAT(asServiceManagerReads(generatedCommand()), testing::EndsWith(quotedProgram));
}

TEST_P(GeneratedEntry, IsNotStartedByTheServiceManagerOnceWithdrawn) {
    if (!fs::exists(generator)) {
        TARNWICK_CANNOT_RUN(missingGenerator);
    }
    storeUser(files_.text() + "# by hand\n");
    ASSERT_EQ(withdraw(), std::nullopt);
    ASSERT_TRUE(fs::exists(files_.userFile()));

    EXPECT_EQ(generatedCommand(), "");
}

namespace {

auto places() {
    return testing::Values(
        "tarnwick", "two words", "$HOME", "100%", "semi;colon", "häuschen", "$a %b \"c\" `d` 'e'");
}

} // namespace

INSTANTIATE_TEST_SUITE_P(AllPlaces, WrittenEntry, places(), nameOfPlace);
INSTANTIATE_TEST_SUITE_P(AllPlaces, GeneratedEntry, places(), nameOfPlace);

// The service manager takes a backslash in a path for the start of an escape, however it is written.
INSTANTIATE_TEST_SUITE_P(Backslash, WrittenEntry, testing::Values("back\\slash", "a\\n"), nameOfPlace);

} // namespace tarnwick
