// Other programs that are started for the user: a script stands for them.
#include "platform/qt/DesktopOpener.h"

#include "tests/platform/qt/StartedBeside.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace tarnwick {

namespace {

class DesktopOpenerTest : public testing::Test {
protected:
    void SetUp() override { qputenv("PATH", QByteArray::fromStdString(folder_.path().string())); }

    void TearDown() override { qputenv("PATH", path_); }

    [[nodiscard]] std::filesystem::path record() const { return folder_.path() / "record"; }

    /// The script writes what `command` says into the record.
    void installOpener(const std::string& command) const {
        const std::filesystem::path file = folder_.path() / "opener";
        test::writeFile(file, "#!/bin/sh\n" + command + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    /// Whether it was opened; nothing without an answer in time.
    [[nodiscard]] static std::optional<bool> open(const QString& what) {
        return test::answerOf(
            [&what](DesktopOpened opened) { startBeside("opener", {what}, std::move(opened)); });
    }

    test::TemporaryFolder folder_;

private:
    const QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(DesktopOpenerTest, TheOpenerIsToldWhatToOpen) {
    installOpener("echo \"$1\" > '" + record().string() + "'");

    EXPECT_EQ(open("https://example.org/a page"), true);

    EXPECT_EQ(test::contentOf(record()), "https://example.org/a page\n");
}

TEST_F(DesktopOpenerTest, AnOpenerThatFindsNothingIsTold) {
    installOpener("exit 3");

    EXPECT_EQ(open("settings.json"), false);
}

TEST_F(DesktopOpenerTest, AMissingOpenerIsTold) {
    EXPECT_EQ(open("settings.json"), false);
}

TEST_F(DesktopOpenerTest, WhatIsOpenedIsNotEndedWithTheProgramsTerminal) {
    installOpener("read -r line < /proc/$$/stat; echo \"$line\" > '" + record().string() + "'");

    ASSERT_EQ(open("settings.json"), true);

    std::istringstream fields(test::contentOf(record()));
    std::string process;
    std::string name;
    std::string state;
    std::string parent;
    std::string group;
    std::string session;
    fields >> process >> name >> state >> parent >> group >> session;
    EXPECT_EQ(session, process);
}

TEST_F(DesktopOpenerTest, WhatIsOpenedHearsTheSignalsThatThisProgramBlocks) {
    installOpener(
        "while read -r key value; do [ \"$key\" = SigBlk: ] && echo \"$value\" > '" + record().string()
        + "'; done < /proc/$$/status; exit 0");

    ASSERT_EQ(open("settings.json"), true);

    EXPECT_EQ(test::contentOf(record()), "0000000000000000\n");
}

} // namespace tarnwick
