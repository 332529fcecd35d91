// A newer program in the place of the running one.
#include "platform/linux/ProgramReplacement.h"

#include "platform/linux/FolderExchange.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

class ProgramReplacementTest : public testing::Test {
protected:
    /// Longer than a change takes to settle.
    static constexpr double longEnough = 4 * FileWatch::settlingTime;

    ProgramReplacementTest() {
        test::writeFile(program_, "old");
        // The kernel's link leads to the running file under whatever name; this one is asked before the file
        // goes.
        fs::create_symlink(program_, self_);
    }

    [[nodiscard]] ProgramReplacement watched() {
        return {
            loop_,
            [this] {
                ++replacements_;
                loop_.stop();
            },
            self_};
    }

    void putNewInPlace() {
        const fs::path draft = folder_.path() / "draft";
        test::writeFile(draft, "new");
        fs::rename(draft, program_);
    }

    /// Until it is noticed, or for `longEnough`.
    void run() {
        const auto end = loop_.after(longEnough, [this] { loop_.stop(); });
        loop_.run();
    }

    test::TemporaryFolder folder_;
    fs::path program_ = folder_.path() / "program";
    fs::path self_ = folder_.path() / "exe";
    EpollRunLoop loop_;
    int replacements_ = 0;
};

} // namespace

TEST_F(ProgramReplacementTest, IsToldOnce) {
    const ProgramReplacement watch = watched();
    putNewInPlace();
    run();
    EXPECT_EQ(replacements_, 1);

    putNewInPlace();
    run();
    EXPECT_EQ(replacements_, 1);
}

TEST_F(ProgramReplacementTest, IsToldAlsoWhereTheOldFileGoesFirst) {
    const ProgramReplacement watch = watched();
    fs::remove(program_);
    run();
    EXPECT_EQ(replacements_, 0);

    putNewInPlace();
    run();
    EXPECT_EQ(replacements_, 1);
}

TEST_F(ProgramReplacementTest, IsNotTakenFromANewDate) {
    const ProgramReplacement watch = watched();
    fs::last_write_time(program_, fs::file_time_type::clock::now());
    test::writeFile(folder_.path() / "other", "beside it");
    run();

    EXPECT_EQ(replacements_, 0);
}

TEST_F(ProgramReplacementTest, IsNeverToldWhereTheSystemDoesNotTellThePath) {
    fs::remove(self_);
    const ProgramReplacement watch = watched();
    putNewInPlace();
    run();

    EXPECT_EQ(replacements_, 0);
}

TEST_F(ProgramReplacementTest, IsToldWhenTheWholeBundleIsExchanged) {
    const fs::path bundle = folder_.path() / "Tarnwick.app";
    const fs::path other = folder_.path() / "beside" / "Tarnwick.app";
    test::writeFile(bundle / "bin" / "program", "old");
    test::writeFile(other / "bin" / "program", "new");
    fs::remove(self_);
    fs::create_symlink(bundle / "bin" / "program", self_);
    const ProgramReplacement watch = watched();
    run();
    EXPECT_EQ(replacements_, 0);

    ASSERT_EQ(exchangeFolders(other, bundle), std::nullopt);
    run();

    EXPECT_EQ(replacements_, 1);
}

} // namespace tarnwick
