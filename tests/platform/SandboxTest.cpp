// Whether the program is shut in.
#include "platform/linux/Sandbox.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace tarnwick {

namespace {

class SandboxTest : public testing::Test {
protected:
    void SetUp() override { unsetenv("SNAP"); }

    void TearDown() override { unsetenv("SNAP"); }

    test::TemporaryFolder root_;
};

} // namespace

TEST_F(SandboxTest, AnOrdinarySystemIsNone) {
    EXPECT_FALSE(isSandboxed(root_.path()));
}

TEST_F(SandboxTest, FlatpakIsKnownByItsFile) {
    std::ofstream(root_.path() / ".flatpak-info") << "[Application]\n";

    EXPECT_TRUE(isSandboxed(root_.path()));
}

TEST_F(SandboxTest, SnapIsKnownByItsVariable) {
    setenv("SNAP", "/snap/tarnwick/1", 1);

    EXPECT_TRUE(isSandboxed(root_.path()));
}

TEST_F(SandboxTest, AnEmptyVariableSaysNothing) {
    setenv("SNAP", "", 1);

    EXPECT_FALSE(isSandboxed(root_.path()));
}

} // namespace tarnwick
