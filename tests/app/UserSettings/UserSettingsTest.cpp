// The settings with their file, its watch and the programs' loop, on a real file system.
#include "app/UserSettings/UserSettings.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/support/Files.h"
#include "tests/support/LoopTurn.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class UserSettingsTest : public testing::Test {
protected:
    Preferences& open() {
        settings_ = std::make_unique<UserSettings>(loop_, file_, UserDefaults::Table{});
        return settings_->preferences();
    }

    /// Whether it is so soon.
    [[nodiscard]] bool isSoon(const std::function<bool()>& condition) {
        const double patience = loop_.now() + 20;
        while (!condition() && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return condition();
    }

    [[nodiscard]] bool isWritten(const std::string& text) {
        return isSoon([&] { return test::contentOf(file_).find(text) != std::string::npos; });
    }

    void pass(double seconds) {
        for (const double end = loop_.now() + seconds; loop_.now() < end;) {
            test::runOneTurn(loop_, 0.1);
        }
    }

    test::TemporaryFolder folder_;
    fs::path file_ = folder_.path() / "config" / "Product" / "settings.json";
    EpollRunLoop loop_;
    std::unique_ptr<UserSettings> settings_;
};

/// What lies at the place of the file before the program's own write.
class OwnWrite : public UserSettingsTest, public testing::WithParamInterface<const char*> {
protected:
    OwnWrite() {
        const std::string present = GetParam();
        if (present == "folder") {
            fs::create_directories(file_.parent_path());
        } else if (present == "file") {
            test::writeFile(file_, "{}");
        } else if (present == "damage") {
            test::writeFile(file_, "no object");
        } else if (present == "link") {
            test::writeFile(folder_.path() / "elsewhere" / "real.json", "{}");
            fs::create_directories(file_.parent_path());
            fs::create_symlink(folder_.path() / "elsewhere" / "real.json", file_);
        }
    }
};

} // namespace

// The system puts an event into the queue while the file changes: no event comes later.
TEST_P(OwnWrite, LeavesTheLoopNothingToDo) {
    Preferences& preferences = open();
    preferences.setHostname("own.example");
    ASSERT_TRUE(isWritten("own.example"));
    EXPECT_FALSE(test::runOneTurn(loop_, 0));
}

TEST_P(OwnWrite, DoesNotEndTheWatch) {
    Preferences& preferences = open();
    preferences.setHostname("own.example");
    ASSERT_TRUE(isWritten("own.example"));
    test::writeFile(file_, R"({"Hostname": "other.example"})");
    EXPECT_TRUE(isSoon([&] { return preferences.hostname() == "other.example"; }));
}

INSTANTIATE_TEST_SUITE_P(
    Over, OwnWrite, testing::Values("nothing", "folder", "file", "damage", "link"),
    [](const auto& tried) { return std::string(tried.param); });

TEST_F(UserSettingsTest, AHandEditIsTakenOverAndToldOnce) {
    test::writeFile(file_, R"({"Hostname": "first.example", "PingInterval": 2})");
    const Preferences& preferences = open();
    int hostChanges = 0;
    const TrackingHandle reader =
        withTracking([&] { static_cast<void>(preferences.hostname()); }, [&] { ++hostChanges; });
    test::writeFile(file_, R"({"Hostname": "by.hand", "PingInterval": 600})");
    EXPECT_TRUE(isSoon([&] { return preferences.hostname() == "by.hand"; }));
    EXPECT_EQ(preferences.pingInterval(), 60);
    EXPECT_EQ(hostChanges, 1);
}

TEST_F(UserSettingsTest, TwoRunningProgramsLearnOfEachOthersChanges) {
    Preferences& mine = open();
    UserSettings other(loop_, file_, {});
    mine.setHostname("mine.example");
    EXPECT_TRUE(isSoon([&] { return other.preferences().hostname() == "mine.example"; }));
    other.preferences().setPingInterval(7);
    EXPECT_TRUE(isSoon([&] { return mine.pingInterval() == 7; }));
    EXPECT_EQ(mine.hostname(), "mine.example");
}

TEST_F(UserSettingsTest, AValueForThisRunStaysAboveAHandEdit) {
    UserSettings settings(loop_, file_, {{PreferenceKey::hostname, std::string("for.this.run")}});
    test::writeFile(file_, R"({"Hostname": "by.hand", "PingInterval": 5})");
    EXPECT_TRUE(isSoon([&] { return settings.preferences().pingInterval() == 5; }));
    EXPECT_EQ(settings.preferences().hostname(), "for.this.run");
}

