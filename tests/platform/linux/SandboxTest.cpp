// Whether the program is shut in.
#include "platform/linux/Sandbox.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Variable.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

class SandboxTest : public testing::Test {
protected:
    /// A program below the folder of a snap, or elsewhere.
    [[nodiscard]] fs::path install(const std::string& name) const {
        const fs::path program = root_.path() / name;
        test::writeFile(program, "program");
        return program;
    }

    [[nodiscard]] bool isSandboxedIn(const std::string& snap, const std::optional<fs::path>& program) const {
        const test::Variable variable("SNAP", (root_.path() / snap).c_str());
        return isSandboxed(root_.path(), program);
    }

    test::TemporaryFolder root_;

private:
    test::Variable unset_{"SNAP", nullptr};
};

} // namespace

TEST_F(SandboxTest, AnOrdinarySystemIsNone) {
    EXPECT_FALSE(isSandboxed(root_.path()));
}

TEST_F(SandboxTest, FlatpakIsKnownByItsFile) {
    test::writeFile(root_.path() / ".flatpak-info", "[Application]\n");

    EXPECT_TRUE(isSandboxed(root_.path()));
}

TEST_F(SandboxTest, SnapIsKnownByTheFolderThatTheProgramLiesIn) {
    EXPECT_TRUE(isSandboxedIn("snap/tarnwick/1", install("snap/tarnwick/1/bin/tarnwick")));
    EXPECT_TRUE(isSandboxedIn("snap/tarnwick/1/", install("snap/tarnwick/1/tarnwick")));
}

TEST_F(SandboxTest, SnapIsKnownAlsoBehindALink) {
    const fs::path program = install("var/snap/tarnwick/1/bin/tarnwick");
    fs::create_directory_symlink(root_.path() / "var/snap", root_.path() / "snap");

    EXPECT_TRUE(isSandboxedIn("snap/tarnwick/1", program));
}

TEST_F(SandboxTest, TheVariableOfTheSnapThatStartedThisProgramSaysNothing) {
    fs::create_directories(root_.path() / "snap/terminal/1");

    EXPECT_FALSE(isSandboxedIn("snap/terminal/1", install("usr/bin/tarnwick")));
    EXPECT_FALSE(isSandboxedIn("snap/terminal/1", install("snap/terminal/11/tarnwick")));
    EXPECT_FALSE(isSandboxedIn("snap/gone/1", install("usr/bin/tarnwick")));
}

TEST_F(SandboxTest, AProgramOfUnknownPlaceIsInNoSnap) {
    fs::create_directories(root_.path() / "snap/tarnwick/1");

    EXPECT_FALSE(isSandboxedIn("snap/tarnwick/1", std::nullopt));
}

TEST_F(SandboxTest, AVariableThatIsNoPlaceSaysNothing) {
    for (const char* value : {"", "yes"}) {
        const test::Variable variable("SNAP", value);
        EXPECT_FALSE(isSandboxed(root_.path())) << value;
    }
}

TEST_F(SandboxTest, TheProgramIsTheOneThatRuns) {
    const auto running = runningProgram();
    ASSERT_TRUE(running);
    const test::Variable variable("SNAP", running->parent_path().c_str());

    EXPECT_TRUE(isSandboxed(root_.path()));
}

} // namespace tarnwick
