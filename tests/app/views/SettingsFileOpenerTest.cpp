// Opening the settings' file with whatever the desktop opens files with.
#include "app/App/SettingsFileOpener.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <functional>

namespace tarnwick {

namespace {

using testing::HasSubstr;

class SettingsFileOpenerTest : public testing::Test {
protected:
    void SetUp() override {
        path_ = qgetenv("PATH");
        std::filesystem::create_directories(programs());
        qputenv("PATH", QByteArray::fromStdString(programs().string()));
    }

    void TearDown() override {
        qputenv("PATH", path_);
        delete window();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    [[nodiscard]] std::filesystem::path programs() const { return folder_.path() / "programs"; }

    [[nodiscard]] std::filesystem::path settings() const { return folder_.path() / "new" / "settings.json"; }

    [[nodiscard]] std::filesystem::path record() const { return folder_.path() / "record"; }

    /// What the desktop opens files with: it records its process and its argument, and ends so.
    void installOpener(const std::string& end) const {
        const std::filesystem::path file = programs() / "xdg-open";
        test::writeFile(file, "#!/bin/sh\necho \"$$ $1\" > '" + record().string() + "'\n" + end + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    [[nodiscard]] static QMessageBox* window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* const box = qobject_cast<QMessageBox*>(widget); box != nullptr && box->isVisible()) {
                return box;
            }
        }
        return nullptr;
    }

    [[nodiscard]] static bool runUntil(const std::function<bool()>& condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition()) {
            if (timer.hasExpired(20'000)) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        }
        return true;
    }

    [[nodiscard]] bool runUntilOpenerHasEnded() const {
        return runUntil([this] {
            pid_t process = 0;
            std::ifstream(record()) >> process;
            return process > 0 && kill(process, 0) != 0;
        });
    }

    test::TemporaryFolder folder_;
    QByteArray path_;
};

} // namespace

TEST_F(SettingsFileOpenerTest, AFileIsMadeAndOpened) {
    installOpener("exit 0");

    openSettingsFile(settings());

    ASSERT_TRUE(runUntilOpenerHasEnded());
    EXPECT_EQ(test::contentOf(settings()), "{}\n");
    EXPECT_THAT(test::contentOf(record()), HasSubstr(" " + settings().string()));
    EXPECT_EQ(window(), nullptr);
}

TEST_F(SettingsFileOpenerTest, AFileThatIsThereStaysAsItIs) {
    installOpener("exit 0");
    test::writeFile(settings(), R"({"Hostname": "192.0.2.1"})");

    openSettingsFile(settings());

    ASSERT_TRUE(runUntilOpenerHasEnded());
    EXPECT_EQ(test::contentOf(settings()), R"({"Hostname": "192.0.2.1"})");
}

TEST_F(SettingsFileOpenerTest, WhereNothingOpensItAWindowSaysWhereItIs) {
    installOpener("exit 3");

    openSettingsFile(settings());

    ASSERT_TRUE(runUntil([] { return window() != nullptr; }));
    EXPECT_THAT(window()->text().toStdString(), HasSubstr(settings().string()));
}

TEST_F(SettingsFileOpenerTest, WithoutAnOpenerAWindowSaysWhereItIs) {
    openSettingsFile(settings());

    ASSERT_TRUE(runUntil([] { return window() != nullptr; }));
    EXPECT_THAT(window()->text().toStdString(), HasSubstr(settings().string()));
}

TEST_F(SettingsFileOpenerTest, AFileThatCannotBeMadeIsSaid) {
    installOpener("exit 0");
    test::writeFile(folder_.path() / "new", "a file where the folder belongs");

    openSettingsFile(settings());

    ASSERT_NE(window(), nullptr);
    EXPECT_THAT(window()->text().toStdString(), HasSubstr("no file can be made"));
    EXPECT_FALSE(std::filesystem::exists(record()));
}

} // namespace tarnwick
