// What the updater still knows in its next run.
#include "app/Update/UpdateMemory.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

namespace tarnwick::test {
namespace {

class UpdateMemoryTest : public testing::Test {
protected:
    [[nodiscard]] UpdateMemory memory() const { return UpdateMemory(file); }

    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Tarnwick" / "updates.json";
    std::chrono::sys_seconds time{std::chrono::seconds(1'800'000'000)};
};

TEST_F(UpdateMemoryTest, IsEmptyAtFirst) {
    EXPECT_EQ(memory().lastFeed(), std::nullopt);
    EXPECT_EQ(memory().rolledBack(), std::nullopt);
    EXPECT_EQ(memory().takeNews(), "");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UpdateMemoryTest, KeepsWhenTheLastFeedWasSigned) {
    memory().setLastFeed(time);

    EXPECT_EQ(memory().lastFeed(), time);
}

TEST_F(UpdateMemoryTest, KeepsTheVersionThatDidNotRun) {
    memory().setLastFeed(time);
    memory().setRolledBack(ReleaseVersion::parse("1.2.3").value(), ReleaseVersion::parse("1.0").value());

    EXPECT_EQ(memory().rolledBack(), ReleaseVersion::parse("1.2.3"));
    EXPECT_EQ(memory().lastFeed(), time);
}

TEST_F(UpdateMemoryTest, TellsTheNewsOfItOnce) {
    memory().setRolledBack(ReleaseVersion::parse("1.2.3").value(), ReleaseVersion::parse("1.0").value());

    EXPECT_EQ(memory().takeNews(), "Tarnwick 1.2.3 did not run on this machine, so version 1.0 is back.");
    EXPECT_EQ(memory().takeNews(), "");
    EXPECT_NE(memory().rolledBack(), std::nullopt);
}

TEST_F(UpdateMemoryTest, CountsASpoiledFileAsNone) {
    std::filesystem::create_directories(file.parent_path());
    for (const std::string text : {"", "{", "[]", R"({"lastFeed":"x","rolledBack":7,"news":1})"}) {
        std::ofstream(file) << text;

        EXPECT_EQ(memory().lastFeed(), std::nullopt) << text;
        EXPECT_EQ(memory().rolledBack(), std::nullopt) << text;
        EXPECT_EQ(memory().takeNews(), "") << text;
    }
}

} // namespace
} // namespace tarnwick::test
