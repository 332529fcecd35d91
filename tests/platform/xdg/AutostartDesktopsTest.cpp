// The entry that starts the program with the session, as real desktops read it.
#include "platform/xdg/AutostartEntry.h"

#include "tests/core/Required.h"
#include "tests/platform/xdg/SessionFiles.h"

#include <gmock/gmock.h>

#include <cctype>
#include <chrono>
#include <thread>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;
using test::run;
using test::shellQuoted;

constexpr auto generator = "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator";

/// Where the program is installed.
class WrittenEntry : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        files_.install(GetParam());
        ASSERT_EQ(files_.entry().enroll(), std::nullopt);
        ASSERT_EQ(files_.entry().status(), Status::enabled);
    }

    /// Hidden instead of removed, since it holds a line of the user's.
    void withdraw() {
        test::writeFile(files_.userFile(), files_.text() + "# by hand\n");
        ASSERT_EQ(files_.entry().withdraw(), std::nullopt);
        ASSERT_TRUE(fs::exists(files_.userFile()));
    }

    void expectValid() const {
        if (run("command -v desktop-file-validate").status != 0) {
            TARNWICK_CANNOT_RUN("desktop-file-validate is not installed");
        }
        const auto result = run("desktop-file-validate --no-hints " + shellQuoted(files_.userFile()));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output, "");
    }

    /// The line of arguments that the program was started with; empty when it does not start.
    [[nodiscard]] std::string argumentsOfStart() const {
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (test::contentOf(files_.started()).empty() && std::chrono::steady_clock::now() < patience) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return test::contentOf(files_.started());
    }

    test::SessionFiles files_;
};

/// Where the session's service manager starts what the entries name.
class GeneratedEntry : public WrittenEntry {
protected:
    void SetUp() override {
        if (!fs::exists(generator)) {
            TARNWICK_CANNOT_RUN("systemd's generator for autostart entries is not installed");
        }
        WrittenEntry::SetUp();
    }

    /// What the session's service manager would run, in its notation; empty when it drops the entry.
    [[nodiscard]] std::string generatedCommand() const {
        const fs::path units = files_.folder("units");
        fs::create_directories(units);
        const std::string folder = shellQuoted(units);
        const auto result =
            run("XDG_CONFIG_HOME=" + shellQuoted(files_.userFolder()) + " XDG_CONFIG_DIRS=/nothing "
                + generator + " " + folder + " " + folder + " " + folder);
        EXPECT_EQ(result.status, 0) << result.output;
        const std::string unit = test::contentOf(units / "app-org.tarnwick.tarnwick@autostart.service");
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

TEST_P(WrittenEntry, IsValid) {
    expectValid();
}

TEST_P(WrittenEntry, IsValidOnceWithdrawn) {
    withdraw();
    expectValid();
}

TEST_P(WrittenEntry, IsStartedByADesktopThatReadsItItself) {
    if (run("command -v gio").status != 0) {
        TARNWICK_CANNOT_RUN("gio is not installed");
    }
    const auto result = run("gio launch " + shellQuoted(files_.userFile()));

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(argumentsOfStart(), "--from-session\n") << files_.text();
}

TEST_P(GeneratedEntry, IsStartedByTheServiceManager) {
    const std::string command = "\"" + files_.program().string() + "\" --from-session";

    EXPECT_THAT(asServiceManagerReads(generatedCommand()), testing::EndsWith(command));
}

TEST_P(GeneratedEntry, IsNotStartedByTheServiceManagerOnceWithdrawn) {
    withdraw();

    EXPECT_EQ(generatedCommand(), "");
}

auto places() {
    return testing::Values(
        "tarnwick", "two words", "$HOME", "100%", "semi;colon", "häuschen", "$a %b \"c\" `d` 'e'");
}

INSTANTIATE_TEST_SUITE_P(AllPlaces, WrittenEntry, places(), nameOfPlace);
INSTANTIATE_TEST_SUITE_P(AllPlaces, GeneratedEntry, places(), nameOfPlace);

// The service manager takes a backslash in a path for the start of an escape, however it is written.
INSTANTIATE_TEST_SUITE_P(Backslash, WrittenEntry, testing::Values("back\\slash", "a\\n"), nameOfPlace);

/// With a tool that reads and writes entries as GNOME and its relatives do.
class EditedEntry : public WrittenEntry {};

TEST_P(EditedEntry, IsEnabledOnceItMayStartAgain) {
    if (run("command -v desktop-file-edit").status != 0) {
        TARNWICK_CANNOT_RUN("desktop-file-edit is not installed");
    }
    withdraw();
    ASSERT_EQ(files_.entry().status(), Status::notRegistered);

    const auto result =
        run("desktop-file-edit --set-key=Hidden --set-value=false " + shellQuoted(files_.userFile()));

    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(files_.entry().status(), Status::enabled);
}

INSTANTIATE_TEST_SUITE_P(UsualPlace, EditedEntry, testing::Values("tarnwick"), nameOfPlace);

} // namespace

} // namespace tarnwick