TEST_F(UserSettingsTest, WithoutTheFileTheDefaultsHold) {
    test::writeFile(file_, R"({"Hostname": "first.example"})");
    const Preferences& preferences = open();
    fs::remove_all(file_.parent_path());
    EXPECT_TRUE(isSoon([&] { return preferences.hostname() == "1.1.1.1"; }));
    test::writeFile(file_, R"({"Hostname": "again.example"})");
    EXPECT_TRUE(isSoon([&] { return preferences.hostname() == "again.example"; }));
}

TEST_F(UserSettingsTest, AFileThatIsAwayForAMomentChangesNothing) {
    test::writeFile(file_, R"({"Hostname": "first.example"})");
    const Preferences& preferences = open();
    std::vector<std::string> hosts;
    const RunLoop::Handle watching =
        loop_.every(loop_.now(), 0.05, [&] { hosts.push_back(preferences.hostname()); });

    fs::remove(file_);
    pass(1);
    test::writeFile(file_, R"({"Hostname": "second.example"})");

    EXPECT_TRUE(isSoon([&] { return preferences.hostname() == "second.example"; }));
    EXPECT_THAT(hosts, testing::Not(testing::Contains("1.1.1.1")));
}

TEST_F(UserSettingsTest, AChangeByAnotherProgramJustBeforeTheWriteIsTakenOver) {
    Preferences& preferences = open();
    preferences.setPingInterval(7);
    test::writeFile(file_, R"({"Hostname": "other.example"})");
    preferences.flush();
    EXPECT_EQ(preferences.hostname(), "other.example");
    EXPECT_EQ(preferences.pingInterval(), 7);
    EXPECT_THAT(test::contentOf(file_), HasSubstr("other.example"));
}

/// What is told of the file at the start, without its name.
class MistakenSettings : public UserSettingsTest {
protected:
    [[nodiscard]] std::vector<std::string> toldOf(const std::string& text) {
        test::writeFile(file_, text);
        return told();
    }

    [[nodiscard]] std::vector<std::string> told() {
        open();
        std::vector<std::string> told;
        settings_->tellMistakes([&](const std::vector<std::string>& mistakes) { told = mistakes; });
        settings_->tellMistakes({});
        for (std::string& mistake : told) {
            EXPECT_THAT(mistake, testing::StartsWith(file_.string()));
            mistake.erase(0, file_.string().size());
        }
        return told;
    }
};

TEST_F(MistakenSettings, AreToldWithFileLineAndKeyAndTheOthersHold) {
    EXPECT_THAT(
        toldOf("{\n\"hostname\": \"one.example\",\n\"PingInterval\": \"2\",\n\"PingTimeout\": 2}"),
        testing::ElementsAre(
            ", line 2: there is no setting \"hostname\"; Hostname is one",
            ", line 3: PingInterval must be a whole number of seconds, 1 to 60, not \"2\"; ignored"));
    EXPECT_EQ(settings_->preferences().pingTimeout(), 2);
    EXPECT_EQ(settings_->preferences().pingInterval(), 1);
}

TEST_F(MistakenSettings, ThatAreNoJsonCountUpToTheMistake) {
    EXPECT_THAT(
        toldOf("{\"Hostname\": \"one.example\",\n}"),
        testing::ElementsAre(", line 2: unexpected '}'; expected string literal"));
    EXPECT_EQ(settings_->preferences().hostname(), "one.example");
    EXPECT_THAT(toldOf("[1]"), testing::ElementsAre(", line 1: it must be one JSON object: { ... }"));
}

TEST_F(MistakenSettings, ThatAreNoJsonAreToldBeforeTheMistakesInTheirValues) {
    EXPECT_THAT(
        toldOf("{\"Colour\": 1,\n}"),
        testing::ElementsAre(
            ", line 2: unexpected '}'; expected string literal", ", line 1: there is no setting \"Colour\""));
}

TEST_F(MistakenSettings, MayBeAFolder) {
    fs::create_directories(file_);
    EXPECT_THAT(told(), testing::ElementsAre(": it is no file"));
}

TEST_F(MistakenSettings, MayBeAFileThatMayNotBeRead) {
    const test::Unprivileged user;
    ASSERT_TRUE(user.isOrdinary());
    test::writeFile(file_, "{}");
    fs::permissions(file_, fs::perms::none);
    EXPECT_THAT(told(), testing::ElementsAre(": Permission denied"));
}

