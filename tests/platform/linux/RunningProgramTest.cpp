// Where the running program lies, also after an update.
#include "platform/linux/RunningProgram.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using testing::Optional;

class RunningProgramTest : public testing::Test {
protected:
    /// As the kernel tells it of a program in this folder.
    [[nodiscard]] std::optional<fs::path> found(const std::string& told) const {
        const fs::path link = folder_.path() / "exe";
        fs::create_symlink(program(told), link);
        return runningProgram(link);
    }

    [[nodiscard]] fs::path program(const std::string& name) const { return folder_.path() / name; }

    void install(const std::string& name) const { test::writeFile(program(name), "program"); }

private:
    test::TemporaryFolder folder_;
};

} // namespace

TEST_F(RunningProgramTest, IsThisOne) {
    const auto program = runningProgram();

    ASSERT_TRUE(program);
    EXPECT_TRUE(program->is_absolute());
    EXPECT_EQ(program->filename(), "LinuxTest");
    EXPECT_EQ(::access(program->c_str(), X_OK), 0);
}

TEST_F(RunningProgramTest, IsTheFileThatTheKernelNames) {
    install("tarnwick");
    EXPECT_THAT(found("tarnwick"), Optional(program("tarnwick")));
}

TEST_F(RunningProgramTest, IsTheNewerFileThatWasPutInItsPlace) {
    install("tarnwick");
    EXPECT_THAT(found("tarnwick (deleted)"), Optional(program("tarnwick")));
}

TEST_F(RunningProgramTest, MayHaveANameThatOnlyLooksDeleted) {
    install("tarnwick");
    install("tarnwick (deleted)");
    EXPECT_THAT(found("tarnwick (deleted)"), Optional(program("tarnwick (deleted)")));
}

TEST_F(RunningProgramTest, IsUnknownWhereNothingIsAnymore) {
    EXPECT_EQ(found("tarnwick (deleted)"), std::nullopt);
}

TEST_F(RunningProgramTest, IsUnknownWhereTheSystemDoesNotTell) {
    EXPECT_EQ(runningProgram("/nothing/exe"), std::nullopt);
}

} // namespace tarnwick
