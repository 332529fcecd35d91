// Where the desktop lets its user choose what starts with the session.
#include "app/App/StartupSettings.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StartupSettingsTest : public testing::Test {
protected:
    ~StartupSettingsTest() override {
        qputenv("PATH", path_);
        qunsetenv("XDG_CURRENT_DESKTOP");
    }

    /// Whether it was shown; nothing when nobody told in time.
    [[nodiscard]] static std::optional<bool> open() {
        std::optional<bool> answer;
        StartupSettings::open([&answer](bool isOpened) { answer = isOpened; });
        QElapsedTimer timer;
        timer.start();
        while (!answer && !timer.hasExpired(20'000)) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return answer;
    }

    test::TemporaryFolder folder_;
    QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(StartupSettingsTest, EachKnownDesktopHasItsOwn) {
    EXPECT_THAT(StartupSettings::command("KDE"), ElementsAre("systemsettings", "kcm_autostart"));
    EXPECT_THAT(StartupSettings::command("XFCE"), ElementsAre("xfce4-session-settings"));
    EXPECT_THAT(StartupSettings::command("LXQt"), ElementsAre("lxqt-config-session"));
}

TEST_F(StartupSettingsTest, TheFirstKnownNameOfADesktopCounts) {
    EXPECT_THAT(StartupSettings::command("Vendor:XFCE:KDE"), ElementsAre("xfce4-session-settings"));
}

TEST_F(StartupSettingsTest, AnUnknownDesktopHasNone) {
    EXPECT_THAT(StartupSettings::command(""), IsEmpty());
    EXPECT_THAT(StartupSettings::command("Vendor:"), IsEmpty());
    EXPECT_THAT(StartupSettings::command("KDEish"), IsEmpty());
}

TEST_F(StartupSettingsTest, ThatOfTheDesktopIsStarted) {
    const std::filesystem::path record = folder_.path() / "record";
    const std::filesystem::path program = folder_.path() / "systemsettings";
    test::writeFile(program, "#!/bin/sh\nprintf %s \"$1\" > '" + record.string() + "'\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    qputenv("PATH", QByteArray::fromStdString(folder_.path().string()));
    qputenv("XDG_CURRENT_DESKTOP", "KDE");

    EXPECT_EQ(open(), true);

    EXPECT_EQ(test::contentOf(record), "kcm_autostart");
}

} // namespace tarnwick