TEST_F(MistakenSettings, AreNotToldOfAGoodFileOrOfNone) {
    EXPECT_THAT(told(), testing::IsEmpty());
    EXPECT_THAT(toldOf("{}"), testing::IsEmpty());
}

TEST_F(MistakenSettings, ThatAreOverwrittenAreToldWithTheNameOfTheCopy) {
    test::writeFile(file_, "{\n,}");
    Preferences& preferences = open();
    std::vector<std::string> told;
    settings_->tellMistakes([&](const std::vector<std::string>& mistakes) { told = mistakes; });

    preferences.setPingInterval(7);
    preferences.flush();

    EXPECT_THAT(
        told, testing::ElementsAre(
                  file_.string() + ", line 2: unexpected ','; expected string literal; it is kept as "
                  + file_.string() + ".unreadable"));
}

TEST_F(MistakenSettings, MayBeAFolderThatIsKeptUnderAnotherName) {
    fs::create_directories(file_);
    Preferences& preferences = open();
    std::vector<std::string> told;
    settings_->tellMistakes([&](const std::vector<std::string>& mistakes) { told = mistakes; });

    preferences.setPingInterval(7);
    preferences.flush();

    EXPECT_THAT(
        told, testing::ElementsAre(
                  file_.string() + ": it is no file; it is kept as " + file_.string() + ".unreadable"));
}

TEST_F(MistakenSettings, AreToldWithTheirLineAfterAnOwnWriteHasMovedThem) {
    test::writeFile(file_, R"({"Colour": 1})");
    Preferences& preferences = open();
    std::vector<std::string> told;
    settings_->tellMistakes([&](const std::vector<std::string>& mistakes) { told = mistakes; });

    preferences.setHostname("one.example");
    preferences.flush();
    ASSERT_EQ(test::contentOf(file_), "{\n    \"Colour\": 1,\n    \"Hostname\": \"one.example\"\n}\n");

    EXPECT_THAT(told, testing::ElementsAre(file_.string() + ", line 2: there is no setting \"Colour\""));
}

TEST_F(MistakenSettings, AreToldAndWithdrawnWhileTheProgramRuns) {
    open();
    std::vector<std::size_t> counts;
    settings_->tellMistakes(
        [&](const std::vector<std::string>& mistakes) { counts.push_back(mistakes.size()); });

    test::writeFile(file_, R"({"PingTimeout": -3})");
    ASSERT_TRUE(isSoon([&] { return counts.size() == 1; }));
    EXPECT_EQ(settings_->preferences().pingTimeout(), 4);
    test::writeFile(file_, R"({"PingTimeout": 3})");
    ASSERT_TRUE(isSoon([&] { return counts.size() == 2; }));

    EXPECT_THAT(counts, testing::ElementsAre(1, 0));
}

/// Other programs may write the file in several steps.
class HalfWrittenSettings : public MistakenSettings {
protected:
    HalfWrittenSettings() {
        test::writeFile(file_, R"({"PingInterval": 2})");
        open();
        settings_->tellMistakes([this](const std::vector<std::string>& mistakes) { told_ = mistakes; });
        test::writeFile(file_, R"({"PingInterval": )");
    }

    std::vector<std::string> told_;
};

TEST_F(HalfWrittenSettings, AreNoMistakeForAMoment) {
    pass(1);
    EXPECT_THAT(told_, testing::IsEmpty());
    test::writeFile(file_, R"({"PingInterval": 3})");

    EXPECT_TRUE(isSoon([&] { return settings_->preferences().pingInterval() == 3; }));
    EXPECT_THAT(told_, testing::IsEmpty());
}

TEST_F(HalfWrittenSettings, AreAMistakeOnceTheyStaySoUntilTheyAreWhole) {
    ASSERT_TRUE(isSoon([&] { return told_.size() == 1; }));
    EXPECT_EQ(settings_->preferences().pingInterval(), 2);
    test::writeFile(file_, R"({"PingInterval": 3})");

    EXPECT_TRUE(isSoon([&] { return told_.empty(); }));
}

TEST_F(UserSettingsTest, AnUnsavedChangeIsWrittenAtTheEnd) {
    open().setHostname("own.example");
    settings_.reset();
    EXPECT_THAT(test::contentOf(file_), HasSubstr("own.example"));
}

} // namespace tarnwick
