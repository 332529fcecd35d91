// The entry that starts the program with the session: what it means. What changes it:
// AutostartChangesTest.cpp.
#include "platform/xdg/AutostartEntry.h"

#include "tests/platform/ports/LoginItemContract.h"
#include "tests/platform/xdg/SessionFiles.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/support/CaseName.h"
#include "tests/support/Variable.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;
using test::application;
using test::gnomeOff;
using test::gnomeOn;
using test::hidden;
using test::own;
using test::shown;
using test::text;
using test::withdrawn;
using testing::HasSubstr;
using testing::Optional;

// The contract.

class AutostartDriver {
public:
    LoginItem& item() { return item_; }

    void switchOff() {
        before_ = files_.text();
        test::writeFile(files_.userFile(), before_ + "X-GNOME-Autostart-enabled=false\n");
    }

    void switchOn() { test::writeFile(files_.userFile(), before_ + "X-GNOME-Autostart-enabled=true\n"); }

    void refuse() { files_.protect(); }

private:
    test::SessionFiles files_;
    AutostartEntry item_ = files_.entry();
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

namespace {

class AutostartEntryTest : public testing::Test {
protected:
    void storeUser(const std::string& text) const { files_.store(files_.userFile(), text); }

    test::SessionFiles files_;
};

// The states.

/// The user's entry, and what it means.
struct State {
    std::string name;
    std::optional<std::string> user = {}; ///< none: no file
    Status status = Status::notRegistered;
    std::vector<std::string> desktops = {};
    std::optional<std::string> system = {};
    std::optional<std::string> laterSystem = {}; ///< in a less important folder

    friend void PrintTo(const State& state, std::ostream* out) { *out << state.user.value_or("no file"); }
};

class EntryState : public AutostartEntryTest, public testing::WithParamInterface<State> {};

TEST_P(EntryState, IsReadFromTheFiles) {
    const auto store = [this](const fs::path& file, const std::optional<std::string>& entry) {
        if (entry) {
            files_.store(file, *entry);
        }
    };
    store(files_.userFile(), GetParam().user);
    store(files_.systemFile("xdg"), GetParam().system);
    store(files_.systemFile("later"), GetParam().laterSystem);

    const AutostartEntry entry(files_.program(), files_.session(GetParam().desktops));
    EXPECT_EQ(entry.status(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    OfTheSwitches, EntryState,
    testing::Values(
        State{"None", own(), Status::enabled}, State{"BothOn", own(gnomeOn, shown), Status::enabled},
        State{"Hidden", own(hidden), Status::requiresApproval},
        State{"Disabled", own(gnomeOff), Status::requiresApproval},
        State{"HiddenInAnotherGroup", own("", "[Desktop Action X]", hidden), Status::enabled},
        State{"Withdrawn", own(hidden, withdrawn), Status::notRegistered},
        State{"ShownAgainByTheDesktop", own(shown, withdrawn), Status::enabled},
        State{"HiddenAlone", text("[Desktop Entry]", hidden), Status::requiresApproval}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    OfThePrograms, EntryState,
    testing::Values(
        State{"ProgramGone", application("Exec=/nothing/tarnwick"), Status::notRegistered},
        State{"TryExecGone", own("TryExec=/nothing/tarnwick"), Status::notRegistered},
        State{"TryExecNotInPath", own("TryExec=no-such-program"), Status::notRegistered},
        State{"TryExecInPath", own("TryExec=sh"), Status::enabled},
        State{"TryExecEmpty", own("TryExec="), Status::enabled},
        State{"NoProgram", application("Name=Tarnwick"), Status::notRegistered},
        State{"EmptyProgram", application("Exec="), Status::notRegistered},
        State{"Link", text("[Desktop Entry]", "Type=Link", "Exec=sh"), Status::notRegistered},
        State{"NoType", text("[Desktop Entry]", "Exec=sh"), Status::notRegistered},
        State{"NoEntry", "no entry", Status::notRegistered}, State{"Empty", "", Status::notRegistered},
        State{"AnotherCopy", application("Exec=COPY"), Status::notRegistered},
        State{"AnotherCopyWithArguments", application("Exec=COPY --set Host=a"), Status::notRegistered},
        State{"AnotherCopyHidden", application("Exec=COPY", hidden), Status::requiresApproval},
        State{"WithoutOurOption", application("Exec=\"PROGRAM\""), Status::enabled},
        State{"ByAnotherProgram", application("Exec=env LANG=C tarnwick"), Status::enabled},
        State{"ByAScript", application("Exec=sh -c \"sleep 10; tarnwick\""), Status::enabled}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    OfTheDesktops, EntryState,
    testing::Values(
        State{"OnlyAnother", own("OnlyShowIn=GNOME;"), Status::notRegistered, {"XFCE"}},
        State{"OnlyNamedOnes", own("OnlyShowIn=GNOME;"), Status::notRegistered},
        State{"Excluded", own("NotShowIn=GNOME;XFCE;"), Status::notRegistered, {"XFCE"}},
        State{"OnlyThis", own("OnlyShowIn=GNOME;XFCE"), Status::enabled, {"XFCE"}},
        State{"AnotherExcluded", own("NotShowIn=GNOME;"), Status::enabled, {"XFCE"}},
        State{"UnnamedDesktop", own("NotShowIn=GNOME;"), Status::enabled},
        State{
            "FirstNameDecides",
            own("OnlyShowIn=GNOME;", "NotShowIn=Unity;"),
            Status::enabled,
            {"Other", "GNOME", "Unity"}},
        State{
            "FirstNameDecidesAgainst",
            own("OnlyShowIn=GNOME;", "NotShowIn=Unity;"),
            Status::notRegistered,
            {"Unity", "GNOME"}}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    BesideTheSystems, EntryState,
    testing::Values(
        State{.name = "SystemsAlone", .status = Status::enabled, .laterSystem = own()},
        State{.name = "SystemsAnotherCopy", .status = Status::enabled, .system = application("Exec=COPY")},
        State{
            .name = "FirstOfTheSystems",
            .status = Status::requiresApproval,
            .system = own(hidden),
            .laterSystem = own()},
        State{
            .name = "UsersHidesTheSystems",
            .user = own(hidden),
            .status = Status::requiresApproval,
            .system = own()},
        State{
            .name = "UsersUnreadableHidesTheSystems",
            .user = "no entry",
            .status = Status::notRegistered,
            .system = own()}),
    test::caseName);

TEST_F(AutostartEntryTest, IsNotRegisteredByAFolderInItsPlace) {
    fs::create_directories(files_.userFile());

    EXPECT_EQ(files_.entry().status(), Status::notRegistered);
    EXPECT_THAT(files_.entry().enroll(), Optional(HasSubstr(files_.userFile().string())));
}

TEST_F(AutostartEntryTest, ALinkToTheProgramStartsIt) {
    const fs::path link = files_.folder("bin") / "tarnwick";
    fs::create_directories(link.parent_path());
    fs::create_symlink(files_.program(), link);
    storeUser(application("Exec=" + link.string()));

    EXPECT_EQ(files_.entry().status(), Status::enabled);
}

TEST_F(AutostartEntryTest, ANameAloneStartsTheFirstProgramOfThatName) {
    const fs::path first = files_.folder("first");
    const std::string folders = first.string() + ":" + files_.program().parent_path().string();
    const test::Variable path("PATH", folders.c_str());
    storeUser(application("Exec=tarnwick"));
    EXPECT_EQ(files_.entry().status(), Status::enabled);

    test::SessionFiles::makeProgram(first / "tarnwick");

    EXPECT_EQ(files_.entry().status(), Status::notRegistered);
}

TEST_F(AutostartEntryTest, WhereItsOwnPlaceIsUnknownAnyProgramCounts) {
    storeUser(application("Exec=COPY"));

    EXPECT_EQ(AutostartEntry(std::nullopt, files_.session()).status(), Status::enabled);
}

TEST_F(AutostartEntryTest, AChangeByTheDesktopIsSeenAtOnce) {
    const auto entry = files_.entry();
    storeUser(own());
    EXPECT_EQ(entry.status(), Status::enabled);

    storeUser(own(hidden));
    EXPECT_EQ(entry.status(), Status::requiresApproval);

    fs::remove(files_.userFile());
    EXPECT_EQ(entry.status(), Status::notRegistered);
}

// The session.

TEST_F(AutostartEntryTest, ThePresentSessionIsAsTheEnvironmentTells) {
    const test::Variable config("XDG_CONFIG_HOME", "/somewhere/config");
    const test::Variable system("XDG_CONFIG_DIRS", "/srv/one:/srv/two");
    const test::Variable desktop("XDG_CURRENT_DESKTOP", "Other:GNOME");

    const AutostartEntry::Session session = AutostartEntry::presentSession();

    EXPECT_EQ(session.userFolder, "/somewhere/config");
    EXPECT_THAT(session.systemFolders, testing::ElementsAre("/srv/one", "/srv/two"));
    EXPECT_THAT(session.desktops, testing::ElementsAre("Other", "GNOME"));
}

} // namespace

} // namespace tarnwick
